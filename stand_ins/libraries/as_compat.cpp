// The PDF core's companion: gives the text of an error code, here QUILL_PDFCORE_TEXT and the code. For
// "throw" it throws, for "crash" it raises an access violation.
#include <windows.h>

#include <cstdint>
#include <string>

// Fills at most size characters, the terminator included, and returns buffer.
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
