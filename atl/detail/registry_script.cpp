#include "atl/detail/registry_script.h"

#include <cwchar>
#include <cwctype>
#include <utility>

namespace ATL::detail {
namespace {

constexpr int max_depth = 512; // the registry's limit

bool equal_ignoring_case(std::wstring_view left, std::wstring_view right)
{
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

HKEY root_key(std::wstring_view name)
{
    static constexpr std::pair<std::wstring_view, std::wstring_view> names[] = {
        {L"HKCR", L"HKEY_CLASSES_ROOT"}, {L"HKCU", L"HKEY_CURRENT_USER"},   {L"HKLM", L"HKEY_LOCAL_MACHINE"},
        {L"HKU", L"HKEY_USERS"},         {L"HKCC", L"HKEY_CURRENT_CONFIG"},
    };
    static const HKEY keys[] = {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_USERS,
                                HKEY_CURRENT_CONFIG};
    for (std::size_t i = 0; i < std::size(names); ++i) {
        if (equal_ignoring_case(name, names[i].first) || equal_ignoring_case(name, names[i].second))
            return keys[i];
    }
    return nullptr;
}

// Splits a script into words. A quoted word may contain any character; an apostrophe is doubled.
class tokenizer
{
public:
    explicit tokenizer(std::wstring_view text) : text_(text) {}

    // Reads the next word, which is empty at the end. False if a quoted word is not terminated.
    bool next()
    {
        word_.clear();
        quoted_ = false;
        while (position_ < text_.size() && is_space(text_[position_]))
            ++position_;
        at_end_ = position_ == text_.size();
        if (at_end_)
            return true;
        if (text_[position_] == L'\'')
            return read_quoted();
        do {
            word_ += text_[position_++];
        } while (position_ < text_.size() && !is_space(text_[position_]));
        return true;
    }

    bool at_end() const { return at_end_; }
    bool is(std::wstring_view plain_word) const { return !quoted_ && equal_ignoring_case(word_, plain_word); }
    const std::wstring& word() const { return word_; }

private:
    static bool is_space(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; }

    bool read_quoted()
    {
        quoted_ = true;
        for (++position_; position_ < text_.size(); ++position_) {
            if (text_[position_] == L'\'') {
                ++position_;
                if (position_ == text_.size() || text_[position_] != L'\'')
                    return true;
            }
            word_ += text_[position_];
        }
        return false;
    }

    std::wstring_view text_;
    std::size_t position_ = 0;
    std::wstring word_;
    bool quoted_ = false;
    bool at_end_ = false;
};

std::vector<BYTE> text_data(const std::wstring& text)
{
    const auto* const first = reinterpret_cast<const BYTE*>(text.c_str());
    return {first, first + (text.size() + 1) * sizeof(wchar_t)};
}

std::optional<std::vector<BYTE>> number_data(const std::wstring& text)
{
    const bool is_hex = text.size() > 2 && (equal_ignoring_case(text.substr(0, 2), L"0x") ||
                                            equal_ignoring_case(text.substr(0, 2), L"&h"));
    const unsigned base = is_hex ? 16 : 10;
    const std::wstring digits = is_hex ? text.substr(2) : text;
    unsigned long long number = 0;
    for (const wchar_t c : digits) {
        const int digit = c >= L'0' && c <= L'9'   ? c - L'0'
                          : c >= L'a' && c <= L'f' ? c - L'a' + 10
                          : c >= L'A' && c <= L'F' ? c - L'A' + 10
                                                   : 16;
        if (static_cast<unsigned>(digit) >= base)
            return std::nullopt;
        number = number * base + static_cast<unsigned>(digit);
        if (number > MAXDWORD)
            return std::nullopt;
    }
    if (digits.empty())
        return std::nullopt;
    const auto value = static_cast<DWORD>(number);
    const auto* const first = reinterpret_cast<const BYTE*>(&value);
    return std::vector<BYTE>(first, first + sizeof value);
}

std::optional<std::vector<BYTE>> binary_data(const std::wstring& text)
{
    if (text.size() % 2 != 0)
        return std::nullopt;
    std::vector<BYTE> data;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const auto byte = number_data(L"0x" + text.substr(i, 2));
        if (!byte)
            return std::nullopt;
        data.push_back(byte->front());
    }
    return data;
}

class parser
{
public:
    explicit parser(std::wstring_view text) : words_(text) {}

