// Event sink of a tab's browser: forwards BeforeNavigate2 and DocumentComplete to a handler until OnQuit, and
// cancels a navigation if the handler returns true. Owned by the helper object's subscription through a
// browser_events_connection.
#pragma once

#include "platform/mutex.h"
#include "sharepoint/events/event_handlers.h"
#include "sharepoint/events/event_identifiers.h"
#include "sharepoint/host/host_ptr.h"

#include <atlbase.h>
#include <atlcom.h>
#include <exdisp.h>
#include <exdispid.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>

namespace quill {

class ATL_NO_VTABLE browser_events_sink
    : public CComObjectRootEx<CComSingleThreadModel>,
      public IUnknown,
      public IDispEventImpl<1, browser_events_sink, &IID_browser_events, &LIBID_browser,
                            browser_library_major, browser_library_minor>
{
public:
    using object = CComObject<browser_events_sink>;

    // Creates a sink and advises it. Throws std::system_error with the failure code.
    static CComPtr<object> connect(IWebBrowser2* browser, std::weak_ptr<browser_events_handler> handler);
    // Unadvises from the browser that was passed to connect(). Exceptions of the browser are logged.
    void disconnect(IWebBrowser2* browser) noexcept;

    BEGIN_COM_MAP(browser_events_sink)
    COM_INTERFACE_ENTRY(IUnknown)
    END_COM_MAP()

    BEGIN_SINK_MAP(browser_events_sink)
    SINK_ENTRY_EX(1, IID_browser_events, DISPID_BEFORENAVIGATE2, &browser_events_sink::on_before_navigate)
    SINK_ENTRY_EX(1, IID_browser_events, DISPID_DOCUMENTCOMPLETE, &browser_events_sink::on_document_complete)
    SINK_ENTRY_EX(1, IID_browser_events, DISPID_ONQUIT, &browser_events_sink::on_quit)
    END_SINK_MAP()

    // The events; one with a null pointer is ignored.
    HRESULT STDMETHODCALLTYPE on_before_navigate(IDispatch* pDisp, VARIANT* url, VARIANT* flags,
                                                 VARIANT* targetFrameName, VARIANT* postData,
                                                 VARIANT* headers, VARIANT_BOOL* cancel);
    HRESULT STDMETHODCALLTYPE on_document_complete(IDispatch* pDisp, VARIANT* url);
    void STDMETHODCALLTYPE on_quit();

private:
    // What an event holds; released however it ends. The handler may close the tab, which releases this sink.
    struct protection
    {
        CComPtr<IUnknown> sink;
        std::unique_lock<platform::MutexImpl> forwarding;
        std::shared_ptr<browser_events_handler> handler;
        std::size_t openings = 0; // before the handler is called
        host_ptr<IWebBrowser2> browser;

        void release() noexcept;
    };

    protection protect() { return {GetUnknown(), {forwarding_, std::defer_lock}, nullptr, 0, nullptr}; }
    // held.handler is null after OnQuit.
    void lock_handler(protection& held);
    HRESULT before_navigate(protection& held, IDispatch* frame, const VARIANT& url, const VARIANT* post_data,
                            VARIANT_BOOL& cancel);
    HRESULT document_complete(protection& held, IDispatch* frame, const VARIANT& url);

    std::weak_ptr<browser_events_handler> handler_;
    // Held while the handler runs. Recursive: the handler may dispatch messages, and the events that arrive
    // then re-enter on the same thread, while other threads wait.
    platform::MutexImpl forwarding_;
};

// The sink's connection to the browser of a tab, ended by close() or the destructor. It is opened in a step
// of its own, so that the owner can release the browser after a fault in the middle of connect().
class browser_events_connection
{
public:
    // Calls no method of the browser, which may be null.
    explicit browser_events_connection(host_ptr<IWebBrowser2> browser) : browser_(std::move(browser)) {}
    ~browser_events_connection() { close(); }
    browser_events_connection(const browser_events_connection&) = delete;
    browser_events_connection& operator=(const browser_events_connection&) = delete;

    // Without a browser there are no events. Throws std::system_error with the failure code.
    void connect(std::weak_ptr<browser_events_handler> handler);
    // May be called again after a system exception has interrupted it: no call into the host is made twice.
    void close() noexcept;

private:
    host_ptr<IWebBrowser2> browser_;
    CComPtr<browser_events_sink::object> sink_;
};

} // namespace quill
