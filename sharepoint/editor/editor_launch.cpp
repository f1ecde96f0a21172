#include "sharepoint/editor/editor_launch.h"

#include <algorithm>

namespace quill {
namespace {

constexpr std::wstring_view separators = L"\\/";

bool is_separator(wchar_t c)
{
    return separators.find(c) != std::wstring_view::npos;
}

// Length of the drive at the beginning of text, with the separator that follows it; 0 without a drive.
std::size_t drive_length(std::wstring_view text)
{
    if (text.size() < 2 || text[1] != L':')
        return 0;
    return text.size() > 2 && is_separator(text[2]) ? 3 : 2;
}

std::size_t root_length(std::wstring_view path)
{
    if (const std::size_t drive = drive_length(path))
        return drive;
    if (path.empty() || !is_separator(path[0]))
        return 0;
    if (path.size() < 3 || !is_separator(path[1]) || is_separator(path[2]))
        return 1;
    // A server's name, or the "?" of a path that the system does not parse.
    const std::size_t name_end = path.find_first_of(separators, 2);
    if (name_end == std::wstring_view::npos)
        return path.size();
    const std::size_t root = name_end + 1;
    return root + drive_length(path.substr(root));
}

bool is_unsafe_in_quotes(wchar_t c)
{
    constexpr wchar_t first_printable = 0x20;
    return c == L'"' || c < first_printable;
}

// c must be below 0x100.
void append_escape(std::wstring& text, wchar_t c)
{
    constexpr std::wstring_view digits = L"0123456789ABCDEF";
    text += L'%';
    text += digits[static_cast<std::size_t>(c) / 16];
    text += digits[static_cast<std::size_t>(c) % 16];
}

} // namespace

std::wstring editor_command_line(std::wstring_view url)
{
    std::wstring line = L"/pdf \"sharepoint://";
    for (const wchar_t c : url) {
        if (is_unsafe_in_quotes(c))
            append_escape(line, c);
        else
            line += c;
    }
    line += L'"';
    return line;
}

std::wstring parent_directory(std::wstring_view path)
{
    const std::size_t root = root_length(path);
    const std::size_t last = path.find_last_of(separators);
    std::size_t length = last == std::wstring_view::npos ? 0 : last;
    while (length > root && is_separator(path[length - 1]))
        --length;
    return std::wstring(path.substr(0, std::max(length, root)));
}

} // namespace quill
