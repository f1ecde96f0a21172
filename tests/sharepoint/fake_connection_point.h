// A connection point that events are fired from, as hosts fire them: through IDispatch::Invoke.
#pragma once

#include "tests/sharepoint/fake_object.h"

#include <atlbase.h>

#include <map>
#include <vector>

namespace quill::test {

struct event_result
{
    HRESULT code;
    CComVariant value;
};

// Whether the variant is VT_BOOL with exactly the system's value for it.
inline bool is_bool(const VARIANT& variant, bool value)
{
    return variant.vt == VT_BOOL && variant.boolVal == (value ? VARIANT_TRUE : VARIANT_FALSE);
}

class fake_connection_point : public fake_object<without_IConnectionPoint<IConnectionPoint>>
{
public:
    fake_connection_point(fake_scene& scene, const IID& events) : fake_object(scene), events_(events) {}

    // Fires an event at every sink; arguments are in the order in which the host packs them, last first.
    std::vector<event_result> fire(DISPID event, std::vector<VARIANT> arguments);
    // Whether Advise connects before it may fail, and Unadvise fails before it disconnects.
    bool keeps_sink_when_failing = false;
    std::size_t sinks() const { return sinks_.size(); }
    // One of the sinks, to hold on to.
    CComPtr<IDispatch> first_sink() const { return sinks_.empty() ? nullptr : sinks_.begin()->second; }

    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override;
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override;

protected:
    IUnknown* find_interface(REFIID iid) override;

private:
    bool connect(IUnknown* sink);

    const IID events_;
    std::map<DWORD, CComPtr<IDispatch>> sinks_;
    DWORD last_cookie_ = 0x5150;
};

// Fires one event at one sink.
event_result fire_at(IDispatch* sink, DISPID event, std::vector<VARIANT> arguments);

} // namespace quill::test
