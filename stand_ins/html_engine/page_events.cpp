#include "stand_ins/html_engine/page_events.h"

#include "stand_ins/html_engine/event_object.h"
#include "stand_ins/html_engine/identifiers.h"

#include <olectl.h>

#include <utility>

namespace quill {

HRESULT page_events::create(IConnectionPointContainer* container)
{
    HRESULT hr = create_object(document_events_);
    if (SUCCEEDED(hr))
        hr = create_object(property_changes_);
    if (FAILED(hr))
        return hr;
    document_events_->attach(container, IID_document_events, true);
    property_changes_->attach(container, IID_IPropertyNotifySink, false);
    return S_OK;
}

void page_events::close()
{
    const auto document_events = std::move(document_events_);
    const auto property_changes = std::move(property_changes_);
    if (document_events)
        document_events->detach();
    if (property_changes)
        property_changes->detach();
}

HRESULT page_events::find(REFIID interface_id, IConnectionPoint** point) const
{
    if (point == nullptr)
        return E_POINTER;
    *point = nullptr;
    CComPtr<IConnectionPoint> found;
    if (interface_id == IID_document_events)
        found = document_events_;
    else if (interface_id == IID_IPropertyNotifySink)
        found = property_changes_;
    *point = found.Detach();
    return *point != nullptr ? S_OK : CONNECT_E_NOCONNECTION;
}

bool page_events::fire_click(const std::shared_ptr<page_model>& page, const dom_node::pointer& element) const
{
    return fire(event_click, L"click", page, element);
}

void page_events::fire_ready_state(const std::shared_ptr<page_model>& page) const
{
    if (property_changes_)
        for (const auto& sink : property_changes_->sinks())
            static_cast<IPropertyNotifySink*>(sink.p)->OnChanged(DISPID_READYSTATE);
    fire(event_ready_state_change, L"readystatechange", page, nullptr);
}

// A sink prevents the default action by returning false or by setting the event object's return value.
bool page_events::fire(DISPID event, const wchar_t* type, const std::shared_ptr<page_model>& page,
                       const dom_node::pointer& source) const
{
    const auto sinks = document_events_ ? document_events_->sinks() : std::vector<CComPtr<IUnknown>>();
    CComPtr<CComObject<event_object>> object;
    if (sinks.empty() || FAILED(create_object(object)))
        return true;
    object->attach(page, source, type);
    for (const auto& sink : sinks) {
        CComVariant argument(static_cast<IDispatch*>(object.p));
        CComVariant result;
        DISPPARAMS parameters{&argument, nullptr, 1, 0};
        const HRESULT hr = static_cast<IDispatch*>(sink.p)->Invoke(
            event, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters, &result, nullptr, nullptr);
        if (SUCCEEDED(hr) && result.vt == VT_BOOL && result.boolVal == VARIANT_FALSE)
            object->put_returnValue(result);
    }
    return object->default_allowed();
}

} // namespace quill
