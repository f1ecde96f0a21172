#include "retrieval/download/cache_name.h"

#include "retrieval/file/file_names.h"
#include "retrieval/url/url_text.h"

#include <windows.h>

#include <array>

namespace quill {

std::wstring CacheFileName(const wchar_t* url)
{
    std::array<wchar_t, MAX_PATH> name{};
    const std::size_t length = GetFileNameFromUrl(DecodeUrl(url).c_str(), name.data(), name.size());
    if (length >= name.size() || !is_creatable_name({name.data(), length}))
        return untitled_name;
    return {name.data(), length};
}

std::wstring WithSeparator(std::wstring temp_path)
{
    if (!temp_path.empty() && temp_path.back() != L'\\' && temp_path.back() != L'/')
        temp_path += L'\\';
    return temp_path;
}

} // namespace quill
