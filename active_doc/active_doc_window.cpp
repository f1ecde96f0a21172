// The document's window: creation, which hosts the viewer and finds the document; system messages; the
// private messages of window_messages.h; destruction.
#include "active_doc/active_doc_ctrl.h"
#include "active_doc/browser_instances.h"
#include "active_doc/browser_services.h"
#include "active_doc/catch_all.h"
#include "retrieval/file/pdf_check.h"
#include "retrieval/page/embedded_element.h"
#include "retrieval/pane/status_pane_layout.h"
#include "retrieval/save_as/save_as.h"
#include "retrieval/url/url_resolution.h"
#include "retrieval/url/url_text.h"

#include <atlhost.h>
#include <shlwapi.h>

#include <utility>

namespace {

constexpr int host_control_id = 1;

// Uses the host object of the host window if it has one; otherwise the framework attaches a new one.
CComPtr<IUnknown> create_hosted_control(HWND host_window)
{
    CComPtr<IUnknown> control;
    CComPtr<IUnknown> host;
    AtlAxGetHost(host_window, &host);
    if (const CComQIPtr<IAxWinHostWindow> window_host(host); window_host)
        window_host->CreateControlEx(quill::inner_viewer_progid, host_window, nullptr, &control, IID_NULL,
                                     nullptr);
    else
        AtlAxCreateControlEx(quill::inner_viewer_progid, host_window, nullptr, nullptr, &control, IID_NULL,
                             nullptr);
    return control;
}

// The viewer and the document itself send from the window's own thread.
bool is_from_worker()
{
    return InSendMessageEx(nullptr) != ISMEX_NOSEND;
}

} // namespace

LRESULT CActiveDocCtrl::OnCreate(UINT, WPARAM, LPARAM lparam, BOOL&)
{
    // Creating the viewer and querying the site call out: the host may release the document meanwhile.
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    window_lifetime_.begin();
    last_reference_.window_opened(m_hWnd);
    return quill::catch_all(
        [&]() -> LRESULT {
            fill_window(*reinterpret_cast<const CREATESTRUCTW*>(lparam));
            return 0;
        },
        LRESULT{0});
}

void CActiveDocCtrl::fill_window(const CREATESTRUCTW& creation)
{
    const quill::window_watch window(window_lifetime_);
    const HWND browser = quill::browser_window(m_spClientSite);
    if (!window.is_open())
        return;
    browser_ = browser;
    instance_ = quill::add_browser_instance(browser_);
    is_counted_ = true;
    QUILL_DOCUMENT_LOG() << " OnCreate [#1] {" << creation.x << " " << creation.cx << " " << creation.y << " "
                         << creation.cy << "}";
    create_inner_viewer(creation);
    // Without a viewer the window stays empty.
    if (!window.is_open() || !viewer_ || !set_up_viewer())
        return;
    pane_.Create(m_hWnd, _AtlBaseModule.GetResourceInstance());
    choose_document();
}

void CActiveDocCtrl::create_inner_viewer(const CREATESTRUCTW& creation)
{
    const quill::window_watch window(window_lifetime_);
    AtlAxWinInit();
    const HWND host_window = CreateWindowExW(
        0, L"" ATLAXWIN_CLASS, nullptr, WS_CHILD | WS_VISIBLE | WS_BORDER, creation.x, creation.y,
        creation.cx, creation.cy, m_hWnd, reinterpret_cast<HMENU>(static_cast<INT_PTR>(host_control_id)),
        _AtlBaseModule.GetModuleInstance(), nullptr);
    if (!host_window || !window.is_open())
        return;
    host_window_ = host_window;
    const CComPtr<IUnknown> control = create_hosted_control(host_window);
    const CComPtr<IDispatch> viewer = quill::inner_viewer::query(control);
    if (window.is_open())
        viewer_.attach(viewer);
}

