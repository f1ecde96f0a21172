// The stand-in editor's window.
#pragma once

#include "stand_ins/editor/start_record.h"

#include <windows.h>

#include <string>

namespace quill::editor {

// Shows how the program was started in a window until the user closes it, and first saves a picture of the
// window (PNG) when a file for it is named. Returns the program's exit code.
int show_start(HINSTANCE instance, const start_record& start, int show_command, const std::wstring& picture);

} // namespace quill::editor
