// Renders the pages of one document at a time with poppler's tools, one tool at a time, without ever waiting:
// the owner calls poll() from a timer while busy() and is told what became ready. One thread.
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
    enum class news
    {
        none,
        pages,   // pages() is known
        picture, // take_picture() has what was asked for last
        links,   // links() has the links of that page
        failure, // failure() says why there is nothing to show; poll() has nothing more to do
    };

    // Starts reading a document; what was asked of another one before is forgotten.
    void open(const std::wstring& path);

    // Asks for a page. A request takes the place of an earlier one that is still waiting.
    void request(const page_view& view);

    bool busy() const { return task_ != task::none; }
    news poll();

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
    news fail(std::wstring reason);
    news finish(task ended, const machine_program::result& result);
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