// False if the window was destroyed inside one of the calls.
bool CActiveDocCtrl::set_up_viewer() const
{
    const quill::window_watch window(window_lifetime_);
    viewer_.set_link_target(m_hWnd, quill::WM_USER_OPENLINK);
    if (window.is_open())
        viewer_.set_save_target(m_hWnd, quill::WM_USER_SAVEAS);
    if (window.is_open())
        viewer_.first_setup();
    if (window.is_open())
        viewer_.second_setup();
    return window.is_open();
}

void CActiveDocCtrl::choose_document()
{
    const quill::window_watch window(window_lifetime_);
    QUILL_DOCUMENT_LOG() << " OnCreate [#2] " << location_.path();
    if (quill::isPDF(location_.path())) {
        read_page_and_zoom_from_browser();
        if (window.is_open())
            load_into_viewer();
        return;
    }
    QUILL_DOCUMENT_LOG() << " OnCreate [#3]";
    if (!location_.document_url().empty()) {
        // A document that owns the frame is what the browser's URL refers to, which keeps the fragment as the
        // user typed it. One that is embedded in a page is not.
        if (merge_menus_)
            read_page_and_zoom_from_browser();
        else
            location_.read_page_and_zoom(location_.document_url());
    } else {
        find_document_url();
        if (!window.is_open() || find_embedded_document())
            return;
    }
    if (!window.is_open())
        return; // destroyed by the host inside one of the calls
    QUILL_DOCUMENT_LOG() << " OnCreate [URL]";
    download_.start(m_hWnd, GetUnknown());
}

void CActiveDocCtrl::find_document_url()
{
    const quill::window_watch window(window_lifetime_);
    auto name = quill::site_moniker_name(m_spClientSite, OLEWHICHMK_OBJFULL);
    if (!name && window.is_open()) {
        QUILL_DOCUMENT_LOG() << " OnCreate [DocUrl] - FAILED";
        name = quill::site_moniker_name(m_spClientSite, OLEWHICHMK_CONTAINER);
    }
    if (window.is_open())
        location_.set_document_url(quill::EncodeUrl(name.value_or(std::wstring())));
}

// True if the element refers to a local PDF, which is opened here; false if there is a URL to fetch.
bool CActiveDocCtrl::find_embedded_document()
{
    const quill::window_watch window(window_lifetime_);
    const CComPtr<IOleClientSite> site(m_spClientSite);
    std::wstring reference;
    std::int32_t page = location_.page();
    std::int32_t zoom = location_.zoom();
    quill::embedded_request request{site, instance_, address(), page, zoom};
    const bool is_found = quill::ResolveEmbeddedElement(request, reference) != 0;
    if (!window.is_open())
        return false; // page and zoom now belong to another window
    location_.set_page_and_zoom(page, zoom);
    if (!is_found)
        return false;
    QUILL_DOCUMENT_LOG() << " OnCreate [EmbedURL]";

    if (!quill::IsUrl(reference.c_str(), nullptr) && !PathIsRelativeW(reference.c_str()) &&
        quill::isPDF(reference.c_str())) {
        location_.set_path(reference.c_str(), quill::path_origin::document_url);
        load_into_viewer();
        return true;
    }
    location_.set_embedded_reference(reference);
    return false;
}

void CActiveDocCtrl::read_page_and_zoom_from_browser()
{
    const quill::window_watch window(window_lifetime_);
    const auto url = quill::browser_url(m_spClientSite);
    if (url && window.is_open())
        location_.read_page_and_zoom(*url);
}

LRESULT CActiveDocCtrl::OnDestroy(UINT, WPARAM, LPARAM, BOOL&)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    // Held until the final message: if the last reference were released in here, the window would be
    // destroyed a second time.
    if (!std::exchange(is_held_by_window_, true))
        GetUnknown()->AddRef();
    window_lifetime_.end();
    download_.stop();
    OLEINPLACEFRAMEINFO info{};
    unmerge_menu(frame_of_site(info));
    if (std::exchange(is_counted_, false))
        quill::remove_browser_instances(browser_);
    const HWND pane = pane_.window();
    pane_.Detach();
    if (pane)
        ::DestroyWindow(pane);
    open_file_.reset();
    QUILL_DOCUMENT_LOG() << " OnDestroy";

    viewer_.release();
    host_window_ = nullptr; // a child window, destroyed with this one
    return 0;
}

