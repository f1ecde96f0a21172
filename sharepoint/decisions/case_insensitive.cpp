#include "sharepoint/decisions/case_insensitive.h"

#include <algorithm>
#include <cwctype>

namespace quill {
namespace {

// Calls what the standard locale's ctype facet calls: a std::locale would first construct every facet of the
// C++ library. The branch is for pages and URLs, which are mostly ASCII.
wchar_t to_upper(wchar_t character)
{
    if (character < 0x80) [[likely]]
        return character >= L'a' && character <= L'z' ? static_cast<wchar_t>(character - (L'a' - L'A'))
                                                      : character;
    return static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(character)));
}

// beginning must not be longer than text.
bool begins_with(std::wstring_view text, std::wstring_view beginning)
{
    return std::equal(beginning.begin(), beginning.end(), text.begin(),
                      [](wchar_t a, wchar_t b) { return to_upper(a) == to_upper(b); });
}

} // namespace

bool contains_ignoring_case(std::wstring_view text, std::wstring_view part)
{
    if (part.empty())
        return true;
    const wchar_t first = to_upper(part.front());
    for (; text.size() >= part.size(); text.remove_prefix(1))
        if (to_upper(text.front()) == first && begins_with(text, part))
            return true;
    return false;
}

bool begins_with_ignoring_case(std::wstring_view text, std::wstring_view beginning)
{
    return text.size() >= beginning.size() && begins_with(text, beginning);
}

bool ends_with_ignoring_case(std::wstring_view text, std::wstring_view ending)
{
    return text.size() >= ending.size() && begins_with(text.substr(text.size() - ending.size()), ending);
}

bool equal_ignoring_case(std::wstring_view left, std::wstring_view right)
{
    return left.size() == right.size() && begins_with(left, right);
}

} // namespace quill
