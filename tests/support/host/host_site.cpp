#include "tests/support/host/host_site.h"

#include "tests/support/host/document_host.h"

#include <shlguid.h>
#include <shobjidl.h>

namespace quill::test {

host_site::host_site(call_log& calls, document_host& host) : logged_object(calls, "site"), host_(host)
{
    for (const char* name :
         {"IOleClientSite::GetMoniker", "IOleClientSite::GetContainer", "IOleClientSite::ShowObject",
          "IOleClientSite::OnShowWindow", "IOleDocumentSite::ActivateMe", "IOleInPlaceSite::GetWindow",
          "IOleInPlaceSite::CanInPlaceActivate", "IOleInPlaceSite::OnInPlaceActivate",
          "IOleInPlaceSite::OnUIActivate", "IOleInPlaceSite::GetWindowContext",
          "IOleInPlaceSite::OnUIDeactivate", "IOleInPlaceSite::OnInPlaceDeactivate",
          "IServiceProvider::QueryService", "IDispatch::Invoke"})
        calls.allow(name);
}

IUnknown* host_site::find(REFIID iid)
{
    if (IsEqualIID(iid, IID_IOleClientSite))
        return client_site();
    if (IsEqualIID(iid, IID_IOleDocumentSite))
        return offered.document_site ? static_cast<IOleDocumentSite*>(this) : nullptr;
    if (IsEqualIID(iid, IID_IOleInPlaceSite) || IsEqualIID(iid, IID_IOleWindow))
        return offered.in_place_site ? in_place_site() : nullptr;
    if (IsEqualIID(iid, IID_IOleInPlaceSiteEx))
        return offered.in_place_site_ex ? in_place_site() : nullptr;
    if (IsEqualIID(iid, IID_IServiceProvider))
        return offered.service_provider ? static_cast<IServiceProvider*>(this) : nullptr;
    if (IsEqualIID(iid, IID_IDispatch))
        return offered.ambient_properties ? static_cast<IDispatch*>(this) : nullptr;
    return nullptr;
}

STDMETHODIMP host_site::GetMoniker(DWORD assign, DWORD which, IMoniker** out)
{
    const call_fault fault =
        arrive("IOleClientSite::GetMoniker", std::to_string(assign) + " " + std::to_string(which));
    EXPECT_EQ(assign, DWORD{OLEGETMONIKER_TEMPFORUSER});
    fake_moniker& moniker = which == OLEWHICHMK_OBJFULL ? host_.object_moniker : host_.container_moniker;
    EXPECT_TRUE(which == OLEWHICHMK_OBJFULL || which == OLEWHICHMK_CONTAINER);
    return answer_interface<IMoniker>(fault, out, moniker.display_name ? &moniker : nullptr);
}

STDMETHODIMP host_site::GetContainer(IOleContainer** out)
{
    const call_fault fault = arrive("IOleClientSite::GetContainer");
    if (!host_.container && fault == call_fault::none)
        return E_NOTIMPL; // the browser's own site leaves the out parameter untouched too
    return answer_interface(fault, out, host_.container);
}

STDMETHODIMP host_site::ShowObject()
{
    return answer_plain(arrive("IOleClientSite::ShowObject"));
}

STDMETHODIMP host_site::OnShowWindow(BOOL)
{
    return answer_plain(arrive("IOleClientSite::OnShowWindow"));
}

STDMETHODIMP host_site::ActivateMe(IOleDocumentView* view)
{
    const call_fault fault = arrive("IOleDocumentSite::ActivateMe", view ? "view" : "null");
    if (is_error(fault))
        return answer_plain(fault);
    return host_.activate(view);
}

STDMETHODIMP host_site::GetWindow(HWND* out)
{
    return answer_window(arrive("IOleInPlaceSite::GetWindow"), out, host_.view_window());
}

STDMETHODIMP host_site::CanInPlaceActivate()
{
    return answer_plain(arrive("IOleInPlaceSite::CanInPlaceActivate"));
}

STDMETHODIMP host_site::OnInPlaceActivate()
{
    return answer_plain(arrive("IOleInPlaceSite::OnInPlaceActivate"));
}

STDMETHODIMP host_site::OnUIActivate()
{
    return answer_plain(arrive("IOleInPlaceSite::OnUIActivate"));
}

STDMETHODIMP host_site::GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                         LPRECT position, LPRECT clip, LPOLEINPLACEFRAMEINFO info)
{
    const call_fault fault = arrive("IOleInPlaceSite::GetWindowContext");
    if (!frame || !document || !position || !clip || !info) {
        ADD_FAILURE() << "GetWindowContext without an out parameter";
        return E_INVALIDARG;
    }
    EXPECT_EQ(*frame, nullptr) << "the frame variable was not initialised";
    EXPECT_EQ(*document, nullptr) << "the document variable was not initialised";
    EXPECT_EQ(info->cb, sizeof *info);
    EXPECT_EQ(sizeof *info, 32u);
    if (is_error(fault)) {
        if (failure_leaves)
            *document = *frame = failure_leaves;
        return fault == call_fault::error ? E_FAIL : E_NOTIMPL;
    }
    if (fault == call_fault::untouched)
        return S_OK;
    *frame = nullptr;
    *document = nullptr;
    *position = host_.position;
    *clip = host_.clip;
    if (fault == call_fault::null_result)
        return S_OK;
    info->fMDIApp = FALSE;
    info->hwndFrame = host_.frame_window();
    info->haccel = host_.accelerators();
    info->cAccelEntries = host_.accelerator_count();
    host_.frame.AddRef();
    *frame = &host_.frame;
    return S_OK;
}

