// Coordinates the events of one tab: keeps a record for each of its HTML documents and decides which
// navigations and clicks go to the desktop editor. Owned by the helper object's subscription.
#pragma once

#include "sharepoint/decisions/repeat_guard.h"
#include "sharepoint/document_record.h"
#include "sharepoint/events/event_handlers.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace quill {

// Milliseconds since the system was started.
std::uint64_t system_tick_count();

// Must be owned by a std::shared_ptr: records and event sinks get weak pointers to it.
class browser_events_aggregator : public browser_events_handler,
                                  public html_events_handler,
                                  public std::enable_shared_from_this<browser_events_aggregator>
{
public:
    // tick_count is the clock by which repeated navigations are recognised.
    explicit browser_events_aggregator(std::uint64_t (*tick_count)() = &system_tick_count);

    // browser_events_handler
    bool on_before_navigate(IWebBrowser2* browser, std::wstring_view url, bool is_post) override;
    void on_document_complete(IWebBrowser2* browser, std::wstring_view url) override;
    std::size_t openings() const noexcept override { return repeats_.openings(); }
    void end_openings(std::size_t count) noexcept override { repeats_.end_openings(count); }

    // html_events_handler
    bool on_click(IHTMLDocument2* document, IHTMLElement* element) override;
    void on_document_ready(IHTMLDocument2* document) override;

private:
    // nullptr if the document has no record. Records are not moved or removed before the destructor.
    document_record* find_record(IHTMLDocument2* document) const;
    document_record& find_or_create_record(IHTMLDocument2* document);
    void open(std::wstring_view url);

    std::uint64_t (*tick_count_)();
    std::shared_ptr<pdf_editor> editor_;
    std::vector<std::unique_ptr<document_record>> documents_;
    repeat_guard repeats_;
};

} // namespace quill
