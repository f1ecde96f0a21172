// Records what would be started, without starting it: for loops over hundreds of visits, and for tests that
// run an action inside ShellExecuteW.
#pragma once

#include "tests/support/faults/import_faults.h"

#include <functional>
#include <string>
#include <vector>

namespace quill::test {

struct launches
{
    std::vector<std::wstring> editor_lines;
    std::vector<std::wstring> default_urls; // passed to the default handler

    // The URLs that the editor and the default handler got, sorted. A malformed command line is returned
    // unchanged.
    std::vector<std::wstring> urls() const;
};

// The replacement functions and their calls so far. CreateProcessW fails for a command line that is too long.
code_address recording_create_process();
code_address recording_shell_execute();
launches& recorded_launches();
// Sets an action that each ShellExecuteW runs after recording the call; may be empty.
void while_shell_executes(std::function<void()> action);

// Redirects the imports of the test program during its lifetime, for product code that is linked into it.
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
