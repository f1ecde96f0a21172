// The contents of registry keys as text: what the journal holds, so that a later run can restore them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quill::acceptance {

struct saved_value
{
    std::uint32_t type = 0;
    std::string data; // bytes

    friend bool operator==(const saved_value&, const saved_value&) = default;
};

// A key and everything below it, by the path below the key: "" for the key itself. Names are UTF-8.
using saved_keys = std::map<std::string, std::map<std::string, saved_value>>;

struct saved_tree
{
    std::string root; // "HKLM" or "HKCU"
    int view = 64;    // 64 or 32
    std::string path;
    saved_keys keys; // empty if the key does not exist

    friend bool operator==(const saved_tree&, const saved_tree&) = default;
};

// "HKLM\SOFTWARE\Quill", or "HKLM (32-bit)\SOFTWARE\Quill" for that view.
std::string name_of(const saved_tree& tree);

struct journal
{
    std::string product; // the product code of the package that the run installs
    std::vector<saved_tree> trees;

    friend bool operator==(const journal&, const journal&) = default;
};

std::string to_text(const journal& saved);
// No value if the text is not a complete journal.
std::optional<journal> parse_journal(std::string_view text);

// What differs, a line for each key and value: "+ key" for what only `after` has, "- key" for what only
// `before` has, "~ key: value" for a value that differs. Both are the same key of the registry.
std::vector<std::string> difference(const saved_tree& before, const saved_tree& after);

} // namespace quill::acceptance
