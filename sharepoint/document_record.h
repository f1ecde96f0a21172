// An HTML document of a tab, its kind and the connection to its events. Owned by the aggregator.
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
    // Classifies the page and advises a sink that forwards its events to handler. Throws std::system_error
    // with the failure code if Advise fails.
    document_record(IHTMLDocument2* document, std::weak_ptr<pdf_editor> editor,
                    std::weak_ptr<html_events_handler> handler);
    document_record(const document_record&) = delete;
    document_record& operator=(const document_record&) = delete;

    bool is_for(IHTMLDocument2* document) const { return is_same_object(document_, document); }
    std::wstring url() const;

    // Removes SharePoint's handlers from the PDF links of a SharePoint page.
    void rewrite_links() const;

    // Opens the PDF if element is a list link of a SharePoint page; element may be null. Returns whether to
    // cancel the click.
    bool click(IHTMLElement* element) const;

private:
    host_ptr<IHTMLDocument2> document_;
    host_ptr<IHTMLDocument3> document3_; // of the same page; null if it has none
    page_kind kind_;
    std::weak_ptr<pdf_editor> editor_;
    html_events_connection events_;
};

} // namespace quill
