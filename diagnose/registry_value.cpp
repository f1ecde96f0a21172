#include "diagnose/registry_value.h"

#include "diagnose/path_place.h"
#include "diagnose/report.h"

#include <cstring>

namespace quill::diagnose {
namespace {

std::wstring type_name(DWORD type)
{
    static constexpr const wchar_t* names[] = {L"REG_NONE",
                                               L"REG_SZ",
                                               L"REG_EXPAND_SZ",
                                               L"REG_BINARY",
                                               L"REG_DWORD",
                                               L"REG_DWORD_BIG_ENDIAN",
                                               L"REG_LINK",
                                               L"REG_MULTI_SZ",
                                               L"REG_RESOURCE_LIST",
                                               L"REG_FULL_RESOURCE_DESCRIPTOR",
                                               L"REG_RESOURCE_REQUIREMENTS_LIST",
                                               L"REG_QWORD"};
    return type < std::size(names) ? names[type] : L"the unknown type " + number_text(type);
}

bool is_text_type(DWORD type)
{
    return type == REG_SZ || type == REG_EXPAND_SZ;
}

std::wstring units_of(const std::vector<BYTE>& data)
{
    std::wstring text(data.size() / sizeof(wchar_t), L'\0');
    if (!text.empty())
        std::memcpy(text.data(), data.data(), text.size() * sizeof(wchar_t));
    return text;
}

std::optional<DWORD> decimal(std::wstring_view text)
{
    if (text.empty() || text.size() > 9)
        return std::nullopt;
    DWORD number = 0;
    for (const wchar_t c : text) {
        if (c < L'0' || c > L'9')
            return std::nullopt;
        number = number * 10 + static_cast<DWORD>(c - L'0');
    }
    return number;
}

} // namespace

bool is_missing(DWORD error)
{
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

std::optional<std::wstring> text_of(const registry_value& value)
{
    if (value.error != ERROR_SUCCESS || !is_text_type(value.type) || value.data.size() % sizeof(wchar_t) != 0)
        return std::nullopt;
    std::wstring text = units_of(value.data);
    const std::size_t end = text.find(L'\0');
    if (end == std::wstring::npos)
        return std::nullopt;
    text.resize(end);
    return text;
}

std::optional<DWORD> number_of(const registry_value& value)
{
    DWORD number = 0;
    if (value.error != ERROR_SUCCESS || value.type != REG_DWORD || value.data.size() != sizeof number)
        return std::nullopt;
    std::memcpy(&number, value.data.data(), sizeof number);
    return number;
}

std::optional<DWORD> lenient_number_of(const registry_value& value)
{
    if (auto number = number_of(value))
        return number;
    const auto text = text_of(value);
    return text ? decimal(*text) : std::nullopt;
}

std::wstring described(const registry_value& value)
{
    if (is_missing(value))
        return L"no value";
    if (value.error != ERROR_SUCCESS)
        return L"unreadable: " + error_text(value.error);
    if (const auto number = number_of(value))
        return number_text(*number) + (*number > 9 ? L" (0x" + hexadecimal(*number) + L")" : L"");
    const std::wstring size = counted(value.data.size(), L"byte");
    if (const auto text = text_of(value)) {
        const std::size_t after = value.data.size() - (text->size() + 1) * sizeof(wchar_t);
        return quoted(*text) + (after == 0 ? L"" : L", followed by " + counted(after, L"byte"));
    }
    if (!is_text_type(value.type))
        return type_name(value.type) + L" of " + size;
    if (value.data.size() % sizeof(wchar_t) != 0)
        return type_name(value.type) + L" of " + size + L", which is no text";
    return quoted(units_of(value.data)) + L" without a terminating null";
}

std::wstring error_text(DWORD error)
{
    std::wstring number = L"error " + number_text(error);
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return L"does not exist (" + number + L")";
    case ERROR_ACCESS_DENIED:
        return L"access denied (" + number + L")";
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return L"in use by another program (" + number + L")";
    case ERROR_MORE_DATA:
    case ERROR_FILE_TOO_LARGE:
        return L"too large (" + number + L")";
    case error_path_on_share:
        return L"lies on another computer and is not examined";
    case error_path_of_device:
        return L"is a device and is not examined";
    default:
        return number;
    }
}

std::wstring described(const registry_key& key)
{
    return (key.root == registry_root::machine ? L"HKLM\\" : L"HKCU\\") + printable(key.path) +
           (key.view == registry_view::bits_32 ? L" (32-bit view)" : L"");
}

std::wstring described(const registry_key& key, std::wstring_view name)
{
    return described(key) + (name.empty() ? L", default value" : L", value " + quoted(name));
}

registry_key below(const registry_key& key, std::wstring_view name)
{
    registry_key result = key;
    result.path += L'\\';
    result.path += name;
    return result;
}

bool equal_names(std::wstring_view left, std::wstring_view right)
{
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

} // namespace quill::diagnose
