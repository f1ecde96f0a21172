// Private messages of the document's window: the protocol between the window, the download worker and the
// viewer. Every handler returns 0. The viewer knows the numbers, so they never change.
#pragma once

#include <windows.h>

#include <cstdint>

namespace quill {

// Sent by the viewer: open a link. wParam: non-zero for a new window; lParam: wide string.
inline constexpr UINT WM_USER_OPENLINK = 0x8702;
// Posted by the worker, sent by the window to itself: open the file of the path buffer in the viewer. No
// parameters.
inline constexpr UINT WM_USER_LOADFILE = 0x8703;
// Sent by the worker: lParam points to a progress_record.
inline constexpr UINT WM_USER_PROGRESS = 0x8704;
// Sent by the worker: copy the URL to fetch. wParam: capacity in UTF-16 code units; lParam: buffer.
inline constexpr UINT WM_USER_GETURL = 0x8705;
// Sent by the worker: lParam points to a size_t that receives the URL's length in UTF-16 code units.
inline constexpr UINT WM_USER_GETURLLENGTH = 0x8706;
// Sent by the worker: lParam is the path of the fetched file, a wide string.
inline constexpr UINT WM_USER_SETCACHEFILE = 0x8707;
// Sent by the viewer: write a line to the log. wParam: flag; lParam: wide string.
inline constexpr UINT WM_USER_LOGFILE = 0x8708;
// Sent by the viewer: lParam points to an HWND that receives the browser's window.
inline constexpr UINT WM_USER_GETBROWSERWINDOW = 0x8709;
// Sent by the viewer: lParam points to a 32-bit value that receives the instance number.
inline constexpr UINT WM_USER_GETINSTANCE = 0x8710;
// Sent by the viewer: save a copy through the browser. No parameters.
inline constexpr UINT WM_USER_SAVEAS = 0x8711;
// Posted by the document from another thread: release the transferred reference. Ignored if there is none.
inline constexpr UINT WM_USER_RELEASE = 0x8712;
// Reserved by the protocol; ignored.
inline constexpr UINT reserved_window_message = 0x8701;

// While it closes, the UI thread waits for the worker without pumping messages. So sends from other threads
// give up after this time, or at once if the window hangs.
inline constexpr UINT window_message_timeout_ms = 2000;
inline constexpr UINT window_message_flags = SMTO_ABORTIFHUNG;

// What WM_USER_PROGRESS points to. status_text may be null and is valid during the call only.
struct progress_record
{
    std::uint32_t progress;
    std::uint32_t progress_max;
    std::uint32_t status_code; // BINDSTATUS; only BINDSTATUS_DOWNLOADINGDATA is shown
    const wchar_t* status_text;
};

} // namespace quill
