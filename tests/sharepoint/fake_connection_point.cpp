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
    // A sink may disconnect while it is called. Nothing but the connection holds it, as with hosts that count
    // on their sinks to hold themselves.
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
    if (const auto result = scene().enter("IConnectionPoint::Advise")) {
        if (!scene().leaves_out_untouched())
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
    // A sink may believe an Advise that only said that it succeeded.
    EXPECT_TRUE(sinks_.count(cookie) == 1 || scene().has_failed()) << "a connection that there is not";
    // Fails, if it shall, after the connection has ended: hosts differ in what they answer, not in that.
    const bool is_connected = keeps_sink_when_failing || sinks_.erase(cookie) == 1;
    if (const auto result = scene().enter("IConnectionPoint::Unadvise"))
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
