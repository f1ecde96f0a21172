// A connection point for browser events that forwards the events of another browser object.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <atlcom.h>
#include <exdisp.h>
#include <ocidl.h>

#include <cstddef>
#include <vector>

namespace quill {

// The connection point. Keeps its sinks until Unadvise or close().
class ATL_NO_VTABLE event_relay : public CComObjectRootEx<CComSingleThreadModel>, public IConnectionPoint
{
public:
    BEGIN_COM_MAP(event_relay)
    COM_INTERFACE_ENTRY(IConnectionPoint)
    END_COM_MAP()

    // The container is borrowed; it must call close() before it is destroyed.
    void attach(IConnectionPointContainer* container) { container_ = container; }
    void close();
    void fire(DISPID event, DISPPARAMS* arguments);
    std::size_t sinks() const { return connections_.size(); }

    // IConnectionPoint
    STDMETHOD(GetConnectionInterface)(IID* events) override;
    STDMETHOD(GetConnectionPointContainer)(IConnectionPointContainer** container) override;
    STDMETHOD(Advise)(IUnknown* sink, DWORD* cookie) override;
    STDMETHOD(Unadvise)(DWORD cookie) override;
    STDMETHOD(EnumConnections)(IEnumConnections** connections) override;

private:
    struct connection
    {
        DWORD cookie;
        CComPtr<IDispatch> sink;
    };

    IConnectionPointContainer* container_ = nullptr;
    std::vector<connection> connections_;
    DWORD last_cookie_ = 0;
};

// The sink of the other browser's events: forwards them with the browser argument replaced.
class ATL_NO_VTABLE forwarding_sink : public CComObjectRootEx<CComSingleThreadModel>, public IDispatch
{
public:
    BEGIN_COM_MAP(forwarding_sink)
    COM_INTERFACE_ENTRY(IDispatch)
    COM_INTERFACE_ENTRY_IID(DIID_DWebBrowserEvents2, IDispatch)
    END_COM_MAP()

    // The relay fires the events of `source` with `shown`, which is borrowed, as their browser argument.
    HRESULT advise(IUnknown* source, IDispatch* shown, event_relay* relay);
    void close();

    // IDispatch
    STDMETHOD(GetTypeInfoCount)(UINT* count) override;
    STDMETHOD(GetTypeInfo)(UINT index, LCID locale, ITypeInfo** info) override;
    STDMETHOD(GetIDsOfNames)(REFIID reserved, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
    STDMETHOD(Invoke)(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters,
                      VARIANT* result, EXCEPINFO* exception, UINT* bad_argument) override;

private:
    CComPtr<IUnknown> source_;
    IDispatch* shown_ = nullptr;
    CComPtr<event_relay> relay_;
    DWORD cookie_ = 0;
};

} // namespace quill
