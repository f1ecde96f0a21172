// Runs another program to its end and returns its output.
#pragma once

#include <windows.h>

#include <string>

namespace quill::test {

struct child_result
{
    bool started = false;
    bool ended = false; // false: the deadline passed and the program was terminated
    DWORD process_id = 0;
    DWORD exit_code = 0;
    std::string output; // standard output
    std::string errors; // standard error
};

// Runs program (full path) with arguments (the command line after the program's name) in the environment of
// this process and waits for its end.
child_result run_program(const std::wstring& program, const std::wstring& arguments,
                         DWORD deadline_ms = 30'000);

// Full path of a program or library in the folder of the running test program.
std::wstring beside_this_program(const std::wstring& name);

} // namespace quill::test
