#include "active_doc/browser_services.h"

#include "platform/bstr_view.h"
#include "platform/unique_com_memory.h"

#include <windows.h>

#include <shlguid.h>
#include <shlobj.h>

namespace quill {
namespace {

template <class Interface>
ATL::CComPtr<Interface> query_service(IOleClientSite* site, REFGUID service, REFIID interface_id)
{
    ATL::CComPtr<Interface> result;
    const ATL::CComPtr<IOleClientSite> keep_alive(site);
    const ATL::CComQIPtr<IServiceProvider> provider(site);
    // After a failure the out parameter is neither used nor released.
    void* found = nullptr;
    if (provider && SUCCEEDED(provider->QueryService(service, interface_id, &found)))
        result.Attach(static_cast<Interface*>(found));
    return result;
}

} // namespace

HWND browser_window(IOleClientSite* site)
{
    const auto shell_browser = query_service<IOleWindow>(site, SID_SShellBrowser, IID_IOleWindow);
    HWND window = nullptr;
    if (!shell_browser || FAILED(shell_browser->GetWindow(&window)))
        return nullptr;
    return window;
}

ATL::CComPtr<IWebBrowser2> web_browser(IOleClientSite* site)
{
    return query_service<IWebBrowser2>(site, SID_SWebBrowserApp, IID_IWebBrowser2);
}

std::optional<std::wstring> browser_url(IOleClientSite* site)
{
    const auto browser = web_browser(site);
    BSTR text = nullptr;
    if (!browser || FAILED(browser->get_LocationURL(&text)) || !text)
        return std::nullopt;
    ATL::CComBSTR url;
    url.Attach(text);
    return std::wstring(view_of(url));
}

std::optional<std::wstring> moniker_name(IMoniker* moniker)
{
    LPOLESTR name = nullptr;
    if (!moniker || FAILED(moniker->GetDisplayName(nullptr, nullptr, &name)) || !name)
        return std::nullopt;
    const unique_com_string owned_name(name);
    return std::wstring(owned_name.get());
}

std::optional<std::wstring> site_moniker_name(IOleClientSite* site, DWORD which_moniker)
{
    const ATL::CComPtr<IOleClientSite> keep_alive(site);
    IMoniker* assigned = nullptr;
    if (!site || FAILED(site->GetMoniker(OLEGETMONIKER_TEMPFORUSER, which_moniker, &assigned)))
        return std::nullopt;
    ATL::CComPtr<IMoniker> moniker;
    moniker.Attach(assigned);
    return moniker_name(moniker);
}

void navigate(IOleClientSite* site, const wchar_t* url, bool new_window)
{
    const auto browser = web_browser(site);
    if (!browser)
        return;
    ATL::CComBSTR target(url);
    ATL::CComVariant flags(0L, VT_I4);
    ATL::CComVariant target_frame(new_window ? L"_blank" : L"");
    ATL::CComVariant post_data;
    ATL::CComVariant headers;
    browser->Navigate(target, &flags, &target_frame, &post_data, &headers);
}

} // namespace quill
