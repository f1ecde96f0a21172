// Hosting a control in a window: the window class "AtlAxWin140", whose windows make a host object for
// themselves, and functions for putting a control into any window of the calling thread.
#pragma once

#include "atl/atlbase.h"
#include "atl/detail/window.h"

#include <windows.h>

#include <ole2.h>

#define ATLAXWIN_CLASS "AtlAxWin140"

struct IDocHostUIHandlerDispatch;

// The host object of a window. One control at a time: another one takes its place.
struct __declspec(uuid("{B6EA2050-048A-11D1-82B9-00C04FB9942E}")) IAxWinHostWindow : public IUnknown
{
    // lpTricsData: a ProgID, or a CLSID in braces. hWnd: the window to host it in, of the calling thread;
    // a host sits on one window. pStream: what a control with stream persistence is loaded from, or null
    // for a new one.
    virtual HRESULT STDMETHODCALLTYPE CreateControl(LPCOLESTR lpTricsData, HWND hWnd, IStream* pStream) = 0;
    // Also returns the control, and connects `punkAdvise` to its connection point `riidAdvise`.
    virtual HRESULT STDMETHODCALLTYPE CreateControlEx(LPCOLESTR lpTricsData, HWND hWnd, IStream* pStream,
                                                      IUnknown** ppUnk, REFIID riidAdvise,
                                                      IUnknown* punkAdvise) = 0;
    // For a control that has been initialised already.
    virtual HRESULT STDMETHODCALLTYPE AttachControl(IUnknown* pUnkControl, HWND hWnd) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryControl(REFIID riid, void** ppvObject) = 0;
    // For hosted pages, which this host does not cater for: E_NOTIMPL.
    virtual HRESULT STDMETHODCALLTYPE SetExternalDispatch(IDispatch* pDisp) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetExternalUIHandler(IDocHostUIHandlerDispatch* pDisp) = 0;
};

__CRT_UUID_DECL(IAxWinHostWindow, 0xB6EA2050, 0x048A, 0x11D1, 0x82, 0xB9, 0x00, 0xC0, 0x4F, 0xB9, 0x94, 0x2E)

namespace ATL {

// Registers the window class for this module, unless it is registered. A window of the class hosts the
// control that its title names, none when it has no title; a control that cannot be made is a window that
// cannot be made.
BOOL AtlAxWinInit() noexcept;
// Unregisters it. FALSE: windows of the class remain, and the class with them.
BOOL AtlAxWinTerm() noexcept;

// Registered messages "WM_ATLGETHOST" and "WM_ATLGETCONTROL": a hosting window answers with the host object's
// or the control's IUnknown, referenced for the receiver, or 0.
UINT AtlGetHostMessage() noexcept;
UINT AtlGetControlMessage() noexcept;

// The host object or the control of a hosting window of this process, with a reference.
ATLAPI AtlAxGetHost(HWND h, IUnknown** pp);
ATLAPI AtlAxGetControl(HWND h, IUnknown** pp);

// A new host object on `hWnd`, which then belongs to the window, and in it a new control (none when lpszName
// is null or empty). Out pointers may be null.
ATLAPI AtlAxCreateControl(LPCOLESTR lpszName, HWND hWnd, IStream* pStream, IUnknown** ppUnkContainer);
ATLAPI AtlAxCreateControlEx(LPCOLESTR lpszName, HWND hWnd, IStream* pStream, IUnknown** ppUnkContainer,
                            IUnknown** ppUnkControl, REFIID iidSink = IID_NULL, IUnknown* punkSink = nullptr);
// The same for a control that exists and is initialised.
ATLAPI AtlAxAttachControl(IUnknown* pControl, HWND hWnd, IUnknown** ppUnkContainer);

// A hosting window.
class CAxWindow : public CWindow
{
public:
    using CWindow::CWindow;

    static LPCWSTR GetWndClassName() noexcept { return TEXT(ATLAXWIN_CLASS); }

    HRESULT QueryHost(REFIID iid, void** ppUnk) const { return Query(&AtlAxGetHost, iid, ppUnk); }
    HRESULT QueryControl(REFIID iid, void** ppUnk) const { return Query(&AtlAxGetControl, iid, ppUnk); }

private:
    HRESULT Query(HRESULT(__stdcall* get)(HWND, IUnknown**), REFIID iid, void** ppUnk) const
    {
        if (!ppUnk)
            return E_POINTER;
        *ppUnk = nullptr;
        CComPtr<IUnknown> unknown;
        const HRESULT hr = get(m_hWnd, &unknown);
        return SUCCEEDED(hr) ? unknown->QueryInterface(iid, ppUnk) : hr;
    }
};

} // namespace ATL
