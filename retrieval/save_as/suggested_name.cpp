#include "retrieval/save_as/suggested_name.h"

#include <shlwapi.h>

#include <string_view>

namespace quill {
namespace {

// Only a number of brackets that closes the name is taken off, from the last "[" on.
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
    // A "/" ends the file name's search but not the extension's: "a.b/c" has a name without extension.
    if (extension.empty() || name.size() >= MAX_PATH || extension.size() > name.size())
        return std::nullopt;
    const std::wstring_view base = name.substr(0, name.size() - extension.size());
    std::wstring suggested(without_cache_number(base));
    suggested += extension;
    return suggested;
}

} // namespace quill
