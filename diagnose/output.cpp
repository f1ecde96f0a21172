#include "diagnose/output.h"

#include "platform/text.h"

#include <algorithm>

namespace quill::diagnose {

output::output(DWORD stream) : stream_(GetStdHandle(stream))
{
    DWORD mode = 0;
    is_console_ = GetConsoleMode(stream_, &mode) != FALSE;
}

void output::write(std::wstring_view text)
{
    std::wstring lines;
    for (const wchar_t c : text)
        lines += c == L'\n' ? std::wstring(L"\r\n") : std::wstring(1, c);
    if (!is_console_) {
        write_bytes(to_utf8(lines));
        return;
    }
    // Consoles of older systems refuse long texts.
    constexpr std::size_t most = 8000;
    for (std::size_t position = 0; position < lines.size(); position += most) {
        const auto count = static_cast<DWORD>(std::min(most, lines.size() - position));
        DWORD written = 0;
        is_complete_ =
            WriteConsoleW(stream_, lines.data() + position, count, &written, nullptr) && is_complete_;
    }
}

void output::write_bytes(const std::string& bytes)
{
    std::size_t position = 0;
    while (position < bytes.size()) {
        DWORD written = 0;
        if (!WriteFile(stream_, bytes.data() + position, static_cast<DWORD>(bytes.size() - position),
                       &written, nullptr) ||
            written == 0) {
            is_complete_ = false;
            return;
        }
        position += written;
    }
}

} // namespace quill::diagnose
