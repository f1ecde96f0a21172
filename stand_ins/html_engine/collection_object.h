// IHTMLElementCollection: elements of a page in document order. Live: reflects later changes of the page.
#pragma once

#include "stand_ins/html_engine/counted_object.h"
#include "stand_ins/html_engine/html_interfaces.h"
#include "stand_ins/html_engine/page_model.h"

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace quill {

enum class collection_scope
{
    children,
    descendants,
};

using element_filter = std::function<bool(const dom_node&)>;

// Matches elements by name, case-insensitively; "*" matches every element.
element_filter with_name(std::wstring_view name);

class ATL_NO_VTABLE collection_object : public counted_object<&live_objects::collections>,
                                        public html_collection_interface
{
public:
    BEGIN_COM_MAP(collection_object)
    COM_INTERFACE_ENTRY(IHTMLElementCollection)
    COM_INTERFACE_ENTRY(IDispatch)
    END_COM_MAP()

    // A null filter matches every element.
    void attach(std::shared_ptr<page_model> page, dom_node::pointer top, collection_scope scope,
                element_filter filter);

    STDMETHODIMP get_length(LONG* length) override;
    STDMETHODIMP item(VARIANT name, VARIANT index, IDispatch** element) override;
    STDMETHODIMP tags(VARIANT name, IDispatch** elements) override;

private:
    const std::vector<dom_node::pointer>& elements();
    HRESULT item_at(long index, IDispatch** element);
    HRESULT item_named(std::wstring_view name, const VARIANT& index, IDispatch** element);
    element_filter and_also(element_filter further) const;

    std::shared_ptr<page_model> page_;
    dom_node::pointer top_;
    collection_scope scope_ = collection_scope::descendants;
    element_filter filter_;
    std::vector<dom_node::pointer> elements_;
    std::uint64_t version_ = static_cast<std::uint64_t>(-1); // the page's version when elements_ was filled
};

// Out: IHTMLElementCollection or IDispatch. The caller owns the reference.
template <class Out>
HRESULT create_collection(const std::shared_ptr<page_model>& page, const dom_node::pointer& top,
                          collection_scope scope, element_filter filter, Out** out)
{
    CComPtr<CComObject<collection_object>> object;
    const HRESULT hr = create_object(object);
    if (FAILED(hr))
        return hr;
    object->attach(page, top, scope, std::move(filter));
    *out = object.Detach();
    return S_OK;
}

} // namespace quill
