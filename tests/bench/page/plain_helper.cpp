#include "tests/bench/page/plain_helper.h"

#include "sharepoint/events/event_identifiers.h"
#include "tests/bench/support/measure.h"

#include <exdispid.h>

#include <string_view>

namespace quill::bench {
namespace {

// Reads both views of the registry, since the key is in neither if nothing is installed.
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

// Calls use for each element of the tag below the parent.
template <class Element, class Parent, class Use>
void for_each(Parent* parent, const wchar_t* tag, const Use& use)
{
    CComPtr<IHTMLElementCollection> elements;
    parent->getElementsByTagName(CComBSTR(tag), &elements);
    long count = 0;
    elements->get_length(&count);
    for (long index = 0; index < count; ++index) {
        CComPtr<IDispatch> item;
        elements->item(CComVariant(index), CComVariant(0), &item);
        use(CComQIPtr<Element>(item));
    }
}

// The generator of the page, and whether SharePoint's own scripts are on it.
void read_head(IHTMLDocument3* page)
{
    CComPtr<IHTMLElement> root;
    page->get_documentElement(&root);
    CComPtr<IDispatch> children, first;
    root->get_children(&children);
    CComQIPtr<IHTMLElementCollection>(children)->item(CComVariant(0), CComVariant(0), &first);
    const CComQIPtr<IHTMLElement2> head(first);
    for_each<IHTMLScriptElement>(head.p, L"script", [](IHTMLScriptElement* script) {
        CComBSTR source;
        script->get_src(&source);
        keep(source.m_str);
    });
    for_each<IHTMLMetaElement>(head.p, L"meta", [](IHTMLMetaElement* meta) {
        CComBSTR name, content;
        meta->get_name(&name);
        if (name && std::wstring_view(name) == L"GENERATOR")
            meta->get_content(&content);
        keep(content.m_str);
    });
}

void read_links(IHTMLDocument3* page, bool with_pdfs)
{
    const CComBSTR href(L"href");
    for_each<IHTMLElement>(page, L"a", [&](IHTMLElement* link) {
        CComVariant address;
        link->getAttribute(href, 0, &address);
        keep(address.bstrVal);
        if (with_pdfs && std::wstring_view(address.bstrVal).ends_with(L".pdf")) {
            CComBSTR markup;
            link->get_outerHTML(&markup);
            keep(markup.m_str);
        }
    });
}

} // namespace

HRESULT plain_helper::SetSite(IUnknown* site)
{
    if (browser_)
        AtlUnadvise(browser_, IID_browser_events, cookie_);
    if (recorded_)
        AtlUnadvise(recorded_, IID_html_document_events, page_cookie_);
    recorded_.Release();
    browser_ = CComQIPtr<IWebBrowser2>(site);
    if (browser_ && task_ == sink_task::read_setting)
        read_setting();
    return browser_ ? AtlAdvise(browser_, static_cast<IDispatch*>(this), IID_browser_events, &cookie_) : S_OK;
}

HRESULT plain_helper::Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*)
{
    if (event == DISPID_DOCUMENTCOMPLETE && task_ >= sink_task::read_links)
        complete();
    return S_OK;
}

void plain_helper::complete()
{
    CComPtr<IDispatch> document;
    browser_->get_Document(&document);
    const CComQIPtr<IHTMLDocument3> page(document);
    if (task_ == sink_task::record_page) {
        read_head(page);
        recorded_ = document;
        AtlAdvise(recorded_, static_cast<IDispatch*>(this), IID_html_document_events, &page_cookie_);
    }
    read_links(page, task_ >= sink_task::read_links_and_pdfs);
}

IUnknown* plain_helper::find_interface(REFIID iid)
{
    if (iid == IID_IObjectWithSite || iid == IID_IUnknown)
        return static_cast<IObjectWithSite*>(this);
    if (iid == IID_IDispatch || iid == IID_browser_events || iid == IID_html_document_events)
        return static_cast<IDispatch*>(this);
    return nullptr;
}

} // namespace quill::bench
