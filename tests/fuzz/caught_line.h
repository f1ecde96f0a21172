// The line that the code under test has logged.
#pragma once

#include <string>

namespace quill::fuzz {

// From the first call on, lines of every level are captured. Returns the last one and discards it.
std::string caught_line();

} // namespace quill::fuzz
