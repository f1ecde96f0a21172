// Escaping and unescaping the URL of a document.
#include "retrieval/url/url_text.h"
#include "tests/fuzz/reference_text.h"
#include "tests/fuzz/subjects.h"

#include <algorithm>
#include <cwctype>

namespace quill::fuzz {
namespace {

std::wstring escaped(std::wstring_view text)
{
    constexpr std::wstring_view digits = L"0123456789ABCDEF";
    std::wstring result;
    for (const char character : utf8_of(text)) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x80)
            result += {L'%', digits[byte / 16], digits[byte % 16]};
        else
            result += byte == ' ' ? L'+' : static_cast<wchar_t>(byte);
    }
    return result;
}

constexpr unsigned no_digit = 16;

// The value of a hexadecimal digit; no_digit for another code unit and at the end.
unsigned digit_at(std::wstring_view url, std::size_t position)
{
    constexpr std::wstring_view digits = L"0123456789abcdef";
    if (position >= url.size())
        return no_digit;
    return static_cast<unsigned>(std::min(digits.find(lower_ascii(url.substr(position, 1))), digits.size()));
}

std::string unescaped_bytes(std::wstring_view url)
{
    std::string result;
    const auto add = [&](unsigned value) { result += static_cast<char>(static_cast<unsigned char>(value)); };
    for (std::size_t i = 0; i < url.size(); ++i) {
        const unsigned first = digit_at(url, i + 1), second = digit_at(url, i + 2);
        if (url[i] == L'%' && first != no_digit && second != no_digit) {
            add(first * 16 + second);
            i += 2;
        } else if (url[i] == L'%' && first != no_digit && i + 2 == url.size()) {
            add(first);
            i += 1;
        } else {
            add(url[i] == L'+' ? unsigned{' '} : unsigned{url[i]} % 256);
        }
    }
    return result.substr(0, result.find('\0'));
}

// Other digits depend on the system.
bool has_other_digits(std::wstring_view text)
{
    return std::ranges::any_of(text, [](wchar_t unit) { return unit >= 0x80 && std::iswxdigit(unit); });
}

void check_escaping(const exact_copy<wchar_t>& text)
{
    const std::wstring url = EncodeUrl(text);
    FUZZ_CHECK(url == escaped(text));
    FUZZ_CHECK(is_ascii(url) && url.find(L' ') == std::wstring::npos);
    FUZZ_CHECK(EncodeUrl(url) == url);
    // Characters with a meaning in a URL are not restored.
    if (text.view().find_first_of(std::wstring_view(L"%+\0", 3)) == std::wstring_view::npos)
        FUZZ_CHECK(DecodeUrl(url.c_str()) == utf16_of(utf8_of(text)));
}

void check_unescaping(const exact_terminated& url)
{
    const std::wstring text = DecodeUrl(url.c_str());
    FUZZ_CHECK(text.size() <= url.view().size());
    FUZZ_CHECK(text.find(L'\0') == std::wstring::npos);
    if (has_other_digits(url.view()))
        return;
    const std::string bytes = unescaped_bytes(url.view());
    if (const auto expected = utf16_of(bytes))
        FUZZ_CHECK(text == *expected);
    else
        FUZZ_CHECK(text.find(L'\xFFFD') != std::wstring::npos);
}

} // namespace

void url_escapes(bytes input)
{
    const std::wstring text = wide_text(input);
    check_escaping(exact_copy<wchar_t>(text));
    check_unescaping(exact_terminated(text));
}

} // namespace quill::fuzz
