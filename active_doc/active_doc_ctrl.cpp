// The COM methods of the document: site, verbs, in-place activation, persistence and commands.
#include "active_doc/active_doc_ctrl.h"

#include "active_doc/browser_services.h"
#include "active_doc/catch_all.h"
#include "retrieval/file/file_names.h"
#include "retrieval/save_as/save_as.h"
#include "retrieval/url/url_text.h"

#include <shlwapi.h>

#include <utility>

CActiveDocCtrl::CActiveDocCtrl()
{
    m_bWindowOnly = TRUE; // the viewer needs a parent window
    frame_info_.cb = sizeof frame_info_;
    QUILL_DOCUMENT_LOG();
}

CActiveDocCtrl::~CActiveDocCtrl()
{
    QUILL_LOG(quill::log_level::debug) << "~ACTIVEDOC " << address();
}

void CActiveDocCtrl::FinalRelease()
{
    // The window exists if the host releases without deactivating. Destroying it stops the worker, which
    // still uses this object.
    if (m_hWnd)
        DestroyWindow();
    download_.stop();
    viewer_.release();
}

ULONG CActiveDocCtrl::InternalRelease() noexcept
{
    if (last_reference_.is_own_thread())
        return CComObjectRootEx::InternalRelease();
    // The count does not reach 0 here while there is a window: each of its messages takes a reference and
    // releases it, on the window's thread.
    for (;;) {
        const LONG count = InterlockedCompareExchange(&m_dwRef, 0, 0);
        if (count == 1 &&
            (last_reference_.transfer() ||
             (has_host_references() && thread_release_.transfer(GetUnknown(), last_reference_.thread()))))
            return 1;
        if (InterlockedCompareExchange(&m_dwRef, count - 1, count) == count)
            return static_cast<ULONG>(count - 1);
    }
}

STDMETHODIMP CActiveDocCtrl::SetClientSite(IOleClientSite* site)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    document_site_.Release();
    has_document_site_ = false;
    HRESULT result = S_OK;
    CComPtr<IOleDocumentSite> document_site;
    if (site) {
        void* queried = nullptr;
        result = site->QueryInterface(IID_IOleDocumentSite, &queried);
        if (SUCCEEDED(result))
            document_site.Attach(static_cast<IOleDocumentSite*>(queried));
    }
    // Set together, since the query may have re-entered with another site.
    has_document_site_ = document_site != nullptr;
    document_site_ = document_site;
    QUILL_DOCUMENT_LOG() << " IOleObject_SetClientSite 0x" << result;
    return IOleObjectImpl<CActiveDocCtrl>::SetClientSite(site);
}

STDMETHODIMP CActiveDocCtrl::DoVerb(LONG verb, LPMSG message, IOleClientSite* active_site, LONG index,
                                    HWND parent, LPCRECT position)
{
    const RECT rect = position ? *position : RECT{};
    QUILL_DOCUMENT_LOG() << " DoVerb {" << verb << "} {" << rect.left << " " << rect.top << " " << rect.right
                         << " " << rect.bottom << "} {" << static_cast<const void*>(active_site) << " "
                         << index << " " << static_cast<int>(m_bUIActive) << " "
                         << static_cast<int>(has_document_site_) << "}";

    // A host that activates the object in place itself keeps its own menu.
    if (!has_document_site_ || verb == OLEIVERB_INPLACEACTIVATE)
        merge_menus_ = false;

    const bool activating = verb == OLEIVERB_SHOW || verb == OLEIVERB_OPEN || verb == OLEIVERB_UIACTIVATE ||
                            verb == OLEIVERB_INPLACEACTIVATE;
    if (has_document_site_ && activating && !m_bUIActive && document_site_) {
        // The site activates the document by creating its view. The member may be released inside the call.
        const CComPtr<IOleDocumentSite> document_site = document_site_;
        return document_site->ActivateMe(nullptr);
    }
    return IOleObjectImpl<CActiveDocCtrl>::DoVerb(verb, message, active_site, index, parent, position);
}

