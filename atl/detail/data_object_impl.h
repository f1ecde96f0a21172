// IDataObjectImpl: renders the control as a metafile and keeps the data advise connections.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

template <class T>
class ATL_NO_VTABLE IDataObjectImpl : public IDataObject
{
public:
    HRESULT STDMETHODCALLTYPE GetData(FORMATETC* pformatetcIn, STGMEDIUM* pmedium) override
    {
        return derived()->IDataObject_GetData(pformatetcIn, pmedium);
    }
    HRESULT STDMETHODCALLTYPE GetDataHere(FORMATETC*, STGMEDIUM*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE QueryGetData(FORMATETC*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetCanonicalFormatEtc(FORMATETC*, FORMATETC*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetData(FORMATETC*, STGMEDIUM*, BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumFormatEtc(DWORD, IEnumFORMATETC** ppenumFormatEtc) override
    {
        if (!ppenumFormatEtc)
            return E_POINTER;
        *ppenumFormatEtc = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE DAdvise(FORMATETC* pformatetc, DWORD advf, IAdviseSink* pAdvSink,
                                      DWORD* pdwConnection) override
    {
        if (!pdwConnection)
            return E_POINTER;
        *pdwConnection = 0;
        if (!pformatetc || !pAdvSink)
            return E_POINTER;
        if (!derived()->m_spDataAdviseHolder) {
            const HRESULT hr = CreateDataAdviseHolder(&derived()->m_spDataAdviseHolder);
            if (FAILED(hr))
                return hr;
        }
        const CComPtr<IDataAdviseHolder> holder = derived()->m_spDataAdviseHolder;
        return holder->Advise(this, pformatetc, advf, pAdvSink, pdwConnection);
    }
    HRESULT STDMETHODCALLTYPE DUnadvise(DWORD dwConnection) override
    {
        const CComPtr<IDataAdviseHolder> holder = derived()->m_spDataAdviseHolder;
        return holder ? holder->Unadvise(dwConnection) : OLE_E_NOCONNECTION;
    }
    HRESULT STDMETHODCALLTYPE EnumDAdvise(IEnumSTATDATA** ppenumAdvise) override
    {
        if (!ppenumAdvise)
            return E_POINTER;
        *ppenumAdvise = nullptr;
        const CComPtr<IDataAdviseHolder> holder = derived()->m_spDataAdviseHolder;
        return holder ? holder->EnumAdvise(ppenumAdvise) : E_FAIL;
    }

protected:
    ~IDataObjectImpl() = default;

private:
    T* derived() noexcept { return static_cast<T*>(this); }
};

} // namespace ATL
