#include "stand_ins/html_engine/event_object.h"

#include "stand_ins/html_engine/com_results.h"
#include "stand_ins/html_engine/element_object.h"

#include <utility>

namespace quill {
namespace {

HRESULT give_key(VARIANT_BOOL* out, int key)
{
    return set_bool(out, GetKeyState(key) < 0);
}

} // namespace

void event_object::attach(std::shared_ptr<page_model> page, dom_node::pointer source, std::wstring type)
{
    page_ = std::move(page);
    source_ = std::move(source);
    type_ = std::move(type);
}

bool event_object::default_allowed() const
{
    return return_value_.vt != VT_BOOL || return_value_.boolVal != VARIANT_FALSE;
}

STDMETHODIMP event_object::get_srcElement(IHTMLElement** element)
{
    return guarded_out(element, [&] { return get_element(page_, source_, element); });
}

STDMETHODIMP event_object::get_altKey(VARIANT_BOOL* down)
{
    return give_key(down, VK_MENU);
}

STDMETHODIMP event_object::get_ctrlKey(VARIANT_BOOL* down)
{
    return give_key(down, VK_CONTROL);
}

STDMETHODIMP event_object::get_shiftKey(VARIANT_BOOL* down)
{
    return give_key(down, VK_SHIFT);
}

STDMETHODIMP event_object::put_returnValue(VARIANT value)
{
    return return_value_.Copy(&value);
}

STDMETHODIMP event_object::get_returnValue(VARIANT* value)
{
    return guarded_out(value, [&] { return VariantCopy(value, &return_value_); });
}

STDMETHODIMP event_object::put_cancelBubble(VARIANT_BOOL value)
{
    cancel_bubble_ = value;
    return S_OK;
}

STDMETHODIMP event_object::get_cancelBubble(VARIANT_BOOL* value)
{
    return set_bool(value, cancel_bubble_ != VARIANT_FALSE);
}

STDMETHODIMP event_object::get_type(BSTR* type)
{
    return guarded_out(type, [&] {
        *type = new_bstr(type_);
        return S_OK;
    });
}

} // namespace quill
