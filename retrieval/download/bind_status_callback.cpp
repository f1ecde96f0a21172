#include "retrieval/download/bind_status_callback.h"

#include "retrieval/download/window_exchange.h"

namespace quill {

STDMETHODIMP CBindStatusCallbackImpl::QueryInterface(REFIID iid, void** object)
{
    if (!object)
        return E_POINTER;
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IBindStatusCallback)
        return E_NOINTERFACE;
    *object = static_cast<IBindStatusCallback*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) CBindStatusCallbackImpl::AddRef()
{
    return ++references_;
}

STDMETHODIMP_(ULONG) CBindStatusCallbackImpl::Release()
{
    return --references_;
}

STDMETHODIMP CBindStatusCallbackImpl::OnStartBinding(DWORD, IBinding*)
{
    return S_OK;
}

STDMETHODIMP CBindStatusCallbackImpl::GetPriority(LONG*)
{
    return E_NOTIMPL;
}

STDMETHODIMP CBindStatusCallbackImpl::OnLowResource(DWORD)
{
    return S_OK;
}

STDMETHODIMP CBindStatusCallbackImpl::OnProgress(ULONG progress, ULONG progress_max, ULONG status_code,
                                                 LPCWSTR status_text)
{
    if (notify_window_ && status_code == BINDSTATUS_DOWNLOADINGDATA)
        send_progress(notify_window_, {progress, progress_max, status_code, status_text});
    return is_cancelled(cancel_event_) ? E_ABORT : S_OK;
}

STDMETHODIMP CBindStatusCallbackImpl::OnStopBinding(HRESULT, LPCWSTR)
{
    return S_OK;
}

// Leaves the defaults of urlmon.
STDMETHODIMP CBindStatusCallbackImpl::GetBindInfo(DWORD*, BINDINFO*)
{
    return S_OK;
}

STDMETHODIMP CBindStatusCallbackImpl::OnDataAvailable(DWORD, DWORD, FORMATETC*, STGMEDIUM*)
{
    return S_OK;
}

STDMETHODIMP CBindStatusCallbackImpl::OnObjectAvailable(REFIID, IUnknown*)
{
    return S_OK;
}

} // namespace quill
