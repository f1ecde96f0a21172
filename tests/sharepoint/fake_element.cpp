#include "tests/sharepoint/fake_element.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

HRESULT hand_out_attribute(const std::optional<std::wstring>& value, BSTR* out)
{
    *out = nullptr;
    return value ? hand_out(*value, out) : S_OK;
}

} // namespace

HRESULT fake_element::get_tagName(BSTR* out)
{
    if (const auto result = tab().enter("IHTMLElement::get_tagName", out))
        return *result;
    return hand_out(text_.tag, out);
}

HRESULT fake_element::getAttribute(BSTR name, LONG flags, VARIANT* out)
{
    EXPECT_STREQ(name, L"href");
    EXPECT_EQ(flags, 0);
    if (const auto result = tab().enter("IHTMLElement::getAttribute", out))
        return *result;
    if (href_object) {
        out->vt = VT_DISPATCH;
        (out->pdispVal = href_object)->AddRef();
        return S_OK;
    }
    out->vt = text_.href ? VT_BSTR : VT_NULL;
    return text_.href ? hand_out(*text_.href, &out->bstrVal) : S_OK;
}

HRESULT fake_element::get_outerHTML(BSTR* out)
{
    if (const auto result = tab().enter("IHTMLElement::get_outerHTML", out))
        return *result;
    return hand_out(text_.outer_html, out);
}

HRESULT fake_element::put_outerHTML(BSTR html)
{
    if (const auto result = tab().enter("IHTMLElement::put_outerHTML"))
        return *result;
    text_.outer_html.assign(html, SysStringLen(html));
    written_html_.push_back(text_.outer_html);
    return S_OK;
}

HRESULT fake_element::get_children(IDispatch** out)
{
    if (const auto result = tab().enter("IHTMLElement::get_children", out))
        return *result;
    *out = new fake_collection(tab(), children_);
    return S_OK;
}

HRESULT fake_element::get_all(IDispatch** out)
{
    if (const auto result = tab().enter("IHTMLElement::get_all", out))
        return *result;
    *out = new fake_collection(tab(), children_);
    return S_OK;
}

HRESULT fake_element::getElementsByTagName(BSTR tag, IHTMLElementCollection** out)
{
    if (const auto result = tab().enter("IHTMLElement2::getElementsByTagName", out))
        return *result;
    return hand_out_tagged(tab(), children_, tag, out);
}

HRESULT fake_element::get_src(BSTR* out)
{
    if (const auto result = tab().enter("IHTMLScriptElement::get_src", out))
        return *result;
    return hand_out_attribute(text_.src, out);
}

HRESULT fake_element::get_name(BSTR* out)
{
    if (const auto result = tab().enter("IHTMLMetaElement::get_name", out))
        return *result;
    return hand_out_attribute(text_.name, out);
}

HRESULT fake_element::get_content(BSTR* out)
{
    if (const auto result = tab().enter("IHTMLMetaElement::get_content", out))
        return *result;
    return hand_out_attribute(text_.content, out);
}

IUnknown* fake_element::find_interface(REFIID iid)
{
    if (iid == IID_IUnknown || iid == IID_IDispatch || (is_element && iid == IID_IHTMLElement))
        return static_cast<IHTMLElement*>(this);
    if (has_element2 && is_element && iid == IID_IHTMLElement2)
        return static_cast<IHTMLElement2*>(this);
    if (text_.tag == L"SCRIPT" && iid == IID_IHTMLScriptElement)
        return static_cast<IHTMLScriptElement*>(this);
    if (text_.tag == L"META" && iid == IID_IHTMLMetaElement)
        return static_cast<IHTMLMetaElement*>(this);
    return nullptr;
}

HRESULT fake_collection::get_length(LONG* out)
{
    if (const auto result = tab().enter("IHTMLElementCollection::get_length", out))
        return *result;
    *out = static_cast<LONG>(elements_.size());
    return S_OK;
}

HRESULT fake_collection::item(VARIANT name, VARIANT, IDispatch** out)
{
    if (const auto result = tab().enter("IHTMLElementCollection::item", out))
        return *result;
    EXPECT_EQ(name.vt, VT_I4);
    if (name.lVal < 0 || static_cast<std::size_t>(name.lVal) >= elements_.size())
        return E_INVALIDARG;
    return hand_out(elements_[static_cast<std::size_t>(name.lVal)]->dispatch(), out);
}

HRESULT fake_collection::tags(VARIANT tag, IDispatch** out)
{
    if (const auto result = tab().enter("IHTMLElementCollection::tags", out))
        return *result;
    EXPECT_EQ(tag.vt, VT_BSTR);
    CComPtr<IHTMLElementCollection> tagged;
    const HRESULT code = hand_out_tagged(tab(), elements_, tag.bstrVal, &tagged);
    *out = tagged.Detach();
    return code;
}

IUnknown* fake_collection::find_interface(REFIID iid)
{
    const bool known = iid == IID_IUnknown || iid == IID_IDispatch || iid == IID_IHTMLElementCollection;
    return known ? this : nullptr;
}

HRESULT hand_out_tagged(fake_tab& tab, const element_list& elements, const std::wstring& tag,
                        IHTMLElementCollection** out)
{
    element_list tagged;
    for (const CComPtr<fake_element>& element : elements)
        if (_wcsicmp(element->tag().c_str(), tag.c_str()) == 0)
            tagged.push_back(element);
    *out = new fake_collection(tab, std::move(tagged));
    return S_OK;
}

} // namespace quill::test
