// Hosting a control in a window: the window class "AtlAxWin140", whose windows create their own host object,
// and functions that host a control in any window of the calling thread.
#pragma once

#include "atl/atlbase.h"
#include "atl/detail/window.h"

#include <windows.h>

#include <ole2.h>

#define ATLAXWIN_CLASS "AtlAxWin140"

struct IDocHostUIHandlerDispatch;

// The host object of a window. It hosts one control at a time; a new control replaces it.
struct __declspec(uuid("{B6EA2050-048A-11D1-82B9-00C04FB9942E}")) IAxWinHostWindow : public IUnknown
{
    // lpTricsData: a ProgID, or a CLSID in braces. hWnd: the hosting window, which must belong to the calling
    // thread; a host cannot move to another window. pStream: the state for a control with stream
    // persistence, or null for a new control.
    virtual HRESULT STDMETHODCALLTYPE CreateControl(LPCOLESTR lpTricsData, HWND hWnd, IStream* pStream) = 0;
    // Also returns the control, and advises `punkAdvise` on its connection point `riidAdvise`.
    virtual HRESULT STDMETHODCALLTYPE CreateControlEx(LPCOLESTR lpTricsData, HWND hWnd, IStream* pStream,
                                                      IUnknown** ppUnk, REFIID riidAdvise,
                                                      IUnknown* punkAdvise) = 0;
    // Hosts a control that is already initialised.
    virtual HRESULT STDMETHODCALLTYPE AttachControl(IUnknown* pUnkControl, HWND hWnd) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryControl(REFIID riid, void** ppvObject) = 0;
    // For hosted HTML pages, which are not supported: both return E_NOTIMPL.
    virtual HRESULT STDMETHODCALLTYPE SetExternalDispatch(IDispatch* pDisp) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetExternalUIHandler(IDocHostUIHandlerDispatch* pDisp) = 0;
};

__CRT_UUID_DECL(IAxWinHostWindow, 0xB6EA2050, 0x048A, 0x11D1, 0x82, 0xB9, 0x00, 0xC0, 0x4F, 0xB9, 0x94, 0x2E)

namespace ATL {

// Registers the window class for this module unless it is already registered. A window of the class hosts the
// control that its title names, or none if the title is empty. Window creation fails if the control cannot
// be created.
BOOL AtlAxWinInit() noexcept;
// Unregisters the class. FALSE: windows of the class still exist, so it stays registered.
BOOL AtlAxWinTerm() noexcept;

// Registered messages "WM_ATLGETHOST" and "WM_ATLGETCONTROL": a hosting window returns the IUnknown of the
// host object or of the control, which the sender must release, or 0.
UINT AtlGetHostMessage() noexcept;
UINT AtlGetControlMessage() noexcept;

// Return the host object or the control of a hosting window in this process. The caller owns the reference.
ATLAPI AtlAxGetHost(HWND h, IUnknown** pp);
ATLAPI AtlAxGetControl(HWND h, IUnknown** pp);

// Creates a host object for `hWnd`, owned by the window, and a control in it (none if lpszName is null or
// empty). The out parameters may be null.
ATLAPI AtlAxCreateControl(LPCOLESTR lpszName, HWND hWnd, IStream* pStream, IUnknown** ppUnkContainer);
ATLAPI AtlAxCreateControlEx(LPCOLESTR lpszName, HWND hWnd, IStream* pStream, IUnknown** ppUnkContainer,
                            IUnknown** ppUnkControl, REFIID iidSink = IID_NULL, IUnknown* punkSink = nullptr);
// As AtlAxCreateControl, for an existing control that is already initialised.
ATLAPI AtlAxAttachControl(IUnknown* pControl, HWND hWnd, IUnknown** ppUnkContainer);

// A hosting window.
class CAxWindow : public CWindow
{
public:
    using CWindow::CWindow;

    static LPCWSTR GetWndClassName() noexcept { return TEXT(ATLAXWIN_CLASS); }

    HRESULT QueryHost(REFIID iid, void** ppUnk) const { return query(&AtlAxGetHost, iid, ppUnk); }
    HRESULT QueryControl(REFIID iid, void** ppUnk) const { return query(&AtlAxGetControl, iid, ppUnk); }

private:
    HRESULT query(HRESULT(__stdcall* get)(HWND, IUnknown**), REFIID iid, void** ppUnk) const
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
