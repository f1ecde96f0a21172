// Decides from names and attribute texts whether an element of a page embeds a PDF.
#pragma once

#include <string_view>

namespace quill {

enum class element_kind
{
    other,
    embed,
    object
};

// tag: a tag name, in any case.
element_kind kind_of_tag(std::wstring_view tag) noexcept;

// The attribute that holds the document's reference; nullptr for other elements.
const wchar_t* reference_attribute(element_kind kind) noexcept;

// Whether a TYPE attribute names PDF, in any case.
bool is_pdf_type(std::wstring_view type) noexcept;

// Whether the element's markup states the type, for elements whose attributes do not return it. Finds the
// three usual notations, in lower case only.
bool source_states_pdf_type(std::wstring_view outer_html) noexcept;

// Whether a reference is a name that ends in ".pdf", in any case.
bool names_pdf(std::wstring_view reference) noexcept;

} // namespace quill
