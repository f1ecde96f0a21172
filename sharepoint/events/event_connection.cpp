#include "sharepoint/events/event_connection.h"

#include "logging/exception_barriers.h"
#include "sharepoint/host/host_ptr.h"

#include <ocidl.h>
#include <olectl.h>

#include <utility>

namespace quill {
namespace {

HRESULT find_connection_point(IUnknown* source, const IID& events, host_ptr<IConnectionPoint>& point)
{
    if (!source)
        return E_INVALIDARG;
    void* found = nullptr;
    const HRESULT queried =
        barrier::call_host([&] { return source->QueryInterface(IID_IConnectionPointContainer, &found); });
    host_ptr<IConnectionPointContainer> container;
    if (FAILED(queried))
        return queried;
    container.attach(static_cast<IConnectionPointContainer*>(found));
    if (!container)
        return E_NOINTERFACE;
    const HRESULT hr =
        call_host(container, &IConnectionPointContainer::FindConnectionPoint, events, point.out());
    if (FAILED(hr))
        return hr;
    return point ? S_OK : E_NOINTERFACE;
}

HRESULT advise_at_point(ATL::_IDispEvent& sink, IUnknown* source, const IID& events)
{
    host_ptr<IConnectionPoint> point;
    HRESULT hr = find_connection_point(source, events, point);
    if (FAILED(hr))
        return hr;
    DWORD cookie = 0;
    hr = call_host(point, &IConnectionPoint::Advise, reinterpret_cast<IUnknown*>(&sink), &cookie);
    if (SUCCEEDED(hr))
        sink.m_dwEventCookie = cookie;
    return hr;
}

} // namespace

HRESULT advise(ATL::_IDispEvent& sink, IUnknown* source, const IID& events)
{
    // A second Advise would overwrite the cookie that the first Unadvise needs.
    if (sink.m_dwEventCookie != ATL::_IDispEvent::not_advised)
        return CONNECT_E_ADVISELIMIT;
    const HRESULT hr = advise_at_point(sink, source, events);
    barrier::throw_if_handled();
    return hr;
}

void unadvise(ATL::_IDispEvent& sink, IUnknown* source, const IID& events) noexcept
{
    // Cleared first: Unadvise may release the sink, and must not be called twice.
    const DWORD cookie = std::exchange(sink.m_dwEventCookie, ATL::_IDispEvent::not_advised);
    if (cookie == ATL::_IDispEvent::not_advised)
        return;
    attempt([&] {
        host_ptr<IConnectionPoint> point;
        if (SUCCEEDED(find_connection_point(source, events, point)))
            call_host(point, &IConnectionPoint::Unadvise, cookie);
    });
}

} // namespace quill
