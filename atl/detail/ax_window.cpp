// The hosting window class and the functions around it.
#include "atl/detail/ax_host_window.h"

#include <atomic>

namespace ATL {
namespace {

HRESULT NewHost(CComPtr<IAxWinHostWindow>& host, CAxHostWindow** object) noexcept
{
    CComObject<CAxHostWindow>* created = nullptr;
    const HRESULT hr = CComObject<CAxHostWindow>::CreateInstance(&created);
    if (FAILED(hr))
        return hr;
    host = static_cast<IAxWinHostWindow*>(created);
    *object = created;
    return S_OK;
}

// A window of the class becomes the host's with WM_CREATE; the messages before it need no host.
LRESULT OnWindowCreate(HWND hWnd, const CREATESTRUCTW& creation) noexcept
{
    CComPtr<IAxWinHostWindow> host;
    CAxHostWindow* object = nullptr;
    HRESULT hr = NewHost(host, &object);
    if (SUCCEEDED(hr))
        hr = object->SitOn(hWnd);
    if (SUCCEEDED(hr) && creation.lpszName && *creation.lpszName)
        hr = object->CreateControlEx(creation.lpszName, hWnd, nullptr, nullptr, IID_NULL, nullptr);
    return SUCCEEDED(hr) ? 0 : -1;
}

LRESULT CALLBACK AtlAxWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept
{
    if (uMsg == WM_CREATE)
        return OnWindowCreate(hWnd, *reinterpret_cast<const CREATESTRUCTW*>(lParam));
    return DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

constinit CWndClassInfo g_hostClass(TEXT(ATLAXWIN_CLASS), CS_DBLCLKS, COLOR_WINDOW, AtlAxWindowProc);

// Asked for with every message of a hosting window, so the number is kept. Registering twice gives the same
// one.
UINT RegisteredMessage(std::atomic<UINT>& message, LPCWSTR name) noexcept
{
    if (!message)
        message = RegisterWindowMessageW(name);
    return message;
}

HRESULT AskWindow(HWND h, UINT message, IUnknown** pp) noexcept
{
    if (!pp)
        return E_POINTER;
    *pp = nullptr;
    DWORD process = 0;
    GetWindowThreadProcessId(h, &process);
    if (process != GetCurrentProcessId())
        return E_INVALIDARG; // no such window, or its pointers are of no use here
    *pp = reinterpret_cast<IUnknown*>(SendMessageW(h, message, 0, 0));
    return *pp ? S_OK : E_FAIL;
}

} // namespace

BOOL AtlAxWinInit() noexcept
{
    return AtlGetHostMessage() && AtlGetControlMessage() && g_hostClass.Register();
}

BOOL AtlAxWinTerm() noexcept
{
    return _AtlWinModule.Unregister(g_hostClass);
}

UINT AtlGetHostMessage() noexcept
{
    static constinit std::atomic<UINT> message{0};
    return RegisteredMessage(message, L"WM_ATLGETHOST");
}

UINT AtlGetControlMessage() noexcept
{
    static constinit std::atomic<UINT> message{0};
    return RegisteredMessage(message, L"WM_ATLGETCONTROL");
}

ATLAPI AtlAxGetHost(HWND h, IUnknown** pp)
{
    return AskWindow(h, AtlGetHostMessage(), pp);
}

ATLAPI AtlAxGetControl(HWND h, IUnknown** pp)
{
    return AskWindow(h, AtlGetControlMessage(), pp);
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
    HRESULT hr = NewHost(host, &object);
    if (SUCCEEDED(hr))
        hr = object->SitOn(hWnd);
    if (SUCCEEDED(hr) && lpszName && *lpszName)
        hr = object->CreateControlEx(lpszName, hWnd, pStream, ppUnkControl, iidSink, punkSink);
    if (FAILED(hr)) {
        if (object)
            object->Leave();
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
    HRESULT hr = NewHost(host, &object);
    if (SUCCEEDED(hr))
        hr = object->AttachControl(pControl, hWnd);
    if (FAILED(hr)) {
        if (object)
            object->Leave();
        return hr;
    }
    if (ppUnkContainer)
        *ppUnkContainer = host.Detach();
    return S_OK;
}

} // namespace ATL