STDMETHODIMP host_site::OnUIDeactivate(BOOL)
{
    return answer_plain(arrive("IOleInPlaceSite::OnUIDeactivate"));
}

STDMETHODIMP host_site::OnInPlaceDeactivate()
{
    return answer_plain(arrive("IOleInPlaceSite::OnInPlaceDeactivate"));
}

STDMETHODIMP host_site::OnInPlaceActivateEx(BOOL* no_redraw, DWORD)
{
    if (no_redraw)
        *no_redraw = FALSE;
    return answer_plain(arrive("IOleInPlaceSite::OnInPlaceActivate"));
}

STDMETHODIMP host_site::OnInPlaceDeactivateEx(BOOL)
{
    return answer_plain(arrive("IOleInPlaceSite::OnInPlaceDeactivate"));
}

STDMETHODIMP host_site::RequestUIActivate()
{
    return S_OK;
}

STDMETHODIMP host_site::QueryService(REFGUID service, REFIID iid, void** out)
{
    const bool browser = IsEqualGUID(service, IID_IWebBrowserApp);
    const bool shell = IsEqualGUID(service, SID_SShellBrowser);
    const call_fault fault = arrive("IServiceProvider::QueryService", browser ? "browser"
                                                                      : shell ? "shell"
                                                                              : "other");
    if (!out) {
        ADD_FAILURE() << "QueryService without an out parameter";
        return E_POINTER;
    }
    if (browser) {
        EXPECT_TRUE(IsEqualIID(iid, IID_IWebBrowser2));
        return answer_interface(fault, reinterpret_cast<IUnknown**>(out),
                                static_cast<IUnknown*>(&host_.browser));
    }
    EXPECT_TRUE(shell) << "a service was queried that the document does not need";
    EXPECT_TRUE(IsEqualIID(iid, IID_IOleWindow));
    return answer_interface(fault, reinterpret_cast<IUnknown**>(out), static_cast<IUnknown*>(&host_.shell));
}

STDMETHODIMP host_site::GetTypeInfoCount(UINT* count)
{
    *count = 0;
    return S_OK;
}

STDMETHODIMP host_site::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*)
{
    arrive("IDispatch::Invoke", std::to_string(id));
    if (result && failed_property_leaves) {
        result->vt = VT_UNKNOWN;
        result->punkVal = failed_property_leaves;
    }
    return DISP_E_MEMBERNOTFOUND;
}

} // namespace quill::test
