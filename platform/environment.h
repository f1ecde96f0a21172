// Environment variables of the process. Reads the system's block: the C runtime's copy does not reflect
// variables that the host sets through the system.
#pragma once

#include <optional>
#include <string>

namespace quill {

// The value, which may be empty; nullopt if the variable does not exist.
std::optional<std::wstring> environment_variable(const wchar_t* name);

// As above, in the system's ANSI code page.
std::optional<std::string> environment_variable(const char* name);

} // namespace quill
