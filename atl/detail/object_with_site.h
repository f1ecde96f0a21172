// IObjectWithSiteImpl: keeps the site that the host sets.
#pragma once

#include "atl/atlcomcli.h"

namespace ATL {

template <class T>
class IObjectWithSiteImpl : public IObjectWithSite
{
public:
    HRESULT STDMETHODCALLTYPE SetSite(IUnknown* site) override
    {
        m_spUnkSite = site;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetSite(REFIID riid, void** ppv) override
    {
        if (!ppv)
            return E_POINTER;
        *ppv = nullptr;
        return m_spUnkSite ? m_spUnkSite->QueryInterface(riid, ppv) : E_FAIL;
    }
    HRESULT SetChildSite(IUnknown* child) noexcept
    {
        if (!child)
            return E_POINTER;
        CComPtr<IObjectWithSite> with_site;
        const HRESULT hr = child->QueryInterface(IID_IObjectWithSite, reinterpret_cast<void**>(&with_site));
        return SUCCEEDED(hr) && with_site ? with_site->SetSite(m_spUnkSite) : hr;
    }

    CComPtr<IUnknown> m_spUnkSite;
};

} // namespace ATL
