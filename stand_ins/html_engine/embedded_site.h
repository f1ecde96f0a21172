// The site of one embedded object, through which it accesses the page and the browser.
#pragma once

#include "stand_ins/html_engine/counted_object.h"

#include <windows.h>

#include <ocidl.h>
#include <oleidl.h>
#include <servprov.h>

namespace quill {

class embedded_site;

// The page's functions for a site. The returned pointers are borrowed and may be null.
class embedded_host
{
public:
    virtual IUnknown* page_object() = 0;
    virtual HWND page_window() = 0;
    virtual IOleClientSite* page_client_site() = 0;
    virtual IOleInPlaceSite* page_in_place_site() = 0;
    virtual IMoniker* page_moniker() = 0;
    // The object of this site was UI-activated.
    virtual void ui_activated(embedded_site& site) = 0;

protected:
    ~embedded_host() = default;
};

class ATL_NO_VTABLE embedded_site : public counted_object<&live_objects::embedded_sites>,
                                    public IOleClientSite,
                                    public IOleInPlaceSite,
                                    public IServiceProvider
{
public:
    BEGIN_COM_MAP(embedded_site)
    COM_INTERFACE_ENTRY(IOleClientSite)
    COM_INTERFACE_ENTRY2(IOleWindow, IOleInPlaceSite)
    COM_INTERFACE_ENTRY(IOleInPlaceSite)
    COM_INTERFACE_ENTRY(IServiceProvider)
    END_COM_MAP()

    void attach(embedded_host& host) { host_ = &host; }
    // The object may hold its site longer than the page exists.
    void detach() { host_ = nullptr; }
    void set_place(const RECT& place) { place_ = place; }

    // IOleClientSite
    STDMETHODIMP SaveObject() override { return E_NOTIMPL; }
    STDMETHODIMP GetMoniker(DWORD assign, DWORD which, IMoniker** moniker) override;
    STDMETHODIMP GetContainer(IOleContainer** container) override;
    STDMETHODIMP ShowObject() override { return S_OK; }
    STDMETHODIMP OnShowWindow(BOOL) override { return S_OK; }
    STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }

    // IOleWindow
    STDMETHODIMP GetWindow(HWND* window) override;
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }

    // IOleInPlaceSite
    STDMETHODIMP CanInPlaceActivate() override { return host_ != nullptr ? S_OK : S_FALSE; }
    STDMETHODIMP OnInPlaceActivate() override { return S_OK; }
    STDMETHODIMP OnUIActivate() override;
    STDMETHODIMP GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document, LPRECT position,
                                  LPRECT clip, LPOLEINPLACEFRAMEINFO info) override;
    STDMETHODIMP Scroll(SIZE) override { return E_NOTIMPL; }
    STDMETHODIMP OnUIDeactivate(BOOL) override { return S_OK; }
    STDMETHODIMP OnInPlaceDeactivate() override { return S_OK; }
    STDMETHODIMP DiscardUndoState() override { return S_OK; }
    STDMETHODIMP DeactivateAndUndo() override { return S_OK; }
    STDMETHODIMP OnPosRectChange(LPCRECT) override { return S_OK; } // the page determines the size

    // IServiceProvider
    STDMETHODIMP QueryService(REFGUID service, REFIID interface_id, void** out) override;

private:
    embedded_host* host_ = nullptr;
    RECT place_{};
};

} // namespace quill
