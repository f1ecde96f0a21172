// The ActiveX document: a windowed control that the browser activates as a document and that hosts the
// suite's viewer in its window. Created by the module's class factory (module/object_map.cpp).
// Apartment-threaded: every method runs on the tab's UI thread, except IUnknown, which urlmon may call on the
// download worker.
#pragma once

#include "active_doc/document_download.h"
#include "active_doc/document_location.h"
#include "active_doc/frame_menu.h"
#include "active_doc/identifiers.h"
#include "active_doc/inner_viewer.h"
#include "active_doc/last_reference.h"
#include "active_doc/ole_document_impl.h"
#include "active_doc/ole_document_view_impl.h"
#include "active_doc/thread_release.h"
#include "active_doc/window_lifetime.h"
#include "logging/log_stream.h"
#include "platform/unique_handle.h"
#include "retrieval/download/window_messages.h"
#include "retrieval/pane/status_pane.h"

#include <atlbase.h>
#include <atlcom.h>
#include <atlctl.h>
#include <comcat.h>

#include <string>

// Begins a log line of a document with "ACTIVEDOC" and the object's address. For members of CActiveDocCtrl;
// the pieces of a disabled line are not evaluated.
#define QUILL_DOCUMENT_LOG() QUILL_LOG(::quill::log_level::debug) << "ACTIVEDOC " << address()

