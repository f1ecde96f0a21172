// Lookups that several checks share: the merged view of classes, policies before settings, and rows of the
// registration compared with the registry.
#pragma once

#include "diagnose/checks.h"

namespace quill::diagnose {

inline constexpr wchar_t classes_key[] = L"SOFTWARE\\Classes";
inline constexpr wchar_t repair[] = L"repair the product: msiexec /fa PACKAGE.msi";

inline registry_key machine_key(std::wstring path, registry_view view = registry_view::bits_64)
{
    return {registry_root::machine, std::move(path), view};
}
inline registry_key user_key(std::wstring path, registry_view view = registry_view::bits_64)
{
    return {registry_root::user, std::move(path), view};
}

struct found_value
{
    registry_key key;
    registry_value value;
};

// The first value that exists, or that cannot be read; otherwise the last one.
found_value first_value(const machine& computer, const std::vector<registry_key>& keys,
                        const std::wstring& name);

// A value below HKEY_CLASSES_ROOT, as a program that is not elevated reads it: the user's before the
// machine's.
found_value class_value(const machine& computer, const std::wstring& path, const std::wstring& name,
                        registry_view view = registry_view::bits_64);

// Policies of the machine, then of the user, then the user's setting, then the machine's. suffix begins below
// "SOFTWARE\Policies\" and "SOFTWARE\".
std::vector<registry_key> policy_keys(const std::wstring& suffix);

// What is wrong with a row of the registration in the machine's part of the registry; empty if it is right.
// Rows with the module's path must have some text.
std::wstring difference(const machine& computer, const registered_value& row);

// Values in the user's part of the classes that the product registers for the machine: they take precedence
// there.
struct user_row
{
    const registered_value* row = nullptr;
    bool is_same = false; // as registration would write it
    std::wstring text;    // the value with its place
};
std::vector<user_row> read_user_rows(const machine& computer, const std::vector<registered_value>& rows);

// Whether text begins with prefix, and ends there or goes on with a backslash. Ignores case.
bool is_below(std::wstring_view text, std::wstring_view prefix);

// The path of a library as COM reads it from InprocServer32: environment variables are expanded and quotation
// marks removed.
struct server_path
{
    found_value value;
    std::optional<std::wstring> path;
};
server_path server_of_class(const machine& computer, const std::wstring& clsid, registry_view view);

// The value of TreatAs: COM creates the class that it names instead.
found_value substitute_of_class(const machine& computer, const std::wstring& clsid);

// Whether text has the form of a class identifier, "{01234567-89AB-CDEF-0123-456789ABCDEF}".
bool is_class_identifier(std::wstring_view text);

// A full path of a drive or a share.
bool is_full_path(std::wstring_view path);

// What is behind the last separator.
std::wstring file_name(const std::wstring& path);

// "a; b; c"
std::wstring joined(const std::vector<std::wstring>& parts);

} // namespace quill::diagnose
