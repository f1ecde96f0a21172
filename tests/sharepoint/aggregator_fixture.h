// A tab's aggregator with a SharePoint page in its browser, and the editor installed.
#pragma once

#include "sharepoint/browser_events_aggregator.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/support/log_capture.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quill::test {

using lines = std::vector<std::string>;

inline constexpr wchar_t page_url[] = L"http://h/list";
inline constexpr wchar_t pdf_url[] = L"http://h/Doc.pdf";

class aggregator_bench : public testing::Test
{
protected:
    aggregator_bench()
    {
        bench_.use_editor();
        aggregator_ = std::make_shared<browser_events_aggregator>();
        browser_->document = page_->dispatch();
        log_.clear();
    }
    ~aggregator_bench() override { aggregator_.reset(); }

    bool navigate(std::wstring_view url, bool is_post = false)
    {
        return aggregator_->on_before_navigate(browser_, url, is_post);
    }
    void complete() { aggregator_->on_document_complete(browser_, page_url); }
    // Shows another page, one that is no SharePoint page.
    CComPtr<fake_document> show_plain_page()
    {
        auto page = make_fake<fake_document>(scene_, L"http://plain/");
        browser_->document = page->dispatch();
        return page;
    }
    // Waits, by the clock that the guard reads, until cancellations are no longer repeats.
    static void pass_the_repeat_window()
    {
        const ULONGLONG begin = GetTickCount64();
        ASSERT_TRUE(wait_until([&] { return GetTickCount64() - begin >= 100; }));
    }

    editor_bench bench_;
    fake_scene scene_;
    CComPtr<fake_document> page_ = sharepoint_page(scene_, page_url);
    CComPtr<fake_browser> browser_ = make_fake<fake_browser>(scene_);
    log_capture log_;
    std::shared_ptr<browser_events_aggregator> aggregator_;
};

} // namespace quill::test
