// One HTML document of a tab: what kind of page it is, and the connection to its events.
#pragma once

#include "sharepoint/decisions/page_kind.h"
#include "sharepoint/events/html_events_sink.h"
#include "sharepoint/host/host_ptr.h"

#include <memory>
#include <string>

namespace quill {

class pdf_editor;

class document_record
{
public:
    // Classifies the page and connects to its events. editor is where PDFs are opened, handler is told the
    // events. Throws std::system_error with the failure code when the page takes no connection.
    document_record(IHTMLDocument2* document, std::weak_ptr<pdf_editor> editor,
                    std::weak_ptr<html_events_handler> handler);
    document_record(const document_record&) = delete;
    document_record& operator=(const document_record&) = delete;

    bool is_for(IHTMLDocument2* document) const { return is_same_object(document_, document); }
    std::wstring address() const;

    // Rewrites the PDF links of a SharePoint page.
    void rewrite_links() const;

    // Opens what a click on a list link of a SharePoint page leads to. Returns whether the click shall be
    // cancelled. element may be null.
    bool click(IHTMLElement* element) const;

private:
    host_ptr<IHTMLDocument2> document_;
    host_ptr<IHTMLDocument3> document3_; // the same page; empty when it has no IHTMLDocument3
    page_kind kind_;
    std::weak_ptr<pdf_editor> editor_;
    html_events_connection events_;
};

} // namespace quill
