// The window's life after creation: size, input, loading and destruction.
#include "active_doc/active_doc_ctrl.h"
#include "active_doc/browser_instances.h"
#include "active_doc/no_throw.h"
#include "logging/log_stream.h"
#include "retrieval/download/interruptible_callback.h"

#include <shlwapi.h>

#include <utility>

using quill::log_level;

namespace {

constexpr DWORD worker_poll_ms = 100;

} // namespace

LRESULT CActiveDocCtrl::OnDestroy(UINT, WPARAM, LPARAM, BOOL&)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    // Until the final message: the last reference may go in here, and the window would be destroyed again.
    if (!std::exchange(is_held_by_window_, true))
        GetUnknown()->AddRef();
    window_lifetime_.end();
    stop_download();
    OLEINPLACEFRAMEINFO info{};
    UnmergeMenu(frame_of_site(info));
    if (std::exchange(is_counted_, false))
        quill::remove_browser_instances(browser_);
    const HWND pane = pane_.window();
    pane_.Detach();
    if (pane)
        ::DestroyWindow(pane);
    open_file_.reset();
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " OnDestroy";

    viewer_.release();
    host_window_ = nullptr; // destroyed with this window, as every child
    return 0;
}

void CActiveDocCtrl::OnFinalMessage(HWND window)
{
    // Neither is the last reference: the message's own is released after the handler.
    if (last_reference_.window_closed(window))
        GetUnknown()->Release();
    if (std::exchange(is_held_by_window_, false))
        GetUnknown()->Release();
}

void CActiveDocCtrl::stop_download()
{
    SetEvent(stop_event_.get());
    if (!download_thread_)
        return;
    if (GetThreadId(download_thread_.get()) == GetCurrentThreadId()) {
        download_thread_.reset(); // the worker does not wait for itself
        return;
    }
    // The worker is bounded: each of its calls to this window gives up after a time, and the download
    // polls the event. Messages are not pumped: the browser must not find a half-destroyed window.
    DWORD exit_code = STILL_ACTIVE;
    while (GetExitCodeThread(download_thread_.get(), &exit_code) && exit_code == STILL_ACTIVE) {
        if (WaitForSingleObject(download_thread_.get(), worker_poll_ms) != WAIT_TIMEOUT)
            continue;
        SetEvent(stop_event_.get());                      // auto-reset: a wait may have consumed the signal
        quill::interrupt_download(download_thread_.get()); // its server may say nothing for hours
    }
    download_thread_.reset();
}

LRESULT CActiveDocCtrl::OnSize(UINT, WPARAM wparam, LPARAM lparam, BOOL&)
{
    const int width = LOWORD(lparam);
    const int height = HIWORD(lparam);
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " OnSize {" << wparam << " " << width << " "
                                << height << "}";
    if (host_window_)
        ::SetWindowPos(host_window_, nullptr, 0, 0, width, height, SWP_SHOWWINDOW);
    pane_.recentre(); // after the host, which the line above puts on top
    return 0;
}

LRESULT CActiveDocCtrl::OnCommand(UINT, WPARAM wparam, LPARAM lparam, BOOL&)
{
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " OnCommand {" << wparam << " "
                                << static_cast<int>(LOWORD(lparam)) << " " << static_cast<int>(HIWORD(lparam))
                                << "}";
    return 0;
}

LRESULT CActiveDocCtrl::OnMouseActivate(UINT, WPARAM wparam, LPARAM lparam, BOOL&)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " OnMouseActivate {" << wparam << " "
                                << static_cast<int>(LOWORD(lparam)) << " " << static_cast<int>(HIWORD(lparam))
                                << "}";
    if (!m_bUIActive)
        InPlaceActivate(OLEIVERB_UIACTIVATE);
    return MA_ACTIVATE;
}

LRESULT CActiveDocCtrl::OnKeyDown(UINT message, WPARAM wparam, LPARAM lparam, BOOL&)
{
    const quill::window_watch window(window_lifetime_);
    const HWND viewer_window = viewer_.window();
    // A viewer that reports this window as its own would have the key sent here for ever.
    if (window.is_open() && viewer_window && viewer_window != m_hWnd)
        ::SendMessageW(viewer_window, message, wparam, lparam);
    return 0;
}

LRESULT CActiveDocCtrl::OnLoadFile(UINT, WPARAM, LPARAM, BOOL&)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " LOADFILE " << path_.data();
    pane_.Hide();
    const quill::window_watch window(window_lifetime_);
    if (!window.is_open() || !PathFileExistsW(path_.data()))
        return 0;
    const CComVariant result = viewer_.open(path_.data());
    // The viewer pumps messages while it opens a file: the window may be destroyed by now.
    if (window.is_open() && result.vt == VT_BOOL && result.boolVal == VARIANT_TRUE) {
        show_page_and_zoom();
        if (window.is_open())
            merge_frame_menu();
    }
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " LOADFILE RESULT " << result.boolVal;
    return 0;
}

void CActiveDocCtrl::merge_frame_menu()
{
    if (!merge_menus_)
        return;
    const quill::window_watch window(window_lifetime_);
    OLEINPLACEFRAMEINFO info{};
    const CComPtr<IOleInPlaceFrame> frame = frame_ ? frame_ : frame_of_site(info);
    if (window.is_open())
        MergeMenu(frame);
}

void CActiveDocCtrl::show_page_and_zoom() const
{
    const quill::window_watch window(window_lifetime_);
    // Pages count from 1 in addresses and from 0 in the viewer; any number may stand in an address.
    if (page_)
        viewer_.go_to_page(static_cast<std::int32_t>(static_cast<std::uint32_t>(page_) - 1));
    if (zoom_ && window.is_open())
        viewer_.set_zoom(zoom_ / 100.0);
}
