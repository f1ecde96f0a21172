#include "diagnose/path_place.h"

#include "diagnose/registry_value.h"

namespace quill::diagnose {
namespace {

bool is_separator(wchar_t c)
{
    return c == L'\\' || c == L'/';
}

// The system takes these names for devices in any folder, whatever their extension.
bool is_device_name(std::wstring_view name)
{
    name = name.substr(0, name.find_first_of(L".:"));
    while (name.ends_with(L' '))
        name.remove_suffix(1);
    for (const wchar_t* device : {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"}) {
        if (equal_names(name, device))
            return true;
    }
    return name.size() == 4 &&
           (equal_names(name.substr(0, 3), L"COM") || equal_names(name.substr(0, 3), L"LPT")) &&
           std::wstring_view(L"123456789\u00B9\u00B2\u00B3").find(name[3]) != std::wstring_view::npos;
}

bool has_drive(std::wstring_view path)
{
    return path.size() > 2 && path[1] == L':' && is_separator(path[2]);
}

} // namespace

bool is_absolute(std::wstring_view path)
{
    return has_drive(path) || (path.size() > 1 && is_separator(path[0]) && is_separator(path[1]));
}

path_place place_of(std::wstring_view path)
{
    if (path.size() > 1 && is_separator(path[0]) && is_separator(path[1])) {
        const bool is_special = path.size() > 2 && (path[2] == L'.' || path[2] == L'?') &&
                                (path.size() == 3 || is_separator(path[3]));
        if (!is_special)
            return path_place::share;
        if (path[2] == L'?' && path.size() > 8 && equal_names(path.substr(4, 3), L"UNC") &&
            is_separator(path[7]))
            return path_place::share;
        // "\\?\C:\..." is a file by its exact name.
        return path[2] == L'?' && path.size() > 4 && has_drive(path.substr(4)) ? path_place::local
                                                                               : path_place::device;
    }
    if (path.starts_with(L"\\??\\"))
        return path_place::device;
    return is_device_name(path.substr(path.find_last_of(L"\\/") + 1)) ? path_place::device
                                                                      : path_place::local;
}

} // namespace quill::diagnose
