#include "platform/environment.h"

#include <windows.h>

namespace quill {
namespace {

// Loops because another thread may set a longer value between the size query and the read.
template <typename Char, typename Get>
std::optional<std::basic_string<Char>> read_variable(const Get& get)
{
    std::basic_string<Char> value;
    for (;;) {
        SetLastError(ERROR_SUCCESS);
        const DWORD length = get(value.data(), value.empty() ? 0 : static_cast<DWORD>(value.size() + 1));
        if (length == 0) {
            if (GetLastError() != ERROR_SUCCESS)
                return std::nullopt;
            return std::basic_string<Char>();
        }
        if (length <= value.size()) {
            value.resize(length);
            return value;
        }
        value.resize(length);
    }
}

} // namespace

std::optional<std::wstring> environment_variable(const wchar_t* name)
{
    return read_variable<wchar_t>(
        [name](wchar_t* buffer, DWORD size) { return GetEnvironmentVariableW(name, buffer, size); });
}

std::optional<std::string> environment_variable(const char* name)
{
    return read_variable<char>(
        [name](char* buffer, DWORD size) { return GetEnvironmentVariableA(name, buffer, size); });
}

} // namespace quill
