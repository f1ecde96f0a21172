// CAxHostWindow: hosts one control in one window. The window holds a reference to the host. The control is
// released when the window is destroyed, whatever references to the host remain.
#pragma once

#include "atl/atlcom.h"
#include "atl/atlhost.h"
#include "atl/atlwin.h"

#include <ocidl.h>
#include <oleidl.h>
#include <servprov.h>

namespace ATL {

class CAxHostWindow : public CComObjectRootEx<CComSingleThreadModel>,
                      public CWindowImpl<CAxHostWindow>,
                      public IAxWinHostWindow,
                      public IOleClientSite,
                      public IOleInPlaceSite,
                      public IOleControlSite,
                      public IOleContainer,
                      public IObjectWithSiteImpl<CAxHostWindow>,
                      public IServiceProvider,
                      public IAdviseSink,
                      public IDispatch
{
public:
    BEGIN_COM_MAP(CAxHostWindow)
    COM_INTERFACE_ENTRY(IAxWinHostWindow)
    COM_INTERFACE_ENTRY(IOleClientSite)
    COM_INTERFACE_ENTRY(IOleInPlaceSite)
    COM_INTERFACE_ENTRY(IOleWindow)
    COM_INTERFACE_ENTRY(IOleControlSite)
    COM_INTERFACE_ENTRY(IOleContainer)
    COM_INTERFACE_ENTRY(IParseDisplayName)
    COM_INTERFACE_ENTRY(IObjectWithSite)
    COM_INTERFACE_ENTRY(IServiceProvider)
    COM_INTERFACE_ENTRY(IAdviseSink)
    COM_INTERFACE_ENTRY(IDispatch)
    END_COM_MAP()

    BEGIN_MSG_MAP(CAxHostWindow)
    MESSAGE_HANDLER(WM_SIZE, OnSize)
    MESSAGE_HANDLER(WM_SETFOCUS, OnSetFocus)
    MESSAGE_HANDLER(WM_DESTROY, OnDestroy)
    MESSAGE_HANDLER(AtlGetHostMessage(), OnGetHost)
    MESSAGE_HANDLER(AtlGetControlMessage(), OnGetControl)
    END_MSG_MAP()

    // Subclasses `hWnd`, which then holds a reference to this object.
    HRESULT attach_to_window(HWND hWnd) noexcept;
    // Releases the control and removes the subclassing with the window's reference.
    void detach_from_window() noexcept;

    // IAxWinHostWindow
    HRESULT STDMETHODCALLTYPE CreateControl(LPCOLESTR lpTricsData, HWND hWnd, IStream* pStream) override;
    HRESULT STDMETHODCALLTYPE CreateControlEx(LPCOLESTR lpTricsData, HWND hWnd, IStream* pStream,
                                              IUnknown** ppUnk, REFIID riidAdvise,
                                              IUnknown* punkAdvise) override;
    HRESULT STDMETHODCALLTYPE AttachControl(IUnknown* pUnkControl, HWND hWnd) override;
    HRESULT STDMETHODCALLTYPE QueryControl(REFIID riid, void** ppvObject) override;
    HRESULT STDMETHODCALLTYPE SetExternalDispatch(IDispatch*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetExternalUIHandler(IDocHostUIHandlerDispatch*) override { return E_NOTIMPL; }

    // IOleClientSite
    HRESULT STDMETHODCALLTYPE SaveObject() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker** ppmk) override;
    HRESULT STDMETHODCALLTYPE GetContainer(IOleContainer** ppContainer) override;
    HRESULT STDMETHODCALLTYPE ShowObject() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnShowWindow(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE RequestNewObjectLayout() override { return E_NOTIMPL; }

    // IOleInPlaceSite
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* phwnd) override;
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CanInPlaceActivate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnInPlaceActivate() override;
    HRESULT STDMETHODCALLTYPE OnUIActivate() override;
    HRESULT STDMETHODCALLTYPE GetWindowContext(IOleInPlaceFrame** ppFrame, IOleInPlaceUIWindow** ppDoc,
                                               LPRECT lprcPosRect, LPRECT lprcClipRect,
                                               LPOLEINPLACEFRAMEINFO lpFrameInfo) override;
    HRESULT STDMETHODCALLTYPE Scroll(SIZE) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnUIDeactivate(BOOL) override;
    HRESULT STDMETHODCALLTYPE OnInPlaceDeactivate() override;
    HRESULT STDMETHODCALLTYPE DiscardUndoState() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeactivateAndUndo() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnPosRectChange(LPCRECT) override;

    // IOleControlSite
    HRESULT STDMETHODCALLTYPE OnControlInfoChanged() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE LockInPlaceActive(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetExtendedControl(IDispatch** ppDisp) override;
    HRESULT STDMETHODCALLTYPE TransformCoords(POINTL*, POINTF*, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG*, DWORD) override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE OnFocus(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE ShowPropertyFrame() override { return E_NOTIMPL; }

    // IOleContainer
    HRESULT STDMETHODCALLTYPE ParseDisplayName(IBindCtx*, LPOLESTR, ULONG*, IMoniker** ppmkOut) override;
    HRESULT STDMETHODCALLTYPE EnumObjects(DWORD, IEnumUnknown** ppenum) override;
    HRESULT STDMETHODCALLTYPE LockContainer(BOOL) override { return S_OK; }

    // IServiceProvider: forwarded to the host's own site.
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID guidService, REFIID riid, void** ppvObject) override;

    // IAdviseSink: ignored, since a windowed control redraws itself.
    void STDMETHODCALLTYPE OnDataChange(FORMATETC*, STGMEDIUM*) override {}
    void STDMETHODCALLTYPE OnViewChange(DWORD, LONG) override {}
    void STDMETHODCALLTYPE OnRename(IMoniker*) override {}
    void STDMETHODCALLTYPE OnSave() override {}
    void STDMETHODCALLTYPE OnClose() override {}

    // IDispatch: ambient properties.
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** ppTInfo) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID, WORD wFlags, DISPPARAMS*,
                                     VARIANT* pVarResult, EXCEPINFO*, UINT*) override;

    void OnFinalMessage(HWND hWnd) override;
    void FinalRelease() noexcept { release_control(); }

protected:
    IUnknown* message_owner() noexcept override { return GetUnknown(); }

private:
    LRESULT OnSize(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);
    LRESULT OnSetFocus(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);
    LRESULT OnDestroy(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);
    LRESULT OnGetHost(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);
    LRESULT OnGetControl(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);

    HRESULT embed(IUnknown* control, IStream* stream, bool initialised);
    HRESULT initialise_control(IOleObject* object, IStream* stream, bool initialised);
    HRESULT set_client_site(IOleObject* object, IUnknown* control);
    HRESULT advise_control(IOleObject* object);
    HRESULT activate(IOleObject* object);
    HRESULT advise_sink(IUnknown* control, REFIID iid, IUnknown* sink);
    void release_control() noexcept;
    bool is_hosting(IUnknown* control) const noexcept { return control && m_spUnknown == control; }
    RECT client_area() const noexcept;

    CComPtr<IUnknown> m_spUnknown; // the control
    CComPtr<IOleObject> m_spOleObject;
    CComPtr<IViewObject> m_spViewObject;
    CComPtr<IOleInPlaceObject> m_spInPlaceObject; // while in-place active
    DWORD m_dwMiscStatus = 0;
    DWORD m_dwOleObject = 0; // IOleObject advise connection
    IID m_iidSink = IID_NULL;
    DWORD m_dwAdviseSink = 0; // cookie of the caller's sink
    bool m_bUIActive = false;
    bool m_bReleasing = false;
};

} // namespace ATL
