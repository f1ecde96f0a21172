// For programs that run a command in changed circumstances and return its exit code.
#pragma once

#include "platform/unique_handle.h"

#include <windows.h>

#include <string>

namespace quill::test {

inline constexpr int not_started = 255;

// The arguments from `first` on, each in quotation marks.
inline std::wstring command_line(int first, int count, wchar_t** values)
{
    std::wstring command;
    for (int i = first; i < count; ++i)
        command += (i > first ? L" \"" : L"\"") + std::wstring(values[i]) + L"\"";
    return command;
}

// With this program's standard handles.
inline STARTUPINFOW startup_info()
{
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    return startup;
}

// Waits for the end of the program; closes the handles.
inline int exit_code_of(const PROCESS_INFORMATION& started)
{
    const unique_handle process(started.hProcess);
    const unique_handle thread(started.hThread);
    WaitForSingleObject(process.get(), INFINITE);
    DWORD code = not_started;
    GetExitCodeProcess(process.get(), &code);
    return static_cast<int>(code);
}

} // namespace quill::test
