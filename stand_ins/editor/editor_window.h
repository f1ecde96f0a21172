// The stand-in editor's window.
#pragma once

#include "stand_ins/editor/start_record.h"

#include <windows.h>

#include <string>

namespace quill::editor {

// Shows how the program was started, until the user closes the window. If `picture` is not empty, first saves
// a screenshot (PNG) to that path. Returns the program's exit code.
int show_start(HINSTANCE instance, const start_record& start, int show_command, const std::wstring& picture);

} // namespace quill::editor
