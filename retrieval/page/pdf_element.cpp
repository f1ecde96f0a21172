#include "retrieval/page/pdf_element.h"

#include "platform/text.h"

namespace quill {
namespace {

constexpr std::wstring_view pdf_type = L"application/pdf";
constexpr std::wstring_view pdf_extension = L".pdf";

} // namespace

element_kind kind_of_tag(std::wstring_view tag) noexcept
{
    if (equal_ignoring_ascii_case(tag, L"embed"))
        return element_kind::embed;
    if (equal_ignoring_ascii_case(tag, L"object"))
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
    return equal_ignoring_ascii_case(type, pdf_type);
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
           equal_ignoring_ascii_case(reference.substr(reference.size() - pdf_extension.size()),
                                     pdf_extension);
}

} // namespace quill
