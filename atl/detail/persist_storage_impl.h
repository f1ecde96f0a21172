// IPersistStorageImpl: storage persistence through the control's IPersistStreamInit, in a single stream.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

// The name of the stream in the storage.
inline constexpr const wchar_t* persist_storage_stream = L"Contents";

template <class T>
class ATL_NO_VTABLE IPersistStorageImpl : public IPersistStorage
{
public:
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClassID) override
    {
        if (!pClassID)
            return E_POINTER;
        *pClassID = T::GetObjectCLSID();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE IsDirty() override
    {
        const CComPtr<IPersistStreamInit> stream_init = query_stream_init();
        return stream_init ? stream_init->IsDirty() : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE InitNew(IStorage*) override
    {
        const CComPtr<IPersistStreamInit> stream_init = query_stream_init();
        return stream_init ? stream_init->InitNew() : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE Load(IStorage* pStorage) override
    {
        if (!pStorage)
            return E_POINTER;
        const CComPtr<IPersistStreamInit> stream_init = query_stream_init();
        if (!stream_init)
            return E_FAIL;
        CComPtr<IStream> stream;
        const HRESULT hr = pStorage->OpenStream(persist_storage_stream, nullptr,
                                                STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &stream);
        if (FAILED(hr))
            return hr;
        return stream ? stream_init->Load(stream) : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE Save(IStorage* pStorage, BOOL fSameAsLoad) override
    {
        if (!pStorage)
            return E_POINTER;
        const CComPtr<IPersistStreamInit> stream_init = query_stream_init();
        if (!stream_init)
            return E_FAIL;
        CComPtr<IStream> stream;
        const HRESULT hr = pStorage->CreateStream(
            persist_storage_stream, STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE, 0, 0, &stream);
        if (FAILED(hr))
            return hr;
        return stream ? stream_init->Save(stream, fSameAsLoad) : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE SaveCompleted(IStorage*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE HandsOffStorage() override { return S_OK; }

protected:
    ~IPersistStorageImpl() = default;

private:
    CComPtr<IPersistStreamInit> query_stream_init()
    {
        CComPtr<IPersistStreamInit> result;
        static_cast<T*>(this)->ControlQueryInterface(IID_IPersistStreamInit,
                                                     reinterpret_cast<void**>(&result));
        return result;
    }
};

} // namespace ATL
