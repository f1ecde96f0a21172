// Renders pages of one document with poppler's tools, one tool at a time, without blocking: the owner calls
// poll() from a timer while busy(). Not thread-safe.
#pragma once

#include "stand_ins/viewer/document_facts.h"
#include "stand_ins/viewer/machine_program.h"
#include "stand_ins/viewer/page_picture.h"
#include "stand_ins/viewer/viewer_layout.h"

#include <optional>
#include <string>
#include <vector>

namespace quill {

class document_renderer
{
public:
    enum class poll_result
    {
        none,
        pages,   // pages() is available
        picture, // take_picture() returns the page requested last
        links,   // links() returns the links of that page
        failure, // failure() is the reason; the renderer is no longer busy
    };

    // Starts to read a document. Cancels requests for the previous one.
    void open(const std::wstring& path);

    // Requests a page. Replaces an earlier request that has not started.
    void request(const page_view& view);

    bool busy() const { return task_ != task::none; }
    poll_result poll();

    const std::vector<page_size>& pages() const { return pages_; }
    const std::vector<page_link>& links() const { return links_; }
    const std::wstring& failure() const { return failure_; }
    page_picture take_picture() { return std::move(picture_); }

private:
    enum class task
    {
        none,
        learn_pages,
        render,
        find_links
    };

    void start(task next);
    std::vector<std::wstring> arguments_for(task next) const;
    poll_result fail(std::wstring reason);
    poll_result finish(task ended, const machine_program::result& result);
    void start_waiting_request();

    picture_codec codec_;
    std::wstring path_;
    std::vector<page_size> pages_;
    std::vector<page_link> links_;
    std::wstring failure_;
    page_picture picture_;
    std::optional<page_view> waiting_;
    page_view current_;
    task task_ = task::none;
    std::optional<machine_program> program_;
};

} // namespace quill
