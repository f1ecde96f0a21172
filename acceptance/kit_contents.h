// The list of the kit's files with their checksums.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quill::acceptance {

struct kit_file
{
    std::string checksum; // SHA-256, 64 lower-case digits
    std::string path;     // below the kit's folder, with backslashes

    friend bool operator==(const kit_file&, const kit_file&) = default;
};

// Lines "CHECKSUM  PATH" as sha256sum writes them. No value if a line is none of these, names a file outside
// of the kit's folder, or if there is no line.
std::optional<std::vector<kit_file>> parse_kit_contents(std::string_view text);

} // namespace quill::acceptance
