// The viewer as an ActiveX control: hosts activate it in place and call it through IDispatch.
#pragma once

#include "stand_ins/viewer/host_requests.h"
#include "stand_ins/viewer/viewer_protocol.h"
#include "stand_ins/viewer/viewer_window.h"

#include <atlbase.h>
#include <atlcom.h>
#include <atlctl.h>

class ATL_NO_VTABLE viewer_control : public CComObjectRootEx<CComSingleThreadModel>,
                                     public IDispatch,
                                     public CComControl<viewer_control>,
                                     public IViewObjectExImpl<viewer_control>,
                                     public IOleInPlaceObjectWindowlessImpl<viewer_control>,
                                     public IOleInPlaceActiveObjectImpl<viewer_control>,
                                     public IOleControlImpl<viewer_control>,
                                     public IOleObjectImpl<viewer_control>,
                                     public IPersistStreamInit,
                                     public CComCoClass<viewer_control, &quill::CLSID_viewer_control>
{
public:
    viewer_control() { m_bWindowOnly = TRUE; }

    DECLARE_REGISTRY_RESOURCEID(101)
    DECLARE_NOT_AGGREGATABLE(viewer_control)
    DECLARE_PROTECT_FINAL_CONSTRUCT()

    BEGIN_COM_MAP(viewer_control)
    COM_INTERFACE_ENTRY(IDispatch)
    COM_INTERFACE_ENTRY_IID(quill::IID_viewer_control, IDispatch)
    COM_INTERFACE_ENTRY(IViewObjectEx)
    COM_INTERFACE_ENTRY(IViewObject2)
    COM_INTERFACE_ENTRY(IViewObject)
    COM_INTERFACE_ENTRY(IOleInPlaceObjectWindowless)
    COM_INTERFACE_ENTRY(IOleInPlaceObject)
    COM_INTERFACE_ENTRY2(IOleWindow, IOleInPlaceObjectWindowless)
    COM_INTERFACE_ENTRY(IOleInPlaceActiveObject)
    COM_INTERFACE_ENTRY(IOleControl)
    COM_INTERFACE_ENTRY(IOleObject)
    COM_INTERFACE_ENTRY(IPersistStreamInit)
    COM_INTERFACE_ENTRY2(IPersist, IPersistStreamInit)
    END_COM_MAP()

    BEGIN_MSG_MAP(viewer_control)
    MESSAGE_HANDLER(WM_CREATE, OnCreate)
    MESSAGE_HANDLER(WM_DESTROY, OnDestroy)
    MESSAGE_HANDLER(WM_SIZE, OnSize)
    MESSAGE_HANDLER(WM_ERASEBKGND, OnEraseBackground)
    CHAIN_MSG_MAP(CComControl<viewer_control>)
    END_MSG_MAP()

    // IDispatch: by DISPID only
    STDMETHOD(GetTypeInfoCount)(UINT* count) override;
    STDMETHOD(GetTypeInfo)(UINT index, LCID locale, ITypeInfo** info) override;
    STDMETHOD(GetIDsOfNames)(REFIID reserved, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
    STDMETHOD(Invoke)(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters,
                      VARIANT* result, EXCEPINFO* exception, UINT* bad_argument) override;

    // IPersistStreamInit: no state to persist
    STDMETHOD(GetClassID)(CLSID* class_id) override;
    STDMETHOD(IsDirty)() override { return S_FALSE; }
    STDMETHOD(Load)(IStream*) override { return S_OK; }
    STDMETHOD(Save)(IStream*, BOOL) override { return S_OK; }
    STDMETHOD(GetSizeMax)(ULARGE_INTEGER* size) override;
    STDMETHOD(InitNew)() override { return S_OK; }

private:
    LRESULT OnCreate(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnDestroy(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnSize(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnEraseBackground(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);

    HRESULT call(quill::viewer_method method, DISPPARAMS& parameters, VARIANT& result);
    HRESULT set_target(DISPPARAMS& parameters, void (quill::host_requests::*set)(HWND, UINT));

    quill::host_requests host_;
    quill::viewer_window* viewer_ = nullptr; // deleted with its window, a child of this control's window
};
