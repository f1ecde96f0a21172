// The object's life, its client site and its verbs.
#include "active_doc/active_doc_ctrl.h"

#include "logging/log_stream.h"

using quill::log_level;

CActiveDocCtrl::CActiveDocCtrl()
{
    m_bWindowOnly = TRUE; // the viewer needs a window to live in
    frame_info_.cb = sizeof frame_info_;
    stop_event_.reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address();
}

CActiveDocCtrl::~CActiveDocCtrl()
{
    QUILL_LOG(log_level::debug) << "~ACTIVEDOC " << address();
}

void CActiveDocCtrl::FinalRelease()
{
    // A host that releases without deactivating leaves the window behind: its handler stops the worker,
    // which still uses this object.
    if (m_hWnd)
        DestroyWindow();
    stop_download();
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
             (holds_of_host() && thread_release_.transfer(GetUnknown(), last_reference_.thread()))))
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
    // Both at once: the query may have set another site meanwhile.
    has_document_site_ = document_site != nullptr;
    document_site_ = document_site;
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " IOleObject_SetClientSite 0x" << result;
    return IOleObjectImpl<CActiveDocCtrl>::SetClientSite(site);
}

STDMETHODIMP CActiveDocCtrl::DoVerb(LONG verb, LPMSG message, IOleClientSite* active_site, LONG index,
                                    HWND parent, LPCRECT position)
{
    const RECT rect = position ? *position : RECT{};
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " DoVerb {" << verb << "} {" << rect.left
                                << " " << rect.top << " " << rect.right << " " << rect.bottom << "} {"
                                << static_cast<const void*>(active_site) << " " << index << " "
                                << static_cast<int>(m_bUIActive) << " "
                                << static_cast<int>(has_document_site_) << "}";

    // Hosts that place the object themselves keep their own menu.
    if (!has_document_site_ || verb == OLEIVERB_INPLACEACTIVATE)
        merge_menus_ = false;

    const bool activating = verb == OLEIVERB_SHOW || verb == OLEIVERB_OPEN || verb == OLEIVERB_UIACTIVATE ||
                            verb == OLEIVERB_INPLACEACTIVATE;
    if (has_document_site_ && activating && !m_bUIActive && document_site_) {
        // The site activates the document by creating its view, which may give up the site's pointer here.
        const CComPtr<IOleDocumentSite> document_site = document_site_;
        return document_site->ActivateMe(nullptr);
    }
    return IOleObjectImpl<CActiveDocCtrl>::DoVerb(verb, message, active_site, index, parent, position);
}

STDMETHODIMP CActiveDocCtrl::InPlaceDeactivate()
{
    // The site may drop its last reference to us in any of the calls below.
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    document_site_.Release();
    frame_.Release();
    if (!m_bInPlaceActive)
        return S_OK;

    if (m_bUIActive)
        UIDeactivate();
    if (!m_bInPlaceActive)
        return S_OK;  // the host has deactivated the document inside one of these calls
    frame_.Release(); // an accelerator translated inside one of them has asked for it again
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
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " TranslateAccelerator";

    // Select all, copy, find and print are the viewer's: the window passes them on.
    const bool viewer_key =
        message->wParam == 'A' || message->wParam == 'C' || message->wParam == 'F' || message->wParam == 'P';
    const bool control_down = GetKeyState(VK_LCONTROL) < 0 || GetKeyState(VK_RCONTROL) < 0;
    if (message->message == WM_KEYDOWN && viewer_key && control_down) {
        ::SendMessageW(m_hWnd, message->message, message->wParam, message->lParam);
        return S_OK;
    }
    if (!hold_frame())
        return S_FALSE;
    const CComPtr<IOleInPlaceFrame> frame = frame_;
    OLEINPLACEFRAMEINFO info = frame_info_;
    return OleTranslateAccelerator(frame, &info, message);
}

STDMETHODIMP CActiveDocCtrl::OnDocWindowActivate(BOOL activate)
{
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " OnDocWindowActivate " << activate;
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::ResizeBorder(LPCRECT border, IOleInPlaceUIWindow*, BOOL)
{
    const RECT rect = border ? *border : RECT{};
    QUILL_LOG(log_level::debug) << "ACTIVEDOC " << address() << " ResizeBorder {" << rect.left << " "
                                << rect.top << " " << rect.right << " " << rect.bottom << "}";
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

bool CActiveDocCtrl::holds_of_host() const
{
    return m_spClientSite || m_spInPlaceSite || m_spAmbientDispatch || m_spAdviseSink ||
           m_spOleAdviseHolder || m_spDataAdviseHolder || document_site_ || frame_ || viewer_;
}

bool CActiveDocCtrl::hold_frame()
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
