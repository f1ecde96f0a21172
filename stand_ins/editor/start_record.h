// Records how a process was started: command line, arguments, directory and inherited handles.
#pragma once

#include <string>
#include <vector>

namespace quill::editor {

struct start_record
{
    std::wstring command_line;                 // verbatim
    std::vector<std::wstring> crt_arguments;   // parsed by the C runtime
    std::vector<std::wstring> shell_arguments; // parsed by CommandLineToArgvW
    std::wstring directory;
    int show_command; // -1: not specified
    // Whether the process inherited the handle whose value is in QUILL_EDITOR_CANARY.
    bool has_canary;

    // The record of the current process.
    static start_record of_this_program();

    // One line per value, then an empty line. Arguments are escaped to ASCII: "\uXXXX" for non-ASCII
    // characters, control characters and backslashes.
    std::wstring text() const;
};

// Appends text to the file as UTF-8, atomically: several processes may write to one file.
bool append_to_file(const std::wstring& path, const std::wstring& text);

} // namespace quill::editor
