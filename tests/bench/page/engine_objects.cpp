#include "tests/bench/page/engine_objects.h"

#include "sharepoint/events/event_identifiers.h"

#include <exdispid.h>

#include <cstdio>
#include <cstdlib>

// A call of anything else fails: it would change what the figures measure.
HRESULT unimplemented_method(const char* name) noexcept
{
    std::fprintf(stderr, "benchmark failed: the page has no %s\n", name);
    std::exit(2);
}

namespace quill::bench {
namespace {

HRESULT hand_out(const std::wstring& text, BSTR* out)
{
    *out = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return S_OK;
}

class collection : public counted<without_IHTMLElementCollection<IHTMLElementCollection>>
{
public:
    explicit collection(const element_list* elements) : elements_(elements) {}

    HRESULT STDMETHODCALLTYPE get_length(LONG* out) override
    {
        *out = elements_ ? static_cast<LONG>(elements_->size()) : 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE item(VARIANT name, VARIANT, IDispatch** out) override
    {
        element* const found = (*elements_)[static_cast<std::size_t>(name.lVal)];
        found->AddRef();
        *out = static_cast<IHTMLElement*>(found);
        return S_OK;
    }

protected:
    IUnknown* find_interface(REFIID iid) override
    {
        return iid == IID_IUnknown || iid == IID_IHTMLElementCollection ? this : nullptr;
    }

private:
    const element_list* elements_; // belongs to the page, nullptr for an empty collection
};

VARIANT reference_to(VARIANT& target)
{
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &target;
    return reference;
}

} // namespace

HRESULT element::get_tagName(BSTR* out)
{
    return hand_out(text_.tag, out);
}

HRESULT element::get_children(IDispatch** out)
{
    *out = new collection(&children);
    return S_OK;
}

HRESULT element::getAttribute(BSTR, LONG, VARIANT* out)
{
    out->vt = VT_BSTR;
    return hand_out(text_.href, &out->bstrVal);
}

HRESULT element::get_outerHTML(BSTR* out)
{
    return hand_out(text_.outer_html, out);
}

HRESULT element::put_outerHTML(BSTR)
{
    ++rewritten_;
    return S_OK;
}

HRESULT element::getElementsByTagName(BSTR tag, IHTMLElementCollection** out)
{
    const auto found = below.find(std::wstring_view(tag));
    *out = new collection(found == below.end() ? nullptr : &found->second);
    return S_OK;
}

HRESULT element::get_src(BSTR* out)
{
    return hand_out(text_.source, out);
}

HRESULT element::get_name(BSTR* out)
{
    return hand_out(text_.name, out);
}

HRESULT element::get_content(BSTR* out)
{
    return hand_out(text_.content, out);
}

IUnknown* element::find_interface(REFIID iid)
{
    if (iid == IID_IHTMLElement || iid == IID_IUnknown || iid == IID_IDispatch)
        return static_cast<IHTMLElement*>(this);
    if (iid == IID_IHTMLElement2)
        return static_cast<IHTMLElement2*>(this);
    if (iid == IID_IHTMLScriptElement)
        return static_cast<IHTMLScriptElement*>(this);
    if (iid == IID_IHTMLMetaElement)
        return static_cast<IHTMLMetaElement*>(this);
    return nullptr;
}

void connection_point::fire(DISPID event, VARIANT* arguments, UINT count)
{
    DISPPARAMS parameters{arguments, nullptr, count, 0};
    for (const auto& [cookie, sink] : sinks_) {
        CComVariant result;
        sink->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, &result, nullptr,
                     nullptr);
    }
}

HRESULT connection_point::Advise(IUnknown* sink, DWORD* cookie)
{
    CComPtr<IDispatch> events;
    if (FAILED(sink->QueryInterface(events_, reinterpret_cast<void**>(&events))))
        return CONNECT_E_CANNOTCONNECT;
    *cookie = ++last_cookie_;
    sinks_.emplace(*cookie, events);
    return S_OK;
}

HRESULT connection_point::Unadvise(DWORD cookie)
{
    return sinks_.erase(cookie) ? S_OK : CONNECT_E_NOCONNECTION;
}

IUnknown* connection_point::find_interface(REFIID iid)
{
    return iid == IID_IUnknown || iid == IID_IConnectionPoint ? this : nullptr;
}

page::page()
    : root_(make<element>(element_text{.tag = L"HTML"})), head_(make<element>(element_text{.tag = L"HEAD"})),
      heads_{head_}, events_(make<connection_point>(IID_html_document_events))
{
    root_->children = heads_;
}

HRESULT page::get_URL(BSTR* out)
{
    return hand_out(L"http://server.test/sites/a/page.aspx", out);
}

HRESULT page::get_documentElement(IHTMLElement** out)
{
    root_->AddRef();
    *out = root_;
    return S_OK;
}

HRESULT page::getElementsByTagName(BSTR tag, IHTMLElementCollection** out)
{
    const bool wants_links = std::wstring_view(tag) == L"a";
    *out = new collection(wants_links ? &links_ : &heads_);
    return S_OK;
}

HRESULT page::FindConnectionPoint(REFIID, IConnectionPoint** out)
{
    events_->AddRef();
    *out = events_;
    return S_OK;
}

IUnknown* page::find_interface(REFIID iid)
{
    if (iid == IID_IHTMLDocument2 || iid == IID_IUnknown || iid == IID_IDispatch)
        return static_cast<IHTMLDocument2*>(this);
    if (iid == IID_IHTMLDocument3)
        return static_cast<IHTMLDocument3*>(this);
    if (iid == IID_IConnectionPointContainer)
        return static_cast<IConnectionPointContainer*>(this);
    return nullptr;
}

browser::browser() : events_(make<connection_point>(IID_browser_events)) {}

bool browser::before_navigate(const std::wstring& url)
{
    CComVariant address(url.c_str()), flags(0), frame, headers, no_data, data = reference_to(no_data);
    VARIANT_BOOL cancel = VARIANT_FALSE;
    VARIANT arguments[7]{};
    arguments[0].vt = VT_BYREF | VT_BOOL;
    arguments[0].pboolVal = &cancel;
    arguments[1] = reference_to(headers);
    arguments[2] = reference_to(data);
    arguments[3] = reference_to(frame);
    arguments[4] = reference_to(flags);
    arguments[5] = reference_to(address);
    arguments[6].vt = VT_DISPATCH;
    arguments[6].pdispVal = this;
    events_->fire(DISPID_BEFORENAVIGATE2, arguments, 7);
    return cancel != VARIANT_FALSE;
}

void browser::document_complete(const std::wstring& url)
{
    CComVariant address(url.c_str());
    VARIANT arguments[2]{};
    arguments[0] = reference_to(address);
    arguments[1].vt = VT_DISPATCH;
    arguments[1].pdispVal = this;
    events_->fire(DISPID_DOCUMENTCOMPLETE, arguments, 2);
}

HRESULT browser::get_Document(IDispatch** out)
{
    return shown.CopyTo(out);
}

HRESULT browser::get_TopLevelContainer(VARIANT_BOOL* out)
{
    *out = VARIANT_TRUE;
    return S_OK;
}

HRESULT browser::FindConnectionPoint(REFIID, IConnectionPoint** out)
{
    events_->AddRef();
    *out = events_;
    return S_OK;
}

IUnknown* browser::find_interface(REFIID iid)
{
    if (iid == IID_IWebBrowser2 || iid == IID_IUnknown || iid == IID_IDispatch)
        return static_cast<IWebBrowser2*>(this);
    if (iid == IID_IConnectionPointContainer)
        return static_cast<IConnectionPointContainer*>(this);
    return nullptr;
}

} // namespace quill::bench
