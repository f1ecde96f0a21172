#include "bench/page/plain_helper.h"

#include "bench/support/measure.h"
#include "sharepoint/event_identifiers.h"

#include <exdispid.h>

#include <string_view>

namespace quill::bench {
namespace {

// In both views of the registry, since it is in neither where nothing is installed.
void read_setting()
{
    for (const REGSAM view : {REGSAM{KEY_WOW64_64KEY}, REGSAM{KEY_WOW64_32KEY}}) {
        HKEY key = nullptr;
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Quill\\DocStudio\\14\\Settings", 0, KEY_READ | view,
                          &key) != ERROR_SUCCESS)
            continue;
        wchar_t path[MAX_PATH] = {};
        DWORD size = sizeof path;
        const LSTATUS status =
            RegQueryValueExW(key, L"exepath", nullptr, nullptr, reinterpret_cast<BYTE*>(path), &size);
        RegCloseKey(key);
        if (status == ERROR_SUCCESS)
            return;
    }
}

void read_links(IWebBrowser2* browser, bool with_pdfs)
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
        if (with_pdfs && std::wstring_view(address.bstrVal).ends_with(L".pdf")) {
            CComBSTR markup;
            link->get_outerHTML(&markup);
            keep(markup.m_str);
        }
    }
}

} // namespace

HRESULT plain_helper::SetSite(IUnknown* site)
{
    if (browser_)
        AtlUnadvise(browser_, IID_browser_events, cookie_);
    browser_ = CComQIPtr<IWebBrowser2>(site);
    if (browser_ && task_ == sink_task::read_setting)
        read_setting();
    return browser_ ? AtlAdvise(browser_, static_cast<IDispatch*>(this), IID_browser_events, &cookie_) : S_OK;
}

HRESULT plain_helper::Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*)
{
    const bool with_pdfs = task_ == sink_task::read_links_and_pdfs;
    if (event == DISPID_DOCUMENTCOMPLETE && (with_pdfs || task_ == sink_task::read_links))
        read_links(browser_, with_pdfs);
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
