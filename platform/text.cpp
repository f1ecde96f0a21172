#include "platform/text.h"

#include <windows.h>

#include <algorithm>
#include <limits>
#include <system_error>

namespace quill {
namespace {

constexpr wchar_t lower_ascii(wchar_t character) noexcept
{
    return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character - L'A' + L'a') : character;
}

[[noreturn]] void throw_conversion_error(DWORD error, const char* message)
{
    throw std::system_error(static_cast<int>(error), std::system_category(), message);
}

} // namespace

bool equal_ignoring_ascii_case(std::wstring_view left, std::wstring_view right) noexcept
{
    return std::ranges::equal(left, right, {}, lower_ascii, lower_ascii);
}

std::string to_utf8(std::wstring_view text)
{
    if (text.empty())
        return {};
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw_conversion_error(ERROR_INVALID_PARAMETER, "Conversion check has been failed");

    const wchar_t* const first = text.data();
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, first, length, nullptr, 0, nullptr, nullptr);
    if (size < 1)
        throw_conversion_error(GetLastError(), "Conversion check has been failed");

    std::string converted(static_cast<std::size_t>(size), '\0');
    if (WideCharToMultiByte(CP_UTF8, 0, first, length, converted.data(), size, nullptr, nullptr) == 0)
        throw_conversion_error(GetLastError(), "Conversion failed");
    return converted;
}

} // namespace quill
