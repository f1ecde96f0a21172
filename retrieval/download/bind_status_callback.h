// The IBindStatusCallback that the worker passes to URLDownloadToFileW. Reports progress to the document's
// window and cancels the download when the stop event is set.
#pragma once

#include <windows.h>

#include <urlmon.h>

#include <cstdint>

namespace quill {

// Lives on the worker's stack for one download and is used on that thread only: Release never deletes it.
class CBindStatusCallbackImpl : public IBindStatusCallback
{
public:
    // notify_window receives WM_USER_PROGRESS. Once cancel_event is set, the next OnProgress returns E_ABORT.
    // Either may be null.
    CBindStatusCallbackImpl(HWND notify_window, HANDLE cancel_event) noexcept
        : notify_window_(notify_window), cancel_event_(cancel_event)
    {
    }
    CBindStatusCallbackImpl(const CBindStatusCallbackImpl&) = delete;
    CBindStatusCallbackImpl& operator=(const CBindStatusCallbackImpl&) = delete;

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    // IBindStatusCallback
    STDMETHODIMP OnStartBinding(DWORD reserved, IBinding* binding) override;
    STDMETHODIMP GetPriority(LONG* priority) override;
    STDMETHODIMP OnLowResource(DWORD reserved) override;
    STDMETHODIMP OnProgress(ULONG progress, ULONG progress_max, ULONG status_code,
                            LPCWSTR status_text) override;
    STDMETHODIMP OnStopBinding(HRESULT result, LPCWSTR error) override;
    STDMETHODIMP GetBindInfo(DWORD* flags, BINDINFO* info) override;
    STDMETHODIMP OnDataAvailable(DWORD flags, DWORD size, FORMATETC* format, STGMEDIUM* medium) override;
    STDMETHODIMP OnObjectAvailable(REFIID iid, IUnknown* object) override;

    virtual ~CBindStatusCallbackImpl() = default;

private:
    std::uint32_t references_ = 0;
    HWND notify_window_;
    HANDLE cancel_event_;
};

static_assert(sizeof(CBindStatusCallbackImpl) == 4 * sizeof(void*));

} // namespace quill
