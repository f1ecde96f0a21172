#include "sharepoint/case_insensitive.h"

#include <algorithm>
#include <locale>
#include <optional>

namespace quill {
namespace {

using character_facet = std::ctype<wchar_t>;

// Pages and addresses are ASCII but for a name here and there, and every facet upper-cases ASCII alike: the
// facet, which takes longer to get than to ask, is got for the first character beyond.
class upper_case
{
public:
    wchar_t of(wchar_t character)
    {
        if (character < 0x80) [[likely]]
            return character >= L'a' && character <= L'z' ? static_cast<wchar_t>(character - (L'a' - L'A'))
                                                          : character;
        return facet().toupper(character);
    }

    // Whether text begins with beginning, which is not the longer of the two.
    bool begins_with(std::wstring_view text, std::wstring_view beginning)
    {
        return std::equal(beginning.begin(), beginning.end(), text.begin(),
                          [this](wchar_t a, wchar_t b) { return of(a) == of(b); });
    }

private:
    const character_facet& facet()
    {
        if (!facet_)
            facet_ = &std::use_facet<character_facet>(locale_.emplace());
        return *facet_;
    }

    std::optional<std::locale> locale_;
    const character_facet* facet_ = nullptr;
};

} // namespace

bool contains_ignoring_case(std::wstring_view text, std::wstring_view part)
{
    if (part.empty())
        return true;
    upper_case upper;
    const wchar_t first = upper.of(part.front());
    for (; text.size() >= part.size(); text.remove_prefix(1))
        if (upper.of(text.front()) == first && upper.begins_with(text, part))
            return true;
    return false;
}

bool begins_with_ignoring_case(std::wstring_view text, std::wstring_view beginning)
{
    return text.size() >= beginning.size() && upper_case().begins_with(text, beginning);
}

bool ends_with_ignoring_case(std::wstring_view text, std::wstring_view ending)
{
    return text.size() >= ending.size() &&
           upper_case().begins_with(text.substr(text.size() - ending.size()), ending);
}

bool equal_ignoring_case(std::wstring_view left, std::wstring_view right)
{
    return left.size() == right.size() && upper_case().begins_with(left, right);
}

} // namespace quill
