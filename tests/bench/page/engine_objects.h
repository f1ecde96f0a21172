// A browser and its page with nearly no cost of their own, so that the time of a call into them is the
// caller's: texts are stored as the returned strings, elements are created once.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <exdisp.h>
#include <mshtml.h>
#include <ocidl.h>
#include <unimplemented_interfaces.h>

#include <map>
#include <string>
#include <vector>

namespace quill::bench {

// Bases are without_X<X> of each interface X. The new object has one reference, owned by the creator.
template <class... Bases>
class counted : public Bases...
{
public:
    counted() = default;
    virtual ~counted() = default;
    counted(const counted&) = delete;
    counted& operator=(const counted&) = delete;

    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --references_;
        if (left == 0)
            delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override
    {
        IUnknown* const found = find_interface(iid);
        *out = found;
        if (!found)
            return E_NOINTERFACE;
        found->AddRef();
        return S_OK;
    }

protected:
    // Borrowed; nullptr if the object does not have the interface.
    virtual IUnknown* find_interface(REFIID iid) = 0;

private:
    ULONG references_ = 1;
};

struct element_text
{
    std::wstring tag = {};
    std::wstring href = {};
    std::wstring outer_html = {};
    std::wstring name = {};    // of a META
    std::wstring content = {}; // of a META
    std::wstring source = {};  // of a SCRIPT
};

class element;
using element_list = std::vector<CComPtr<element>>;

class element : public counted<without_IHTMLElement<IHTMLElement>, without_IHTMLElement2<IHTMLElement2>,
                               without_IHTMLScriptElement<IHTMLScriptElement>,
                               without_IHTMLMetaElement<IHTMLMetaElement>>
{
public:
    explicit element(element_text text) : text_(std::move(text)) {}

    // The descendants with this tag name.
    std::map<std::wstring, element_list, std::less<>> below;
    // The children.
    element_list children;
    int rewritten() const { return rewritten_; }

    HRESULT STDMETHODCALLTYPE get_tagName(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE get_children(IDispatch** out) override;
    HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, LONG flags, VARIANT* out) override;
    HRESULT STDMETHODCALLTYPE get_outerHTML(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE put_outerHTML(BSTR) override;
    HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR tag, IHTMLElementCollection** out) override;
    HRESULT STDMETHODCALLTYPE get_src(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE get_name(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE get_content(BSTR* out) override;

protected:
    IUnknown* find_interface(REFIID iid) override;

private:
    element_text text_;
    int rewritten_ = 0;
};

// Fires its events at its sinks.
class connection_point : public counted<without_IConnectionPoint<IConnectionPoint>>
{
public:
    explicit connection_point(const IID& events) : events_(events) {}

    // Arguments in the order of DISPPARAMS, last first.
    void fire(DISPID event, VARIANT* arguments, UINT count);

    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override;
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override;

protected:
    IUnknown* find_interface(REFIID iid) override;

private:
    const IID events_;
    std::map<DWORD, CComPtr<IDispatch>> sinks_;
    DWORD last_cookie_ = 0;
};

class page : public counted<without_IHTMLDocument2<IHTMLDocument2>, without_IHTMLDocument3<IHTMLDocument3>,
                            without_IConnectionPointContainer<IConnectionPointContainer>>
{
public:
    page();

    element_list& links() { return links_; }
    IDispatch* dispatch() { return static_cast<IHTMLDocument2*>(this); }
    element& head() { return *head_; }

    HRESULT STDMETHODCALLTYPE get_URL(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE get_documentElement(IHTMLElement** out) override;
    HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR tag, IHTMLElementCollection** out) override;
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** out) override;

protected:
    IUnknown* find_interface(REFIID iid) override;

private:
    CComPtr<element> root_;
    CComPtr<element> head_;
    element_list heads_;
    element_list links_;
    CComPtr<connection_point> events_;
};

class browser : public counted<without_IWebBrowser2<IWebBrowser2>,
                               without_IConnectionPointContainer<IConnectionPointContainer>>
{
public:
    browser();

    CComPtr<IDispatch> shown;
    IUnknown* unknown() { return static_cast<IWebBrowser2*>(this); }

    // Fires the event as a browser does, with new arguments. Returns whether it was cancelled.
    bool before_navigate(const std::wstring& url);
    void document_complete(const std::wstring& url);

    HRESULT STDMETHODCALLTYPE get_Document(IDispatch** out) override;
    HRESULT STDMETHODCALLTYPE get_TopLevelContainer(VARIANT_BOOL* out) override;
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** out) override;

protected:
    IUnknown* find_interface(REFIID iid) override;

private:
    CComPtr<connection_point> events_;
};

// Takes over the first reference of a new object.
template <class Object, class... Arguments>
CComPtr<Object> make(Arguments&&... arguments)
{
    CComPtr<Object> object;
    object.Attach(new Object(std::forward<Arguments>(arguments)...));
    return object;
}

} // namespace quill::bench