void CActiveDocCtrl::OnFinalMessage(HWND window)
{
    // Neither Release is the last one: the framework holds a reference while it handles a message.
    if (last_reference_.window_closed(window))
        GetUnknown()->Release();
    if (std::exchange(is_held_by_window_, false))
        GetUnknown()->Release();
}

LRESULT CActiveDocCtrl::OnSize(UINT, WPARAM wparam, LPARAM lparam, BOOL&)
{
    const int width = LOWORD(lparam);
    const int height = HIWORD(lparam);
    QUILL_DOCUMENT_LOG() << " OnSize {" << wparam << " " << width << " " << height << "}";
    if (host_window_)
        ::SetWindowPos(host_window_, nullptr, 0, 0, width, height, SWP_SHOWWINDOW);
    pane_.recentre(); // after the host window, which the call above moves to the top of the Z order
    return 0;
}

LRESULT CActiveDocCtrl::OnCommand(UINT, WPARAM wparam, LPARAM lparam, BOOL&)
{
    QUILL_DOCUMENT_LOG() << " OnCommand {" << wparam << " " << static_cast<int>(LOWORD(lparam)) << " "
                         << static_cast<int>(HIWORD(lparam)) << "}";
    return 0;
}

LRESULT CActiveDocCtrl::OnMouseActivate(UINT, WPARAM wparam, LPARAM lparam, BOOL&)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    QUILL_DOCUMENT_LOG() << " OnMouseActivate {" << wparam << " " << static_cast<int>(LOWORD(lparam)) << " "
                         << static_cast<int>(HIWORD(lparam)) << "}";
    if (!m_bUIActive)
        InPlaceActivate(OLEIVERB_UIACTIVATE);
    return MA_ACTIVATE;
}

LRESULT CActiveDocCtrl::OnKeyDown(UINT message, WPARAM wparam, LPARAM lparam, BOOL&)
{
    const quill::window_watch window(window_lifetime_);
    const HWND viewer_window = viewer_.window();
    // If the viewer returned this window as its own, the key would be forwarded endlessly.
    if (window.is_open() && viewer_window && viewer_window != m_hWnd)
        ::SendMessageW(viewer_window, message, wparam, lparam);
    return 0;
}

LRESULT CActiveDocCtrl::OnLoadFile(UINT, WPARAM, LPARAM, BOOL&)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    QUILL_DOCUMENT_LOG() << " LOADFILE " << location_.path();
    pane_.Hide();
    const quill::window_watch window(window_lifetime_);
    if (!window.is_open() || !PathFileExistsW(location_.path()))
        return 0;
    const CComVariant result = viewer_.open(location_.path());
    // The viewer pumps messages while it opens a file: the window may have been destroyed.
    if (window.is_open() && result.vt == VT_BOOL && result.boolVal == VARIANT_TRUE) {
        show_page_and_zoom();
        if (window.is_open())
            merge_frame_menu();
    }
    QUILL_DOCUMENT_LOG() << " LOADFILE RESULT " << result.boolVal;
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
        merge_menu(frame);
}

void CActiveDocCtrl::show_page_and_zoom() const
{
    const quill::window_watch window(window_lifetime_);
    // URLs count pages from 1, the viewer from 0. The number may be any 32-bit value: subtract unsigned.
    if (location_.page())
        viewer_.go_to_page(static_cast<std::int32_t>(static_cast<std::uint32_t>(location_.page()) - 1));
    if (location_.zoom() && window.is_open())
        viewer_.set_zoom(location_.zoom() / 100.0);
}

