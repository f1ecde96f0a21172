// Creation, sizing, focus and release of the control in a hosting window.
#include "atl/detail/ax_host_window.h"

#include "atl/detail/control_base.h"

namespace ATL {
namespace {

HRESULT class_from_name(LPCOLESTR name, CLSID& clsid) noexcept
{
    clsid = CLSID_NULL;
    if (!name || !*name)
        return E_INVALIDARG;
    return *name == L'{' ? CLSIDFromString(name, &clsid) : CLSIDFromProgID(name, &clsid);
}

// Uses the class object: CoCreateInstance does not handle a factory that returns S_OK with a null pointer.
HRESULT create_object(REFCLSID clsid, CComPtr<IUnknown>& object) noexcept
{
    IClassFactory* offered = nullptr;
    HRESULT hr = CoGetClassObject(clsid, CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER,
                                  nullptr, IID_IClassFactory, reinterpret_cast<void**>(&offered));
    CComPtr<IClassFactory> factory;
    // What a failed call leaves in its out parameter is not ours to release.
    if (SUCCEEDED(hr))
        factory.Attach(offered);
    if (factory) {
        IUnknown* created = nullptr;
        hr = factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&created));
        if (SUCCEEDED(hr))
            object.Attach(created);
    }
    return SUCCEEDED(hr) && !object ? E_NOINTERFACE : hr;
}

// A control without stream persistence needs no initialisation.
HRESULT initialise(IUnknown* control, IStream* stream) noexcept
{
    if (const CComQIPtr<IPersistStreamInit> stream_init(control); stream_init) {
        const HRESULT hr = stream ? stream_init->Load(stream) : stream_init->InitNew();
        // A control that has no state may return E_NOTIMPL from InitNew.
        return !stream && hr == E_NOTIMPL ? S_OK : hr;
    }
    if (const CComQIPtr<IPersistStream> persist(control); persist && stream)
        return persist->Load(stream);
    return S_OK;
}

} // namespace

HRESULT CAxHostWindow::attach_to_window(HWND hWnd) noexcept
{
    if (m_hWnd)
        return m_hWnd == hWnd ? S_OK : E_INVALIDARG;
    if (!::IsWindow(hWnd))
        return E_INVALIDARG;
    if (!SubclassWindow(hWnd))
        return E_FAIL;
    AddRef(); // the window's reference, released in OnFinalMessage
    return S_OK;
}

