#include "sharepoint/case_insensitive.h"

#include <algorithm>
#include <locale>
#include <string>

namespace quill {
namespace {

using character_facet = std::ctype<wchar_t>;

std::wstring upper_case(const character_facet& facet, std::wstring_view text)
{
    std::wstring upper(text);
    for (wchar_t& character : upper)
        character = facet.toupper(character);
    return upper;
}

} // namespace

bool contains_ignoring_case(std::wstring_view text, std::wstring_view part)
{
    const std::locale locale;
    const auto& facet = std::use_facet<character_facet>(locale);
    return upper_case(facet, text).find(upper_case(facet, part)) != std::wstring::npos;
}

bool begins_with_ignoring_case(std::wstring_view text, std::wstring_view beginning)
{
    return equal_ignoring_case(text.substr(0, beginning.size()), beginning);
}

bool ends_with_ignoring_case(std::wstring_view text, std::wstring_view ending)
{
    return text.size() >= ending.size() &&
           equal_ignoring_case(text.substr(text.size() - ending.size()), ending);
}

bool equal_ignoring_case(std::wstring_view left, std::wstring_view right)
{
    const std::locale locale;
    const auto& facet = std::use_facet<character_facet>(locale);
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [&](wchar_t a, wchar_t b) { return facet.toupper(a) == facet.toupper(b); });
}

} // namespace quill
