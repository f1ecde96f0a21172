#include "sharepoint/html_events_sink.h"

#include "logging/exception_barriers.h"
#include "logging/log_stream.h"
#include "sharepoint/com_error.h"
#include "sharepoint/html_reading.h"
#include "sharepoint/ready_state.h"

#include <utility>

namespace quill {
namespace {

// Where the barrier says that a failure happened: a fixed number of the log's text.
constexpr unsigned click_line = 37;

} // namespace

CComPtr<html_events_sink::object> html_events_sink::connect(IHTMLDocument2* document,
                                                            std::weak_ptr<html_events_handler> handler)
{
    object* created = nullptr;
    throw_if_failed(object::CreateInstance(&created), "Document events sink cannot be created");
    CComPtr<object> sink(created);
    sink->document_ = document;
    sink->handler_ = std::move(handler);
    throw_if_failed(sink->DispEventAdvise(document), "Document events cannot be subscribed");
    return sink;
}

void html_events_sink::disconnect() noexcept
{
    const CComPtr<IHTMLDocument2> document(std::move(document_));
    handler_.reset();
    NoThrow([&] { return DispEventUnadvise(document); }, E_FAIL);
}

VARIANT_BOOL STDMETHODCALLTYPE html_events_sink::on_click(IDispatch* event)
{
    QUILL_LOG(log_level::debug) << "CLICK!";
    return CrashBorder([&] { return click(event); }, VARIANT_TRUE, "quill::html_events_sink::on_click",
                       click_line);
}

void STDMETHODCALLTYPE html_events_sink::on_ready_state_change(IDispatch*)
{
    QUILL_LOG(log_level::info) << "Ready state change.";
    NoThrow(
        [&] {
            ready_state_changed();
            return S_OK;
        },
        E_FAIL);
}

VARIANT_BOOL html_events_sink::click(IDispatch* event_object)
{
    if (!event_object)
        throw_com_error(E_FAIL, "Click without an event object");
    CComPtr<IHTMLEventObj> event;
    throw_if_failed(event_object->QueryInterface(&event), "Click without an event object");
    if (!event)
        throw_com_error(E_FAIL, "Click without an event object");

    // The handler may close the tab, which takes the document's records and this sink along.
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    const CComPtr<IHTMLDocument2> document(document_);
    CComPtr<IHTMLElement> element;
    event->get_srcElement(&element);
    const auto handler = handler_.lock();
    if (!handler || !handler->on_click(document, element))
        return VARIANT_TRUE;

    QUILL_LOG(log_level::info) << "blocking click event...";
    event->put_returnValue(CComVariant(false));
    event->put_cancelBubble(VARIANT_TRUE);
    return VARIANT_FALSE;
}

void html_events_sink::ready_state_changed()
{
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    const CComPtr<IHTMLDocument2> document(document_);
    if (ready_state_from_text(text_property(document.p, &IHTMLDocument2::get_readyState)) !=
        ready_state::complete)
        return;
    if (const auto handler = handler_.lock())
        handler->on_document_ready(document);
}

} // namespace quill
