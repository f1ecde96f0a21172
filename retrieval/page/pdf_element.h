// What makes an element of a page stand for an embedded PDF: decisions on names and texts alone.
#pragma once

#include <string_view>

namespace quill {

enum class element_kind
{
    other,
    embed,
    object
};

// The kind that a tag name in any case stands for.
element_kind kind_of_tag(std::wstring_view tag) noexcept;

// The attribute that holds the document's reference; null for kinds without one.
const wchar_t* reference_attribute(element_kind kind) noexcept;

// Whether a TYPE attribute, in any case, names PDF.
bool is_pdf_type(std::wstring_view type) noexcept;

// Whether an element's source text states the type where its attributes do not show it. Only the three
// usual spellings count, in lower case.
bool source_states_pdf_type(std::wstring_view outer_html) noexcept;

// Whether a reference is a name that ends in ".pdf" in any case.
bool names_pdf(std::wstring_view reference) noexcept;

} // namespace quill
