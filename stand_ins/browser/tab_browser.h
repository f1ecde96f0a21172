// The browser object of a tab, as a browser has one around its control: what helper objects get as their
// site. The control by itself does not say that it is a tab's whole page.
#pragma once

#include "stand_ins/browser/event_relay.h"

#include <windows.h>

#include <atlbase.h>
#include <atlcom.h>
#include <exdisp.h>
#include <unimplemented_interfaces.h>

#include <vector>

namespace quill {

class ATL_NO_VTABLE tab_browser : public CComObjectRootEx<CComSingleThreadModel>,
                                  public without_IWebBrowser2<IWebBrowser2>,
                                  public IConnectionPointContainer
{
public:
    BEGIN_COM_MAP(tab_browser)
    COM_INTERFACE_ENTRY(IWebBrowser2)
    COM_INTERFACE_ENTRY2(IWebBrowserApp, IWebBrowser2)
    COM_INTERFACE_ENTRY2(IWebBrowser, IWebBrowser2)
    COM_INTERFACE_ENTRY2(IDispatch, IWebBrowser2)
    COM_INTERFACE_ENTRY(IConnectionPointContainer)
    END_COM_MAP()

    // Stands for the control from here on.
    HRESULT open(IWebBrowser2* control);
    // Has the events of a frame's browser heard at the tab too, about the frame, as the browser does.
    HRESULT add_frame(IWebBrowser2* frame);
    // Tells the tab's end to whoever listens, once.
    void quit();
    // The same, and lets go of everything.
    void close();
    // How many listen.
    std::size_t sinks() const { return relay_ ? relay_->sinks() : 0; }

    // IWebBrowser2: what the tab adds, and what the control knows
    STDMETHODIMP get_TopLevelContainer(VARIANT_BOOL* value) override;
    STDMETHODIMP get_Document(IDispatch** document) override;
    STDMETHODIMP get_LocationURL(BSTR* address) override;
    STDMETHODIMP get_Busy(VARIANT_BOOL* value) override;
    STDMETHODIMP get_ReadyState(READYSTATE* state) override;
    STDMETHODIMP Navigate2(VARIANT* address, VARIANT* flags, VARIANT* frame, VARIANT* post_data,
                           VARIANT* headers) override;
    STDMETHODIMP Stop() override;

    // IConnectionPointContainer
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override;
    STDMETHODIMP FindConnectionPoint(REFIID events, IConnectionPoint** point) override;

private:
    CComPtr<IWebBrowser2> control_;
    CComPtr<event_relay> relay_;
    CComPtr<event_listener> listener_;
    std::vector<CComPtr<event_listener>> frames_;
    bool has_quit_ = false;
};

} // namespace quill
