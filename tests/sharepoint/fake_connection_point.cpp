#include "tests/sharepoint/fake_connection_point.h"

#include <gtest/gtest.h>

namespace quill::test {

event_result fire_at(IDispatch* sink, DISPID event, std::vector<VARIANT> arguments)
{
    DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    event_result result{};
    result.code = sink->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                               &result.value, nullptr, nullptr);
    return result;
}

std::vector<event_result> fake_connection_point::fire(DISPID event, std::vector<VARIANT> arguments)
{
    // A sink may disconnect while it is called. The loop holds no reference of its own, like hosts that rely
    // on the sink to hold itself.
    std::vector<DWORD> cookies;
    for (const auto& [cookie, sink] : sinks_)
        cookies.push_back(cookie);
    std::vector<event_result> results;
    for (const DWORD cookie : cookies) {
        const auto connected = sinks_.find(cookie);
        if (connected != sinks_.end())
            results.push_back(fire_at(connected->second, event, arguments));
    }
    return results;
}

bool fake_connection_point::connect(IUnknown* sink)
{
    CComPtr<IDispatch> events;
    if (FAILED(sink->QueryInterface(events_, reinterpret_cast<void**>(&events))))
        return false;
    sinks_.emplace(++last_cookie_, events);
    return true;
}

HRESULT fake_connection_point::Advise(IUnknown* sink, DWORD* cookie)
{
    if (keeps_sink_when_failing)
        EXPECT_TRUE(connect(sink));
    if (const auto result = tab().enter("IConnectionPoint::Advise")) {
        if (!tab().leaves_out_untouched())
            *cookie = 0;
        return *result;
    }
    if (!keeps_sink_when_failing && !connect(sink))
        return CONNECT_E_CANNOTCONNECT;
    *cookie = last_cookie_;
    return S_OK;
}

HRESULT fake_connection_point::Unadvise(DWORD cookie)
{
    // An Advise that was made to succeed without connecting returns no valid cookie.
    EXPECT_TRUE(sinks_.count(cookie) == 1 || tab().has_failed()) << "unknown cookie";
    // Disconnects before it fails, unless keeps_sink_when_failing.
    const bool is_connected = keeps_sink_when_failing || sinks_.erase(cookie) == 1;
    if (const auto result = tab().enter("IConnectionPoint::Unadvise"))
        return *result;
    if (keeps_sink_when_failing)
        sinks_.erase(cookie);
    return is_connected ? S_OK : CONNECT_E_NOCONNECTION;
}

IUnknown* fake_connection_point::find_interface(REFIID iid)
{
    return iid == IID_IUnknown || iid == IID_IConnectionPoint ? this : nullptr;
}

} // namespace quill::test
