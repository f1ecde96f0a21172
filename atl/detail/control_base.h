// CComControlBase: what every control has, whatever its class: its sites, position, extent and state, and
// the sequence of in-place activation. Controls here always have a window of their own.
#pragma once

#include "atl/atlbase.h"
#include "atl/detail/window_impl.h"

#include <windows.h>

#include <ocidl.h>
#include <ole2.h>
#include <oleidl.h>

namespace ATL {

struct InPlaceContext;

// What a control draws with and where.
struct ATL_DRAWINFO
{
    UINT cbSize;
    DWORD dwDrawAspect;
    LONG lindex;
    DVTARGETDEVICE* ptd;
    HDC hicTargetDev;
    HDC hdcDraw;
    LPCRECTL prcBounds;
    LPCRECTL prcWBounds; // of a metafile
    BOOL bOptimize;      // the device context may be switched to pixels for the drawing
};

// Lengths of 0.01 millimetre to pixels of the screen, and back.
void AtlHiMetricToPixel(const SIZEL* lpSizeInHiMetric, LPSIZEL lpSizeInPix) noexcept;
void AtlPixelToHiMetric(const SIZEL* lpSizeInPix, LPSIZEL lpSizeInHiMetric) noexcept;

class ATL_NO_VTABLE CComControlBase
{
public:
    explicit CComControlBase(HWND& h) noexcept;
    CComControlBase(const CComControlBase&) = delete;
    CComControlBase& operator=(const CComControlBase&) = delete;

    // Interface of the control itself, with a reference.
    virtual HRESULT ControlQueryInterface(const IID& iid, void** ppv) = 0;
    virtual HWND CreateControlWindow(HWND hWndParent, RECT& rcPos) = 0;
    virtual HRESULT OnDraw(ATL_DRAWINFO& di);
    virtual HRESULT OnDrawAdvanced(ATL_DRAWINFO& di);

    // Whether a verb makes the control active, and whether it also gives it the user interface.
    BOOL DoesVerbActivate(LONG iVerb) const noexcept;
    BOOL DoesVerbUIActivate(LONG iVerb) const noexcept;
    // Without a site there is nothing to be activated in: S_OK, nothing done. prcPosRect (client
    // coordinates of the parent) counts only when the site does not tell a position. On failure the site
    // has been told of everything that was taken back.
    HRESULT InPlaceActivate(LONG iVerb, const RECT* prcPosRect = nullptr);
    // Moves the focus to the control's window unless it is in there already. TRUE: it is there now.
    BOOL SetControlFocus(BOOL bGrab) noexcept;

    // The client site's ambient property; VT_EMPTY and a failure when it has none.
    HRESULT GetAmbientProperty(DISPID dispid, VARIANT& var) noexcept;
    HRESULT GetAmbientUserMode(BOOL& bUserMode) noexcept;

    void SetDirty(BOOL bDirty) noexcept { m_bRequiresSave = bDirty ? 1 : 0; }
    BOOL GetDirty() const noexcept { return m_bRequiresSave ? TRUE : FALSE; }

    // Notifications to whoever advised.
    HRESULT SendOnRename(IMoniker* pmk) noexcept;
    HRESULT SendOnSave() noexcept;
    HRESULT SendOnClose() noexcept;
    HRESULT SendOnDataChange(DWORD advf = 0) noexcept;
    HRESULT SendOnViewChange(DWORD dwAspect, LONG lindex = -1) noexcept;
    // Redraws the window, or tells the view's sink when there is none.
    HRESULT FireViewChange() noexcept;

    // What the interface templates do by default.
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
    unsigned m_bNegotiatedWnd : 1 = 0; // m_spInPlaceSite was asked of the client site
    unsigned m_bInPlaceActive : 1 = 0;
    unsigned m_bUIActive : 1 = 0;
    unsigned m_bWindowOnly : 1 = 0;
    unsigned m_bRequiresSave : 1 = 0;
    unsigned m_bResizeNatural : 1 = 0;
    unsigned m_bRecomposeOnResize : 1 = 0;

protected:
    ~CComControlBase() = default;

private:
    HRESULT EnterInPlace(IOleInPlaceSite* pSite);
    HRESULT ShowInPlace(IOleInPlaceSite* pSite, InPlaceContext& where);
    HRESULT EnterUI(IOleInPlaceSite* pSite, const InPlaceContext& where);
    void SetActiveObjectOf(IOleInPlaceUIWindow* pWindow, IOleInPlaceActiveObject* pActive);
    void LeaveInPlace(IOleInPlaceSite* pSite);
    HRESULT UIActivateByUser();
    void TellSiteOfFocus(BOOL bGotFocus);
};

} // namespace ATL
