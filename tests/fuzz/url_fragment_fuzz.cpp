// Page and zoom in the fragment of a URL. Input: a key, and the URL.
#include "retrieval/url/url_fragment.h"
#include "tests/fuzz/reference_text.h"
#include "tests/fuzz/subjects.h"

#include <algorithm>
#include <cwctype>
#include <limits>

namespace quill::fuzz {
namespace {

constexpr auto nowhere = std::wstring_view::npos;

std::int32_t number_at_start(std::wstring_view text, bool negative)
{
    using limits = std::numeric_limits<std::int32_t>;
    std::string digits;
    for (const wchar_t unit : text) {
        if (unit < L'0' || unit > L'9')
            break;
        digits += static_cast<char>(unit);
    }
    digits.erase(0, digits.find_first_not_of('0'));
    const long long magnitude = digits.empty() ? 0 : digits.size() > 12 ? 999999999999 : std::stoll(digits);
    return static_cast<std::int32_t>(
        std::clamp<long long>(negative ? -magnitude : magnitude, limits::min(), limits::max()));
}

// The first part after the first "#" that contains the key.
std::optional<std::wstring> deciding_part(std::wstring_view url, std::wstring_view key)
{
    auto parts = split(url, L'#');
    for (std::size_t i = 1; i < parts.size(); ++i) {
        if (parts[i].find(key) != nowhere)
            return parts[i];
    }
    return std::nullopt;
}

void check_document(const exact_terminated& url, std::wstring_view key)
{
    std::int32_t value = -1;
    const bool done = parse_url_number(url.c_str(), key, value);
    const auto part = deciding_part(url.view(), key);
    const std::size_t equals = part ? part->find(L'=') : nowhere;
    FUZZ_CHECK(done == (!url.view().empty() && (!part || equals != nowhere)));
    FUZZ_CHECK(value == (equals == nowhere ? 0 : number_at_start(part->substr(equals + 1), false)));
}

void check_page(std::wstring_view url, std::wstring_view key)
{
    const auto part = deciding_part(url, key);
    const std::size_t equals = part ? part->find(L'=') : nowhere;
    std::int32_t expected = 0;
    if (equals != nowhere) {
        std::wstring text = part->substr(equals + 1);
        text.erase(text.begin(),
                   std::ranges::find_if(text, [](wchar_t unit) { return !std::iswspace(unit); }));
        const bool has_sign = !text.empty() && (text[0] == L'-' || text[0] == L'+');
        expected = number_at_start(text.substr(has_sign ? 1 : 0), has_sign && text[0] == L'-');
    }
    FUZZ_CHECK(page_url_number(url, key) == expected);
}

} // namespace

void url_fragment(bytes input)
{
    const auto lines = wide_lines_of(input, 2);
    if (lines.size() < 2)
        return;
    for (const std::wstring& key : {lines[0], std::wstring(L"page"), std::wstring(L"zoom")}) {
        if (key.empty())
            continue;
        const exact_copy<wchar_t> exact_key(key);
        check_document(exact_terminated(lines[1]), exact_key);
        check_page(exact_copy<wchar_t>(lines[1]), exact_key);
    }
}

} // namespace quill::fuzz
