#include "atl/atlcomcli.h"

#include <ocidl.h>

namespace ATL {
namespace {

HRESULT find_connection_point(IUnknown* source, const IID& iid, CComPtr<IConnectionPoint>& point)
{
    if (!source)
        return E_INVALIDARG;
    CComPtr<IConnectionPointContainer> container;
    HRESULT hr = source->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(&container));
    if (FAILED(hr))
        return hr;
    if (!container)
        return E_NOINTERFACE;
    hr = container->FindConnectionPoint(iid, &point);
    if (FAILED(hr))
        return hr;
    return point ? S_OK : E_NOINTERFACE;
}

} // namespace

ATLAPI AtlAdvise(IUnknown* source, IUnknown* sink, const IID& iid, LPDWORD cookie)
{
    if (!cookie)
        return E_POINTER;
    *cookie = 0;
    CComPtr<IConnectionPoint> point;
    const HRESULT hr = find_connection_point(source, iid, point);
    return SUCCEEDED(hr) ? point->Advise(sink, cookie) : hr;
}

ATLAPI AtlUnadvise(IUnknown* source, const IID& iid, DWORD cookie)
{
    CComPtr<IConnectionPoint> point;
    const HRESULT hr = find_connection_point(source, iid, point);
    return SUCCEEDED(hr) ? point->Unadvise(cookie) : hr;
}

} // namespace ATL
