// CComControlBase: the class-independent part of a control: sites, position, extent, state and the sequence
// of in-place activation. Only windowed controls are supported.
#pragma once

#include "atl/atlbase.h"
#include "atl/detail/window_impl.h"

#include <windows.h>

#include <ocidl.h>
#include <ole2.h>
#include <oleidl.h>

namespace ATL {

struct in_place_context;

// The parameters of a drawing request.
struct ATL_DRAWINFO
{
    UINT cbSize;
    DWORD dwDrawAspect;
    LONG lindex;
    DVTARGETDEVICE* ptd;
    HDC hicTargetDev;
    HDC hdcDraw;
    LPCRECTL prcBounds;
    LPCRECTL prcWBounds; // metafiles only
    BOOL bOptimize;      // the device context may be switched to MM_TEXT for drawing
};

// Convert between HIMETRIC units (0.01 mm) and screen pixels.
void AtlHiMetricToPixel(const SIZEL* lpSizeInHiMetric, LPSIZEL lpSizeInPix) noexcept;
void AtlPixelToHiMetric(const SIZEL* lpSizeInPix, LPSIZEL lpSizeInHiMetric) noexcept;

class ATL_NO_VTABLE CComControlBase
{
public:
    explicit CComControlBase(HWND& h) noexcept;
    CComControlBase(const CComControlBase&) = delete;
    CComControlBase& operator=(const CComControlBase&) = delete;

    // QueryInterface on the control itself.
    virtual HRESULT ControlQueryInterface(const IID& iid, void** ppv) = 0;
    virtual HWND CreateControlWindow(HWND hWndParent, RECT& rcPos) = 0;
    virtual HRESULT OnDraw(ATL_DRAWINFO& di);
    virtual HRESULT OnDrawAdvanced(ATL_DRAWINFO& di);

    // Whether a verb activates the control, and whether it also UI-activates it.
    BOOL DoesVerbActivate(LONG iVerb) const noexcept;
    BOOL DoesVerbUIActivate(LONG iVerb) const noexcept;
    // Does nothing and returns S_OK without a site. prcPosRect (client coordinates of the parent) is used
    // only if the site does not provide a position. On failure every step is undone and the site notified.
    HRESULT InPlaceActivate(LONG iVerb, const RECT* prcPosRect = nullptr);
    // bGrab: moves the focus to the control's window unless it is already inside. Returns whether the
    // control has the focus.
    BOOL SetControlFocus(BOOL bGrab) noexcept;

    // An ambient property of the client site; fails with VT_EMPTY if the site does not provide it.
    HRESULT GetAmbientProperty(DISPID dispid, VARIANT& var) noexcept;
    HRESULT GetAmbientUserMode(BOOL& bUserMode) noexcept;

    void SetDirty(BOOL bDirty) noexcept { m_bRequiresSave = bDirty ? 1 : 0; }
    BOOL GetDirty() const noexcept { return m_bRequiresSave ? TRUE : FALSE; }

    // Notify the advise sinks.
    HRESULT SendOnRename(IMoniker* pmk) noexcept;
    HRESULT SendOnSave() noexcept;
    HRESULT SendOnClose() noexcept;
    HRESULT SendOnDataChange(DWORD advf = 0) noexcept;
    HRESULT SendOnViewChange(DWORD dwAspect, LONG lindex = -1) noexcept;
    // Invalidates the window, or notifies the view's advise sink while inactive.
    HRESULT FireViewChange() noexcept;

    // Default implementations for the interface templates.
    HRESULT IOleObject_SetClientSite(IOleClientSite* pClientSite);
    HRESULT IOleObject_Close(DWORD dwSaveOption);
    HRESULT IOleObject_SetExtent(DWORD dwDrawAspect, SIZEL* psizel);
    HRESULT IOleObject_GetExtent(DWORD dwDrawAspect, SIZEL* psizel);
    HRESULT IOleObject_Advise(IAdviseSink* pAdvSink, DWORD* pdwConnection);
    HRESULT IViewObject_Draw(const ATL_DRAWINFO& request);
    HRESULT IQuickActivate_QuickActivate(QACONTAINER* pQACont, QACONTROL* pQACtrl);
    HRESULT IDataObject_GetData(FORMATETC* pformatetcIn, STGMEDIUM* pmedium);

    // Message handlers for the control's window.
    LRESULT OnPaint(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);
    LRESULT OnSetFocus(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);
    LRESULT OnKillFocus(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);
    LRESULT OnMouseActivate(UINT uMsg, WPARAM wParam, LPARAM lParam, BOOL& bHandled);

    CComPtr<IOleInPlaceSite> m_spInPlaceSite;
    CComPtr<IDataAdviseHolder> m_spDataAdviseHolder;
    CComPtr<IOleAdviseHolder> m_spOleAdviseHolder;
    CComPtr<IOleClientSite> m_spClientSite;
    CComPtr<IAdviseSink> m_spAdviseSink;
    CComPtr<IDispatch> m_spAmbientDispatch;
    HWND& m_hWndCD; // the window class's own handle
    SIZE m_sizeNatural{};
    SIZE m_sizeExtent{};               // 0.01 millimetre
    RECT m_rcPos{};                    // client coordinates of the parent window
    unsigned m_bNegotiatedWnd : 1 = 0; // m_spInPlaceSite was obtained from the client site
    unsigned m_bInPlaceActive : 1 = 0;
    unsigned m_bUIActive : 1 = 0;
    unsigned m_bWindowOnly : 1 = 0;
    unsigned m_bRequiresSave : 1 = 0;
    unsigned m_bResizeNatural : 1 = 0;
    unsigned m_bRecomposeOnResize : 1 = 0;

protected:
    ~CComControlBase() = default;

private:
    HRESULT enter_in_place(IOleInPlaceSite* pSite);
    HRESULT show_in_place(IOleInPlaceSite* pSite, in_place_context& where);
    HRESULT enter_ui(IOleInPlaceSite* pSite, const in_place_context& where);
    void set_active_object_of(IOleInPlaceUIWindow* pWindow, IOleInPlaceActiveObject* pActive);
    void leave_in_place(IOleInPlaceSite* pSite);
    HRESULT ui_activate_by_user();
    void notify_site_of_focus(BOOL bGotFocus);
};

} // namespace ATL
