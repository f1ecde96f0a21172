// The line that the code under test has written to the log.
#pragma once

#include <string>

namespace quill::fuzz {

// From the first call on, lines of every level are caught. Gives the last one and forgets it.
std::string caught_line();

} // namespace quill::fuzz
