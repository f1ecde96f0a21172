// The site that the browser gives a document: client site, document site, in-place site, services.
#pragma once

#include "tests/support/fakes/logged_object.h"

#include <docobj.h>
#include <exdisp.h>
#include <mshtml.h>
#include <ocidl.h>
#include <servprov.h>
#include <unimplemented_interfaces.h>

#include <string>

namespace quill::test {

class document_host;

// The interfaces that the site offers besides IOleClientSite.
struct site_interfaces
{
    bool document_site = true;
    bool in_place_site = true;
    bool in_place_site_ex = false;
    bool service_provider = true;
    bool ambient_properties = false; // an IDispatch without properties
};

class host_site final : public logged_object<without_IOleClientSite<IOleClientSite>, IOleDocumentSite,
                                             without_IOleInPlaceSiteEx<IOleInPlaceSiteEx>, IServiceProvider,
                                             without_IDispatch<IDispatch>>
{
public:
    host_site(call_log& calls, document_host& host);

    site_interfaces offered;
    // What a GetWindowContext that fails leaves in its out parameters, without a reference.
    IOleInPlaceFrame* failure_leaves = nullptr;
    // What an Invoke that fails leaves in its result, without a reference.
    IUnknown* failed_property_leaves = nullptr;

    IOleClientSite* client_site() { return this; }
    IOleInPlaceSite* in_place_site() { return this; }

    // IOleClientSite
    STDMETHODIMP GetMoniker(DWORD assign, DWORD which, IMoniker** out) override;
    STDMETHODIMP GetContainer(IOleContainer** out) override;
    STDMETHODIMP ShowObject() override;
    STDMETHODIMP OnShowWindow(BOOL) override;

    // IOleDocumentSite
    STDMETHODIMP ActivateMe(IOleDocumentView* view) override;

    // IOleInPlaceSite
    STDMETHODIMP GetWindow(HWND* out) override;
    STDMETHODIMP CanInPlaceActivate() override;
    STDMETHODIMP OnInPlaceActivate() override;
    STDMETHODIMP OnUIActivate() override;
    STDMETHODIMP GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document, LPRECT position,
                                  LPRECT clip, LPOLEINPLACEFRAMEINFO info) override;
    STDMETHODIMP OnUIDeactivate(BOOL) override;
    STDMETHODIMP OnInPlaceDeactivate() override;

    // IOleInPlaceSiteEx
    STDMETHODIMP OnInPlaceActivateEx(BOOL* no_redraw, DWORD) override;
    STDMETHODIMP OnInPlaceDeactivateEx(BOOL) override;
    STDMETHODIMP RequestUIActivate() override;

    // IServiceProvider
    STDMETHODIMP QueryService(REFGUID service, REFIID iid, void** out) override;

    // IDispatch
    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override;

private:
    IUnknown* find(REFIID iid) override;

    document_host& host_;
};

} // namespace quill::test
