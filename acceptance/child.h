// Runs another program of the kit or of the system, with a time-out, until it ends or the run is broken off.
#pragma once

#include "platform/unique_handle.h"

#include <windows.h>

#include <string>

namespace quill::acceptance {

// Set when the user breaks the run off. Manual reset; created once by main.
extern HANDLE broken_off_event;

// Thrown at the next step of a run that was broken off.
struct broken_off
{
};

enum class at_interruption
{
    end_program,     // the program is terminated, and broken_off is thrown
    wait_for_program // for msiexec, which must not be terminated in the middle
};

struct child_result
{
    DWORD start_error = ERROR_SUCCESS;
    bool timed_out = false; // the program was terminated
    DWORD exit_code = 0;
    std::string output; // standard output and standard error
};

// arguments is the command line after the program's name. The output goes to a file of that path.
child_result run_child(const std::wstring& program, const std::wstring& arguments, DWORD limit_ms,
                       const std::wstring& output_file,
                       at_interruption interruption = at_interruption::end_program);

// Throws broken_off if the run was broken off.
void check_interruption();

// Reads a whole file; empty if it cannot be read.
std::string read_whole_file(const std::wstring& path);

} // namespace quill::acceptance
