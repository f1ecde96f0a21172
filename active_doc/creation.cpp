// The window's creation: hosts the viewer and finds out where the document comes from.
#include "active_doc/active_doc_ctrl.h"
#include "active_doc/browser_instances.h"
#include "active_doc/browser_services.h"
#include "active_doc/no_throw.h"
#include "logging/log_stream.h"
#include "retrieval/file/pdf_check.h"
#include "retrieval/page/embedded_element.h"
#include "retrieval/url/url_fragment.h"
#include "retrieval/url/url_resolution.h"
#include "retrieval/url/url_text.h"

#include <atlhost.h>
#include <shlwapi.h>

using quill::log_level;

namespace {

constexpr int host_control_id = 1;

// Creates the control in the host window. The window's own host object is used when it answers, a new one
// is attached to the window otherwise.
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

} // namespace

LRESULT CActiveDocCtrl::OnCreate(UINT, WPARAM, LPARAM lparam, BOOL&)
{
    // Creating the viewer and asking the site call out: the host may release the document meanwhile.
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    window_lifetime_.begin();
    last_reference_.window_opened(m_hWnd);
    return quill::no_throw(
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
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " OnCreate [#1] {" << creation.x << " "
                                << creation.cx << " " << creation.y << " " << creation.cy << "}";
    create_inner_viewer(creation);
    // Without a viewer the window stays, empty.
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

// False when the window was closed inside one of the calls.
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
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " OnCreate [#2] " << path_.data();
    if (path_is_pdf()) {
        read_page_and_zoom_of_location();
        if (window.is_open())
            load_into_viewer();
        return;
    }
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " OnCreate [#3]";
    if (!document_url_.empty()) {
        // A document that owns the frame shows the browser's address, which has the fragment as the user
        // typed it; one that a page activated in place does not.
        if (merge_menus_)
            read_page_and_zoom_of_location();
        else
            read_page_and_zoom(document_url_);
    } else {
        find_document_url();
        if (!window.is_open() || find_embedded_document())
            return;
    }
    if (!window.is_open())
        return; // the host has closed the document while it was asked about it
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " OnCreate [URL]";
    start_download();
}

void CActiveDocCtrl::find_document_url()
{
    const quill::window_watch window(window_lifetime_);
    auto name = quill::site_moniker_name(m_spClientSite, OLEWHICHMK_OBJFULL);
    if (!name && window.is_open()) {
        QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " OnCreate [DocUrl] - FAILED";
        name = quill::site_moniker_name(m_spClientSite, OLEWHICHMK_CONTAINER);
    }
    if (window.is_open())
        document_url_ = quill::EncodeUrl(name.value_or(std::wstring()));
}

// True when the element names a local file, which is loaded here; false when there is something to fetch.
bool CActiveDocCtrl::find_embedded_document()
{
    const quill::window_watch window(window_lifetime_);
    const CComPtr<IOleClientSite> site(m_spClientSite);
    std::wstring element_url;
    std::int32_t page = page_;
    std::int32_t zoom = zoom_;
    quill::embedded_request request{site, instance_, address(), page, zoom};
    const bool is_found = quill::ResolveEmbeddedElement(request, element_url) != 0;
    if (!window.is_open())
        return false; // page and zoom are another window's by now
    page_ = page;
    zoom_ = zoom;
    if (!is_found)
        return false;
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " OnCreate [EmbedURL]";

    int is_other_scheme = 0;
    if (quill::IsUrl(element_url.c_str(), &is_other_scheme)) {
        embedded_url_ = element_url;
    } else if (!PathIsRelativeW(element_url.c_str()) && quill::isPDF(element_url.c_str())) {
        set_path(element_url.c_str(), path_origin::document_url);
        load_into_viewer();
        return true;
    } else {
        quill::CombineUrl(element_url, document_url_, embedded_url_);
    }
    read_page_and_zoom(embedded_url_);
    return false;
}

void CActiveDocCtrl::start_download()
{
    worker_has_url_ = worker_is_outdated_ = false;
    // A stop that a former window asked for is not meant for this one.
    ResetEvent(stop_event_.get());
    download_ = {m_hWnd, stop_event_.get(), GetUnknown(), &url_version_};
    download_thread_.reset(CreateThread(nullptr, 0, download_thread, &download_, 0, nullptr));
}

bool CActiveDocCtrl::is_worker_running() const
{
    return download_thread_ && WaitForSingleObject(download_thread_.get(), 0) == WAIT_TIMEOUT;
}

DWORD WINAPI CActiveDocCtrl::download_thread(void* job)
{
    // The window's destruction waits for this thread, so the document and its job outlive it.
    return quill::DownloadPDFFile(*static_cast<const quill::download_job*>(job));
}

void CActiveDocCtrl::read_page_and_zoom(const std::wstring& url)
{
    quill::parse_url_number(url.c_str(), L"page", page_);
    quill::parse_url_number(url.c_str(), L"zoom", zoom_);
}

bool CActiveDocCtrl::read_page_and_zoom_of_location()
{
    const quill::window_watch window(window_lifetime_);
    const auto location = quill::browser_location(m_spClientSite);
    if (location && window.is_open())
        read_page_and_zoom(*location);
    return location.has_value();
}

bool CActiveDocCtrl::path_is_pdf() const
{
    return quill::isPDF(path_.data()) != 0;
}

void CActiveDocCtrl::set_path(const wchar_t* path, path_origin origin)
{
    path_origin_ = origin;
    path_ = {};
    const std::size_t length = wcsnlen(path, path_.size() - 1);
    std::copy_n(path, length, path_.begin());
}
