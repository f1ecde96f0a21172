#include "platform/impl/windows/module_traits.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>

namespace quill {
namespace {

constexpr int maximum_attempts = 5;

} // namespace

std::wstring module_path(HMODULE module)
{
    std::wstring path(MAX_PATH, L'\0');
    DWORD length = 0;
    for (int attempt = 1;; ++attempt) {
        length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        const DWORD error = GetLastError();
        if (length == 0)
            throw std::system_error(static_cast<int>(error), std::system_category(),
                                    "module_traits(78): length > 0");
        const bool cut = length == path.size() && error == ERROR_INSUFFICIENT_BUFFER;
        if (!cut || attempt == maximum_attempts)
            break;
        path.resize(path.size() * 2);
    }
    // Some Windows versions count the terminator of a truncated path.
    path.resize(std::min<std::size_t>(length, path.find(L'\0')));
    return path;
}

std::wstring_view file_stem(std::wstring_view path)
{
    const std::size_t separator = path.find_last_of(L"\\/");
    if (separator != std::wstring_view::npos)
        path.remove_prefix(separator + 1);
    const std::size_t dot = path.find(L'.');
    return dot == std::wstring_view::npos ? std::wstring_view() : path.substr(0, dot);
}

void copy_stem(std::wstring_view stem, wchar_t (&buffer)[MAX_PATH])
{
    if (stem.size() >= MAX_PATH)
        throw std::runtime_error("The module name is too long");
    *std::copy(stem.begin(), stem.end(), buffer) = L'\0';
}

void module_stem(HMODULE module, wchar_t (&stem)[MAX_PATH])
{
    copy_stem(file_stem(module_path(module)), stem);
}

} // namespace quill
