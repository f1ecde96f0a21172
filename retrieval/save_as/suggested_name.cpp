#include "retrieval/save_as/suggested_name.h"

#include <shlwapi.h>

#include <string_view>

namespace quill {
namespace {

// Removes the text from the last "[" if the name ends with "]".
std::wstring_view without_cache_number(std::wstring_view base) noexcept
{
    if (!base.ends_with(L']'))
        return base;
    return base.substr(0, base.rfind(L'['));
}

} // namespace

std::optional<std::wstring> suggested_file_name(const wchar_t* path)
{
    if (!path || !*path)
        return std::nullopt;
    const std::wstring_view name = PathFindFileNameW(path);
    const std::wstring_view extension = PathFindExtensionW(path);
    // For the shell "/" begins a file name but does not end an extension: in "a.b/c" the extension is longer.
    if (extension.empty() || name.size() >= MAX_PATH || extension.size() > name.size())
        return std::nullopt;
    const std::wstring_view base = name.substr(0, name.size() - extension.size());
    std::wstring suggested(without_cache_number(base));
    suggested += extension;
    return suggested;
}

} // namespace quill