// The reference count is atomic because the worker passes the object's IUnknown to urlmon, which may hold
// references. A last Release on another thread is transferred to the document's own.
class ATL_NO_VTABLE CActiveDocCtrl
    : public IDispatchImpl<IQuillPDF_IE_ActiveDoc, &quill::IID_IQuillPDF_IE_ActiveDoc,
                           &quill::LIBID_QuillPDF_IE_ActiveDocLib, 0xFFFF, 0xFFFF>,
      public CComObjectRootEx<CComMultiThreadModelNoCS>,
      public CComControl<CActiveDocCtrl>,
      public IViewObjectExImpl<CActiveDocCtrl>,
      public IOleInPlaceObjectWindowlessImpl<CActiveDocCtrl>,
      public IOleInPlaceActiveObjectImpl<CActiveDocCtrl>,
      public IOleControlImpl<CActiveDocCtrl>,
      public IOleObjectImpl<CActiveDocCtrl>,
      public IQuickActivateImpl<CActiveDocCtrl>,
      public IPersistStorageImpl<CActiveDocCtrl>,
      public IPersistStreamInit,
      public IDataObjectImpl<CActiveDocCtrl>,
      public IOleDocumentImpl<CActiveDocCtrl>,
      public IOleDocumentViewImpl<CActiveDocCtrl>,
      public IPersistFile,
      public IPersistMoniker,
      public IOleCommandTarget,
      public CMenu<CActiveDocCtrl>,
      public CComCoClass<CActiveDocCtrl, &quill::CLSID_ActiveDocCtrl>
{
public:
    CActiveDocCtrl();
    ~CActiveDocCtrl() override;
    void FinalRelease();
    ULONG InternalRelease() noexcept;
    void OnFinalMessage(HWND window) override;

    DECLARE_REGISTRY_RESOURCEID(quill::active_doc_registry_script)
    DECLARE_NOT_AGGREGATABLE(CActiveDocCtrl)
    DECLARE_PROTECT_FINAL_CONSTRUCT()

    BEGIN_COM_MAP(CActiveDocCtrl)
    COM_INTERFACE_ENTRY(IQuillPDF_IE_ActiveDoc)
    COM_INTERFACE_ENTRY(IDispatch)
    COM_INTERFACE_ENTRY(IViewObjectEx)
    COM_INTERFACE_ENTRY(IViewObject2)
    COM_INTERFACE_ENTRY(IViewObject)
    COM_INTERFACE_ENTRY(IOleInPlaceObjectWindowless)
    COM_INTERFACE_ENTRY(IOleInPlaceObject)
    COM_INTERFACE_ENTRY2(IOleWindow, IOleInPlaceObjectWindowless)
    COM_INTERFACE_ENTRY(IOleInPlaceActiveObject)
    COM_INTERFACE_ENTRY(IOleControl)
    COM_INTERFACE_ENTRY(IOleObject)
    COM_INTERFACE_ENTRY(IQuickActivate)
    COM_INTERFACE_ENTRY(IPersistStorage)
    COM_INTERFACE_ENTRY(IPersistStreamInit)
    COM_INTERFACE_ENTRY(IDataObject)
    COM_INTERFACE_ENTRY(IOleDocument)
    COM_INTERFACE_ENTRY(IOleDocumentView)
    COM_INTERFACE_ENTRY(IPersistFile)
    COM_INTERFACE_ENTRY(IPersistMoniker)
    COM_INTERFACE_ENTRY(IOleCommandTarget)
    END_COM_MAP()

    BEGIN_CATEGORY_MAP(CActiveDocCtrl)
    IMPLEMENTED_CATEGORY(quill::CATID_AppContainerCompatible)
    END_CATEGORY_MAP()

    BEGIN_MSG_MAP(CActiveDocCtrl)
    MESSAGE_HANDLER(WM_CREATE, OnCreate)
    MESSAGE_HANDLER(WM_DESTROY, OnDestroy)
    MESSAGE_HANDLER(WM_SIZE, OnSize)
    MESSAGE_HANDLER(WM_COMMAND, OnCommand)
    MESSAGE_HANDLER(WM_MOUSEACTIVATE, OnMouseActivate)
    MESSAGE_HANDLER(WM_KEYDOWN, OnKeyDown)
    MESSAGE_HANDLER(quill::reserved_window_message, OnReserved)
    MESSAGE_HANDLER(quill::WM_USER_OPENLINK, OnOpenLink)
    MESSAGE_HANDLER(quill::WM_USER_GETURL, OnGetUrl)
    MESSAGE_HANDLER(quill::WM_USER_GETURLLENGTH, OnGetUrlLength)
    MESSAGE_HANDLER(quill::WM_USER_PROGRESS, OnProgress)
    MESSAGE_HANDLER(quill::WM_USER_SETCACHEFILE, OnSetCacheFile)
    MESSAGE_HANDLER(quill::WM_USER_LOADFILE, OnLoadFile)
    MESSAGE_HANDLER(quill::WM_USER_LOGFILE, OnLogFile)
    MESSAGE_HANDLER(quill::WM_USER_GETBROWSERWINDOW, OnGetBrowserWindow)
    MESSAGE_HANDLER(quill::WM_USER_GETINSTANCE, OnGetInstance)
    MESSAGE_HANDLER(quill::WM_USER_SAVEAS, OnSaveAs)
    MESSAGE_HANDLER(quill::WM_USER_RELEASE, OnRelease)
    CHAIN_MSG_MAP(CComControl<CActiveDocCtrl>)
    END_MSG_MAP()

    // IOleObject
    STDMETHOD(SetClientSite)(IOleClientSite* site) override;
    STDMETHOD(DoVerb)
    (LONG verb, LPMSG message, IOleClientSite* active_site, LONG index, HWND parent, LPCRECT position)
        override;

    // IOleInPlaceObject
    STDMETHOD(InPlaceDeactivate)() override;
    STDMETHOD(SetObjectRects)(LPCRECT position, LPCRECT clip) override;

    // IOleInPlaceActiveObject
    STDMETHOD(TranslateAccelerator)(LPMSG message) override;
    STDMETHOD(OnDocWindowActivate)(BOOL activate) override;
    STDMETHOD(ResizeBorder)(LPCRECT border, IOleInPlaceUIWindow* ui_window, BOOL frame_window) override;

    // IPersist, of every persistence interface
    STDMETHOD(GetClassID)(CLSID* class_id) override;
    // IPersistStreamInit, IPersistStorage, IPersistFile and IPersistMoniker
    STDMETHOD(IsDirty)() override;

    // IPersistStreamInit
    STDMETHOD(Load)(IStream* stream) override;
    STDMETHOD(Save)(IStream* stream, BOOL clear_dirty) override;
    STDMETHOD(GetSizeMax)(ULARGE_INTEGER* size) override;
    STDMETHOD(InitNew)() override;

    // IPersistStorage: makes the base class's overloads visible beside those above
    using IPersistStorageImpl<CActiveDocCtrl>::InitNew;
    using IPersistStorageImpl<CActiveDocCtrl>::Load;
    using IPersistStorageImpl<CActiveDocCtrl>::Save;
    using IPersistStorageImpl<CActiveDocCtrl>::SaveCompleted;

    // IPersistFile
    STDMETHOD(Load)(LPCOLESTR path, DWORD mode) override;
    STDMETHOD(Save)(LPCOLESTR path, BOOL remember) override;
    STDMETHOD(SaveCompleted)(LPCOLESTR path) override;
    STDMETHOD(GetCurFile)(LPOLESTR* path) override;

    // IPersistMoniker
    STDMETHOD(Load)(BOOL fully_available, IMoniker* moniker, IBindCtx* bind_context, DWORD mode) override;
    STDMETHOD(Save)(IMoniker* moniker, IBindCtx* bind_context, BOOL remember) override;
    STDMETHOD(SaveCompleted)(IMoniker* moniker, IBindCtx* bind_context) override;
    STDMETHOD(GetCurMoniker)(IMoniker** moniker) override;

    // IOleCommandTarget
    STDMETHOD(QueryStatus)(const GUID* group, ULONG count, OLECMD commands[], OLECMDTEXT* text) override;
    STDMETHOD(Exec)(const GUID* group, DWORD command, DWORD options, VARIANT* in, VARIANT* out) override;

private:
    // Window messages
    LRESULT OnCreate(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnDestroy(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnSize(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnCommand(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnMouseActivate(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnKeyDown(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);

    // Private messages
    LRESULT OnReserved(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnOpenLink(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnGetUrl(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnGetUrlLength(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnProgress(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnSetCacheFile(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnLoadFile(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnLogFile(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnGetBrowserWindow(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnGetInstance(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnSaveAs(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);
    LRESULT OnRelease(UINT message, WPARAM wparam, LPARAM lparam, BOOL& handled);

    // Steps of OnCreate, in their order. Each returns early if the window has been destroyed inside a call.
    void fill_window(const CREATESTRUCTW& creation);
    void create_inner_viewer(const CREATESTRUCTW& creation);
    bool set_up_viewer() const;
    void choose_document();
    void find_document_url();
    bool find_embedded_document();

    // Loading
    void read_page_and_zoom_from_browser();
    void show_page_and_zoom() const;
    void merge_frame_menu();
    void load_document_url(std::wstring url);
    void discard_load_requests();
    void load_into_viewer() { ::SendMessageW(m_hWnd, quill::WM_USER_LOADFILE, 0, 0); }

    // The frame of the in-place site; null if the site has none or the call fails.
    ATL::CComPtr<IOleInPlaceFrame> frame_of_site(OLEINPLACEFRAMEINFO& info) const;
    bool query_frame();
    // Whether the document has references to objects of its host or to the viewer.
    bool has_host_references() const;

    const void* address() const { return static_cast<const void*>(this); }

    quill::last_reference last_reference_;
    quill::thread_release thread_release_;
    quill::window_lifetime window_lifetime_;

    bool has_document_site_ = false;
    bool merge_menus_ = true;
    ATL::CComPtr<IOleDocumentSite> document_site_;
    ATL::CComPtr<IOleInPlaceFrame> frame_;
    OLEINPLACEFRAMEINFO frame_info_{};

    quill::inner_viewer viewer_;
    HWND host_window_ = nullptr;
    quill::status_pane pane_;

    quill::document_location location_;
    quill::document_download download_;
    quill::unique_handle open_file_; // prevents writing to a local file while it is shown

    std::uint32_t instance_ = 0; // among the documents of browser_
    HWND browser_ = nullptr;
    bool is_counted_ = false;
    bool is_held_by_window_ = false; // from WM_DESTROY to the final message
};