void CAxHostWindow::detach_from_window() noexcept
{
    const CComPtr<IUnknown> self(GetUnknown());
    release_control();
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
    HRESULT hr = class_from_name(lpTricsData, clsid);
    if (SUCCEEDED(hr))
        hr = attach_to_window(hWnd);
    if (FAILED(hr))
        return hr;
    release_control();
    CComPtr<IUnknown> control;
    hr = create_object(clsid, control);
    if (SUCCEEDED(hr))
        hr = embed(control, pStream, false);
    if (SUCCEEDED(hr) && punkAdvise)
        hr = advise_sink(control, riidAdvise, punkAdvise);
    if (FAILED(hr)) {
        release_control();
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
    HRESULT hr = attach_to_window(hWnd);
    if (FAILED(hr))
        return hr;
    release_control();
    hr = embed(pUnkControl, nullptr, true);
    if (FAILED(hr))
        release_control();
    return hr;
}

HRESULT STDMETHODCALLTYPE CAxHostWindow::QueryControl(REFIID riid, void** ppvObject)
{
    if (!ppvObject)
        return E_POINTER;
    *ppvObject = nullptr;
    return m_spUnknown ? m_spUnknown->QueryInterface(riid, ppvObject) : E_FAIL;
}

// Every call to the control may destroy the window and so release the control. The step just made is then
// undone and the remaining steps are skipped.
HRESULT CAxHostWindow::embed(IUnknown* control, IStream* stream, bool initialised)
{
    m_spUnknown = control;
    // Objects without IOleObject have no user interface but can be hosted.
    const CComQIPtr<IOleObject> object(control);
    m_spOleObject = object;
    if (object) {
        HRESULT hr = initialise_control(object, stream, initialised);
        if (SUCCEEDED(hr))
            hr = advise_control(object);
        if (SUCCEEDED(hr) && !(m_dwMiscStatus & OLEMISC_INVISIBLEATRUNTIME))
            hr = activate(object);
        if (FAILED(hr))
            return hr;
    }
    if (!is_hosting(control))
        return E_ABORT;
    if (const CComQIPtr<IObjectWithSite> with_site(control); with_site) {
        with_site->SetSite(GetUnknown());
        if (!is_hosting(control)) {
            with_site->SetSite(nullptr);
            return E_ABORT;
        }
    }
    return S_OK;
}

HRESULT CAxHostWindow::initialise_control(IOleObject* object, IStream* stream, bool initialised)
{
    const CComPtr<IUnknown> control = m_spUnknown;
    DWORD misc_status = 0;
    if (FAILED(object->GetMiscStatus(DVASPECT_CONTENT, &misc_status)))
        misc_status = 0;
    m_dwMiscStatus = misc_status;
    const bool site_first = misc_status & OLEMISC_SETCLIENTSITEFIRST;
    HRESULT hr = site_first ? set_client_site(object, control) : S_OK;
    if (SUCCEEDED(hr) && !initialised)
        hr = initialise(object, stream);
    if (SUCCEEDED(hr) && !is_hosting(control))
        hr = E_ABORT;
    if (SUCCEEDED(hr) && !site_first)
        hr = set_client_site(object, control);
    return hr;
}

HRESULT CAxHostWindow::set_client_site(IOleObject* object, IUnknown* control)
{
    object->SetClientSite(this);
    if (is_hosting(control))
        return S_OK;
    object->SetClientSite(nullptr);
    return E_ABORT;
}

HRESULT CAxHostWindow::advise_control(IOleObject* object)
{
    const CComPtr<IUnknown> control = m_spUnknown;
    DWORD connection = 0;
    const bool advised = SUCCEEDED(object->Advise(this, &connection));
    if (!is_hosting(control)) {
        if (advised)
            object->Unadvise(connection);
        return E_ABORT;
    }
    m_dwOleObject = advised ? connection : 0;
    if (const CComQIPtr<IViewObject> view(object); view) {
        m_spViewObject = view;
        view->SetAdvise(DVASPECT_CONTENT, 0, this);
        if (!is_hosting(control)) {
            view->SetAdvise(DVASPECT_CONTENT, 0, nullptr);
            return E_ABORT;
        }
    }
    object->SetHostNames(OLESTR("AXWIN"), nullptr);
    return is_hosting(control) ? S_OK : E_ABORT;
}

HRESULT CAxHostWindow::activate(IOleObject* object)
{
    const CComPtr<IUnknown> control = m_spUnknown;
    const RECT area = client_area();
    SIZEL size{area.right - area.left, area.bottom - area.top};
    AtlPixelToHiMetric(&size, &size);
    object->SetExtent(DVASPECT_CONTENT, &size);
    if (!is_hosting(control))
        return E_ABORT;
    const HRESULT hr = object->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, this, 0, m_hWnd, &area);
    if (!is_hosting(control))
        return E_ABORT;
    RedrawWindow(m_hWnd, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
    return hr;
}

HRESULT CAxHostWindow::advise_sink(IUnknown* control, REFIID iid, IUnknown* sink)
{
    DWORD cookie = 0;
    const HRESULT hr = AtlAdvise(control, sink, iid, &cookie);
    if (FAILED(hr))
        return hr;
    if (!is_hosting(control)) {
        AtlUnadvise(control, iid, cookie);
        return E_ABORT;
    }
    m_iidSink = iid;
    m_dwAdviseSink = cookie;
    return S_OK;
}

void CAxHostWindow::release_control() noexcept
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
    // A well-behaved control has deactivated in Close; deactivate one that has not.
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

RECT CAxHostWindow::client_area() const noexcept
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
    const RECT area = client_area();
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
        const RECT area = client_area();
        object->DoVerb(OLEIVERB_UIACTIVATE, nullptr, this, 0, m_hWnd, &area);
    }
    // Not every control takes the focus when it is UI-activated.
    const HWND child = m_hWnd ? ::GetWindow(m_hWnd, GW_CHILD) : nullptr;
    if (child && GetFocus() == m_hWnd)
        ::SetFocus(child);
    return 0;
}

LRESULT CAxHostWindow::OnDestroy(UINT, WPARAM, LPARAM, BOOL& bHandled)
{
    release_control();
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
