// Event sink of an HTML document: forwards clicks, which the handler may cancel, and the end of loading.
// Owned by a document record through an html_events_connection.
#pragma once

#include "sharepoint/events/event_handlers.h"
#include "sharepoint/events/event_identifiers.h"
#include "sharepoint/host/host_ptr.h"

#include <atlbase.h>
#include <atlcom.h>
#include <mshtmdid.h>
#include <mshtml.h>

#include <memory>
#include <utility>

namespace quill {

class ATL_NO_VTABLE html_events_sink
    : public CComObjectRootEx<CComSingleThreadModel>,
      public IUnknown,
      public IDispEventImpl<2, html_events_sink, &IID_html_document_events, &LIBID_html_engine,
                            html_library_major, html_library_minor>
{
public:
    using object = CComObject<html_events_sink>;

    // Creates a sink and advises it. Throws std::system_error with the failure code.
    static CComPtr<object> connect(IHTMLDocument2* document, std::weak_ptr<html_events_handler> handler);
    // Unadvises and releases the document; no event is forwarded afterwards. Exceptions of the document are
    // logged.
    void disconnect() noexcept;

    BEGIN_COM_MAP(html_events_sink)
    COM_INTERFACE_ENTRY(IUnknown)
    END_COM_MAP()

    BEGIN_SINK_MAP(html_events_sink)
    SINK_ENTRY_EX(2, IID_html_document_events, DISPID_HTMLDOCUMENTEVENTS2_ONCLICK,
                  &html_events_sink::on_click)
    SINK_ENTRY_EX(2, IID_html_document_events, DISPID_HTMLDOCUMENTEVENTS2_ONREADYSTATECHANGE,
                  &html_events_sink::on_ready_state_change)
    END_SINK_MAP()

    // The events. The engine may pass another interface of the event object than the type library declares,
    // so IHTMLEventObj is queried. on_click returns VARIANT_FALSE for a click whose link was opened and that
    // was blocked without a failure; such a click is blocked even if something fails.
    VARIANT_BOOL STDMETHODCALLTYPE on_click(IDispatch* event);
    void STDMETHODCALLTYPE on_ready_state_change(IDispatch* event);

private:
    // What an event holds; released however it ends. The handler may close the tab, which destroys the
    // document's record and releases this sink.
    struct protection
    {
        CComPtr<IUnknown> sink;
        std::shared_ptr<html_events_handler> handler = nullptr;
        host_ptr<IHTMLDocument2> document = nullptr;
        host_ptr<IHTMLEventObj> event = nullptr;
        host_ptr<IHTMLElement> element = nullptr;

        void release() noexcept;
    };

    // Whether the handler has opened the clicked link.
    bool click(protection& held, IDispatch* event_object);
    void ready_state_changed(protection& held);

    host_ptr<IHTMLDocument2> document_;
    std::weak_ptr<html_events_handler> handler_;
};

// The sink's connection to a document, from the constructor to the destructor. Document and sink are a
// reference cycle, which Unadvise breaks.
class html_events_connection
{
public:
    html_events_connection(IHTMLDocument2* document, std::weak_ptr<html_events_handler> handler)
        : sink_(html_events_sink::connect(document, std::move(handler)))
    {
    }
    ~html_events_connection() { sink_->disconnect(); }
    html_events_connection(const html_events_connection&) = delete;
    html_events_connection& operator=(const html_events_connection&) = delete;

private:
    CComPtr<html_events_sink::object> sink_;
};

} // namespace quill
