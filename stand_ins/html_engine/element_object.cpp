#include "stand_ins/html_engine/element_object.h"

#include "stand_ins/html_engine/collection_object.h"
#include "stand_ins/html_engine/com_results.h"
#include "stand_ins/html_engine/dom/html_reader.h"
#include "stand_ins/html_engine/dom/html_writer.h"

#include <utility>

namespace quill {
namespace {

// Flags of getAttribute: case-sensitive name; absolute URL.
constexpr LONG case_sensitive = 1;
constexpr LONG expand_url = 4;

bool is_url_attribute(std::wstring_view attribute)
{
    return attribute == L"href" || attribute == L"src" || attribute == L"data" || attribute == L"action";
}

std::wstring upper_case(std::wstring text)
{
    for (wchar_t& letter : text)
        if (letter >= L'a' && letter <= L'z')
            letter = static_cast<wchar_t>(letter - L'a' + L'A');
    return text;
}

} // namespace

void element_object::attach(std::shared_ptr<page_model> page, dom_node::pointer node)
{
    page_ = std::move(page);
    node_ = std::move(node);
    page_->set_object(*node_, this);
}

void element_object::FinalRelease()
{
    if (page_)
        page_->set_object(*node_, nullptr);
}

HRESULT element_object::get_attribute_text(const wchar_t* attribute, BSTR* value) const
{
    return guarded_out(value, [&] {
        if (const auto text = node_->attribute(attribute))
            *value = new_bstr(*text);
        return S_OK;
    });
}

HRESULT element_object::put_attribute_text(const wchar_t* attribute, BSTR value)
{
    return guarded([&] {
        node_->set_attribute(attribute, std::wstring(view_of(value)));
        page_->changed();
        return S_OK;
    });
}

HRESULT element_object::get_attribute_url(const wchar_t* attribute, BSTR* value) const
{
    return guarded_out(value, [&] {
        if (const auto text = node_->attribute(attribute))
            *value = new_bstr(page_->absolute(*text));
        return S_OK;
    });
}

STDMETHODIMP element_object::setAttribute(BSTR name, VARIANT value, LONG)
{
    return guarded([&] {
        if (view_of(name).empty())
            return E_INVALIDARG;
        CComVariant text;
        const HRESULT hr = text.ChangeType(VT_BSTR, &value);
        if (FAILED(hr))
            return hr;
        node_->set_attribute(view_of(name), std::wstring(view_of(text.bstrVal)));
        page_->changed();
        return S_OK;
    });
}

// Returns the attribute as written in the page for flags 0 (property) and 2 (text), as the engine does in
// standards mode.
STDMETHODIMP element_object::getAttribute(BSTR name, LONG flags, VARIANT* value)
{
    return guarded_out(value, [&] {
        value->vt = VT_NULL;
        const std::wstring key = lower_case(view_of(name));
        if ((flags & case_sensitive) != 0 && key != view_of(name))
            return S_OK;
        const auto text = node_->attribute(key);
        if (!text)
            return S_OK;
        const bool expand = (flags & expand_url) != 0 && is_url_attribute(key);
        value->bstrVal = new_bstr(expand ? page_->absolute(*text) : *text);
        value->vt = VT_BSTR;
        return S_OK;
    });
}

STDMETHODIMP element_object::removeAttribute(BSTR name, LONG, VARIANT_BOOL* removed)
{
    return guarded_out(removed, [&] {
        const bool found = node_->remove_attribute(view_of(name));
        if (found)
            page_->changed();
        return set_bool(removed, found);
    });
}

STDMETHODIMP element_object::get_tagName(BSTR* name)
{
    return guarded_out(name, [&] {
        *name = new_bstr(upper_case(node_->name));
        return S_OK;
    });
}

STDMETHODIMP element_object::get_parentElement(IHTMLElement** parent)
{
    return guarded_out(parent, [&] {
        dom_node* const above = node_->parent();
        return get_element(
            page_, above != nullptr && above->is_element() ? above->shared_from_this() : nullptr, parent);
    });
}

STDMETHODIMP element_object::get_document(IDispatch** document)
{
    return guarded_out(document, [&] {
        if (page_->owner == nullptr)
            return E_FAIL;
        *document = page_->owner->document();
        (*document)->AddRef();
        return S_OK;
    });
}

STDMETHODIMP element_object::contains(IHTMLElement* child, VARIANT_BOOL* result)
{
    return guarded_out(result, [&] {
        // Only a pointer in the table is an element_object.
        bool inside = false;
        visit_elements(*node_, [&](dom_node& below) {
            inside = child != nullptr && page_->object_of(below) == child;
            return !inside;
        });
        return set_bool(result, inside || child == static_cast<IHTMLElement*>(this));
    });
}

STDMETHODIMP element_object::get_sourceIndex(LONG* index)
{
    return guarded_out(index, [&] {
        LONG count = 0;
        *index = -1; // not in the page
        visit_elements(*page_->root(), [&](dom_node& element) {
            if (&element == node_.get())
                *index = count;
            ++count;
            return *index < 0;
        });
        return S_OK;
    });
}

STDMETHODIMP element_object::put_innerHTML(BSTR html)
{
    return guarded([&] {
        auto nodes = read_fragment(view_of(html), node_->name);
        node_->remove_children();
        for (auto& node : nodes)
            node_->append(std::move(node));
        page_->changed();
        return S_OK;
    });
}

STDMETHODIMP element_object::get_innerHTML(BSTR* html)
{
    return guarded_out(html, [&] {
        *html = new_bstr(inner_html(*node_));
        return S_OK;
    });
}

STDMETHODIMP element_object::put_innerText(BSTR text)
{
    return guarded([&] {
        auto node = std::make_shared<dom_node>(node_kind::text, std::wstring(view_of(text)));
        node_->remove_children();
        node_->append(std::move(node));
        page_->changed();
        return S_OK;
    });
}

STDMETHODIMP element_object::get_innerText(BSTR* text)
{
    return guarded_out(text, [&] {
        *text = new_bstr(inner_text(*node_));
        return S_OK;
    });
}

// This object keeps the old element, which is no longer part of the page.
STDMETHODIMP element_object::put_outerHTML(BSTR html)
{
    return guarded([&] {
        const dom_node* const above = node_->parent();
        if (above == nullptr || !above->is_element())
            return E_FAIL;
        if (!node_->replace_with(read_fragment(view_of(html), above->name)))
            return E_FAIL;
        page_->changed();
        return S_OK;
    });
}

STDMETHODIMP element_object::get_outerHTML(BSTR* html)
{
    return guarded_out(html, [&] {
        *html = new_bstr(outer_html(*node_));
        return S_OK;
    });
}

STDMETHODIMP element_object::click()
{
    return guarded([&] {
        const CComPtr<IHTMLElement> keep_alive(this);
        if (page_->owner == nullptr)
            return E_FAIL;
        page_->owner->click(node_);
        return S_OK;
    });
}

STDMETHODIMP element_object::get_children(IDispatch** children)
{
    return guarded_out(children, [&] {
        return create_collection(page_, node_, collection_scope::children, nullptr, children);
    });
}

STDMETHODIMP element_object::get_all(IDispatch** all)
{
    return guarded_out(
        all, [&] { return create_collection(page_, node_, collection_scope::descendants, nullptr, all); });
}

STDMETHODIMP element_object::getElementsByTagName(BSTR name, IHTMLElementCollection** elements)
{
    return guarded_out(elements, [&] {
        return create_collection(page_, node_, collection_scope::descendants, with_name(view_of(name)),
                                 elements);
    });
}

} // namespace quill
