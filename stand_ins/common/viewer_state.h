// The viewer's state as other programs can read it: the window of class viewer_window_class has the property
// viewer_state_property with one of the values below, and its window text is the text of its status strip. A
// host on another thread or in another process can so detect when the document has been painted.
#pragma once

namespace quill {

inline constexpr wchar_t viewer_window_class[] = L"QuillPDFViewer";
inline constexpr wchar_t viewer_state_property[] = L"QuillPDF.State";

enum class viewer_state : int
{
    empty = 0,   // no document is open; the property is absent
    working = 1, // the requested page is being rendered
    shown = 2,   // the requested page has been painted
    failed = 3,  // it cannot be shown; the window shows the reason
};

} // namespace quill
