// What would have been started, without starting it: for loops over hundreds of visits, and for tests that do
// something while the system is being asked to open a URL.
#pragma once

#include "tests/support/faults/import_faults.h"

#include <functional>
#include <string>
#include <vector>

namespace quill::test {

struct launches
{
    std::vector<std::wstring> editor_lines;
    std::vector<std::wstring> default_urls; // of the default handler

    // The URLs that were opened, by the editor or by the default handler: sorted. Text that is no command
    // line for the editor is one too.
    std::vector<std::wstring> urls() const;
};

// The stand-ins, and what they were called with so far. CreateProcessW refuses a command line that is too
// long for Windows.
code_address recording_create_process();
code_address recording_shell_execute();
launches& recorded_launches();
// Done in the middle of every ShellExecuteW, after the call is recorded; empty: nothing.
void while_shell_executes(std::function<void()> action);

// For code that is linked into the test: while this lives, the program's own calls go to the stand-ins.
class launch_recording
{
public:
    launch_recording();
    ~launch_recording();
    launch_recording(const launch_recording&) = delete;
    launch_recording& operator=(const launch_recording&) = delete;

private:
    code_address create_process_;
    code_address shell_execute_;
};

} // namespace quill::test
