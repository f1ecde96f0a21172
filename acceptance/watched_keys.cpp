#include "acceptance/watched_keys.h"

namespace quill::acceptance {
namespace {

struct listed_key
{
    std::string path;
    bool has_values = false;
    bool has_keys = false;
};

std::vector<listed_key> parse(std::string_view listing)
{
    std::vector<listed_key> keys;
    while (!listing.empty()) {
        const std::size_t end = listing.find('\n');
        std::string_view line = listing.substr(0, end);
        listing.remove_prefix(end == std::string_view::npos ? listing.size() : end + 1);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (line.starts_with(' ')) {
            if (!keys.empty())
                keys.back().has_values = true;
        } else if (!line.empty()) {
            keys.push_back({std::string(line)});
        }
    }
    for (listed_key& key : keys)
        for (const listed_key& other : keys)
            key.has_keys = key.has_keys || other.path.starts_with(key.path + "\\");
    return keys;
}

bool is_named_by_guid(const std::string& path)
{
    return path.ends_with('}') && path.substr(path.find_last_of('\\') + 1).starts_with('{');
}

} // namespace

std::vector<std::string> own_keys(std::string_view listing)
{
    std::vector<std::string> own;
    for (const listed_key& key : parse(listing)) {
        // A listing is sorted, so the key above comes first.
        const bool is_below = !own.empty() && key.path.starts_with(own.back() + "\\");
        if (!is_below && (key.has_values || !key.has_keys || is_named_by_guid(key.path)))
            own.push_back(key.path);
    }
    return own;
}

std::vector<saved_tree> trees_of(const std::vector<std::string>& keys)
{
    std::vector<saved_tree> trees;
    for (const std::string& key : keys) {
        const std::size_t root = key.find('\\');
        if (root == std::string::npos)
            continue;
        trees.push_back({key.substr(0, root), 64, key.substr(root + 1), {}});
        if (trees.back().root == "HKLM")
            trees.push_back({trees.back().root, 32, trees.back().path, {}});
    }
    return trees;
}

} // namespace quill::acceptance
