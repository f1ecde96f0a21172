// The hosting window class and the AtlAx functions.
#include "atl/detail/ax_host_window.h"

#include <atomic>

namespace ATL {
namespace {

HRESULT create_host(CComPtr<IAxWinHostWindow>& host, CAxHostWindow** object) noexcept
{
    CComObject<CAxHostWindow>* created = nullptr;
    const HRESULT hr = CComObject<CAxHostWindow>::CreateInstance(&created);
    if (FAILED(hr))
        return hr;
    host = static_cast<IAxWinHostWindow*>(created);
    *object = created;
    return S_OK;
}

// The host attaches in WM_CREATE; earlier messages need no host.
LRESULT on_window_create(HWND hWnd, const CREATESTRUCTW& creation) noexcept
{
    CComPtr<IAxWinHostWindow> host;
    CAxHostWindow* object = nullptr;
    HRESULT hr = create_host(host, &object);
    if (SUCCEEDED(hr))
        hr = object->attach_to_window(hWnd);
    if (SUCCEEDED(hr) && creation.lpszName && *creation.lpszName)
        hr = object->CreateControlEx(creation.lpszName, hWnd, nullptr, nullptr, IID_NULL, nullptr);
    return SUCCEEDED(hr) ? 0 : -1;
}

LRESULT CALLBACK AtlAxWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    if (uMsg == WM_CREATE)
        return on_window_create(hWnd, *reinterpret_cast<const CREATESTRUCTW*>(lParam));
    return DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

constinit CWndClassInfo host_class(TEXT(ATLAXWIN_CLASS), CS_DBLCLKS, COLOR_WINDOW, AtlAxWindowProc);

// Cached because the message map compares it with every message. A race is harmless: the system returns the
// same identifier for the same name.
UINT registered_message(std::atomic<UINT>& message, LPCWSTR name) noexcept
{
    if (!message)
        message = RegisterWindowMessageW(name);
    return message;
}

HRESULT query_window(HWND h, UINT message, IUnknown** pp) noexcept
{
    if (!pp)
        return E_POINTER;
    *pp = nullptr;
    DWORD process = 0;
    GetWindowThreadProcessId(h, &process);
    if (process != GetCurrentProcessId())
        return E_INVALIDARG; // no such window, or its pointers are invalid in this process
    *pp = reinterpret_cast<IUnknown*>(SendMessageW(h, message, 0, 0));
    return *pp ? S_OK : E_FAIL;
}

} // namespace

BOOL AtlAxWinInit() noexcept
{
    return AtlGetHostMessage() && AtlGetControlMessage() && host_class.Register();
}

BOOL AtlAxWinTerm() noexcept
{
    return _AtlWinModule.Unregister(host_class);
}

UINT AtlGetHostMessage() noexcept
{
    static constinit std::atomic<UINT> message{0};
    return registered_message(message, L"WM_ATLGETHOST");
}

UINT AtlGetControlMessage() noexcept
{
    static constinit std::atomic<UINT> message{0};
    return registered_message(message, L"WM_ATLGETCONTROL");
}

ATLAPI AtlAxGetHost(HWND h, IUnknown** pp)
{
    return query_window(h, AtlGetHostMessage(), pp);
}

ATLAPI AtlAxGetControl(HWND h, IUnknown** pp)
{
    return query_window(h, AtlGetControlMessage(), pp);
}

ATLAPI AtlAxCreateControl(LPCOLESTR lpszName, HWND hWnd, IStream* pStream, IUnknown** ppUnkContainer)
{
    return AtlAxCreateControlEx(lpszName, hWnd, pStream, ppUnkContainer, nullptr, IID_NULL, nullptr);
}

ATLAPI AtlAxCreateControlEx(LPCOLESTR lpszName, HWND hWnd, IStream* pStream, IUnknown** ppUnkContainer,
                            IUnknown** ppUnkControl, REFIID iidSink, IUnknown* punkSink)
{
    if (ppUnkContainer)
        *ppUnkContainer = nullptr;
    if (ppUnkControl)
        *ppUnkControl = nullptr;
    CComPtr<IAxWinHostWindow> host;
    CAxHostWindow* object = nullptr;
    HRESULT hr = create_host(host, &object);
    if (SUCCEEDED(hr))
        hr = object->attach_to_window(hWnd);
    if (SUCCEEDED(hr) && lpszName && *lpszName)
        hr = object->CreateControlEx(lpszName, hWnd, pStream, ppUnkControl, iidSink, punkSink);
    if (FAILED(hr)) {
        if (object)
            object->detach_from_window();
        return hr;
    }
    if (ppUnkContainer)
        *ppUnkContainer = host.Detach();
    return S_OK;
}

ATLAPI AtlAxAttachControl(IUnknown* pControl, HWND hWnd, IUnknown** ppUnkContainer)
{
    if (ppUnkContainer)
        *ppUnkContainer = nullptr;
    if (!pControl)
        return E_INVALIDARG;
    CComPtr<IAxWinHostWindow> host;
    CAxHostWindow* object = nullptr;
    HRESULT hr = create_host(host, &object);
    if (SUCCEEDED(hr))
        hr = object->AttachControl(pControl, hWnd);
    if (FAILED(hr)) {
        if (object)
            object->detach_from_window();
        return hr;
    }
    if (ppUnkContainer)
        *ppUnkContainer = host.Detach();
    return S_OK;
}

} // namespace ATL
