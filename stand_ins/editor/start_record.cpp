#include "stand_ins/editor/start_record.h"

#include "platform/environment.h"
#include "platform/text.h"
#include "platform/unique_handle.h"

#include <windows.h>

#include <shellapi.h>

#include <cstdlib>
#include <cwchar>
#include <iterator>

namespace quill::editor {
namespace {

bool has_handle(const std::wstring& number)
{
    DWORD flags = 0;
    return GetHandleInformation(reinterpret_cast<HANDLE>(std::stoull(number)), &flags) != FALSE;
}

std::vector<std::wstring> arguments_of_shell()
{
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> copies(arguments, arguments + (arguments ? count : 0));
    LocalFree(arguments);
    return copies;
}

std::wstring escaped(const std::wstring& text)
{
    std::wstring ascii;
    for (const wchar_t c : text) {
        if (c >= L' ' && c <= L'~' && c != L'\\') {
            ascii += c;
            continue;
        }
        wchar_t escape[7];
        std::swprintf(escape, std::size(escape), L"\\u%04x", static_cast<unsigned>(c));
        ascii += escape;
    }
    return ascii;
}

std::wstring lines_of(const wchar_t* label, const std::vector<std::wstring>& arguments)
{
    std::wstring lines;
    for (const std::wstring& argument : arguments)
        lines += label + escaped(argument) + L"\r\n";
    return lines;
}

} // namespace

start_record start_record::of_this_program()
{
    std::wstring directory(GetCurrentDirectoryW(0, nullptr), L'\0');
    directory.resize(GetCurrentDirectoryW(static_cast<DWORD>(directory.size()), directory.data()));
    STARTUPINFOW startup{};
    GetStartupInfoW(&startup);
    const bool has_show_command = (startup.dwFlags & STARTF_USESHOWWINDOW) != 0;
    const auto canary = environment_variable(L"QUILL_EDITOR_CANARY");
    return {GetCommandLineW(),
            {__wargv, __wargv + __argc},
            arguments_of_shell(),
            std::move(directory),
            has_show_command ? startup.wShowWindow : -1,
            canary && has_handle(*canary)};
}

std::wstring start_record::text() const
{
    return L"command line: " + command_line + L"\r\n" + lines_of(L"crt argument: ", crt_arguments) +
           lines_of(L"shell argument: ", shell_arguments) + L"directory: " + directory + L"\r\nshow: " +
           std::to_wstring(show_command) + (has_canary ? L"\r\ncanary: inherited" : L"") + L"\r\n\r\n";
}

bool append_to_file(const std::wstring& path, const std::wstring& text)
{
    // FILE_APPEND_DATA is not atomic on every system.
    const unique_handle mutex(CreateMutexW(nullptr, FALSE, L"Local\\QuillEditorRecord"));
    WaitForSingleObject(mutex.get(), INFINITE);
    const unique_handle file(CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                         nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    const std::string bytes = to_utf8(text);
    DWORD written = 0;
    const bool done =
        file && WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
        written == bytes.size();
    ReleaseMutex(mutex.get());
    return done;
}

} // namespace quill::editor
