// A fake connection point that fires events as hosts do, through IDispatch::Invoke.
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

// Whether the VARIANT is VT_BOOL with VARIANT_TRUE or VARIANT_FALSE.
inline bool is_bool(const VARIANT& variant, bool value)
{
    return variant.vt == VT_BOOL && variant.boolVal == (value ? VARIANT_TRUE : VARIANT_FALSE);
}

class fake_connection_point : public fake_object<without_IConnectionPoint<IConnectionPoint>>
{
public:
    fake_connection_point(fake_tab& tab, const IID& events) : fake_object(tab), events_(events) {}

    // Fires an event at each sink; arguments in reverse order, as in DISPPARAMS.
    std::vector<event_result> fire(DISPID event, std::vector<VARIANT> arguments);
    // Advise connects before it fails, and Unadvise fails before it disconnects.
    bool keeps_sink_when_failing = false;
    std::size_t sinks() const { return sinks_.size(); }
    // One of the sinks; null without one.
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
