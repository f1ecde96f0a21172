// What the download and the viewer ask of the window. Every handler returns 0, also for a null pointer.
#include "active_doc/active_doc_ctrl.h"
#include "active_doc/browser_services.h"
#include "active_doc/no_throw.h"
#include "active_doc/progress.h"
#include "logging/log_stream.h"
#include "retrieval/save_as/save_as.h"
#include "retrieval/url/url_resolution.h"

using quill::log_level;

namespace {

// The viewer and the document itself send from the window's own thread; the worker does not.
bool is_from_worker()
{
    return InSendMessageEx(nullptr) != ISMEX_NOSEND;
}

} // namespace

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
    return quill::no_throw(
        [&]() -> LRESULT {
            std::wstring target = link;
            int is_other_scheme = 0;
            if (!quill::IsUrl(link, &is_other_scheme)) {
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
        worker_has_url_ = true;
    const std::wstring& url = url_to_fetch();
    buffer[url.copy(buffer, capacity - 1)] = L'\0';
    return 0;
}

LRESULT CActiveDocCtrl::OnGetUrlLength(UINT, WPARAM, LPARAM lparam, BOOL&)
{
    if (auto* const length = reinterpret_cast<std::size_t*>(lparam))
        *length = url_to_fetch().size();
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
    // A file of the former URL may arrive late.
    if (path && !(worker_is_outdated_ && is_from_worker() && is_worker_running()))
        set_path(path, path_origin::document_url);
    return 0;
}

LRESULT CActiveDocCtrl::OnLogFile(UINT, WPARAM wparam, LPARAM lparam, BOOL&)
{
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " On_WM_USER_LOGFILE "
                                << reinterpret_cast<const wchar_t*>(lparam) << static_cast<int>(wparam != 0);
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
    quill::SaveDocumentAs(m_hWnd, path_.data());
    return 0;
}

LRESULT CActiveDocCtrl::OnRelease(UINT, WPARAM, LPARAM, BOOL&)
{
    // Not the last reference: the message's own is released after the handler.
    if (last_reference_.take())
        GetUnknown()->Release();
    return 0;
}
