#include "acceptance/saved_registry.h"

#include <algorithm>
#include <charconv>

namespace quill::acceptance {
namespace {

constexpr std::string_view first_line = "quill acceptance journal 1";
constexpr std::string_view last_line = "end";
constexpr std::string_view hex_digits = "0123456789abcdef";

std::string hex(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += hex_digits[byte >> 4];
        text += hex_digits[byte & 15];
    }
    return text;
}

std::optional<std::string> from_hex(std::string_view text)
{
    if (text.size() % 2 != 0)
        return std::nullopt;
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const auto high = hex_digits.find(text[i]);
        const auto low = hex_digits.find(text[i + 1]);
        if (high == std::string_view::npos || low == std::string_view::npos)
            return std::nullopt;
        bytes += static_cast<char>(high << 4 | low);
    }
    return bytes;
}

// Fields are separated by spaces. A name may contain any character, so it is written in hexadecimal.
class line_reader
{
public:
    explicit line_reader(std::string_view line) : rest_(line) {}

    std::string_view word()
    {
        const std::size_t end = std::min(rest_.find(' '), rest_.size());
        const std::string_view found = rest_.substr(0, end);
        rest_.remove_prefix(std::min(end + 1, rest_.size()));
        return found;
    }
    std::string name() { return checked(from_hex(word())); }
    template <typename Number>
    Number number()
    {
        Number value = 0;
        const std::string_view text = word();
        const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
        if (parsed.ec != std::errc() || parsed.ptr != text.data() + text.size())
            failed_ = true;
        return value;
    }
    bool ok() const { return !failed_ && rest_.empty(); }

private:
    std::string checked(const std::optional<std::string>& value)
    {
        failed_ = failed_ || !value;
        return value.value_or(std::string());
    }

    std::string_view rest_;
    bool failed_ = false;
};

// Adds what a line says to the journal.
bool parse_line(std::string_view line, journal& saved)
{
    line_reader reader(line);
    const std::string_view kind = reader.word();
    if (kind == "product") {
        saved.product = reader.name();
        return reader.ok();
    }
    if (kind == "tree") {
        saved_tree tree;
        tree.root = reader.word();
        tree.view = reader.number<int>();
        tree.path = reader.name();
        saved.trees.push_back(std::move(tree));
        return reader.ok() && !saved.trees.back().path.empty() &&
               (saved.trees.back().root == "HKLM" || saved.trees.back().root == "HKCU") &&
               (saved.trees.back().view == 64 || saved.trees.back().view == 32);
    }
    if (saved.trees.empty())
        return false;
    saved_keys& keys = saved.trees.back().keys;
    if (kind == "key") {
        keys.try_emplace(reader.name());
        return reader.ok();
    }
    if (kind != "value" || keys.empty())
        return false;
    const std::string key = reader.name();
    const std::string name = reader.name();
    saved_value value;
    value.type = reader.number<std::uint32_t>();
    value.data = reader.name();
    const auto found = keys.find(key);
    if (found == keys.end())
        return false;
    found->second[name] = std::move(value);
    return reader.ok();
}

std::string full_path(const saved_tree& tree, const std::string& key)
{
    return name_of(tree) + (key.empty() ? "" : "\\" + key);
}

} // namespace

std::string name_of(const saved_tree& tree)
{
    return tree.root + (tree.view == 32 ? " (32-bit)\\" : "\\") + tree.path;
}

std::string to_text(const journal& saved)
{
    std::string text = std::string(first_line) + "\nproduct " + hex(saved.product) + "\n";
    for (const saved_tree& tree : saved.trees) {
        text += "tree " + tree.root + " " + std::to_string(tree.view) + " " + hex(tree.path) + "\n";
        for (const auto& [key, values] : tree.keys) {
            text += "key " + hex(key) + "\n";
            for (const auto& [name, value] : values)
                text += "value " + hex(key) + " " + hex(name) + " " + std::to_string(value.type) + " " +
                        hex(value.data) + "\n";
        }
    }
    return text + std::string(last_line) + "\n";
}

std::optional<journal> parse_journal(std::string_view text)
{
    journal saved;
    std::string_view line;
    for (bool is_first = true;; is_first = false) {
        const std::size_t end = text.find('\n');
        if (end == std::string_view::npos)
            return std::nullopt; // the last line is missing
        line = text.substr(0, end);
        text.remove_prefix(end + 1);
        if (is_first) {
            if (line != first_line)
                return std::nullopt;
        } else if (line == last_line) {
            return text.empty() ? std::optional(std::move(saved)) : std::nullopt;
        } else if (!parse_line(line, saved)) {
            return std::nullopt;
        }
    }
}

std::vector<std::string> difference(const saved_tree& before, const saved_tree& after)
{
    std::vector<std::string> lines;
    for (const auto& [key, values] : after.keys) {
        const auto old = before.keys.find(key);
        if (old == before.keys.end()) {
            lines.push_back("+ " + full_path(after, key));
            continue;
        }
        for (const auto& [name, value] : values) {
            const auto old_value = old->second.find(name);
            if (old_value == old->second.end())
                lines.push_back("+ " + full_path(after, key) + ": " + (name.empty() ? "@" : name));
            else if (old_value->second != value)
                lines.push_back("~ " + full_path(after, key) + ": " + (name.empty() ? "@" : name));
        }
    }
    for (const auto& [key, values] : before.keys) {
        const auto found = after.keys.find(key);
        if (found == after.keys.end()) {
            lines.push_back("- " + full_path(before, key));
            continue;
        }
        for (const auto& [name, value] : values)
            if (!found->second.contains(name))
                lines.push_back("- " + full_path(before, key) + ": " + (name.empty() ? "@" : name));
    }
    return lines;
}

} // namespace quill::acceptance
