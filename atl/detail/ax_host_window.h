// CAxHostWindow: the host of one control in one window. The window owns it; so do references of others. Its
// control is let go when the window goes, whoever still holds the host.
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

    // Sits on `hWnd`, which from then on holds a reference.
    HRESULT SitOn(HWND hWnd) noexcept;
    // Lets the control go and leaves the window, which gives its reference back.
    void Leave() noexcept;

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

    // IServiceProvider: what the host's own site has to offer.
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID guidService, REFIID riid, void** ppvObject) override;

    // IAdviseSink: nothing of it concerns a control with a window.
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
    void FinalRelease() noexcept { ReleaseAll(); }

protected:
    IUnknown* GetMessageOwner() noexcept override { return GetUnknown(); }

private:
    LRESULT OnSize(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);
    LRESULT OnSetFocus(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);
    LRESULT OnDestroy(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);
    LRESULT OnGetHost(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);
    LRESULT OnGetControl(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);

    HRESULT Embed(IUnknown* control, IStream* stream, bool initialised);
    HRESULT Introduce(IOleObject* object, IStream* stream, bool initialised);
    HRESULT GiveSite(IOleObject* object, IUnknown* control);
    HRESULT Connect(IOleObject* object);
    HRESULT Activate(IOleObject* object);
    HRESULT ConnectSink(IUnknown* control, REFIID iid, IUnknown* sink);
    void ReleaseAll() noexcept;
    bool Hosts(IUnknown* control) const noexcept { return control && m_spUnknown == control; }
    RECT ClientArea() const noexcept;

    CComPtr<IUnknown> m_spUnknown; // the control
    CComPtr<IOleObject> m_spOleObject;
    CComPtr<IViewObject> m_spViewObject;
    CComPtr<IOleInPlaceObject> m_spInPlaceObject; // while active in place
    DWORD m_dwMiscStatus = 0;
    DWORD m_dwOleObject = 0; // advise connection
    IID m_iidSink = IID_NULL;
    DWORD m_dwAdviseSink = 0; // connection of the caller's sink
    bool m_bUIActive = false;
    bool m_bReleasing = false;
};

} // namespace ATL
