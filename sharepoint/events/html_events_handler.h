// What the events of an HTML document are forwarded to.
#pragma once

struct IHTMLDocument2;
struct IHTMLElement;

namespace quill {

// Called on the tab's user-interface thread. What is handed over is lent for the call.
class html_events_handler
{
public:
    // Returns whether the click shall be cancelled. element may be null. May throw.
    virtual bool on_click(IHTMLDocument2* document, IHTMLElement* element) = 0;
    // The document has reached the ready state "complete". May throw.
    virtual void on_document_ready(IHTMLDocument2* document) = 0;
    virtual ~html_events_handler() = default;
};

} // namespace quill
