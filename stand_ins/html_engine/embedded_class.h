// Which class shows an element of a page.
#pragma once

#include "stand_ins/html_engine/dom/dom_node.h"

#include <windows.h>

#include <optional>
#include <string>

namespace quill {

// The class registered for the content of an EMBED or OBJECT element: by its stated type, else by the type
// that the extension of what it refers to has, or that has that extension, in the registry. Nothing for every other element, and for
// types without a class. A page does not hold pages.
std::optional<CLSID> embedded_class(const dom_node& element);

// The extension of an address with its dot, query and fragment left out; empty without one.
std::wstring extension_of(const std::wstring& address);

} // namespace quill
