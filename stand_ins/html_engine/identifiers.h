// Identifiers of the page object and of the HTML engine's type library.
#pragma once

#include <windows.h>

#include <oaidl.h>

namespace quill {

inline constexpr CLSID CLSID_html_page = {
    0x5C2E8F71, 0x0B4D, 0x4A36, {0x9D, 0xE8, 0x63, 0xF1, 0x27, 0xA0, 0xC4, 0x5E}};

inline constexpr GUID LIBID_html_engine = {
    0x3050F1C5, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}};

// HTMLDocumentEvents2
inline constexpr IID IID_document_events = {
    0x3050F613, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}};
inline constexpr DISPID event_click = -600;
inline constexpr DISPID event_ready_state_change = -609;

// The window class of a page, for other programs.
inline constexpr wchar_t page_window_class[] = L"QuillPage";

} // namespace quill
