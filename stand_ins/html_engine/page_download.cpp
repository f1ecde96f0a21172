#include "stand_ins/html_engine/page_download.h"

#include "stand_ins/html_engine/com_results.h"

#include <array>
#include <utility>

namespace quill {

HRESULT get_display_name(IMoniker* moniker, IBindCtx* context, std::wstring& name)
{
    struct task_memory
    {
        LPOLESTR text = nullptr;
        ~task_memory() { CoTaskMemFree(text); }
    } given;
    const HRESULT hr = moniker->GetDisplayName(context, nullptr, &given.text);
    if (FAILED(hr) || given.text == nullptr)
        return FAILED(hr) ? hr : E_FAIL;
    name = given.text;
    return S_OK;
}

HRESULT page_download::start(IMoniker* moniker, IBindCtx* context, page_download_owner& owner)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    CComPtr<IBindCtx> used(context);
    HRESULT hr = used ? S_OK : CreateBindCtx(0, &used);
    CComPtr<IBindStatusCallback> previous;
    if (SUCCEEDED(hr))
        hr = RegisterBindStatusCallback(used, this, &previous, 0);
    if (FAILED(hr))
        return hr;
    owner_ = &owner;
    context_ = used;
    CComPtr<IStream> stream;
    hr = moniker->BindToStorage(used, nullptr, IID_IStream, reinterpret_cast<void**>(&stream));
    if (FAILED(hr)) {
        owner_ = nullptr;
        finish(hr);
        return hr;
    }
    // A moniker with cached data returns the stream without calling IBindStatusCallback.
    if (owner_ != nullptr && hr == S_OK && stream && !binding_) {
        read(stream);
        finish(S_OK);
    }
    return S_OK;
}

void page_download::cancel()
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    owner_ = nullptr;
    if (const CComPtr<IBinding> binding = binding_)
        binding->Abort();
    finish(E_ABORT);
}

void page_download::finish(HRESULT result)
{
    binding_.Release();
    const CComPtr<IBindCtx> context(std::move(context_));
    if (context)
        RevokeBindStatusCallback(context, this);
    if (page_download_owner* const owner = std::exchange(owner_, nullptr))
        owner->downloaded(result, bytes_);
}

void page_download::read(IStream* stream)
{
    std::array<char, 16384> buffer;
    for (;;) {
        ULONG count = 0;
        const HRESULT hr = stream->Read(buffer.data(), static_cast<ULONG>(buffer.size()), &count);
        bytes_.append(buffer.data(), count);
        // End of data, or E_PENDING.
        if (hr != S_OK || count == 0)
            return;
    }
}

STDMETHODIMP page_download::OnStartBinding(DWORD, IBinding* binding)
{
    binding_ = binding;
    return S_OK;
}

STDMETHODIMP page_download::GetPriority(LONG* priority)
{
    if (priority == nullptr)
        return E_POINTER;
    *priority = THREAD_PRIORITY_NORMAL;
    return S_OK;
}

STDMETHODIMP page_download::OnStopBinding(HRESULT result, LPCWSTR)
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    return guarded([&] {
        finish(result);
        return S_OK;
    });
}

STDMETHODIMP page_download::GetBindInfo(DWORD* flags, BINDINFO* info)
{
    if (flags == nullptr || info == nullptr)
        return E_POINTER;
    *flags = BINDF_ASYNCHRONOUS | BINDF_ASYNCSTORAGE | BINDF_PULLDATA;
    const DWORD size = info->cbSize;
    *info = {};
    info->cbSize = size;
    info->dwBindVerb = BINDVERB_GET;
    return S_OK;
}

STDMETHODIMP page_download::OnDataAvailable(DWORD, DWORD, FORMATETC*, STGMEDIUM* medium)
{
    return guarded([&] {
        if (medium != nullptr && medium->tymed == TYMED_ISTREAM && medium->pstm != nullptr)
            read(medium->pstm);
        return S_OK;
    });
}

} // namespace quill
