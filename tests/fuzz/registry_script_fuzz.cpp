// Scripts of the registrar. Input: the script. What is parsed is written again and must be parsed as the
// same.
#include "atl/detail/registry_script.h"
#include "tests/fuzz/reference_text.h"
#include "tests/fuzz/subjects.h"

#include <cstring>

namespace quill::fuzz {
namespace {

using ATL::detail::script_key;
using ATL::detail::script_key_kind;
using ATL::detail::script_section;
using ATL::detail::script_value;

constexpr int deepest = 512;

std::wstring quoted(std::wstring_view text)
{
    std::wstring result = L"'";
    for (const wchar_t unit : text) {
        result += unit;
        if (unit == L'\'')
            result += unit;
    }
    return result + L"' ";
}

std::wstring text_of_data(const script_value& value)
{
    if (value.type == REG_SZ) {
        FUZZ_CHECK(value.data.size() >= sizeof(wchar_t) && value.data.size() % sizeof(wchar_t) == 0);
        std::wstring text(value.data.size() / sizeof(wchar_t), L'\0');
        std::memcpy(text.data(), value.data.data(), value.data.size());
        FUZZ_CHECK(text.back() == L'\0');
        text.pop_back();
        return L"s " + quoted(text);
    }
    std::wstring digits;
    for (const BYTE byte : value.data) {
        constexpr std::wstring_view hexadecimal = L"0123456789abcdef";
        digits += {hexadecimal[byte / 16], hexadecimal[byte % 16]};
    }
    if (value.type == REG_BINARY)
        return L"b " + quoted(digits);
    FUZZ_CHECK(value.type == REG_DWORD && value.data.size() == sizeof(DWORD));
    std::uint32_t number = 0;
    std::memcpy(&number, value.data.data(), sizeof number);
    const std::string decimal = std::to_string(number);
    return L"d " + quoted(std::wstring(decimal.begin(), decimal.end()));
}

const wchar_t* prefix_of(script_key_kind kind)
{
    switch (kind) {
    case script_key_kind::plain:
        break;
    case script_key_kind::no_remove:
        return L"NoRemove ";
    case script_key_kind::force_remove:
        return L"ForceRemove ";
    case script_key_kind::delete_only:
        return L"Delete ";
    }
    return L"";
}

std::wstring block_of(const script_key& key, int depth);

std::wstring text_of(const script_key& key, int depth)
{
    FUZZ_CHECK(!key.name.empty());
    std::wstring text = prefix_of(key.kind) + quoted(key.name);
    if (!key.values.empty() && key.values.front().name.empty())
        text += L"= " + text_of_data(key.values.front());
    return text + block_of(key, depth + 1);
}

std::wstring block_of(const script_key& key, int depth)
{
    if (depth == deepest) {
        FUZZ_CHECK(key.keys.empty());
        return {};
    }
    std::wstring text = L"{ ";
    for (std::size_t i = 0; i < key.values.size(); ++i) {
        FUZZ_CHECK(!key.values[i].name.empty() || i == 0);
        if (!key.values[i].name.empty())
            text += L"val " + quoted(key.values[i].name) + L"= " + text_of_data(key.values[i]);
    }
    for (const script_key& each : key.keys)
        text += text_of(each, depth);
    return text + L"} ";
}

std::wstring text_of(const std::vector<script_section>& sections)
{
    const std::pair<HKEY, const wchar_t*> roots[] = {{HKEY_CLASSES_ROOT, L"HKCR "},
                                                     {HKEY_CURRENT_USER, L"HKEY_CURRENT_USER "},
                                                     {HKEY_LOCAL_MACHINE, L"hklm "},
                                                     {HKEY_USERS, L"HKU "},
                                                     {HKEY_CURRENT_CONFIG, L"HKCC "}};
    std::wstring text;
    for (const script_section& section : sections) {
        FUZZ_CHECK(section.content.name.empty() && section.content.kind == script_key_kind::no_remove);
        const auto* name = L"";
        for (const auto& [root, root_name] : roots)
            name = section.root == root ? root_name : name;
        text += name + block_of(section.content, 0);
    }
    return text;
}

bool same(const script_value& left, const script_value& right)
{
    return left.name == right.name && left.type == right.type && left.data == right.data;
}

bool same(const script_key& left, const script_key& right)
{
    const auto same_each = [](const auto& a, const auto& b) { return same(a, b); };
    return left.name == right.name && left.kind == right.kind &&
           std::equal(left.values.begin(), left.values.end(), right.values.begin(), right.values.end(),
                      same_each) &&
           std::equal(left.keys.begin(), left.keys.end(), right.keys.begin(), right.keys.end(), same_each);
}

bool same(const std::vector<script_section>& left, const std::vector<script_section>& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](const auto& a, const auto& b) {
        return a.root == b.root && same(a.content, b.content);
    });
}

// The parts between the percent signs: text, name, text, name, text.
std::optional<std::wstring> expected_expansion(std::wstring_view text,
                                               const ATL::detail::script_replacement& known)
{
    const auto parts = split(text, L'%');
    if (parts.size() % 2 == 0)
        return std::nullopt;
    std::wstring expanded;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const std::wstring* const item = i % 2 == 1 && !parts[i].empty() ? known(parts[i]) : nullptr;
        if (i % 2 == 1 && !parts[i].empty() && !item)
            return std::nullopt;
        expanded += item ? *item : i % 2 == 1 ? L"%" : parts[i];
    }
    return expanded;
}

} // namespace

void registry_script(bytes input)
{
    const exact_copy<wchar_t> text(wide_text(input));
    const std::wstring module_path = L"C:\\it's\\%APPID%.dll", identifier = L"{7}";
    const auto known = [&](const std::wstring& name) {
        return name == L"MODULE" ? &module_path : name == L"APPID" ? &identifier : nullptr;
    };
    const auto expanded = ATL::detail::expand_script(text, known);
    FUZZ_CHECK(expanded == expected_expansion(text, known));

    const auto sections = ATL::detail::parse_script(text);
    if (!sections)
        return;
    const auto again = ATL::detail::parse_script(exact_copy<wchar_t>(text_of(*sections)));
    FUZZ_CHECK(again && same(*sections, *again));
}

} // namespace quill::fuzz
