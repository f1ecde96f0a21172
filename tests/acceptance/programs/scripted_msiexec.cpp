// Takes the place of msiexec.exe in a test's prefix: runs the script C:\msiexec.cmd with its arguments and
// returns the script's exit code.
#include "tests/acceptance/programs/command.h"

#include <string>

int wmain()
{
    // The arguments as they are: msiexec's have quotation marks in them.
    const std::wstring own = GetCommandLineW();
    const std::size_t end_of_name = own.starts_with(L'"') ? own.find(L'"', 1) + 1 : own.find(L' ');
    std::wstring command = L"cmd.exe /c C:\\msiexec.cmd";
    if (end_of_name < own.size())
        command += own.substr(end_of_name);
    STARTUPINFOW startup = quill::test::startup_info();
    PROCESS_INFORMATION started{};
    return CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                          &started)
               ? quill::test::exit_code_of(started)
               : quill::test::not_started;
}
