// Reads a page from its moniker, with the bind context of the browser.
#pragma once

#include "stand_ins/html_engine/counted_object.h"

#include <windows.h>

#include <urlmon.h>

#include <string>

namespace quill {

class page_download_owner
{
public:
    // Called once for each download unless it is cancelled. `bytes` may be incomplete on failure.
    virtual void downloaded(HRESULT result, const std::string& bytes) = 0;

protected:
    ~page_download_owner() = default;
};

class ATL_NO_VTABLE page_download : public counted_object<&live_objects::downloads>,
                                    public IBindStatusCallback
{
public:
    BEGIN_COM_MAP(page_download)
    COM_INTERFACE_ENTRY(IBindStatusCallback)
    END_COM_MAP()

    // The owner is notified later or inside this call. A failure is only returned.
    HRESULT start(IMoniker* moniker, IBindCtx* context, page_download_owner& owner);
    // The owner is not notified afterwards.
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

    page_download_owner* owner_ = nullptr; // null after the notification and after cancel()
    CComPtr<IBinding> binding_;
    CComPtr<IBindCtx> context_;
    std::string bytes_;
};

// The moniker's display name: the URL of the page, including its fragment.
HRESULT get_display_name(IMoniker* moniker, IBindCtx* context, std::wstring& name);

} // namespace quill
