// Fakes of a page's elements and of element collections.
#pragma once

#include "tests/sharepoint/fake_object.h"

#include <atlbase.h>

#include <optional>
#include <string>
#include <vector>

namespace quill::test {

struct element_text
{
    std::wstring tag;
    std::wstring outer_html = {};
    // A missing attribute is read as null.
    std::optional<std::wstring> href = {};
    std::optional<std::wstring> src = {};
    std::optional<std::wstring> name = {};
    std::optional<std::wstring> content = {};
};

class fake_element;
using element_list = std::vector<CComPtr<fake_element>>;

class fake_element
    : public fake_object<without_IHTMLElement<IHTMLElement>, without_IHTMLElement2<IHTMLElement2>,
                         without_IHTMLScriptElement<IHTMLScriptElement>,
                         without_IHTMLMetaElement<IHTMLMetaElement>>
{
public:
    fake_element(fake_tab& tab, element_text text) : fake_object(tab), text_(std::move(text)) {}

    const std::wstring& tag() const { return text_.tag; }
    const std::wstring& outer_html() const { return text_.outer_html; }
    // Markup that was written to outerHTML, in order.
    const std::vector<std::wstring>& written_html() const { return written_html_; }
    element_list& children() { return children_; }
    IDispatch* dispatch() { return static_cast<IHTMLElement*>(this); }

    // false: an engine without IHTMLElement2
    bool has_element2 = true;
    IDispatch* href_object = nullptr; // returned for href in place of text
    // false: an item of a collection that is no element
    bool is_element = true;

    HRESULT STDMETHODCALLTYPE get_tagName(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, LONG flags, VARIANT* out) override;
    HRESULT STDMETHODCALLTYPE get_outerHTML(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE put_outerHTML(BSTR html) override;
    HRESULT STDMETHODCALLTYPE get_children(IDispatch** out) override;
    HRESULT STDMETHODCALLTYPE get_all(IDispatch** out) override;
    HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR tag, IHTMLElementCollection** out) override;
    HRESULT STDMETHODCALLTYPE get_src(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE get_name(BSTR* out) override;
    HRESULT STDMETHODCALLTYPE get_content(BSTR* out) override;

protected:
    IUnknown* find_interface(REFIID iid) override;

private:
    element_text text_;
    std::vector<std::wstring> written_html_;
    element_list children_;
};

class fake_collection : public fake_object<without_IHTMLElementCollection<IHTMLElementCollection>>
{
public:
    fake_collection(fake_tab& tab, element_list elements) : fake_object(tab), elements_(std::move(elements))
    {
    }

    HRESULT STDMETHODCALLTYPE get_length(LONG* out) override;
    HRESULT STDMETHODCALLTYPE item(VARIANT name, VARIANT index, IDispatch** out) override;
    HRESULT STDMETHODCALLTYPE tags(VARIANT tag, IDispatch** out) override;

protected:
    IUnknown* find_interface(REFIID iid) override;

private:
    element_list elements_;
};

// Returns a collection of the elements with the tag.
HRESULT hand_out_tagged(fake_tab& tab, const element_list& elements, const std::wstring& tag,
                        IHTMLElementCollection** out);

} // namespace quill::test
