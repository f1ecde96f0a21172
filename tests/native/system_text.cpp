// The system's text functions as plain code calls them: UTF-8 only, explicit lengths, no flags. Each invalid
// sequence becomes U+FFFD, divided as the system divides it; the corpora are replayed with the system's own
// functions too, which would show a difference.
#include <windows.h>

#include <cstdlib>
#include <cwctype>
#include <string>
#include <string_view>

namespace {

constexpr char32_t replacement = 0xFFFD;

DWORD last_error = ERROR_SUCCESS;

// Plain code passes no other arguments; a call that does would not be tested natively.
void expect(bool condition)
{
    if (!condition)
        std::abort();
}

class utf8_reader
{
public:
    explicit utf8_reader(std::string_view bytes) : bytes_(bytes) {}

    bool at_end() const { return bytes_.empty(); }

    char32_t next()
    {
        const unsigned lead = take();
        if (lead < 0x80)
            return lead;
        // The bounds of the second byte exclude overlong forms, surrogates and values beyond U+10FFFF.
        if (lead >= 0xC2 && lead <= 0xDF)
            return rest(lead & 0x1F, 1, 0x80, 0xBF);
        if (lead >= 0xE0 && lead <= 0xEF)
            return rest(lead & 0xF, 2, lead == 0xE0 ? 0xA0 : 0x80, lead == 0xED ? 0x9F : 0xBF);
        if (lead >= 0xF0 && lead <= 0xF4)
            return rest(lead & 0x7, 3, lead == 0xF0 ? 0x90 : 0x80, lead == 0xF4 ? 0x8F : 0xBF);
        return replacement;
    }

private:
    unsigned take()
    {
        const auto byte = static_cast<unsigned char>(bytes_.front());
        bytes_.remove_prefix(1);
        return byte;
    }

    char32_t rest(char32_t character, int count, unsigned lowest, unsigned highest)
    {
        for (; count > 0; --count) {
            if (at_end())
                return replacement;
            const auto byte = static_cast<unsigned char>(bytes_.front());
            if (byte < lowest || byte > highest)
                return replacement;
            character = character << 6 | (take() & 0x3F);
            lowest = 0x80;
            highest = 0xBF;
        }
        return character;
    }

    std::string_view bytes_;
};

std::wstring to_utf16(std::string_view bytes)
{
    std::wstring text;
    for (utf8_reader reader(bytes); !reader.at_end();) {
        const char32_t character = reader.next();
        if (character >= 0x10000) {
            text += static_cast<wchar_t>(0xD7C0 + (character >> 10));
            text += static_cast<wchar_t>(0xDC00 + (character & 0x3FF));
        } else {
            text += static_cast<wchar_t>(character);
        }
    }
    return text;
}

void append_utf8(std::string& bytes, char32_t character)
{
    const auto add = [&](char32_t byte) { bytes += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (character < 0x80) {
        add(character);
    } else if (character < 0x800) {
        add(0xC0 | character >> 6);
        add(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        add(0xE0 | character >> 12);
        add(0x80 | (character >> 6 & 0x3F));
        add(0x80 | (character & 0x3F));
    } else {
        add(0xF0 | character >> 18);
        add(0x80 | (character >> 12 & 0x3F));
        add(0x80 | (character >> 6 & 0x3F));
        add(0x80 | (character & 0x3F));
    }
}

std::string to_bytes(std::wstring_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        const bool is_high = unit >= 0xD800 && unit < 0xDC00;
        const bool is_low = unit >= 0xDC00 && unit < 0xE000;
        if (is_high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            append_utf8(bytes, 0x10000 + ((unit - 0xD800) << 10) + (text[i + 1] - 0xDC00u));
            ++i;
        } else {
            append_utf8(bytes, is_high || is_low ? replacement : unit);
        }
    }
    return bytes;
}

template <class Text, class Unit>
int give(const Text& text, Unit* buffer, int capacity)
{
    const int size = static_cast<int>(text.size());
    if (capacity == 0)
        return size;
    expect(capacity >= size);
    for (int i = 0; i < size; ++i)
        buffer[i] = text[static_cast<std::size_t>(i)];
    return size;
}

wchar_t upper_case(wchar_t unit)
{
    const bool has_upper_case =
        (unit >= L'a' && unit <= L'z') || (unit >= 0xE0 && unit <= 0xFE && unit != 0xF7);
    return has_upper_case ? static_cast<wchar_t>(unit - 0x20) : unit;
}

} // namespace

DWORD GetLastError()
{
    return last_error;
}

int MultiByteToWideChar(UINT code_page, DWORD flags, const char* bytes, int byte_count, wchar_t* text,
                        int capacity)
{
    expect(code_page == CP_UTF8 && flags == 0 && byte_count > 0);
    return give(to_utf16({bytes, static_cast<std::size_t>(byte_count)}), text, capacity);
}

int WideCharToMultiByte(UINT code_page, DWORD flags, const wchar_t* text, int units, char* bytes,
                        int capacity, const char* default_character, BOOL* used_default)
{
    expect(code_page == CP_UTF8 && flags == 0 && units > 0 && !default_character && !used_default);
    return give(to_bytes({text, static_cast<std::size_t>(units)}), bytes, capacity);
}

int CompareStringOrdinal(const wchar_t* left, int left_units, const wchar_t* right, int right_units,
                         BOOL ignore_case)
{
    expect(left_units >= 0 && right_units >= 0);
    for (int i = 0; i < left_units && i < right_units; ++i) {
        const wchar_t l = ignore_case ? upper_case(left[i]) : left[i];
        const wchar_t r = ignore_case ? upper_case(right[i]) : right[i];
        if (l != r)
            return l < r ? CSTR_LESS_THAN : CSTR_GREATER_THAN;
    }
    return left_units == right_units  ? CSTR_EQUAL
           : left_units < right_units ? CSTR_LESS_THAN
                                      : CSTR_GREATER_THAN;
}
