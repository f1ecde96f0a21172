// What the viewer's window tells other programs: a window of class viewer_window_class carries the property
// viewer_state_property with one of the values below, and its window text is the line of its status strip.
// A host on another thread or in another process can thus see when the document is on the screen.
#pragma once

namespace quill {

inline constexpr wchar_t viewer_window_class[] = L"QuillPDFViewer";
inline constexpr wchar_t viewer_state_property[] = L"QuillPDF.State";

enum class viewer_state : int
{
    empty = 0,   // nothing was opened yet; the property is absent
    working = 1, // the page that was asked for last is being prepared
    shown = 2,   // that page has been painted
    failed = 3,  // it cannot be shown; the window says why
};

} // namespace quill
