// IOleInPlaceObjectWindowlessImpl: the host's handle on the activated control. Controls here have windows;
// the windowless methods answer for hosts that ask for this interface anyway.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

// Asks the site for its frame and document window again and takes the control out of them.
void ReleaseActiveObject(IOleInPlaceSite* site) noexcept;

// Places the window at `position` (client coordinates of its parent), cut off where `clip` ends.
void PlaceControlWindow(HWND window, const RECT& position, const RECT& clip) noexcept;

template <class T>
class ATL_NO_VTABLE IOleInPlaceObjectWindowlessImpl : public IOleInPlaceObjectWindowless
{
public:
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* phwnd) override
    {
        if (!phwnd)
            return E_POINTER;
        *phwnd = Self()->m_hWndCD;
        return *phwnd ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InPlaceDeactivate() override
    {
        T* const pT = Self();
        CComPtr<IUnknown> self;
        pT->ControlQueryInterface(IID_IUnknown, reinterpret_cast<void**>(&self));
        if (!pT->m_bInPlaceActive)
            return S_OK;
        if (pT->m_bUIActive) {
            const HRESULT hr = pT->UIDeactivate();
            if (FAILED(hr))
                return hr;
        }
        if (!pT->m_bInPlaceActive)
            return S_OK; // the host has deactivated the control inside one of these calls
        pT->m_bInPlaceActive = 0;
        const CComPtr<IOleInPlaceSite> site = pT->m_spInPlaceSite;
        if (const HWND window = pT->m_hWndCD) {
            if (::IsWindow(window))
                ::DestroyWindow(window);
            pT->m_hWndCD = nullptr;
        }
        if (site)
            site->OnInPlaceDeactivate();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE UIDeactivate() override
    {
        T* const pT = Self();
        CComPtr<IUnknown> self;
        pT->ControlQueryInterface(IID_IUnknown, reinterpret_cast<void**>(&self));
        if (!pT->m_bUIActive)
            return S_OK;
        pT->m_bUIActive = 0;
        if (const CComPtr<IOleInPlaceSite> site = pT->m_spInPlaceSite) {
            ReleaseActiveObject(site);
            site->OnUIDeactivate(FALSE);
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetObjectRects(LPCRECT prcPos, LPCRECT prcClip) override
    {
        if (!prcPos || !prcClip)
            return E_POINTER;
        Self()->m_rcPos = *prcPos;
        if (Self()->m_hWndCD)
            PlaceControlWindow(Self()->m_hWndCD, *prcPos, *prcClip);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ReactivateAndUndo() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnWindowMessage(UINT, WPARAM, LPARAM, LRESULT* plResult) override
    {
        if (!plResult)
            return E_POINTER;
        *plResult = 0;
        return S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE GetDropTarget(IDropTarget** ppDropTarget) override
    {
        if (!ppDropTarget)
            return E_POINTER;
        *ppDropTarget = nullptr;
        return E_NOTIMPL;
    }

protected:
    ~IOleInPlaceObjectWindowlessImpl() = default;

private:
    T* Self() noexcept { return static_cast<T*>(this); }
};

} // namespace ATL