STDMETHODIMP CActiveDocCtrl::InPlaceDeactivate()
{
    // The site may release its last reference to the document in any of the calls below.
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    document_site_.Release();
    frame_.Release();
    if (!m_bInPlaceActive)
        return S_OK;

    if (m_bUIActive)
        UIDeactivate();
    if (!m_bInPlaceActive)
        return S_OK;  // the host has deactivated the document inside one of these calls
    frame_.Release(); // TranslateAccelerator inside one of them has queried it again
    m_bInPlaceActive = FALSE;
    if (m_hWnd && IsWindow())
        DestroyWindow();
    m_hWnd = nullptr;
    if (const CComPtr<IOleInPlaceSite> site = m_spInPlaceSite.p)
        site->OnInPlaceDeactivate();
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::SetObjectRects(LPCRECT position, LPCRECT clip)
{
    if (!position || !clip)
        return E_POINTER;
    m_rcPos = *position;
    if (m_hWnd)
        place_control_window(m_hWnd, *position, *clip);
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::TranslateAccelerator(LPMSG message)
{
    if (!message)
        return E_POINTER;
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    QUILL_DOCUMENT_LOG() << " TranslateAccelerator";

    // Select all, copy, find and print belong to the viewer; the window forwards them.
    const bool viewer_key =
        message->wParam == 'A' || message->wParam == 'C' || message->wParam == 'F' || message->wParam == 'P';
    const bool control_down = GetKeyState(VK_LCONTROL) < 0 || GetKeyState(VK_RCONTROL) < 0;
    if (message->message == WM_KEYDOWN && viewer_key && control_down) {
        ::SendMessageW(m_hWnd, message->message, message->wParam, message->lParam);
        return S_OK;
    }
    if (!query_frame())
        return S_FALSE;
    const CComPtr<IOleInPlaceFrame> frame = frame_;
    OLEINPLACEFRAMEINFO info = frame_info_;
    return OleTranslateAccelerator(frame, &info, message);
}

STDMETHODIMP CActiveDocCtrl::OnDocWindowActivate(BOOL activate)
{
    QUILL_DOCUMENT_LOG() << " OnDocWindowActivate " << activate;
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::ResizeBorder(LPCRECT border, IOleInPlaceUIWindow*, BOOL)
{
    const RECT rect = border ? *border : RECT{};
    QUILL_DOCUMENT_LOG() << " ResizeBorder {" << rect.left << " " << rect.top << " " << rect.right << " "
                         << rect.bottom << "}";
    return S_OK;
}

CComPtr<IOleInPlaceFrame> CActiveDocCtrl::frame_of_site(OLEINPLACEFRAMEINFO& info) const
{
    in_place_context context;
    const CComPtr<IOleInPlaceSite> site = m_spInPlaceSite.p;
    if (site)
        context.query(site);
    info = context.info;
    return context.frame;
}

bool CActiveDocCtrl::has_host_references() const
{
    return m_spClientSite || m_spInPlaceSite || m_spAmbientDispatch || m_spAdviseSink ||
           m_spOleAdviseHolder || m_spDataAdviseHolder || document_site_ || frame_ || viewer_;
}

bool CActiveDocCtrl::query_frame()
{
    if (!frame_ && m_bInPlaceActive) {
        OLEINPLACEFRAMEINFO info{};
        const CComPtr<IOleInPlaceFrame> frame = frame_of_site(info);
        if (m_bInPlaceActive) { // the site may have deactivated the document
            frame_ = frame;
            frame_info_ = info;
        }
    }
    return frame_ != nullptr;
}

// Persistence: Load records a URL or a path, which OnCreate uses. Streams are not read.

STDMETHODIMP CActiveDocCtrl::GetClassID(CLSID* class_id)
{
    if (!class_id)
        return E_POINTER;
    *class_id = GetObjectCLSID();
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::IsDirty()
{
    QUILL_DOCUMENT_LOG() << " IsDirty";
    return S_FALSE;
}

STDMETHODIMP CActiveDocCtrl::Load(IStream*)
{
    QUILL_DOCUMENT_LOG() << " Load STREAM";
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::Save(IStream*, BOOL)
{
    QUILL_DOCUMENT_LOG() << " Save STREAM";
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::GetSizeMax(ULARGE_INTEGER* size)
{
    if (!size)
        return E_POINTER;
    size->QuadPart = 0; // Save writes nothing
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
    QUILL_DOCUMENT_LOG() << " Load " << path << " " << mode;
    if (PathIsUNCW(path))
        return S_OK;
    location_.set_path(path, quill::path_origin::host);
    // Close the former file first, since it may be the same one. If opening fails, OnCreate reports it.
    open_file_.reset();
    // A device or a pipe could block the UI thread.
    if (!quill::may_name_disk_file(path))
        return S_OK;
    open_file_.reset(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                 FILE_ATTRIBUTE_NORMAL, nullptr));
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::Save(LPCOLESTR, BOOL)
{
    QUILL_DOCUMENT_LOG() << " Save";
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::SaveCompleted(LPCOLESTR)
{
    QUILL_DOCUMENT_LOG() << " SaveCompleted";
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::GetCurFile(LPOLESTR* path)
{
    if (path)
        *path = nullptr;
    QUILL_DOCUMENT_LOG() << " GetCurFile";
    return E_NOTIMPL;
}

STDMETHODIMP CActiveDocCtrl::Load(BOOL fully_available, IMoniker* moniker, IBindCtx*, DWORD)
{
    if (!moniker)
        return E_FAIL;
    QUILL_DOCUMENT_LOG() << " Load IPersistMoniker " << fully_available;
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    return quill::catch_all(
        [&]() -> HRESULT {
            load_document_url(quill::EncodeUrl(quill::moniker_name(moniker).value_or(std::wstring())));
            // Deliberate: content that is fully available is refused, but its URL is recorded in both cases.
            return fully_available ? E_FAIL : S_OK;
        },
        E_OUTOFMEMORY);
}

void CActiveDocCtrl::load_document_url(std::wstring url)
{
    switch (location_.load_url(std::move(url))) {
    case quill::url_change::none:
        break;
    case quill::url_change::first:
        download_.first_url_loaded();
        break;
    case quill::url_change::replaced:
        download_.url_replaced();
        discard_load_requests();
        break;
    }
}

// The worker may already have posted the request to open the former URL's file. This call delivers no sent
// messages.
void CActiveDocCtrl::discard_load_requests()
{
    MSG request;
    while (m_hWnd && PeekMessageW(&request, m_hWnd, quill::WM_USER_LOADFILE, quill::WM_USER_LOADFILE,
                                  PM_REMOVE | PM_QS_POSTMESSAGE)) {
    }
}

STDMETHODIMP CActiveDocCtrl::Save(IMoniker*, IBindCtx*, BOOL)
{
    QUILL_DOCUMENT_LOG() << " Save IPersistMoniker";
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::SaveCompleted(IMoniker*, IBindCtx*)
{
    QUILL_DOCUMENT_LOG() << " SaveCompleted IPersistMoniker";
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::GetCurMoniker(IMoniker**)
{
    // The out parameter is left unchanged, because hosts pass a variable that contains their own moniker.
    QUILL_DOCUMENT_LOG() << " GetCurMoniker IPersistMoniker";
    return S_OK;
}

// Commands

STDMETHODIMP CActiveDocCtrl::QueryStatus(const GUID*, ULONG count, OLECMD commands[], OLECMDTEXT*)
{
    if (count && !commands)
        return E_POINTER;
    for (ULONG index = 0; index < count; ++index) {
        if (commands[index].cmdID == OLECMDID_SAVEAS || commands[index].cmdID == OLECMDID_PRINT) {
            // Only the first one, and without OLECMDF_SUPPORTED: the browser queries one command at a time.
            commands[index].cmdf = OLECMDF_ENABLED;
            break;
        }
    }
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::Exec(const GUID*, DWORD command, DWORD, VARIANT*, VARIANT*)
{
    QUILL_DOCUMENT_LOG() << " Exec " << command;
    if (!viewer_)
        return OLECMDERR_E_NOTSUPPORTED;
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    switch (command) {
    case OLECMDID_PRINT:
        // Deliberately returns "not supported" after printing, too.
        viewer_.print();
        return OLECMDERR_E_NOTSUPPORTED;
    case OLECMDID_SAVEAS:
        quill::SaveDocumentAs(m_hWnd, location_.path());
        return S_OK;
    default:
        return OLECMDERR_E_NOTSUPPORTED;
    }
}
