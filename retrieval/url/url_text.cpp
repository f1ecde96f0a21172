#include "retrieval/url/url_text.h"

#include "platform/text.h"

#include <windows.h>

#include <algorithm>
#include <climits>
#include <cwchar>
#include <cwctype>
#include <system_error>

namespace quill {
namespace {

std::string to_utf8_or_empty(std::wstring_view text)
{
    try {
        return to_utf8(text);
    } catch (const std::system_error&) {
        return {};
    }
}

// An escaped zero truncates the URL.
std::wstring from_utf8_or_empty(std::string_view bytes)
{
    bytes = bytes.substr(0, bytes.find('\0'));
    if (bytes.empty() || bytes.size() > INT_MAX)
        return {};
    const int size =
        MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
    std::wstring text(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()), text.data(), size);
    return text;
}

// The hexadecimal digits after a "%": two, or fewer at the end of the URL. Empty if one of these characters
// is no digit.
std::wstring_view escape_digits(std::wstring_view rest)
{
    const auto digits = rest.substr(0, 2);
    const bool all_hexadecimal = std::all_of(
        digits.begin(), digits.end(), [](wchar_t character) { return std::iswxdigit(character) != 0; });
    return all_hexadecimal ? digits : std::wstring_view{};
}

char low_byte(long value)
{
    return static_cast<char>(static_cast<unsigned char>(value & 0xFF));
}

bool ends_with_pdf(std::wstring_view text)
{
    constexpr std::wstring_view extension = L"pdf";
    return text.size() >= extension.size() &&
           equal_ignoring_ascii_case(text.substr(text.size() - extension.size()), extension);
}

// Writes nothing if the name and its terminator do not fit.
std::size_t write_name(std::wstring_view name, wchar_t* buffer, std::size_t capacity)
{
    if (name.size() < capacity) {
        name.copy(buffer, name.size());
        buffer[name.size()] = L'\0';
    }
    return name.size();
}

// The first "&"-separated piece of a query that ends in "pdf"; empty if there is none.
std::wstring_view pdf_piece(std::wstring_view query)
{
    for (;;) {
        const std::size_t end = query.find(L'&');
        const auto piece = query.substr(0, end);
        if (ends_with_pdf(piece))
            return piece;
        if (end == std::wstring_view::npos)
            return {};
        query.remove_prefix(end + 1);
    }
}

// The part of a parameter's value that can be a file name: what follows the characters that are not allowed
// in one. Such a character is kept if it is the first of what remains.
std::wstring_view name_of_value(std::wstring_view value)
{
    std::size_t start = 0;
    for (const wchar_t separator : std::wstring_view(L"\\/:*?\"<>|")) {
        const std::size_t position = value.rfind(separator);
        if (position != std::wstring_view::npos && position > start)
            start = position + 1;
    }
    return value.substr(start);
}

} // namespace

std::wstring EncodeUrl(std::wstring_view text)
{
    constexpr wchar_t digits[] = L"0123456789ABCDEF";
    const std::string bytes = to_utf8_or_empty(text);
    const auto is_escaped = [](char character) { return static_cast<unsigned char>(character) >= 0x80; };
    const auto escapes = std::count_if(bytes.begin(), bytes.end(), is_escaped);
    std::wstring escaped;
    escaped.reserve(bytes.size() + 2 * static_cast<std::size_t>(escapes));
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        if (is_escaped(character)) {
            escaped += L'%';
            escaped += digits[byte >> 4];
            escaped += digits[byte & 0xF];
        } else {
            escaped += byte == ' ' ? L'+' : static_cast<wchar_t>(byte);
        }
    }
    return escaped;
}

std::wstring DecodeUrl(const wchar_t* url)
{
    if (!url)
        return {};
    const std::wstring_view text(url);
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'+') {
            bytes += ' ';
            continue;
        }
        const auto digits = text[i] == L'%' ? escape_digits(text.substr(i + 1)) : std::wstring_view{};
        if (digits.empty()) {
            bytes += low_byte(text[i]);
            continue;
        }
        bytes += low_byte(std::wcstol(std::wstring(digits).c_str(), nullptr, 16));
        i += digits.size();
    }
    return from_utf8_or_empty(bytes);
}

std::size_t GetFileNameFromUrl(const wchar_t* url, wchar_t* buffer, std::size_t capacity)
{
    if (!url || !buffer)
        return 0;
    const std::wstring_view text(url);
    const std::size_t slash = text.rfind(L'/');
    if (slash == std::wstring_view::npos)
        return 0;

    const std::size_t start = slash + 1;
    const std::size_t question = text.find(L'?');
    const bool has_query = question != std::wstring_view::npos;
    // A slash inside the query makes the length negative: as an unsigned number, a name that never fits.
    if (has_query && question < start)
        return question - start;

    const std::size_t end = has_query ? question : text.find(L'#', start);
    const auto name = text.substr(start, end == std::wstring_view::npos ? end : end - start);
    const std::size_t length = write_name(name, buffer, capacity);
    if (length >= capacity || ends_with_pdf(name) || !has_query)
        return length;

    const auto piece = pdf_piece(text.substr(question));
    const std::size_t equals = piece.find(L'=');
    if (equals == std::wstring_view::npos)
        return 0;
    return write_name(name_of_value(piece.substr(equals + 1)), buffer, capacity);
}

} // namespace quill
