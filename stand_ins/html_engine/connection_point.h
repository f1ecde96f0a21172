// One outgoing interface of a page and its sinks. The page keeps its connection points; one that somebody
// else keeps longer has no container any more.
#pragma once

#include "stand_ins/html_engine/counted_object.h"

#include <windows.h>

#include <ocidl.h>

#include <map>
#include <vector>

namespace quill {

class ATL_NO_VTABLE connection_point : public counted_object<&living_objects::connection_points>,
                                       public IConnectionPoint
{
public:
    BEGIN_COM_MAP(connection_point)
    COM_INTERFACE_ENTRY(IConnectionPoint)
    END_COM_MAP()

    // The container is not referenced. A dispinterface is also taken from sinks that have only IDispatch.
    void attach(IConnectionPointContainer* container, REFIID interface_id, bool dispinterface);
    // The container goes away, and lets go of its sinks.
    void detach();

    // The sinks, referenced, so that they may come and go while they are called.
    std::vector<CComPtr<IUnknown>> sinks() const;

    STDMETHODIMP GetConnectionInterface(IID* interface_id) override;
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
    STDMETHODIMP Unadvise(DWORD cookie) override;
    STDMETHODIMP EnumConnections(IEnumConnections** connections) override;

private:
    IConnectionPointContainer* container_ = nullptr;
    IID interface_id_{};
    bool dispinterface_ = false;
    DWORD last_cookie_ = 0;
    std::map<DWORD, CComPtr<IUnknown>> sinks_; // in order of arrival
};

} // namespace quill
