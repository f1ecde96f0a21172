// Fixture: the aggregator of a tab that shows a SharePoint page, an installed editor, and a clock that the
// test advances.
#pragma once

#include "sharepoint/browser_events_aggregator.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quill::test {

using lines = std::vector<std::string>;

inline constexpr wchar_t page_url[] = L"http://h/list";
inline constexpr wchar_t pdf_url[] = L"http://h/Doc.pdf";

class aggregator_fixture : public testing::Test
{
protected:
    aggregator_fixture()
    {
        editors_.use_editor();
        make_aggregator();
        browser_->document = page_->dispatch();
        log_.clear();
    }
    ~aggregator_fixture() override { aggregator_.reset(); }

    // Replaces the aggregator by one that reads the editor's current path.
    void make_aggregator() { aggregator_ = std::make_shared<browser_events_aggregator>(&tick_count); }
    static void advance_clock(std::uint64_t ms) { now_ms_ += ms; }

    bool navigate(std::wstring_view url, bool is_post = false)
    {
        return aggregator_->on_before_navigate(browser_, url, is_post);
    }
    void complete() { aggregator_->on_document_complete(browser_, page_url); }
    // Navigates the browser to a page that is not a SharePoint page.
    CComPtr<fake_document> show_plain_page()
    {
        auto page = make_fake<fake_document>(tab_, L"http://plain/");
        browser_->document = page->dispatch();
        return page;
    }

    editor_programs editors_;
    fake_tab tab_;
    CComPtr<fake_document> page_ = sharepoint_page(tab_, page_url);
    CComPtr<fake_browser> browser_ = make_fake<fake_browser>(tab_);
    log_capture log_;
    std::shared_ptr<browser_events_aggregator> aggregator_;

private:
    static std::uint64_t tick_count() { return now_ms_; }

    static inline std::uint64_t now_ms_ = 1'000'000;
};

} // namespace quill::test
