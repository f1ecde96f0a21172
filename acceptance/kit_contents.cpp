#include "acceptance/kit_contents.h"

#include <algorithm>

namespace quill::acceptance {
namespace {

constexpr std::size_t checksum_length = 64;

bool is_inside(std::string_view path)
{
    return !path.empty() && path.front() != '/' && path.find_first_of("\\:") == std::string_view::npos &&
           ("/" + std::string(path) + "/").find("/../") == std::string::npos;
}

} // namespace

std::optional<std::vector<kit_file>> parse_kit_contents(std::string_view text)
{
    std::vector<kit_file> files;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        if (end == std::string_view::npos)
            return std::nullopt;
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end + 1);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (line.size() < checksum_length + 3 || line.substr(checksum_length, 2) != "  " ||
            line.substr(0, checksum_length).find_first_not_of("0123456789abcdef") != std::string_view::npos ||
            !is_inside(line.substr(checksum_length + 2)))
            return std::nullopt;
        kit_file file{std::string(line.substr(0, checksum_length)),
                      std::string(line.substr(checksum_length + 2))};
        std::replace(file.path.begin(), file.path.end(), '/', '\\');
        files.push_back(std::move(file));
    }
    return files.empty() ? std::nullopt : std::optional(std::move(files));
}

} // namespace quill::acceptance
