#include "acceptance/windows_text.h"

#include "platform/text.h"
#include "platform/unique_handle.h"

#include <cstdio>

namespace quill::acceptance {

std::wstring to_wide(std::string_view text)
{
    std::wstring wide(text.size(), L'\0');
    const int length = text.empty()
                           ? 0
                           : MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                                 wide.data(), static_cast<int>(wide.size()));
    wide.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return wide;
}

std::string error_text(DWORD error)
{
    wchar_t* message = nullptr;
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                       FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
                   nullptr, error, 0, reinterpret_cast<wchar_t*>(&message), 0, nullptr);
    const unique_local_memory<wchar_t*> owner(message);
    std::string text = "error " + std::to_string(error);
    if (message != nullptr)
        text += ": " + to_utf8(message);
    while (text.ends_with(' '))
        text.pop_back();
    return text;
}

std::string hex_text(unsigned long value)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08lX", value);
    return text;
}

} // namespace quill::acceptance
