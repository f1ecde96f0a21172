// Running another program to its end, with what it prints.
#pragma once

#include <windows.h>

#include <string>

namespace quill::test {

struct child_result
{
    bool started = false;
    bool ended = false; // false: the deadline passed and the program was ended
    DWORD process_id = 0;
    DWORD exit_code = 0;
    std::string output; // standard output
    std::string errors; // standard error
};

// Runs program (full path) with arguments (as they follow the program's name in the command line) in the
// environment of this process and waits for its end.
child_result run_program(const std::wstring& program, const std::wstring& arguments,
                         DWORD deadline_ms = 30'000);

// Full path of a program or library that lies beside the running test program.
std::wstring beside_this_program(const std::wstring& name);

} // namespace quill::test
