// Environment variables of the process, read from the system. The C runtime keeps a copy of its own that
// does not see what a host sets through the system, so that copy is not asked.
#pragma once

#include <optional>
#include <string>

namespace quill {

// The value, which may be empty; nothing when the variable does not exist.
std::optional<std::wstring> environment_variable(const wchar_t* name);

// The same in the system's narrow code page.
std::optional<std::string> environment_variable(const char* name);

} // namespace quill
