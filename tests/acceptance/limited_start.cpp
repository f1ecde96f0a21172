// limited_start.exe COMMAND-LINE: runs a program without an administrator's rights and returns its exit code.
#include "platform/unique_handle.h"

#include <windows.h>

#include <cstdio>
#include <string>

int wmain(int count, wchar_t** values)
{
    using quill::unique_handle;
    std::wstring command;
    for (int i = 1; i < count; ++i)
        command += (i > 1 ? L" \"" : L"\"") + std::wstring(values[i]) + L"\"";
    BYTE administrators[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof administrators;
    unique_handle own;
    unique_handle limited;
    SID_AND_ATTRIBUTES disabled{administrators, 0};
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION started{};
    if (!CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &size) ||
        !OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, own.put()) ||
        !CreateRestrictedToken(own.get(), 0, 1, &disabled, 0, nullptr, 0, nullptr, limited.put()) ||
        !CreateProcessAsUserW(limited.get(), nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                              nullptr, &startup, &started)) {
        std::fprintf(stderr, "limited_start: error %lu\n", GetLastError());
        return 255;
    }
    const unique_handle process(started.hProcess);
    const unique_handle thread(started.hThread);
    WaitForSingleObject(process.get(), INFINITE);
    DWORD code = 255;
    GetExitCodeProcess(process.get(), &code);
    return static_cast<int>(code);
}
