// The life of a control in a hosting window: creation, size, focus, release.
#include "atl/detail/ax_host_window.h"

#include "atl/detail/control_base.h"

namespace ATL {
namespace {

HRESULT ClassFromName(LPCOLESTR name, CLSID& clsid) noexcept
{
    clsid = CLSID_NULL;
    if (!name || !*name)
        return E_INVALIDARG;
    return *name == L'{' ? CLSIDFromString(name, &clsid) : CLSIDFromProgID(name, &clsid);
}

// Through the class object, because CoCreateInstance trusts one that succeeds with nothing.
HRESULT CreateObject(REFCLSID clsid, CComPtr<IUnknown>& object) noexcept
{
    CComPtr<IClassFactory> factory;
    HRESULT hr = CoGetClassObject(clsid, CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER,
                                  nullptr, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    if (SUCCEEDED(hr) && factory)
        hr = factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&object));
    return SUCCEEDED(hr) && !object ? E_NOINTERFACE : hr;
}

// A control without persistence needs no initialisation.
HRESULT Initialise(IUnknown* control, IStream* stream) noexcept
{
    if (const CComQIPtr<IPersistStreamInit> stream_init(control); stream_init) {
        const HRESULT hr = stream ? stream_init->Load(stream) : stream_init->InitNew();
        // A control without a state to initialise may say so.
        return !stream && hr == E_NOTIMPL ? S_OK : hr;
    }
    if (const CComQIPtr<IPersistStream> persist(control); persist && stream)
        return persist->Load(stream);
    return S_OK;
}

} // namespace

HRESULT CAxHostWindow::SitOn(HWND hWnd) noexcept
{
    if (m_hWnd)
        return m_hWnd == hWnd ? S_OK : E_INVALIDARG;
    if (!::IsWindow(hWnd))
        return E_INVALIDARG;
    if (!SubclassWindow(hWnd))
        return E_FAIL;
    AddRef(); // the window's, given back with its last message
    return S_OK;
}

void CAxHostWindow::Leave() noexcept
{
    const CComPtr<IUnknown> self(GetUnknown());
    ReleaseAll();
    if (UnsubclassWindow())
        Release();
}

