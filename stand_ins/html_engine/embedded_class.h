// Determines the class that displays an element of a page.
#pragma once

#include "stand_ins/html_engine/dom/dom_node.h"

#include <windows.h>

#include <optional>
#include <string>

namespace quill {

// The class registered for the content of an EMBED or OBJECT element: by its type attribute, else by the MIME
// type registered for its URL's extension. nullopt for other elements, types without a class, and HTML pages.
std::optional<CLSID> embedded_class(const dom_node& element);

// The extension of a URL with its dot, without query and fragment; empty if there is none.
std::wstring extension_of(const std::wstring& url);

} // namespace quill
