#include "stand_ins/html_engine/link_navigation.h"

#include <atlbase.h>
#include <exdisp.h>
#include <servprov.h>
#include <shlguid.h>

namespace quill {
namespace {

std::wstring without_fragment(const std::wstring& url)
{
    return url.substr(0, url.find(L'#'));
}

} // namespace

link_target target_of(const page_model& page, const dom_node& element)
{
    const dom_node* link = &element;
    while (link != nullptr && !(link->is(L"a") && link->attribute(L"href")))
        link = link->parent();
    if (link == nullptr)
        return {};
    const std::wstring reference = *link->attribute(L"href");
    if (lower_case(reference).starts_with(L"javascript:"))
        return {};
    link_target target{page.absolute(reference), link->attribute(L"target").value_or(std::wstring())};
    const bool same_page = target.url.find(L'#') != std::wstring::npos &&
                           without_fragment(target.url) == without_fragment(page.url);
    return same_page ? link_target{} : target;
}

HRESULT follow(IOleClientSite* site, const link_target& target)
{
    CComPtr<IWebBrowser2> browser;
    const CComQIPtr<IServiceProvider> services(site);
    if (!services)
        return E_NOINTERFACE;
    const HRESULT hr = services->QueryService(IID_IWebBrowserApp, IID_PPV_ARGS(&browser));
    if (FAILED(hr) || !browser)
        return FAILED(hr) ? hr : E_NOINTERFACE;
    CComVariant flags(0);
    CComVariant frame(target.frame.c_str());
    CComVariant nothing;
    return browser->Navigate(CComBSTR(target.url.c_str()), &flags, &frame, &nothing, &nothing);
}

} // namespace quill
