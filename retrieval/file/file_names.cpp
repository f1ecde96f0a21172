#include "retrieval/file/file_names.h"

#include <algorithm>
#include <array>

namespace quill {
namespace {

constexpr auto npos = std::wstring_view::npos;
constexpr std::wstring_view separators = L"\\/";

constexpr std::wstring_view devices[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CLOCK$", L"CONIN$", L"CONOUT$"};
constexpr std::wstring_view numbered_devices[] = {L"COM", L"LPT"};
// The system takes the superscript digits for digits.
constexpr std::wstring_view device_numbers = L"0123456789\u00b9\u00b2\u00b3";

constexpr std::wstring_view shares_of_devices[] = {L"PIPE", L"MAILSLOT", L"IPC$"};

constexpr wchar_t upper_ascii(wchar_t unit) noexcept
{
    return unit >= L'a' && unit <= L'z' ? static_cast<wchar_t>(unit - L'a' + L'A') : unit;
}

constexpr bool is_letter(wchar_t unit) noexcept
{
    return upper_ascii(unit) >= L'A' && upper_ascii(unit) <= L'Z';
}

constexpr bool is_separator(wchar_t unit) noexcept
{
    return unit == L'\\' || unit == L'/';
}

// name is in capitals.
bool is_called(std::wstring_view text, std::wstring_view name) noexcept
{
    return std::ranges::equal(text, name, {}, upper_ascii);
}

bool starts_with(std::wstring_view text, std::wstring_view start) noexcept
{
    return is_called(text.substr(0, start.size()), start);
}

std::wstring_view without_at_end(std::wstring_view text, std::wstring_view units) noexcept
{
    return text.substr(0, text.find_last_not_of(units) + 1);
}

// Takes the next component off the path; several separators in a row count as one.
std::wstring_view take_component(std::wstring_view& path) noexcept
{
    path.remove_prefix(std::min(path.find_first_not_of(separators), path.size()));
    const auto component = path.substr(0, path.find_first_of(separators));
    path.remove_prefix(component.size());
    return component;
}

bool climbs(std::wstring_view path) noexcept
{
    while (!path.empty()) {
        if (take_component(path) == L"..")
            return true;
    }
    return false;
}

bool starts_with_drive(std::wstring_view path) noexcept
{
    return path.size() >= 2 && is_letter(path[0]) && path[1] == L':';
}

// "NUL\" and "NUL\." are the same as "NUL" once the system has tidied the path up.
bool ends_in_device(std::wstring_view path) noexcept
{
    if (starts_with_drive(path))
        path.remove_prefix(2);
    path = without_at_end(path, L"\\/. ");
    return is_device_name(path.substr(path.find_last_of(separators) + 1));
}

// path: behind the two separators.
bool may_name_share_file(std::wstring_view path) noexcept
{
    const auto server = take_component(path);
    const auto share = take_component(path);
    if (server.empty() || server == L"." || server == L"?" || share.empty())
        return false;
    const auto name = without_at_end(share, L". ");
    return std::ranges::none_of(shares_of_devices, [&](auto device) { return is_called(name, device); });
}

// path: behind "\\?\" or "\\.\", where all devices live beside the drives.
bool may_name_disk_file_of_namespace(std::wstring_view path) noexcept
{
    constexpr std::wstring_view unc = L"UNC", volume = L"VOLUME{";
    if (climbs(path) || ends_in_device(path))
        return false;
    if (starts_with_drive(path))
        return path.size() > 3 && is_separator(path[2]);
    if (path.size() > unc.size() && starts_with(path, unc) && is_separator(path[unc.size()]))
        return may_name_share_file(path.substr(unc.size()));
    if (!starts_with(path, volume))
        return false;
    const std::size_t end = path.find_first_of(L"}\\/");
    return end != npos && path[end] == L'}' && path.size() > end + 2 && is_separator(path[end + 1]);
}

} // namespace

bool is_device_name(std::wstring_view component) noexcept
{
    const auto name = without_at_end(component.substr(0, component.find_first_of(L".:")), L" ");
    if (std::ranges::any_of(devices, [&](auto device) { return is_called(name, device); }))
        return true;
    return name.size() == 4 && device_numbers.find(name[3]) != npos &&
           std::ranges::any_of(numbered_devices,
                               [&](auto device) { return is_called(name.substr(0, 3), device); });
}

bool is_creatable_name(std::wstring_view name) noexcept
{
    const auto is_forbidden = [](wchar_t unit) {
        return unit < L' ' || std::wstring_view(L"\"<>|*?:\\/").find(unit) != npos;
    };
    return !name.empty() && std::ranges::none_of(name, is_forbidden) && !is_device_name(name);
}

bool may_name_disk_file(std::wstring_view path) noexcept
{
    constexpr std::wstring_view object_manager = L"\\??\\";
    if (path.starts_with(object_manager))
        return may_name_disk_file_of_namespace(path.substr(object_manager.size()));
    if (path.size() < 2 || !is_separator(path[0]) || !is_separator(path[1]))
        return !path.empty() && !ends_in_device(path);
    const bool is_namespace = path.size() > 2 && (path[2] == L'.' || path[2] == L'?') &&
                              (path.size() == 3 || is_separator(path[3]));
    return is_namespace ? may_name_disk_file_of_namespace(path.substr(std::min<std::size_t>(4, path.size())))
                        : may_name_share_file(path.substr(2));
}

} // namespace quill
