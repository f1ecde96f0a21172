// Stands in for the PDF core's error-text library. The text of an error code is QUILL_PDFCORE_TEXT and the
// code; if it is "throw", the function throws, if "crash", it raises an access violation.
#include <windows.h>

#include <cstdint>
#include <string>

// Writes at most size characters including the terminator. Returns buffer.
extern "C" __declspec(dllexport) wchar_t* ASGetErrorString(int code, wchar_t* buffer, std::uint64_t size)
{
    std::wstring text(32767, L'\0');
    text.resize(GetEnvironmentVariableW(L"QUILL_PDFCORE_TEXT", text.data(), static_cast<DWORD>(text.size())));
    if (text == L"throw")
        throw code;
    if (text == L"crash")
        RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    text += L" (" + std::to_wstring(code) + L")";
    const std::size_t length = size == 0 ? 0 : text.copy(buffer, size - 1);
    if (size > 0)
        buffer[length] = L'\0';
    return buffer;
}
