#include "retrieval/page/pdf_element.h"

#include <algorithm>

namespace quill {
namespace {

constexpr std::wstring_view pdf_type = L"application/pdf";
constexpr std::wstring_view pdf_extension = L".pdf";

// Only ASCII letters have two cases here: the names compared with are ASCII.
constexpr wchar_t to_lower(wchar_t unit) noexcept
{
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit - L'A' + L'a') : unit;
}

// lower: in lower case.
bool equals_ignoring_case(std::wstring_view text, std::wstring_view lower) noexcept
{
    return std::ranges::equal(text, lower, {}, to_lower);
}

} // namespace

element_kind kind_of_tag(std::wstring_view tag) noexcept
{
    if (equals_ignoring_case(tag, L"embed"))
        return element_kind::embed;
    if (equals_ignoring_case(tag, L"object"))
        return element_kind::object;
    return element_kind::other;
}

const wchar_t* reference_attribute(element_kind kind) noexcept
{
    switch (kind) {
    case element_kind::embed:
        return L"SRC";
    case element_kind::object:
        return L"DATA";
    case element_kind::other:
        break;
    }
    return nullptr;
}

bool is_pdf_type(std::wstring_view type) noexcept
{
    return equals_ignoring_case(type, pdf_type);
}

bool source_states_pdf_type(std::wstring_view outer_html) noexcept
{
    for (const std::wstring_view spelling :
         {L"type=application/pdf", L"type=\"application/pdf\"", L"type='application/pdf'"}) {
        if (outer_html.find(spelling) != std::wstring_view::npos)
            return true;
    }
    return false;
}

bool names_pdf(std::wstring_view reference) noexcept
{
    return reference.size() > pdf_extension.size() &&
           equals_ignoring_case(reference.substr(reference.size() - pdf_extension.size()), pdf_extension);
}

} // namespace quill
