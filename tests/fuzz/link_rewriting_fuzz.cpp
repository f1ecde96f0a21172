// Removing the handlers from the markup of a link. Input: the markup.
#include "sharepoint/decisions/links.h"
#include "tests/fuzz/reference_text.h"
#include "tests/fuzz/subjects.h"

#include <regex>

namespace quill::fuzz {
namespace {

constexpr auto nowhere = std::wstring::npos;

// The end of the handler that begins at `begin`; no value if none does.
std::size_t handler_end(const std::wstring& markup, std::size_t begin)
{
    const std::wstring start = L"onclick=\"";
    if (markup.compare(begin, start.size(), start) != 0)
        return nowhere;
    const std::size_t value = begin + start.size();
    const std::size_t quote = markup.find(L'"', value);
    if (quote == nowhere || markup.substr(value, quote - value).find(L"PdfFile.OpenDocuments") == nowhere)
        return nowhere;
    return quote + 1;
}

std::wstring without_handlers(const std::wstring& markup)
{
    std::wstring kept;
    for (std::size_t i = 0; i < markup.size();) {
        const std::size_t end = handler_end(markup, i);
        if (end == nowhere)
            kept += markup[i++];
        else
            i = end;
    }
    return kept;
}

std::string without_matches(const std::string& markup)
{
    static const std::regex pattern(R"(onclick="[^"]*PdfFile\.OpenDocuments[^"]*")");
    return std::regex_replace(markup, pattern, "");
}

} // namespace

void link_rewriting(bytes input)
{
    constexpr std::size_t short_enough_for_recursion = 400;
    const std::wstring markup = wide_text(input);
    const auto rewritten = without_open_handlers(exact_copy<wchar_t>(markup));
    const std::wstring expected = without_handlers(markup);
    FUZZ_CHECK(rewritten.value_or(markup) == expected);
    FUZZ_CHECK(rewritten.has_value() == (expected.size() != markup.size()));
    if (is_ascii(markup) && markup.size() <= short_enough_for_recursion) {
        const std::string matched = without_matches(std::string(markup.begin(), markup.end()));
        FUZZ_CHECK(std::wstring(matched.begin(), matched.end()) == expected);
    }
}

} // namespace quill::fuzz
