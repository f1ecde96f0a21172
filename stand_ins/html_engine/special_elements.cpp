#include "stand_ins/html_engine/special_elements.h"

#include "stand_ins/html_engine/com_results.h"

namespace quill {
namespace {

template <class Object>
HRESULT create_element(const std::shared_ptr<page_model>& page, const dom_node::pointer& node,
                       IHTMLElement** element)
{
    CComPtr<CComObject<Object>> object;
    const HRESULT hr = create_object(object);
    if (FAILED(hr))
        return hr;
    object->attach(page, node);
    *element = object.Detach();
    return S_OK;
}

} // namespace

STDMETHODIMP script_element::get_text(BSTR* value)
{
    return guarded_out(value, [&] {
        std::wstring source;
        for (const auto& child : node()->children())
            source += child->text;
        *value = new_bstr(source);
        return S_OK;
    });
}

HRESULT get_element(const std::shared_ptr<page_model>& page, const dom_node::pointer& node,
                    IHTMLElement** element)
{
    if (!node)
        return S_OK;
    if (element_object* const known = page->object_of(*node)) {
        known->AddRef();
        *element = known;
        return S_OK;
    }
    if (node->is(L"script"))
        return create_element<script_element>(page, node, element);
    if (node->is(L"meta"))
        return create_element<meta_element>(page, node, element);
    if (node->is(L"a"))
        return create_element<anchor_element>(page, node, element);
    return create_element<element_object>(page, node, element);
}

} // namespace quill
