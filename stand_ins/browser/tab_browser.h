// The browser object of a tab, which is the site of helper objects. A browser wraps its control in such an
// object; unlike the control, it is a top-level container.
#pragma once

#include "stand_ins/browser/event_relay.h"

#include <windows.h>

#include <atlbase.h>
#include <atlcom.h>
#include <exdisp.h>
#include <mshtml.h>
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

    // Wraps the control and forwards its events.
    HRESULT open(IWebBrowser2* control);
    // Also forwards the events of a frame's browser, with the frame as their browser argument.
    HRESULT add_frame(IWebBrowser2* frame);
    // Fires OnQuit, once.
    void quit();
    // Calls quit() and releases all references.
    void close();
    // The number of advised sinks.
    std::size_t sinks() const { return relay_ ? relay_->sinks() : 0; }

    // IWebBrowser2: TopLevelContainer is the tab's own, the rest is forwarded to the control
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
    CComPtr<forwarding_sink> control_sink_;
    std::vector<CComPtr<forwarding_sink>> frames_;
    bool has_quit_ = false;
};

} // namespace quill
