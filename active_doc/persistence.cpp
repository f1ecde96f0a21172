// How the browser hands the document its content: an address or a path is recorded, streams are not read.
// The window's creation fetches what was recorded.
#include "active_doc/active_doc_ctrl.h"
#include "active_doc/browser_services.h"
#include "active_doc/no_throw.h"
#include "logging/log_stream.h"
#include "retrieval/file/file_names.h"
#include "retrieval/url/url_text.h"

#include <shlwapi.h>

#include <utility>

using quill::log_level;

STDMETHODIMP CActiveDocCtrl::GetClassID(CLSID* class_id)
{
    if (!class_id)
        return E_POINTER;
    *class_id = GetObjectCLSID();
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::IsDirty()
{
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " IsDirty";
    return S_FALSE;
}

STDMETHODIMP CActiveDocCtrl::Load(IStream*)
{
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " Load STREAM";
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::Save(IStream*, BOOL)
{
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " Save STREAM";
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::GetSizeMax(ULARGE_INTEGER* size)
{
    if (!size)
        return E_POINTER;
    size->QuadPart = 0; // nothing is ever written
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::InitNew()
{
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::Load(LPCOLESTR path, DWORD mode)
{
    if (!path)
        return E_POINTER;
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " Load " << path << " " << mode;
    if (PathIsUNCW(path))
        return S_OK;
    set_path(path, path_origin::host);
    // The former file is closed first: it may be the same one. A failure shows when the file is checked.
    open_file_.reset();
    // A device or a pipe could keep the user-interface thread waiting.
    if (!quill::may_name_disk_file(path))
        return S_OK;
    open_file_.reset(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                 FILE_ATTRIBUTE_NORMAL, nullptr));
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::Save(LPCOLESTR, BOOL)
{
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " Save";
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::SaveCompleted(LPCOLESTR)
{
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " SaveCompleted";
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::GetCurFile(LPOLESTR* path)
{
    if (path)
        *path = nullptr;
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " GetCurFile";
    return E_NOTIMPL;
}

STDMETHODIMP CActiveDocCtrl::Load(BOOL fully_available, IMoniker* moniker, IBindCtx*, DWORD)
{
    if (!moniker)
        return E_FAIL;
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " Load IPersistMoniker " << fully_available;
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    return quill::no_throw(
        [&]() -> HRESULT {
            replace_document_url(quill::EncodeUrl(quill::moniker_name(moniker).value_or(std::wstring())));
            // Deliberate: content that has arrived already is refused, but its URL is kept in either case,
            // for the window to fetch it.
            return fully_available ? E_FAIL : S_OK;
        },
        E_OUTOFMEMORY);
}

void CActiveDocCtrl::replace_document_url(std::wstring url)
{
    const bool is_second = std::exchange(has_loaded_url_, true);
    if (url == document_url_)
        return;
    document_url_ = std::move(url);
    // The first one replaces nothing that was loaded: what the window found by itself stays.
    if (is_second)
        forget_fetched_document();
    else if (!worker_has_url_)
        url_version_.advance();
}

// What was found and fetched for the former URL: its element, its page and zoom, its file, its worker.
void CActiveDocCtrl::forget_fetched_document()
{
    embedded_url_.clear();
    page_ = zoom_ = 0;
    if (path_origin_ == path_origin::document_url)
        path_ = {};
    if (worker_has_url_ && is_worker_running()) {
        worker_is_outdated_ = true;
        SetEvent(stop_event_.get());
    }
    url_version_.advance();
    // The worker may have asked for its file to be loaded. No sent message is delivered here.
    MSG request;
    while (m_hWnd && PeekMessageW(&request, m_hWnd, quill::WM_USER_LOADFILE, quill::WM_USER_LOADFILE,
                                  PM_REMOVE | PM_QS_POSTMESSAGE)) {
    }
}

STDMETHODIMP CActiveDocCtrl::Save(IMoniker*, IBindCtx*, BOOL)
{
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " Save IPersistMoniker";
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::SaveCompleted(IMoniker*, IBindCtx*)
{
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " SaveCompleted IPersistMoniker";
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::GetCurMoniker(IMoniker**)
{
    // The out value is left as the host set it: hosts ask with a moniker of their own in it.
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " GetCurMoniker IPersistMoniker";
    return S_OK;
}
