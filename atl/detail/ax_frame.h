// The in-place frame that a hosting window provides to its control: the top-level window around it. It has no
// menus, tool bars or accelerators to negotiate, and ignores SetActiveObject because the host queries the
// control directly.
#pragma once

#include "atl/atlcom.h"

#include <oleidl.h>

namespace ATL {

class CAxFrameWindow : public CComObjectRootEx<CComSingleThreadModel>, public IOleInPlaceFrame
{
public:
    BEGIN_COM_MAP(CAxFrameWindow)
    COM_INTERFACE_ENTRY(IOleInPlaceFrame)
    COM_INTERFACE_ENTRY(IOleInPlaceUIWindow)
    COM_INTERFACE_ENTRY(IOleWindow)
    END_COM_MAP()

    // IOleWindow
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* phwnd) override
    {
        if (!phwnd)
            return E_POINTER;
        *phwnd = m_hWnd;
        return m_hWnd ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }

    // IOleInPlaceUIWindow
    HRESULT STDMETHODCALLTYPE GetBorder(LPRECT lprectBorder) override
    {
        if (!lprectBorder)
            return E_POINTER;
        *lprectBorder = {};
        return INPLACE_E_NOTOOLSPACE;
    }
    HRESULT STDMETHODCALLTYPE RequestBorderSpace(LPCBORDERWIDTHS) override { return INPLACE_E_NOTOOLSPACE; }
    HRESULT STDMETHODCALLTYPE SetBorderSpace(LPCBORDERWIDTHS widths) override
    {
        return widths ? OLE_E_INVALIDRECT : S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetActiveObject(IOleInPlaceActiveObject*, LPCOLESTR) override { return S_OK; }

    // IOleInPlaceFrame
    HRESULT STDMETHODCALLTYPE InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetMenu(HMENU, HOLEMENU, HWND) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE RemoveMenus(HMENU) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetStatusText(LPCOLESTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE EnableModeless(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(LPMSG, WORD) override { return S_FALSE; }

    HWND m_hWnd = nullptr;
};

} // namespace ATL
