#include "retrieval/url/url_fragment.h"

#include <cwctype>
#include <limits>
#include <optional>

namespace quill {
namespace {

// The first piece of the fragment that contains the key.
std::optional<std::wstring_view> find_piece(std::wstring_view url, std::wstring_view key) noexcept
{
    const std::size_t mark = url.find(L'#');
    if (mark == std::wstring_view::npos)
        return std::nullopt;
    url.remove_prefix(mark + 1);
    for (;;) {
        const std::size_t end = url.find(L'#');
        const std::wstring_view piece = url.substr(0, end);
        if (piece.find(key) != std::wstring_view::npos)
            return piece;
        if (end == std::wstring_view::npos)
            return std::nullopt;
        url.remove_prefix(end + 1);
    }
}

// What follows the piece's first "=".
std::optional<std::wstring_view> value_text(std::wstring_view piece) noexcept
{
    const std::size_t mark = piece.find(L'=');
    if (mark == std::wstring_view::npos)
        return std::nullopt;
    return piece.substr(mark + 1);
}

std::int32_t leading_number(std::wstring_view text, bool negative) noexcept
{
    using limits = std::numeric_limits<std::int32_t>;
    const std::int64_t limit = negative ? -std::int64_t{limits::min()} : std::int64_t{limits::max()};
    std::int64_t magnitude = 0;
    for (const wchar_t character : text) {
        if (character < L'0' || character > L'9')
            break;
        magnitude = magnitude * 10 + (character - L'0');
        if (magnitude > limit) {
            magnitude = limit;
            break;
        }
    }
    return static_cast<std::int32_t>(negative ? -magnitude : magnitude);
}

} // namespace

bool parse_url_number(const wchar_t* url, std::wstring_view key, std::int32_t& value) noexcept
{
    value = 0;
    if (!url || !*url)
        return false;
    const auto piece = find_piece(url, key);
    if (!piece)
        return true;
    const auto text = value_text(*piece);
    if (!text)
        return false;
    value = leading_number(*text, false);
    return true;
}

std::int32_t page_url_number(std::wstring_view url, std::wstring_view key) noexcept
{
    const auto piece = find_piece(url, key);
    auto text = piece ? value_text(*piece) : std::nullopt;
    if (!text)
        return 0;
    while (!text->empty() && std::iswspace(static_cast<wint_t>(text->front())))
        text->remove_prefix(1);
    const bool negative = text->starts_with(L'-');
    if (negative || text->starts_with(L'+'))
        text->remove_prefix(1);
    return leading_number(*text, negative);
}

} // namespace quill
