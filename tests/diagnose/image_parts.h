// Changes in the bytes of a PE file, for files that are damaged in one way only.
#pragma once

#include <string>

namespace quill::test {

// For a 32-bit processor.
std::string as_32_bit(std::string image);
// For 64-bit ARM.
std::string as_arm(std::string image);
// A program instead of a library.
std::string as_program(std::string image);
// The contents of a section are replaced by 0xFF.
std::string without_section(std::string image, const std::string& name);
std::string with_checksum(std::string image);
// The header's checksum is 0.
std::string without_checksum(std::string image);
// One bit of the code is inverted; the checksum stays.
std::string with_changed_code(std::string image);
// Signed, by a signature that is none.
std::string with_false_signature(std::string image);
// Another file version.
std::string with_version(std::string image, unsigned short major);

} // namespace quill::test
