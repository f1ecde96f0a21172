// How a program was started, as text.
#pragma once

#include <string>
#include <vector>

namespace quill::editor {

struct start_record
{
    std::wstring command_line; // character for character
    // What the command line is taken apart to by the C library and by the shell's function.
    std::vector<std::wstring> crt_arguments;
    std::vector<std::wstring> shell_arguments;
    std::wstring directory;
    int show_command; // -1: none was given
    // Whether it got the starter's handle whose number stands in QUILL_EDITOR_CANARY.
    bool has_canary;

    // How this program was started.
    static start_record of_this_program();

    // One line per value, and an empty line. Arguments are in ASCII: "\uXXXX" is any other character, a
    // control character or a backslash.
    std::wstring text() const;
};

// Adds text, as UTF-8, to the file's end in one piece: several programs may record into one file.
bool append_to_file(const std::wstring& path, const std::wstring& text);

} // namespace quill::editor