    std::optional<std::vector<script_section>> parse()
    {
        std::vector<script_section> sections;
        if (!words_.next())
            return std::nullopt;
        while (!words_.at_end()) {
            script_section section;
            section.root = root_key(words_.word());
            section.content.kind = script_key_kind::no_remove;
            if (!section.root || !words_.next() || !words_.is(L"{") || !parse_block(section.content, 0))
                return std::nullopt;
            sections.push_back(std::move(section));
        }
        return sections;
    }

private:
    // Reads from the opening brace to the word after the closing one.
    bool parse_block(script_key& key, int depth)
    {
        if (depth == max_depth || !words_.next())
            return false;
        while (!words_.is(L"}")) {
            if (words_.at_end() || !parse_entry(key, depth))
                return false;
        }
        return words_.next();
    }

    bool parse_entry(script_key& parent, int depth)
    {
        if (words_.is(L"val"))
            return parse_named_value(parent);
        script_key key;
        key.kind = words_.is(L"NoRemove")      ? script_key_kind::no_remove
                   : words_.is(L"ForceRemove") ? script_key_kind::force_remove
                   : words_.is(L"Delete")      ? script_key_kind::delete_only
                                               : script_key_kind::plain;
        if (key.kind != script_key_kind::plain && !words_.next())
            return false;
        if (!read_name(key.name))
            return false;
        if (words_.is(L"=") && !parse_assignment(key, std::wstring()))
            return false;
        if (words_.is(L"{") && !parse_block(key, depth + 1))
            return false;
        parent.keys.push_back(std::move(key));
        return true;
    }

    bool parse_named_value(script_key& key)
    {
        std::wstring name;
        return words_.next() && read_name(name) && words_.is(L"=") && parse_assignment(key, std::move(name));
    }

    // An empty key name opens the parent itself, which would then be deleted.
    bool read_name(std::wstring& name)
    {
        if (words_.word().empty() || words_.is(L"{") || words_.is(L"}") || words_.is(L"="))
            return false;
        name = words_.word();
        return words_.next();
    }

    bool parse_assignment(script_key& key, std::wstring name)
    {
        if (!words_.next())
            return false;
        script_value value;
        value.name = std::move(name);
        value.type = words_.is(L"s")   ? REG_SZ
                     : words_.is(L"d") ? REG_DWORD
                     : words_.is(L"b") ? REG_BINARY
                                       : REG_NONE;
        if (value.type == REG_NONE || !words_.next() || words_.at_end())
            return false;
        const std::wstring& text = words_.word();
        auto data = value.type == REG_SZ      ? text_data(text)
                    : value.type == REG_DWORD ? number_data(text)
                                              : binary_data(text);
        if (!data)
            return false;
        value.data = *std::move(data);
        key.values.push_back(std::move(value));
        return words_.next();
    }

    tokenizer words_;
};

} // namespace

std::optional<std::wstring> expand_script(std::wstring_view text, const script_replacement& replacement)
{
    std::wstring expanded;
    while (true) {
        const auto first = text.find(L'%');
        expanded += text.substr(0, first);
        if (first == std::wstring_view::npos)
            return expanded;
        const auto last = text.find(L'%', first + 1);
        if (last == std::wstring_view::npos)
            return std::nullopt;
        const std::wstring name(text.substr(first + 1, last - first - 1));
        if (name.empty()) {
            expanded += L'%';
        } else if (const std::wstring* const item = replacement(name)) {
            expanded += *item;
        } else {
            return std::nullopt;
        }
        text.remove_prefix(last + 1);
    }
}

std::optional<std::vector<script_section>> parse_script(std::wstring_view text)
{
    return parser(text).parse();
}

} // namespace ATL::detail
