#include "bench/page/plain_helper.h"

#include "bench/support/measure.h"
#include "sharepoint/event_identifiers.h"

#include <exdispid.h>

namespace quill::bench {
namespace {

void read_links(IWebBrowser2* browser)
{
    CComPtr<IDispatch> document;
    browser->get_Document(&document);
    const CComQIPtr<IHTMLDocument3> page(document);
    CComPtr<IHTMLElementCollection> links;
    page->getElementsByTagName(CComBSTR(L"a"), &links);
    const CComBSTR href(L"href");
    long count = 0;
    links->get_length(&count);
    for (long index = 0; index < count; ++index) {
        CComPtr<IDispatch> item;
        links->item(CComVariant(index), CComVariant(0), &item);
        const CComQIPtr<IHTMLElement> link(item);
        CComVariant address;
        link->getAttribute(href, 0, &address);
        keep(address.bstrVal);
    }
}

} // namespace

HRESULT plain_helper::SetSite(IUnknown* site)
{
    if (browser_)
        AtlUnadvise(browser_, IID_browser_events, cookie_);
    browser_ = CComQIPtr<IWebBrowser2>(site);
    return browser_ ? AtlAdvise(browser_, static_cast<IDispatch*>(this), IID_browser_events, &cookie_) : S_OK;
}

HRESULT plain_helper::Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*)
{
    if (event == DISPID_DOCUMENTCOMPLETE && task_ == sink_task::read_links)
        read_links(browser_);
    return S_OK;
}

IUnknown* plain_helper::find_interface(REFIID iid)
{
    if (iid == IID_IObjectWithSite || iid == IID_IUnknown)
        return static_cast<IObjectWithSite*>(this);
    if (iid == IID_IDispatch || iid == IID_browser_events)
        return static_cast<IDispatch*>(this);
    return nullptr;
}

} // namespace quill::bench
