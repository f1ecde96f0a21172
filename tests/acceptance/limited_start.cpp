// limited_start.exe COMMAND-LINE: runs a program without an administrator's rights and returns its exit code.
#include "platform/unique_handle.h"
#include "tests/acceptance/programs/command.h"

#include <cstdio>
#include <string>

int wmain(int count, wchar_t** values)
{
    using quill::unique_handle;
    std::wstring command = quill::test::command_line(1, count, values);
    BYTE administrators[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof administrators;
    unique_handle own;
    unique_handle limited;
    SID_AND_ATTRIBUTES disabled{administrators, 0};
    STARTUPINFOW startup = quill::test::startup_info();
    PROCESS_INFORMATION started{};
    if (!CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &size) ||
        !OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, own.put()) ||
        !CreateRestrictedToken(own.get(), 0, 1, &disabled, 0, nullptr, 0, nullptr, limited.put()) ||
        !CreateProcessAsUserW(limited.get(), nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                              nullptr, &startup, &started)) {
        std::fprintf(stderr, "limited_start: error %lu\n", GetLastError());
        return quill::test::not_started;
    }
    return quill::test::exit_code_of(started);
}
