// Text conversion for test messages.
#pragma once

#include <string>
#include <string_view>

namespace quill::test {

std::string to_utf8(std::wstring_view text);
std::wstring to_wide(std::string_view text);

} // namespace quill::test
