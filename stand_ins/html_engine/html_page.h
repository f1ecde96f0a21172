// The page object, which the browser loads for text/html where no HTML engine is installed. Displays the
// page's text, links and embedded documents, and implements the document interfaces.
#pragma once

#include "stand_ins/html_engine/counted_object.h"
#include "stand_ins/html_engine/document_view.h"
#include "stand_ins/html_engine/embedded_objects.h"
#include "stand_ins/html_engine/html_documents.h"
#include "stand_ins/html_engine/page_download.h"
#include "stand_ins/html_engine/page_events.h"
#include "stand_ins/html_engine/page_surface.h"

#include <atlctl.h>
#include <docobj.h>
#include <urlmon.h>

#include <memory>
#include <string>

class ATL_NO_VTABLE html_page : public quill::counted_object<&quill::live_objects::pages>,
                                public quill::html_document2,
                                public quill::html_document3,
                                public CComControl<html_page>,
                                public IOleObjectImpl<html_page>,
                                public IOleInPlaceObjectWindowlessImpl<html_page>,
                                public IOleInPlaceActiveObjectImpl<html_page>,
                                public quill::document_with_view<html_page>,
                                public IOleContainer,
                                public IPersistMoniker,
                                public IConnectionPointContainer,
                                public CComCoClass<html_page, &quill::CLSID_html_page>,
                                private quill::page_owner,
                                private quill::page_download_owner,
                                private quill::embedded_host
{
public:
    html_page();
    HRESULT FinalConstruct();
    void FinalRelease();

    DECLARE_WND_CLASS_EX(quill::page_window_class, CS_HREDRAW | CS_VREDRAW, -1)
    DECLARE_REGISTRY_RESOURCEID(101)
    DECLARE_NOT_AGGREGATABLE(html_page)
    DECLARE_PROTECT_FINAL_CONSTRUCT()

    BEGIN_COM_MAP(html_page)
    COM_INTERFACE_ENTRY(IHTMLDocument2)
    COM_INTERFACE_ENTRY2(IHTMLDocument, IHTMLDocument2)
    COM_INTERFACE_ENTRY2(IDispatch, IHTMLDocument2)
    COM_INTERFACE_ENTRY(IHTMLDocument3)
    COM_INTERFACE_ENTRY(IOleObject)
    COM_INTERFACE_ENTRY(IOleInPlaceObjectWindowless)
    COM_INTERFACE_ENTRY(IOleInPlaceObject)
    COM_INTERFACE_ENTRY2(IOleWindow, IOleInPlaceObjectWindowless)
    COM_INTERFACE_ENTRY(IOleInPlaceActiveObject)
    COM_INTERFACE_ENTRY(IOleDocument)
    COM_INTERFACE_ENTRY(IOleDocumentView)
    COM_INTERFACE_ENTRY(IOleContainer)
    COM_INTERFACE_ENTRY2(IParseDisplayName, IOleContainer)
    COM_INTERFACE_ENTRY(IPersistMoniker)
    COM_INTERFACE_ENTRY(IConnectionPointContainer)
    END_COM_MAP()

    BEGIN_MSG_MAP(html_page)
    MESSAGE_HANDLER(WM_CREATE, OnCreate)
    MESSAGE_HANDLER(WM_DESTROY, OnDestroy)
    MESSAGE_HANDLER(WM_SIZE, OnSize)
    MESSAGE_HANDLER(WM_PAINT, OnPaint)
    MESSAGE_HANDLER(WM_ERASEBKGND, OnEraseBackground)
    MESSAGE_HANDLER(WM_SETCURSOR, OnSetCursor)
    MESSAGE_HANDLER(WM_LBUTTONDOWN, OnButtonDown)
    MESSAGE_HANDLER(WM_LBUTTONUP, OnButtonUp)
    MESSAGE_HANDLER(WM_VSCROLL, OnScroll)
    MESSAGE_HANDLER(WM_MOUSEWHEEL, OnWheel)
    MESSAGE_HANDLER(arrange_message, OnArrange)
    CHAIN_MSG_MAP(CComControl<html_page>)
    END_MSG_MAP()

    // IDispatch: the type library's DISPIDs and DISPID_READYSTATE
    STDMETHODIMP Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters,
                        VARIANT* result, EXCEPINFO* exception, UINT* bad_argument) override;

    // IOleObject
    STDMETHODIMP DoVerb(LONG verb, LPMSG message, IOleClientSite* site, LONG index, HWND parent,
                        LPCRECT place) override;
    STDMETHODIMP Close(DWORD save) override;
    STDMETHODIMP GetMiscStatus(DWORD aspect, DWORD* status) override;

    // IParseDisplayName and IOleContainer: only for QueryInterface from an embedded object to its page
    STDMETHODIMP ParseDisplayName(IBindCtx* context, LPOLESTR name, ULONG* eaten,
                                  IMoniker** moniker) override;
    STDMETHODIMP EnumObjects(DWORD flags, IEnumUnknown** objects) override;
    STDMETHODIMP LockContainer(BOOL) override { return S_OK; }

    // IPersistMoniker
    STDMETHODIMP GetClassID(CLSID* class_id) override;
    STDMETHODIMP IsDirty() override { return S_FALSE; }
    STDMETHODIMP Load(BOOL fully_available, IMoniker* moniker, IBindCtx* context, DWORD mode) override;
    STDMETHODIMP Save(IMoniker*, IBindCtx*, BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP SaveCompleted(IMoniker*, IBindCtx*) override { return E_NOTIMPL; }
    STDMETHODIMP GetCurMoniker(IMoniker** moniker) override { return moniker_.CopyTo(moniker); }

    // IConnectionPointContainer
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) override;
    STDMETHODIMP FindConnectionPoint(REFIID interface_id, IConnectionPoint** point) override;

private:
    // Posted by the page to its own window after a change of the page or of the window's size.
    static constexpr UINT arrange_message = WM_APP + 1;

    LRESULT OnCreate(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnDestroy(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnSize(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnPaint(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnEraseBackground(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnSetCursor(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnButtonDown(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnButtonUp(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnScroll(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnWheel(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnArrange(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);

    void set_state(quill::page_state state);
    void arrange();
    void stop_download();

    // html_document2 and html_document3
    const std::shared_ptr<quill::page_model>& page() const override { return page_; }

    // page_owner
    IDispatch* document() override { return static_cast<IHTMLDocument2*>(this); }
    void click(const quill::dom_node::pointer& element) override;
    void tree_changed() override;

    // page_download_owner
    void downloaded(HRESULT result, const std::string& bytes) override;

    // embedded_host
    IUnknown* page_object() override { return GetUnknown(); }
    HWND page_window() override { return m_hWnd; }
    IOleClientSite* page_client_site() override { return m_spClientSite; }
    IOleInPlaceSite* page_in_place_site() override { return m_spInPlaceSite; }
    IMoniker* page_moniker() override { return moniker_; }
    void ui_activated(quill::embedded_site& site) override { embedded_.deactivate_ui_except(site); }

    std::shared_ptr<quill::page_model> page_;
    quill::page_events events_;
    quill::page_surface surface_;
    quill::embedded_objects embedded_;
    CComPtr<IMoniker> moniker_;
    CComPtr<CComObject<quill::page_download>> download_;
    quill::dom_node::pointer pressed_; // the element under the mouse at WM_LBUTTONDOWN
    bool arrange_posted_ = false;
};
