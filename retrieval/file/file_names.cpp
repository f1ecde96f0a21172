#include "retrieval/file/file_names.h"

#include "platform/text.h"

#include <algorithm>

namespace quill {
namespace {

constexpr auto npos = std::wstring_view::npos;
constexpr std::wstring_view separators = L"\\/";

constexpr std::wstring_view devices[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CLOCK$", L"CONIN$", L"CONOUT$"};
constexpr std::wstring_view numbered_devices[] = {L"COM", L"LPT"};
// The system treats superscript digits as digits here.
constexpr std::wstring_view device_numbers = L"0123456789\u00b9\u00b2\u00b3";

constexpr std::wstring_view device_shares[] = {L"PIPE", L"MAILSLOT", L"IPC$"};

constexpr bool is_letter(wchar_t character) noexcept
{
    return (character >= L'A' && character <= L'Z') || (character >= L'a' && character <= L'z');
}

constexpr bool is_separator(wchar_t character) noexcept
{
    return character == L'\\' || character == L'/';
}

bool starts_with(std::wstring_view text, std::wstring_view start) noexcept
{
    return equal_ignoring_ascii_case(text.substr(0, start.size()), start);
}

std::wstring_view trim_end(std::wstring_view text, std::wstring_view characters) noexcept
{
    return text.substr(0, text.find_last_not_of(characters) + 1);
}

// Removes the first component from path and returns it. Consecutive separators count as one.
std::wstring_view take_component(std::wstring_view& path) noexcept
{
    path.remove_prefix(std::min(path.find_first_not_of(separators), path.size()));
    const auto component = path.substr(0, path.find_first_of(separators));
    path.remove_prefix(component.size());
    return component;
}

bool has_parent_step(std::wstring_view path) noexcept
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

// The system normalizes "NUL\" and "NUL\." to "NUL".
bool ends_in_device(std::wstring_view path) noexcept
{
    if (starts_with_drive(path))
        path.remove_prefix(2);
    path = trim_end(path, L"\\/. ");
    return is_device_name(path.substr(path.find_last_of(separators) + 1));
}

// path: what follows the two leading separators.
bool may_name_share_file(std::wstring_view path) noexcept
{
    const auto server = take_component(path);
    const auto share = take_component(path);
    if (server.empty() || server == L"." || server == L"?" || share.empty())
        return false;
    const auto name = trim_end(share, L". ");
    return std::ranges::none_of(device_shares,
                                [&](auto device) { return equal_ignoring_ascii_case(name, device); });
}

// path: what follows "\\?\" or "\\.\", the namespace of devices and drives.
bool may_name_disk_file_in_namespace(std::wstring_view path) noexcept
{
    constexpr std::wstring_view unc = L"UNC", volume = L"VOLUME{";
    if (has_parent_step(path) || ends_in_device(path))
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
    const auto name = trim_end(component.substr(0, component.find_first_of(L".:")), L" ");
    if (std::ranges::any_of(devices, [&](auto device) { return equal_ignoring_ascii_case(name, device); }))
        return true;
    return name.size() == 4 && device_numbers.find(name[3]) != npos &&
           std::ranges::any_of(numbered_devices, [&](auto device) {
               return equal_ignoring_ascii_case(name.substr(0, 3), device);
           });
}

bool is_creatable_name(std::wstring_view name) noexcept
{
    const auto is_forbidden = [](wchar_t character) {
        return character < L' ' || std::wstring_view(L"\"<>|*?:\\/").find(character) != npos;
    };
    return !name.empty() && std::ranges::none_of(name, is_forbidden) && !is_device_name(name);
}

bool may_name_disk_file(std::wstring_view path) noexcept
{
    constexpr std::wstring_view object_manager = L"\\??\\";
    if (path.starts_with(object_manager))
        return may_name_disk_file_in_namespace(path.substr(object_manager.size()));
    if (path.size() < 2 || !is_separator(path[0]) || !is_separator(path[1]))
        return !path.empty() && !ends_in_device(path);
    const bool is_namespace = path.size() > 2 && (path[2] == L'.' || path[2] == L'?') &&
                              (path.size() == 3 || is_separator(path[3]));
    return is_namespace ? may_name_disk_file_in_namespace(path.substr(std::min<std::size_t>(4, path.size())))
                        : may_name_share_file(path.substr(2));
}

} // namespace quill
