// A bind status callback that does nothing.
#pragma once

#include <windows.h>

#include <urlmon.h>

namespace quill::test {

// Not reference counted: it must outlive the download.
class empty_callback : public IBindStatusCallback
{
public:
    virtual ~empty_callback() = default;
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override
    {
        const bool is_known = iid == IID_IUnknown || iid == IID_IBindStatusCallback;
        *object = is_known ? this : nullptr;
        return is_known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP OnStartBinding(DWORD, IBinding*) override { return S_OK; }
    STDMETHODIMP GetPriority(LONG*) override { return E_NOTIMPL; }
    STDMETHODIMP OnLowResource(DWORD) override { return S_OK; }
    STDMETHODIMP OnProgress(ULONG, ULONG, ULONG, LPCWSTR) override { return S_OK; }
    STDMETHODIMP OnStopBinding(HRESULT, LPCWSTR) override { return S_OK; }
    STDMETHODIMP GetBindInfo(DWORD*, BINDINFO*) override { return S_OK; }
    STDMETHODIMP OnDataAvailable(DWORD, DWORD, FORMATETC*, STGMEDIUM*) override { return S_OK; }
    STDMETHODIMP OnObjectAvailable(REFIID, IUnknown*) override { return S_OK; }
};

} // namespace quill::test
