#include "stand_ins/html_engine/connection_point.h"

#include "stand_ins/html_engine/com_results.h"

#include <olectl.h>

namespace quill {

void connection_point::attach(IConnectionPointContainer* container, REFIID interface_id, bool dispinterface)
{
    container_ = container;
    interface_id_ = interface_id;
    dispinterface_ = dispinterface;
}

void connection_point::detach()
{
    container_ = nullptr;
    const auto sinks = std::move(sinks_);
    sinks_.clear();
}

std::vector<CComPtr<IUnknown>> connection_point::sinks() const
{
    std::vector<CComPtr<IUnknown>> result;
    result.reserve(sinks_.size());
    for (const auto& entry : sinks_)
        result.push_back(entry.second);
    return result;
}

STDMETHODIMP connection_point::GetConnectionInterface(IID* interface_id)
{
    if (interface_id == nullptr)
        return E_POINTER;
    *interface_id = interface_id_;
    return S_OK;
}

STDMETHODIMP connection_point::GetConnectionPointContainer(IConnectionPointContainer** container)
{
    if (container == nullptr)
        return E_POINTER;
    *container = container_;
    if (container_ == nullptr)
        return E_UNEXPECTED;
    container_->AddRef();
    return S_OK;
}

STDMETHODIMP connection_point::Advise(IUnknown* sink, DWORD* cookie)
{
    return guarded_out(cookie, [&] {
        if (sink == nullptr)
            return E_POINTER;
        if (container_ == nullptr)
            return CONNECT_E_CANNOTCONNECT;
        CComPtr<IUnknown> wanted;
        HRESULT hr = sink->QueryInterface(interface_id_, reinterpret_cast<void**>(&wanted));
        if ((FAILED(hr) || !wanted) && dispinterface_)
            hr = sink->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&wanted));
        if (FAILED(hr) || !wanted)
            return CONNECT_E_CANNOTCONNECT;
        sinks_.emplace(++last_cookie_, wanted);
        *cookie = last_cookie_;
        return S_OK;
    });
}

STDMETHODIMP connection_point::Unadvise(DWORD cookie)
{
    const auto found = sinks_.find(cookie);
    if (found == sinks_.end())
        return CONNECT_E_NOCONNECTION;
    // Released on return, when the list is consistent again.
    const CComPtr<IUnknown> sink(std::move(found->second));
    sinks_.erase(found);
    return S_OK;
}

STDMETHODIMP connection_point::EnumConnections(IEnumConnections** connections)
{
    if (connections == nullptr)
        return E_POINTER;
    *connections = nullptr;
    return E_NOTIMPL;
}

} // namespace quill
