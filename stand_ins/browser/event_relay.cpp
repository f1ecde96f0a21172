#include "stand_ins/browser/event_relay.h"

#include <exdispid.h>
#include <olectl.h>

#include <algorithm>

namespace quill {
namespace {

bool is_about_a_browser(DISPID event)
{
    return event == DISPID_BEFORENAVIGATE2 || event == DISPID_NAVIGATECOMPLETE2 ||
           event == DISPID_DOCUMENTCOMPLETE || event == DISPID_NAVIGATEERROR;
}

} // namespace

void event_relay::close()
{
    container_ = nullptr;
    const auto gone = std::move(connections_);
    connections_.clear();
}

void event_relay::fire(DISPID event, DISPPARAMS* arguments)
{
    const auto connections = connections_; // a sink may unadvise inside the call
    for (const connection& each : connections)
        each.sink->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, arguments, nullptr, nullptr,
                          nullptr);
}

STDMETHODIMP event_relay::GetConnectionInterface(IID* events)
{
    if (events == nullptr)
        return E_POINTER;
    *events = DIID_DWebBrowserEvents2;
    return S_OK;
}

STDMETHODIMP event_relay::GetConnectionPointContainer(IConnectionPointContainer** container)
{
    if (container == nullptr)
        return E_POINTER;
    *container = container_;
    if (container_ == nullptr)
        return E_UNEXPECTED;
    container_->AddRef();
    return S_OK;
}

STDMETHODIMP event_relay::Advise(IUnknown* sink, DWORD* cookie)
{
    if (sink == nullptr || cookie == nullptr)
        return E_POINTER;
    *cookie = 0;
    CComPtr<IDispatch> events;
    if (FAILED(sink->QueryInterface(DIID_DWebBrowserEvents2, reinterpret_cast<void**>(&events))))
        return CONNECT_E_CANNOTCONNECT;
    connections_.push_back({++last_cookie_, events});
    *cookie = last_cookie_;
    return S_OK;
}

STDMETHODIMP event_relay::Unadvise(DWORD cookie)
{
    const auto found = std::find_if(connections_.begin(), connections_.end(),
                                    [&](const connection& each) { return each.cookie == cookie; });
    if (found == connections_.end())
        return CONNECT_E_NOCONNECTION;
    const CComPtr<IDispatch> gone = found->sink;
    connections_.erase(found);
    return S_OK;
}

STDMETHODIMP event_relay::EnumConnections(IEnumConnections** connections)
{
    if (connections == nullptr)
        return E_POINTER;
    *connections = nullptr;
    return E_NOTIMPL;
}

HRESULT forwarding_sink::advise(IUnknown* source, IDispatch* shown, event_relay* relay)
{
    source_ = source;
    shown_ = shown;
    relay_ = relay;
    return AtlAdvise(source, static_cast<IDispatch*>(this), DIID_DWebBrowserEvents2, &cookie_);
}

void forwarding_sink::close()
{
    const CComPtr<IUnknown> source = source_;
    source_.Release();
    shown_ = nullptr;
    relay_.Release();
    if (source)
        AtlUnadvise(source, DIID_DWebBrowserEvents2, cookie_);
}

STDMETHODIMP forwarding_sink::GetTypeInfoCount(UINT* count)
{
    if (count == nullptr)
        return E_POINTER;
    *count = 0;
    return S_OK;
}

STDMETHODIMP forwarding_sink::GetTypeInfo(UINT, LCID, ITypeInfo** info)
{
    if (info == nullptr)
        return E_POINTER;
    *info = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP forwarding_sink::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*)
{
    return E_NOTIMPL;
}

STDMETHODIMP forwarding_sink::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*,
                                     EXCEPINFO*, UINT*)
{
    if (parameters == nullptr)
        return E_POINTER;
    const CComPtr<event_relay> relay = relay_;
    if (!relay)
        return S_OK;
    try {
        std::vector<VARIANT> arguments(parameters->rgvarg, parameters->rgvarg + parameters->cArgs);
        // The browser is the first argument; DISPPARAMS holds the arguments in reverse order.
        if (is_about_a_browser(id) && !arguments.empty() && arguments.back().vt == VT_DISPATCH &&
            source_.IsEqualObject(arguments.back().pdispVal))
            arguments.back().pdispVal = shown_;
        DISPPARAMS shown = {arguments.data(), nullptr, parameters->cArgs, 0};
        relay->fire(id, &shown);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

} // namespace quill