// Private messages of the worker and the viewer. Every handler returns 0, also for a null pointer.

LRESULT CActiveDocCtrl::OnReserved(UINT, WPARAM, LPARAM, BOOL&)
{
    return 0;
}

LRESULT CActiveDocCtrl::OnOpenLink(UINT, WPARAM wparam, LPARAM lparam, BOOL&)
{
    const auto* const link = reinterpret_cast<const wchar_t*>(lparam);
    if (!link)
        return 0;
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    return quill::catch_all(
        [&]() -> LRESULT {
            std::wstring target = link;
            if (!quill::IsUrl(link, nullptr)) {
                const auto document = quill::site_moniker_name(m_spClientSite, OLEWHICHMK_OBJFULL);
                if (!document || !quill::resolve_link(link, *document, target))
                    return 0;
            }
            quill::navigate(m_spClientSite, target.c_str(), wparam != 0);
            return 0;
        },
        LRESULT{0});
}

LRESULT CActiveDocCtrl::OnGetUrl(UINT, WPARAM wparam, LPARAM lparam, BOOL&)
{
    auto* const buffer = reinterpret_cast<wchar_t*>(lparam);
    const std::size_t capacity = wparam;
    if (!buffer || capacity == 0)
        return 0;
    if (is_from_worker())
        download_.url_sent();
    const std::wstring& url = location_.url_to_fetch();
    buffer[url.copy(buffer, capacity - 1)] = L'\0';
    return 0;
}

LRESULT CActiveDocCtrl::OnGetUrlLength(UINT, WPARAM, LPARAM lparam, BOOL&)
{
    if (auto* const length = reinterpret_cast<std::size_t*>(lparam))
        *length = location_.url_to_fetch().size();
    return 0;
}

LRESULT CActiveDocCtrl::OnProgress(UINT, WPARAM, LPARAM lparam, BOOL&)
{
    const auto* const record = reinterpret_cast<const quill::progress_record*>(lparam);
    if (record && record->status_code == BINDSTATUS_DOWNLOADINGDATA)
        pane_.SetPercent(quill::download_percent(record->progress, record->progress_max));
    return 0;
}

LRESULT CActiveDocCtrl::OnSetCacheFile(UINT, WPARAM, LPARAM lparam, BOOL&)
{
    const auto* const path = reinterpret_cast<const wchar_t*>(lparam);
    // The file of a replaced URL may still arrive.
    if (path && !(is_from_worker() && download_.is_outdated()))
        location_.set_path(path, quill::path_origin::document_url);
    return 0;
}

LRESULT CActiveDocCtrl::OnLogFile(UINT, WPARAM wparam, LPARAM lparam, BOOL&)
{
    QUILL_DOCUMENT_LOG() << " On_WM_USER_LOGFILE " << reinterpret_cast<const wchar_t*>(lparam)
                         << static_cast<int>(wparam != 0);
    return 0;
}

LRESULT CActiveDocCtrl::OnGetBrowserWindow(UINT, WPARAM, LPARAM lparam, BOOL&)
{
    if (auto* const window = reinterpret_cast<HWND*>(lparam))
        *window = quill::browser_window(m_spClientSite);
    return 0;
}

LRESULT CActiveDocCtrl::OnGetInstance(UINT, WPARAM, LPARAM lparam, BOOL&)
{
    if (auto* const number = reinterpret_cast<std::uint32_t*>(lparam))
        *number = instance_;
    return 0;
}

LRESULT CActiveDocCtrl::OnSaveAs(UINT, WPARAM, LPARAM, BOOL&)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    quill::SaveDocumentAs(m_hWnd, location_.path());
    return 0;
}

LRESULT CActiveDocCtrl::OnRelease(UINT, WPARAM, LPARAM, BOOL&)
{
    // Not the last Release: the framework holds a reference while it handles a message.
    if (last_reference_.take())
        GetUnknown()->Release();
    return 0;
}
