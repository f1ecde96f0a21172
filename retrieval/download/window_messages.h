// Private messages of the active document's window: the protocol between the window, the download
// worker, the download's progress callback and the inner viewer control. Every handler returns 0.
#pragma once

#include <windows.h>

#include <cstdint>

namespace quill {

// Sent by the inner viewer: open a link. wParam: non-zero for a new window; lParam: wide string.
inline constexpr UINT WM_USER_OPENLINK = 0x8702;
// Load the path buffer into the inner viewer. No parameters.
inline constexpr UINT WM_USER_LOADFILE = 0x8703;
// Sent by the download: lParam points to a progress_record.
inline constexpr UINT WM_USER_PROGRESS = 0x8704;
// Sent by the worker: copy the URL to fetch. wParam: capacity in characters; lParam: buffer.
inline constexpr UINT WM_USER_GETURL = 0x8705;
// Sent by the worker: lParam points to a size_t that receives the URL's length in characters.
inline constexpr UINT WM_USER_GETURLLENGTH = 0x8706;
// Sent by the worker: lParam is the path of the fetched file, a wide string.
inline constexpr UINT WM_USER_SETCACHEFILE = 0x8707;
// Sent by the inner viewer: write a line to the log. wParam: flag; lParam: wide string.
inline constexpr UINT WM_USER_LOGFILE = 0x8708;
// Sent by the inner viewer: lParam points to an HWND that receives the browser's window.
inline constexpr UINT WM_USER_GETBROWSERWINDOW = 0x8709;
// Sent by the inner viewer: lParam points to a 32-bit value that receives the instance number.
inline constexpr UINT WM_USER_GETINSTANCE = 0x8710;
// Sent by the inner viewer: save a copy through the browser. No parameters.
inline constexpr UINT WM_USER_SAVEAS = 0x8711;
// Posted by the document to itself from another thread: release the reference that was transferred. Without
// one, as from any other sender, nothing is done.
inline constexpr UINT WM_USER_RELEASE = 0x8712;
// Reserved by the protocol: answered with 0, nothing is done.
inline constexpr UINT reserved_window_message = 0x8701;

// The window's thread waits for the worker without pumping messages while it closes, so a sender on
// another thread gives up after this time, and at once when the window hangs.
inline constexpr UINT window_message_timeout_ms = 2000;
inline constexpr UINT window_message_flags = SMTO_ABORTIFHUNG;

// What WM_USER_PROGRESS points to. The status text may be null and is valid during the call only.
struct progress_record
{
    std::uint32_t progress;
    std::uint32_t progress_max;
    std::uint32_t status_code; // BINDSTATUS; only BINDSTATUS_DOWNLOADINGDATA is shown
    const wchar_t* status_text;
};

} // namespace quill
