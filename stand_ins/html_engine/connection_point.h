// A connection point of a page and its sinks. May outlive the page, and then has no container.
#pragma once

#include "stand_ins/html_engine/counted_object.h"

#include <windows.h>

#include <ocidl.h>

#include <map>
#include <vector>

namespace quill {

class ATL_NO_VTABLE connection_point : public counted_object<&live_objects::connection_points>,
                                       public IConnectionPoint
{
public:
    BEGIN_COM_MAP(connection_point)
    COM_INTERFACE_ENTRY(IConnectionPoint)
    END_COM_MAP()

    // The container is borrowed. With dispinterface set, sinks that support only IDispatch are accepted.
    void attach(IConnectionPointContainer* container, REFIID interface_id, bool dispinterface);
    // Called when the container is destroyed. Releases the sinks.
    void detach();

    // A copy with references: sinks may advise and unadvise while they are called.
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
    std::map<DWORD, CComPtr<IUnknown>> sinks_; // by cookie, in the order of Advise
};

} // namespace quill
