// Values of the registry as they were read: any type, any length, or an error instead.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace quill::diagnose {

enum class registry_root
{
    machine,
    user
};

enum class registry_view
{
    bits_64,
    bits_32
};

struct registry_key
{
    registry_root root = registry_root::machine;
    std::wstring path; // below the root
    registry_view view = registry_view::bits_64;
};

struct registry_value
{
    DWORD error = 0; // of the system; then there is no data
    DWORD type = 0;
    std::vector<BYTE> data;
};

// Neither value nor key exists.
bool is_missing(DWORD error);
inline bool is_missing(const registry_value& value)
{
    return is_missing(value.error);
}

// The text of a REG_SZ or REG_EXPAND_SZ up to its first null; nullopt for other types, for an odd number of
// bytes and for data without a terminating null, which the system's functions may read beyond its end.
std::optional<std::wstring> text_of(const registry_value& value);

// The number of a REG_DWORD of four bytes.
std::optional<DWORD> number_of(const registry_value& value);

// The number of a value that programs read as a number or as its text: "0" for example.
std::optional<DWORD> lenient_number_of(const registry_value& value);

// The value in words: its text or number, or what is wrong with it.
std::wstring described(const registry_value& value);

// An error of the system in words, with its number.
std::wstring error_text(DWORD error);

// `HKLM\SOFTWARE\...`, followed by the view if it is the 32-bit one.
std::wstring described(const registry_key& key);

// The same with the value's name.
std::wstring described(const registry_key& key, std::wstring_view name);

// The key `name` below another one.
registry_key below(const registry_key& key, std::wstring_view name);

// Whether two names or texts are equal without regard to case, as names in the registry and in folders are.
bool equal_names(std::wstring_view left, std::wstring_view right);

} // namespace quill::diagnose
