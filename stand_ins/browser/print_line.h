// Prints the browser's own messages to standard output or standard error, in UTF-8.
#pragma once

#include <windows.h>

#include <cstdio>
#include <string>
#include <string_view>

namespace quill {

inline void print_line(FILE* stream, std::wstring_view text)
{
    const int length = static_cast<int>(text.size());
    std::string line(text.size() * 3, '\0');
    const int used = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, line.data(),
                                         static_cast<int>(line.size()), nullptr, nullptr);
    std::fprintf(stream, "quill_browser: %.*s\n", used, line.c_str());
    std::fflush(stream);
}

// "0x80004005"
inline std::wstring hexadecimal(long value)
{
    wchar_t text[16] = {};
    std::swprintf(text, std::size(text), L"0x%08lX", static_cast<unsigned long>(value));
    return text;
}

} // namespace quill
