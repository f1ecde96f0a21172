#include "sharepoint/events/html_events_sink.h"

#include "logging/exception_barriers.h"
#include "logging/log_stream.h"
#include "sharepoint/decisions/ready_state.h"
#include "sharepoint/events/event_connection.h"
#include "sharepoint/host/com_error.h"
#include "sharepoint/host/html_reading.h"

#include <utility>

namespace quill {
namespace {

// Parts of the log lines of the barrier.
constexpr const char* click_name = "quill::html_events_sink::on_click";
constexpr unsigned click_line = 37;

// Makes the second call even if the first one throws, because the link is open. Returns false if one threw.
bool block_click(IHTMLEventObj* event)
{
    QUILL_LOG(log_level::info) << "blocking click event...";
    const bool has_set_result =
        attempt([&] { call_host(event, &IHTMLEventObj::put_returnValue, CComVariant(false)); }, click_name,
                click_line);
    const bool has_stopped_bubbling = attempt(
        [&] { call_host(event, &IHTMLEventObj::put_cancelBubble, VARIANT_TRUE); }, click_name, click_line);
    return has_set_result && has_stopped_bubbling;
}

} // namespace

CComPtr<html_events_sink::object> html_events_sink::connect(IHTMLDocument2* document,
                                                            std::weak_ptr<html_events_handler> handler)
{
    object* created = nullptr;
    throw_if_failed(object::CreateInstance(&created), "Document events sink cannot be created");
    CComPtr<object> sink(created);
    sink->document_ = host_ptr<IHTMLDocument2>(document);
    sink->handler_ = std::move(handler);
    try {
        throw_if_failed(advise(*sink, document, IID_html_document_events),
                        "Document events cannot be subscribed");
    } catch (...) {
        // Advise may have connected the sink before it failed.
        sink->disconnect();
        throw;
    }
    return sink;
}

void html_events_sink::disconnect() noexcept
{
    const host_ptr<IHTMLDocument2> document(std::move(document_));
    handler_.reset();
    unadvise(*this, document, IID_html_document_events);
}

VARIANT_BOOL STDMETHODCALLTYPE html_events_sink::on_click(IDispatch* event)
{
    QUILL_LOG(log_level::debug) << "CLICK!";
    protection held{GetUnknown()};
    return CrashBorder(
        held, [&] { return click(held, event) && block_click(held.event) ? VARIANT_FALSE : VARIANT_TRUE; },
        VARIANT_TRUE, click_name, click_line);
}

void STDMETHODCALLTYPE html_events_sink::on_ready_state_change(IDispatch*)
{
    QUILL_LOG(log_level::info) << "Ready state change.";
    protection held{GetUnknown()};
    CrashBorder(
        held,
        [&] {
            ready_state_changed(held);
            return S_OK;
        },
        E_FAIL, nullptr);
}

void html_events_sink::protection::release() noexcept
{
    handler.reset();
    element.release();
    event.release();
    document.release();
    sink.Release();
}

bool html_events_sink::click(protection& held, IDispatch* event_object)
{
    if (!event_object)
        throw_com_error(E_FAIL, "Click without an event object");
    void* queried = nullptr;
    throw_if_failed(
        barrier::call_host([&] { return event_object->QueryInterface(IID_IHTMLEventObj, &queried); }),
        "Click without an event object");
    held.event.attach(static_cast<IHTMLEventObj*>(queried));
    if (!held.event)
        throw_com_error(E_FAIL, "Click without an event object");

    held.document = host_ptr<IHTMLDocument2>(document_.get());
    call_host(held.event, &IHTMLEventObj::get_srcElement, held.element.out());
    held.handler = handler_.lock();
    return held.handler && held.handler->on_click(held.document, held.element);
}

void html_events_sink::ready_state_changed(protection& held)
{
    held.document = host_ptr<IHTMLDocument2>(document_.get());
    if (ready_state_from_text(text_property(held.document, &IHTMLDocument2::get_readyState)) !=
        ready_state::complete)
        return;
    held.handler = handler_.lock();
    if (held.handler)
        held.handler->on_document_ready(held.document);
}

} // namespace quill
