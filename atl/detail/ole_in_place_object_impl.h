// IOleInPlaceObjectWindowlessImpl: the host's interface to the in-place active control. Controls here are
// windowed; some hosts query for the windowless interface nevertheless.
#pragma once

#include "atl/detail/control_base.h"

namespace ATL {

// Clears the active object of the site's frame and document window.
void clear_active_object(IOleInPlaceSite* site) noexcept;

// Moves the window to `position` (client coordinates of its parent) and clips it to `clip`.
void place_control_window(HWND window, const RECT& position, const RECT& clip) noexcept;

template <class T>
class ATL_NO_VTABLE IOleInPlaceObjectWindowlessImpl : public IOleInPlaceObjectWindowless
{
public:
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* phwnd) override
    {
        if (!phwnd)
            return E_POINTER;
        *phwnd = derived()->m_hWndCD;
        return *phwnd ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InPlaceDeactivate() override
    {
        T* const pT = derived();
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
            return S_OK; // a re-entrant call has already deactivated the control
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
        T* const pT = derived();
        CComPtr<IUnknown> self;
        pT->ControlQueryInterface(IID_IUnknown, reinterpret_cast<void**>(&self));
        if (!pT->m_bUIActive)
            return S_OK;
        pT->m_bUIActive = 0;
        if (const CComPtr<IOleInPlaceSite> site = pT->m_spInPlaceSite) {
            clear_active_object(site);
            site->OnUIDeactivate(FALSE);
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetObjectRects(LPCRECT prcPos, LPCRECT prcClip) override
    {
        if (!prcPos || !prcClip)
            return E_POINTER;
        derived()->m_rcPos = *prcPos;
        if (derived()->m_hWndCD)
            place_control_window(derived()->m_hWndCD, *prcPos, *prcClip);
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
    T* derived() noexcept { return static_cast<T*>(this); }
};

} // namespace ATL
