// The plain part of cache_folder.h: names, no folders.
#include "retrieval/download/cache_folder.h"
#include "retrieval/file/file_names.h"
#include "retrieval/url/url_text.h"

#include <windows.h>

#include <array>

namespace quill {

std::wstring cache_file_name(const wchar_t* url)
{
    std::array<wchar_t, MAX_PATH> name{};
    const std::size_t length = GetFileNameFromUrl(DecodeUrl(url).c_str(), name.data(), name.size());
    if (length >= name.size() || !is_creatable_name({name.data(), length}))
        return untitled_name;
    return {name.data(), length};
}

std::wstring with_separator(std::wstring path)
{
    if (!path.empty() && path.back() != L'\\' && path.back() != L'/')
        path += L'\\';
    return path;
}

} // namespace quill
