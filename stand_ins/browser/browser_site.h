// The client site, in-place site and frame of the WebBrowser control.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <atlcom.h>
#include <oleidl.h>

namespace quill {

// One object implements site and frame, since the frame has no menus, tool bars or borders.
class ATL_NO_VTABLE browser_site : public CComObjectRootEx<CComSingleThreadModel>,
                                   public IOleClientSite,
                                   public IOleInPlaceSite,
                                   public IOleInPlaceFrame
{
public:
    BEGIN_COM_MAP(browser_site)
    COM_INTERFACE_ENTRY(IOleClientSite)
    COM_INTERFACE_ENTRY2(IOleWindow, IOleInPlaceSite)
    COM_INTERFACE_ENTRY(IOleInPlaceSite)
    COM_INTERFACE_ENTRY(IOleInPlaceUIWindow)
    COM_INTERFACE_ENTRY(IOleInPlaceFrame)
    END_COM_MAP()

    // Sets the hosting window and the control, which is borrowed. Set both to null before the container is
    // destroyed: the control may still hold a reference to its site.
    void attach(HWND window, IOleInPlaceObject* control);

    // IOleClientSite
    STDMETHOD(SaveObject)() override { return E_NOTIMPL; }
    STDMETHOD(GetMoniker)(DWORD assign, DWORD which, IMoniker** moniker) override;
    STDMETHOD(GetContainer)(IOleContainer** container) override;
    STDMETHOD(ShowObject)() override { return S_OK; }
    STDMETHOD(OnShowWindow)(BOOL) override { return S_OK; }
    STDMETHOD(RequestNewObjectLayout)() override { return E_NOTIMPL; }

    // IOleWindow, of the site and of the frame
    STDMETHOD(GetWindow)(HWND* window) override;
    STDMETHOD(ContextSensitiveHelp)(BOOL) override { return E_NOTIMPL; }

    // IOleInPlaceSite
    STDMETHOD(CanInPlaceActivate)() override { return S_OK; }
    STDMETHOD(OnInPlaceActivate)() override { return S_OK; }
    STDMETHOD(OnUIActivate)() override { return S_OK; }
    STDMETHOD(GetWindowContext)(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document, LPRECT position,
                                LPRECT clip, LPOLEINPLACEFRAMEINFO info) override;
    STDMETHOD(Scroll)(SIZE) override { return E_NOTIMPL; }
    STDMETHOD(OnUIDeactivate)(BOOL) override { return S_OK; }
    STDMETHOD(OnInPlaceDeactivate)() override { return S_OK; }
    STDMETHOD(DiscardUndoState)() override { return S_OK; }
    STDMETHOD(DeactivateAndUndo)() override { return S_OK; }
    STDMETHOD(OnPosRectChange)(LPCRECT position) override;

    // IOleInPlaceUIWindow
    STDMETHOD(GetBorder)(LPRECT border) override;
    STDMETHOD(RequestBorderSpace)(LPCBORDERWIDTHS) override { return INPLACE_E_NOTOOLSPACE; }
    STDMETHOD(SetBorderSpace)(LPCBORDERWIDTHS) override { return OLE_E_INVALIDRECT; }
    STDMETHOD(SetActiveObject)(IOleInPlaceActiveObject*, LPCOLESTR) override { return S_OK; }

    // IOleInPlaceFrame
    STDMETHOD(InsertMenus)(HMENU, LPOLEMENUGROUPWIDTHS) override { return E_NOTIMPL; }
    STDMETHOD(SetMenu)(HMENU, HOLEMENU, HWND) override { return S_OK; }
    STDMETHOD(RemoveMenus)(HMENU) override { return S_OK; }
    STDMETHOD(SetStatusText)(LPCOLESTR) override { return S_OK; }
    STDMETHOD(EnableModeless)(BOOL) override { return S_OK; }
    STDMETHOD(TranslateAccelerator)(LPMSG, WORD) override { return S_FALSE; }

private:
    HWND window_ = nullptr;
    IOleInPlaceObject* control_ = nullptr;
};

} // namespace quill
