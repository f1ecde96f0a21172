#include "tests/fuzz/reference_text.h"

#include <algorithm>

namespace quill::fuzz {
namespace {

bool is_between(char32_t value, char32_t lowest, char32_t highest)
{
    return value >= lowest && value <= highest;
}

// Characters below 0x80 take one byte, below 0x800 two, below 0x10000 three.
int length_of(char32_t character)
{
    return character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
}

} // namespace

bool is_ascii(std::wstring_view text)
{
    return std::ranges::all_of(text, [](wchar_t unit) { return unit < 0x80; });
}

std::wstring lower_ascii(std::wstring_view text)
{
    std::wstring lower(text);
    for (wchar_t& unit : lower) {
        if (unit >= L'A' && unit <= L'Z')
            unit = static_cast<wchar_t>(unit + 0x20);
    }
    return lower;
}

std::string utf8_of(std::wstring_view text)
{
    std::string encoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t character = text[i];
        if (is_between(character, 0xD800, 0xDBFF) && i + 1 < text.size() &&
            is_between(text[i + 1], 0xDC00, 0xDFFF))
            character = 0x10000 + (character - 0xD800) * 0x400 + (text[++i] - char32_t{0xDC00});
        else if (is_between(character, 0xD800, 0xDFFF))
            character = 0xFFFD;
        const int length = length_of(character);
        constexpr unsigned leads[] = {0, 0x00, 0xC0, 0xE0, 0xF0};
        for (int byte = 0; byte < length; ++byte) {
            const char32_t bits = character >> 6 * (length - 1 - byte);
            const char32_t value = byte == 0 ? leads[length] | bits : 0x80 | (bits & 0x3F);
            encoded += static_cast<char>(static_cast<unsigned char>(value));
        }
    }
    return encoded;
}

std::optional<std::wstring> utf16_of(std::string_view bytes)
{
    std::wstring text;
    std::size_t i = 0;
    while (i < bytes.size()) {
        const auto lead = static_cast<unsigned char>(bytes[i]);
        const int length = lead < 0x80   ? 1
                           : lead < 0xC0 ? 0
                           : lead < 0xE0 ? 2
                           : lead < 0xF0 ? 3
                           : lead < 0xF8 ? 4
                                         : 0;
        if (length == 0 || bytes.size() - i < static_cast<std::size_t>(length))
            return std::nullopt;
        char32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
        for (int k = 1; k < length; ++k) {
            const auto byte = static_cast<unsigned char>(bytes[i + static_cast<std::size_t>(k)]);
            if (!is_between(byte, 0x80, 0xBF))
                return std::nullopt;
            character = character * 0x40 + (byte & 0x3F);
        }
        if (length_of(character) != length || is_between(character, 0xD800, 0xDFFF) || character > 0x10FFFF)
            return std::nullopt;
        if (character >= 0x10000) {
            text += static_cast<wchar_t>(0xD800 + (character - 0x10000) / 0x400);
            text += static_cast<wchar_t>(0xDC00 + (character - 0x10000) % 0x400);
        } else {
            text += static_cast<wchar_t>(character);
        }
        i += static_cast<std::size_t>(length);
    }
    return text;
}

std::vector<std::wstring> split(std::wstring_view text, wchar_t separator)
{
    std::vector<std::wstring> parts(1);
    for (const wchar_t unit : text) {
        if (unit == separator)
            parts.emplace_back();
        else
            parts.back() += unit;
    }
    return parts;
}

std::wstring device_start(std::wstring_view name)
{
    std::wstring start = lower_ascii(name.substr(0, name.find_first_of(L".:")));
    while (!start.empty() && start.back() == L' ')
        start.pop_back();
    for (const wchar_t* device : {L"con", L"prn", L"aux", L"nul", L"clock$", L"conin$", L"conout$"}) {
        if (start == device)
            return start;
    }
    for (const wchar_t* port : {L"com", L"lpt"}) {
        for (const wchar_t number : std::wstring_view(L"0123456789\u00b2\u00b3\u00b9")) {
            if (start == port + std::wstring(1, number))
                return start;
        }
    }
    return {};
}

} // namespace quill::fuzz
