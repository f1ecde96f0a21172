// Reads a page's bytes from the download that the browser has begun for it.
#pragma once

#include "stand_ins/html_engine/counted_object.h"

#include <windows.h>

#include <urlmon.h>

#include <string>

namespace quill {

class page_download_owner
{
public:
    // Once for each download, unless it is cancelled; `bytes` as far as they came.
    virtual void downloaded(HRESULT result, const std::string& bytes) = 0;

protected:
    ~page_download_owner() = default;
};

class ATL_NO_VTABLE page_download : public counted_object<&living_objects::downloads>,
                                    public IBindStatusCallback
{
public:
    BEGIN_COM_MAP(page_download)
    COM_INTERFACE_ENTRY(IBindStatusCallback)
    END_COM_MAP()

    // The owner is told later, or within this call. A failure is told by the result only.
    HRESULT start(IMoniker* moniker, IBindCtx* context, page_download_owner& owner);
    // The owner hears no more of it.
    void cancel();

    STDMETHODIMP OnStartBinding(DWORD reserved, IBinding* binding) override;
    STDMETHODIMP GetPriority(LONG* priority) override;
    STDMETHODIMP OnLowResource(DWORD) override { return S_OK; }
    STDMETHODIMP OnProgress(ULONG, ULONG, ULONG, LPCWSTR) override { return S_OK; }
    STDMETHODIMP OnStopBinding(HRESULT result, LPCWSTR message) override;
    STDMETHODIMP GetBindInfo(DWORD* flags, BINDINFO* info) override;
    STDMETHODIMP OnDataAvailable(DWORD flags, DWORD size, FORMATETC* format, STGMEDIUM* medium) override;
    STDMETHODIMP OnObjectAvailable(REFIID, IUnknown*) override { return S_OK; }

private:
    void read(IStream* stream);
    void finish(HRESULT result);

    page_download_owner* owner_ = nullptr; // null when there is nothing more to tell
    CComPtr<IBinding> binding_;
    CComPtr<IBindCtx> context_;
    std::string bytes_;
};

// The moniker's name: the address of the page, fragment included.
HRESULT get_display_name(IMoniker* moniker, IBindCtx* context, std::wstring& name);

} // namespace quill
