// The stand-in editor's window.
#pragma once

#include <windows.h>

#include <string>

namespace quill::editor {

// Shows the text in a window until the user closes it. Returns the program's exit code.
int show_text(HINSTANCE instance, const std::wstring& text, int show_command);

} // namespace quill::editor
