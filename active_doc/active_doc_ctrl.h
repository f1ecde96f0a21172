// The ActiveX document: a windowed control that the browser hosts as a document, and that hosts the
// suite's viewer in its window. Apartment-threaded; every method runs on the tab's user-interface thread.
#pragma once

#include "active_doc/frame_menu.h"
#include "active_doc/identifiers.h"
#include "active_doc/inner_viewer.h"
#include "active_doc/last_reference.h"
#include "active_doc/ole_document_impl.h"
#include "active_doc/ole_document_view_impl.h"
#include "active_doc/thread_release.h"
#include "active_doc/window_lifetime.h"
#include "platform/unique_handle.h"
#include "retrieval/download/download.h"
#include "retrieval/download/url_version.h"
#include "retrieval/download/window_messages.h"
#include "retrieval/pane/status_pane.h"

#include <atlbase.h>
#include <atlcom.h>
#include <atlctl.h>
#include <comcat.h>

#include <array>
#include <string>

// The reference count is atomic, and a last Release on another thread is transferred to the document's own:
// the download passes the object's IUnknown to urlmon on its worker thread, which may hold references.
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

    // IPersistStorage: the framework's, next to its namesakes
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
    // Where the path came from: a path of the document's URL goes when another URL is loaded.
    enum class path_origin
    {
        host,
        document_url
    };

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

    // Creation, in the order of its steps. Each one ends with the window that it began for.
    void fill_window(const CREATESTRUCTW& creation);
    void create_inner_viewer(const CREATESTRUCTW& creation);
    bool set_up_viewer() const;
    void choose_document();
    void find_document_url();
    bool find_embedded_document();
    void start_download();
    static DWORD WINAPI download_thread(void* job);

    // Destruction
    void stop_download();

    // Loading
    void read_page_and_zoom(const std::wstring& url);
    bool read_page_and_zoom_of_location();
    void show_page_and_zoom() const;
    void merge_frame_menu();
    void replace_document_url(std::wstring url);
    void forget_fetched_document();
    void load_into_viewer() { ::SendMessageW(m_hWnd, quill::WM_USER_LOADFILE, 0, 0); }
    bool is_worker_running() const;
    bool path_is_pdf() const;
    void set_path(const wchar_t* path, path_origin origin);
    const std::wstring& url_to_fetch() const { return embedded_url_.empty() ? document_url_ : embedded_url_; }

    // The frame of the in-place site, null when the site gives none. The caller owns the reference.
    ATL::CComPtr<IOleInPlaceFrame> frame_of_site(OLEINPLACEFRAMEINFO& info) const;
    bool hold_frame();
    // Whether it holds any object of the apartment.
    bool holds_of_host() const;

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

    std::array<wchar_t, MAX_PATH> path_{};
    path_origin path_origin_ = path_origin::host;
    std::wstring document_url_;
    bool has_loaded_url_ = false; // by IPersistMoniker, not found by the window
    std::wstring embedded_url_;
    std::int32_t page_ = 0; // from 1; 0: none asked for
    std::int32_t zoom_ = 0; // per cent; 0: none asked for
    std::uint32_t instance_ = 0;
    HWND browser_ = nullptr;
    bool is_counted_ = false;        // among the documents of browser_
    bool is_held_by_window_ = false; // from WM_DESTROY to the final message

    quill::download_job download_{}; // what the running worker was handed
    quill::unique_handle stop_event_;
    quill::unique_handle download_thread_;
    quill::url_version url_version_;
    bool worker_has_url_ = false;     // the running worker received its URL
    bool worker_is_outdated_ = false; // and another URL was loaded afterwards
    quill::unique_handle open_file_;  // keeps writers away from a local file while it is shown
};
