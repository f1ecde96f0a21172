#include "diagnose/lookup.h"

#include <utility>

namespace quill::diagnose {

found_value first_value(const machine& computer, const std::vector<registry_key>& keys,
                        const std::wstring& name)
{
    found_value found;
    found.value.error = ERROR_FILE_NOT_FOUND;
    for (const registry_key& key : keys) {
        found = {key, computer.value(key, name)};
        if (!is_missing(found.value))
            break;
    }
    return found;
}

found_value class_value(const machine& computer, const std::wstring& path, const std::wstring& name,
                        registry_view view)
{
    const std::wstring full = std::wstring(classes_key) + L"\\" + path;
    return first_value(computer, {user_key(full, view), machine_key(full, view)}, name);
}

std::vector<registry_key> policy_keys(const std::wstring& suffix)
{
    const std::wstring policy = L"SOFTWARE\\Policies\\" + suffix;
    const std::wstring setting = L"SOFTWARE\\" + suffix;
    return {machine_key(policy), user_key(policy), user_key(setting), machine_key(setting)};
}

std::wstring difference(const machine& computer, const registered_value& row)
{
    const registry_key key = machine_key(row.path);
    if (!row.name) {
        const DWORD error = computer.open(key);
        return error == ERROR_SUCCESS ? L"" : described(key) + L": " + error_text(error);
    }
    const registry_value value = computer.value(key, *row.name);
    if (row.is_module_path) {
        const auto path = text_of(value);
        return path && !path->empty() ? L"" : described(key, *row.name) + L": " + described(value);
    }
    if (value.error == ERROR_SUCCESS && value.type == row.type && value.data == row.data)
        return {};
    const registry_value expected{ERROR_SUCCESS, row.type, row.data};
    // Identifiers and names are compared without regard to case by the system too.
    if (const auto text = text_of(value), wanted = text_of(expected);
        text && wanted && equal_names(*text, *wanted))
        return {};
    return described(key, *row.name) + L": " + described(value) + L" instead of " + described(expected);
}

std::vector<user_row> read_user_rows(const machine& computer, const std::vector<registered_value>& rows)
{
    std::vector<user_row> found;
    for (const registered_value& row : rows) {
        if (!row.name || !is_below(row.path, classes_key))
            continue;
        const registry_value value = computer.value(user_key(row.path), *row.name);
        if (is_missing(value))
            continue;
        const bool is_same = value.error == ERROR_SUCCESS && value.type == row.type && value.data == row.data;
        found.push_back({&row, is_same, described(user_key(row.path), *row.name) + L": " + described(value)});
    }
    return found;
}

bool is_below(std::wstring_view text, std::wstring_view prefix)
{
    return text.size() >= prefix.size() && equal_names(text.substr(0, prefix.size()), prefix) &&
           (text.size() == prefix.size() || text[prefix.size()] == L'\\');
}

server_path server_of_class(const machine& computer, const std::wstring& clsid, registry_view view)
{
    server_path server;
    server.value = class_value(computer, L"CLSID\\" + clsid + L"\\InprocServer32", L"", view);
    auto text = text_of(server.value.value);
    if (!text || text->empty())
        return server;
    if (server.value.value.type == REG_EXPAND_SZ)
        *text = computer.expanded(*text);
    if (text->size() > 1 && text->front() == L'"' && text->back() == L'"')
        *text = text->substr(1, text->size() - 2);
    server.path = std::move(*text);
    return server;
}

found_value substitute_of_class(const machine& computer, const std::wstring& clsid)
{
    return class_value(computer, L"CLSID\\" + clsid + L"\\TreatAs", L"");
}

bool is_class_identifier(std::wstring_view text)
{
    constexpr std::wstring_view form = L"{00000000-0000-0000-0000-000000000000}";
    if (text.size() != form.size())
        return false;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const wchar_t c = text[i];
        const bool is_digit =
            (c >= L'0' && c <= L'9') || (c >= L'a' && c <= L'f') || (c >= L'A' && c <= L'F');
        if (form[i] == L'0' ? !is_digit : c != form[i])
            return false;
    }
    return true;
}

bool is_full_path(std::wstring_view path)
{
    return path.size() > 2 && (path.substr(1, 2) == L":\\" || path.substr(0, 2) == L"\\\\");
}

std::wstring file_name(const std::wstring& path)
{
    return path.substr(path.find_last_of(L"\\/") + 1);
}

std::wstring joined(const std::vector<std::wstring>& parts)
{
    constexpr std::size_t most = 6;
    std::wstring text;
    for (std::size_t i = 0; i < parts.size() && i < most; ++i)
        text += (i == 0 ? L"" : L"; ") + parts[i];
    if (parts.size() > most)
        text += L"; and " + number_text(parts.size() - most) + L" more";
    return text;
}

} // namespace quill::diagnose