void CAxHostWindow::OnFinalMessage(HWND)
{
    Release();
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::CreateControl(LPCOLESTR lpTricsData, HWND hWnd, IStream* pStream)
{
    return CreateControlEx(lpTricsData, hWnd, pStream, nullptr, IID_NULL, nullptr);
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::CreateControlEx(LPCOLESTR lpTricsData, HWND hWnd, IStream* pStream,
                                                         IUnknown** ppUnk, REFIID riidAdvise,
                                                         IUnknown* punkAdvise)
{
    if (ppUnk)
        *ppUnk = nullptr;
    const CComPtr<IUnknown> self(GetUnknown());
    CLSID clsid{};
    HRESULT hr = ClassFromName(lpTricsData, clsid);
    if (SUCCEEDED(hr))
        hr = SitOn(hWnd);
    if (FAILED(hr))
        return hr;
    ReleaseAll();
    CComPtr<IUnknown> control;
    hr = CreateObject(clsid, control);
    if (SUCCEEDED(hr))
        hr = Embed(control, pStream, false);
    if (SUCCEEDED(hr) && punkAdvise)
        hr = ConnectSink(control, riidAdvise, punkAdvise);
    if (FAILED(hr)) {
        ReleaseAll();
        return hr;
    }
    if (ppUnk)
        *ppUnk = control.Detach();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::AttachControl(IUnknown* pUnkControl, HWND hWnd)
{
    if (!pUnkControl)
        return E_INVALIDARG;
    const CComPtr<IUnknown> self(GetUnknown());
    HRESULT hr = SitOn(hWnd);
    if (FAILED(hr))
        return hr;
    ReleaseAll();
    hr = Embed(pUnkControl, nullptr, true);
    if (FAILED(hr))
        ReleaseAll();
    return hr;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::QueryControl(REFIID riid, void** ppvObject)
{
    if (!ppvObject)
        return E_POINTER;
    *ppvObject = nullptr;
    return m_spUnknown ? m_spUnknown->QueryInterface(riid, ppvObject) : E_FAIL;
}

// Any call to the control may destroy the window, and with it release the control. What was done by the call
// itself is then undone, and the rest is left out.
HRESULT CAxHostWindow::Embed(IUnknown* control, IStream* stream, bool initialised)
{
    m_spUnknown = control;
    // Automation objects without a user interface are hosted as well: they only have nothing to show.
    const CComQIPtr<IOleObject> object(control);
    m_spOleObject = object;
    if (object) {
        HRESULT hr = Introduce(object, stream, initialised);
        if (SUCCEEDED(hr))
            hr = Connect(object);
        if (SUCCEEDED(hr) && !(m_dwMiscStatus & OLEMISC_INVISIBLEATRUNTIME))
            hr = Activate(object);
        if (FAILED(hr))
            return hr;
    }
    if (!Hosts(control))
        return E_ABORT;
    if (const CComQIPtr<IObjectWithSite> with_site(control); with_site) {
        with_site->SetSite(GetUnknown());
        if (!Hosts(control)) {
            with_site->SetSite(nullptr);
            return E_ABORT;
        }
    }
    return S_OK;
}

HRESULT CAxHostWindow::Introduce(IOleObject* object, IStream* stream, bool initialised)
{
    const CComPtr<IUnknown> control = m_spUnknown;
    DWORD misc_status = 0;
    if (FAILED(object->GetMiscStatus(DVASPECT_CONTENT, &misc_status)))
        misc_status = 0;
    m_dwMiscStatus = misc_status;
    const bool site_first = misc_status & OLEMISC_SETCLIENTSITEFIRST;
    HRESULT hr = site_first ? GiveSite(object, control) : S_OK;
    if (SUCCEEDED(hr) && !initialised)
        hr = Initialise(object, stream);
    if (SUCCEEDED(hr) && !Hosts(control))
        hr = E_ABORT;
    if (SUCCEEDED(hr) && !site_first)
        hr = GiveSite(object, control);
    return hr;
}

HRESULT CAxHostWindow::GiveSite(IOleObject* object, IUnknown* control)
{
    object->SetClientSite(this);
    if (Hosts(control))
        return S_OK;
    object->SetClientSite(nullptr);
    return E_ABORT;
}

HRESULT CAxHostWindow::Connect(IOleObject* object)
{
    const CComPtr<IUnknown> control = m_spUnknown;
    DWORD connection = 0;
    const bool advised = SUCCEEDED(object->Advise(this, &connection));
    if (!Hosts(control)) {
        if (advised)
            object->Unadvise(connection);
        return E_ABORT;
    }
    m_dwOleObject = advised ? connection : 0;
    if (const CComQIPtr<IViewObject> view(object); view) {
        m_spViewObject = view;
        view->SetAdvise(DVASPECT_CONTENT, 0, this);
        if (!Hosts(control)) {
            view->SetAdvise(DVASPECT_CONTENT, 0, nullptr);
            return E_ABORT;
        }
    }
    object->SetHostNames(OLESTR("AXWIN"), nullptr);
    return Hosts(control) ? S_OK : E_ABORT;
}

HRESULT CAxHostWindow::Activate(IOleObject* object)
{
    const CComPtr<IUnknown> control = m_spUnknown;
    const RECT area = ClientArea();
    SIZEL size{area.right - area.left, area.bottom - area.top};
    AtlPixelToHiMetric(&size, &size);
    object->SetExtent(DVASPECT_CONTENT, &size);
    if (!Hosts(control))
        return E_ABORT;
    const HRESULT hr = object->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, this, 0, m_hWnd, &area);
    if (!Hosts(control))
        return E_ABORT;
    RedrawWindow(m_hWnd, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
    return hr;
}

HRESULT CAxHostWindow::ConnectSink(IUnknown* control, REFIID iid, IUnknown* sink)
{
    DWORD cookie = 0;
    const HRESULT hr = AtlAdvise(control, sink, iid, &cookie);
    if (FAILED(hr))
        return hr;
    if (!Hosts(control)) {
        AtlUnadvise(control, iid, cookie);
        return E_ABORT;
    }
    m_iidSink = iid;
    m_dwAdviseSink = cookie;
    return S_OK;
}

void CAxHostWindow::ReleaseAll() noexcept
{
    if (m_bReleasing || !m_spUnknown)
        return;
    m_bReleasing = true;
    const CComPtr<IUnknown> control = std::move(m_spUnknown);
    const CComPtr<IOleObject> object = std::move(m_spOleObject);
    const CComPtr<IViewObject> view = std::move(m_spViewObject);
    const DWORD sink = m_dwAdviseSink;
    const DWORD advise = m_dwOleObject;
    m_dwAdviseSink = m_dwOleObject = m_dwMiscStatus = 0;
    if (sink)
        AtlUnadvise(control, m_iidSink, sink);
    if (view)
        view->SetAdvise(DVASPECT_CONTENT, 0, nullptr);
    if (object) {
        if (advise)
            object->Unadvise(advise);
        object->Close(OLECLOSE_NOSAVE);
    }
    // A control that did not leave by itself is made to.
    if (const CComPtr<IOleInPlaceObject> in_place = std::move(m_spInPlaceObject))
        in_place->InPlaceDeactivate();
    if (object)
        object->SetClientSite(nullptr);
    if (const CComQIPtr<IObjectWithSite> with_site(control); with_site)
        with_site->SetSite(nullptr);
    m_spInPlaceObject.Release();
    m_bUIActive = false;
    m_bReleasing = false;
}

RECT CAxHostWindow::ClientArea() const noexcept
{
    RECT area{};
    if (m_hWnd)
        ::GetClientRect(m_hWnd, &area);
    return area;
}

LRESULT CAxHostWindow::OnSize(UINT, WPARAM wParam, LPARAM, BOOL& bHandled)
{
    bHandled = FALSE;
    if (wParam == SIZE_MINIMIZED || !m_spUnknown)
        return 0;
    const RECT area = ClientArea();
    SIZEL size{area.right - area.left, area.bottom - area.top};
    AtlPixelToHiMetric(&size, &size);
    if (const CComPtr<IOleObject> object = m_spOleObject)
        object->SetExtent(DVASPECT_CONTENT, &size);
    if (const CComPtr<IOleInPlaceObject> in_place = m_spInPlaceObject)
        in_place->SetObjectRects(&area, &area);
    return 0;
}

LRESULT CAxHostWindow::OnSetFocus(UINT, WPARAM, LPARAM, BOOL& bHandled)
{
    bHandled = FALSE;
    const CComPtr<IOleObject> object = m_spOleObject;
    if (!object || m_bReleasing)
        return 0;
    if (!m_bUIActive) {
        const RECT area = ClientArea();
        object->DoVerb(OLEIVERB_UIACTIVATE, nullptr, this, 0, m_hWnd, &area);
    }
    // The control's window gets the focus also when the control did not take it.
    const HWND child = m_hWnd ? ::GetWindow(m_hWnd, GW_CHILD) : nullptr;
    if (child && GetFocus() == m_hWnd)
        ::SetFocus(child);
    return 0;
}

LRESULT CAxHostWindow::OnDestroy(UINT, WPARAM, LPARAM, BOOL& bHandled)
{
    ReleaseAll();
    bHandled = FALSE;
    return 0;
}

LRESULT CAxHostWindow::OnGetHost(UINT, WPARAM, LPARAM, BOOL&)
{
    IUnknown* const host = GetUnknown();
    host->AddRef();
    return reinterpret_cast<LRESULT>(host);
}

LRESULT CAxHostWindow::OnGetControl(UINT, WPARAM, LPARAM, BOOL&)
{
    CComPtr<IUnknown> control = m_spUnknown;
    return reinterpret_cast<LRESULT>(control.Detach());
}

} // namespace ATL
