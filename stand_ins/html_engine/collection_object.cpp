#include "stand_ins/html_engine/collection_object.h"

#include "stand_ins/html_engine/com_results.h"
#include "stand_ins/html_engine/element_object.h"

#include <utility>

namespace quill {
namespace {

bool is_left_out(const VARIANT& argument)
{
    return argument.vt == VT_EMPTY || argument.vt == VT_ERROR || argument.vt == VT_NULL;
}

bool to_number(const VARIANT& argument, long& number)
{
    CComVariant value;
    if (FAILED(value.ChangeType(VT_I4, &argument)))
        return false;
    number = value.lVal;
    return true;
}

} // namespace

element_filter with_name(std::wstring_view name)
{
    if (name == L"*")
        return nullptr;
    return [wanted = lower_case(name)](const dom_node& element) { return element.is(wanted); };
}

void collection_object::attach(std::shared_ptr<page_model> page, dom_node::pointer top,
                               collection_scope scope, element_filter filter)
{
    page_ = std::move(page);
    top_ = std::move(top);
    scope_ = scope;
    filter_ = std::move(filter);
}

const std::vector<dom_node::pointer>& collection_object::elements()
{
    if (version_ == page_->version())
        return elements_;
    std::vector<dom_node::pointer> found;
    const auto take = [&](dom_node& element) {
        if (!filter_ || filter_(element))
            found.push_back(element.shared_from_this());
        return true;
    };
    if (scope_ == collection_scope::descendants)
        visit_elements(*top_, take);
    else
        for (const auto& child : top_->children())
            if (child->is_element())
                take(*child);
    elements_ = std::move(found);
    version_ = page_->version();
    return elements_;
}

STDMETHODIMP collection_object::get_length(LONG* length)
{
    return guarded_out(length, [&] {
        *length = static_cast<LONG>(elements().size());
        return S_OK;
    });
}

STDMETHODIMP collection_object::item(VARIANT name, VARIANT index, IDispatch** element)
{
    return guarded_out(element, [&] {
        if (name.vt == VT_BSTR)
            return item_named(view_of(name.bstrVal), index, element);
        long number = 0;
        if (!to_number(is_left_out(name) ? index : name, number) || number < 0)
            return E_INVALIDARG;
        return item_at(number, element);
    });
}

HRESULT collection_object::item_at(long index, IDispatch** element)
{
    if (static_cast<std::size_t>(index) >= elements().size())
        return S_OK; // the engine returns S_OK and null for an index out of range
    CComPtr<IHTMLElement> found;
    const HRESULT hr = get_element(page_, elements()[static_cast<std::size_t>(index)], &found);
    *element = found.Detach();
    return hr;
}

// Returns a single element with this name or id, or a collection if there are several and no index is given.
HRESULT collection_object::item_named(std::wstring_view name, const VARIANT& index, IDispatch** element)
{
    CComPtr<CComObject<collection_object>> named;
    const HRESULT hr = create_object(named);
    if (FAILED(hr))
        return hr;
    named->attach(page_, top_, scope_, and_also([wanted = std::wstring(name)](const dom_node& node) {
                      return node.attribute(L"id") == wanted || node.attribute(L"name") == wanted;
                  }));
    long number = 0;
    if (!is_left_out(index) && to_number(index, number) && number >= 0)
        return named->item_at(number, element);
    if (named->elements().size() <= 1)
        return named->item_at(0, element);
    *element = named.Detach();
    return S_OK;
}

STDMETHODIMP collection_object::tags(VARIANT name, IDispatch** found)
{
    return guarded_out(found, [&] {
        if (name.vt != VT_BSTR)
            return E_INVALIDARG;
        return create_collection(page_, top_, scope_, and_also(with_name(view_of(name.bstrVal))), found);
    });
}

element_filter collection_object::and_also(element_filter further) const
{
    if (!filter_ || !further)
        return filter_ ? filter_ : further;
    return [own = filter_, further = std::move(further)](const dom_node& element) {
        return own(element) && further(element);
    };
}

} // namespace quill
