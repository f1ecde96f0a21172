// in_console.exe CODE-PAGE COMMAND-LINE: runs a program in a console of its own that has this code page,
// prints the console's code pages before and after, and returns the program's exit code.
#include "tests/acceptance/programs/command.h"

#include <cstdio>
#include <string>

int wmain(int count, wchar_t** values)
{
    if (count < 3)
        return quill::test::not_started;
    STARTUPINFOW startup = quill::test::startup_info(); // before the console replaces the standard handles
    FreeConsole();
    if (!AllocConsole() || !SetConsoleOutputCP(static_cast<UINT>(std::stoul(values[1])))) {
        std::fprintf(stderr, "in_console: error %lu\n", GetLastError());
        return quill::test::not_started;
    }
    const UINT before = GetConsoleOutputCP();
    std::wstring command = quill::test::command_line(2, count, values);
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                        &started))
        return quill::test::not_started;
    const int code = quill::test::exit_code_of(started);
    const std::string line = "code page " + std::to_string(before) + ", afterwards " +
                             std::to_string(GetConsoleOutputCP()) + "\r\n";
    DWORD written = 0;
    WriteFile(startup.hStdOutput, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    return code;
}
