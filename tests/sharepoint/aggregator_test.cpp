#include "tests/sharepoint/aggregator_bench.h"

#include <gtest/gtest.h>

#include <system_error>

namespace quill::test {
namespace {

class Aggregator : public aggregator_bench
{
};

TEST_F(Aggregator, SendsNavigationsToTheEditor)
{
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(log_.lines(),
              (lines{"debug: detect click to http://h/Doc.pdf", "info: sharepoint document has been detected",
                     "info: trying to open pdf link", "info: checkout file http://h/Doc.pdf"}));
    EXPECT_EQ(bench_.starts(1), std::vector{bench_.editor_start(pdf_url)});
}

TEST_F(Aggregator, LetsOtherNavigationsPass)
{
    EXPECT_FALSE(navigate(pdf_url, true));
    EXPECT_TRUE(log_.lines().empty());
    EXPECT_FALSE(navigate(L"http://h/page.aspx"));
    EXPECT_EQ(log_.lines(), lines{"debug: detect click to http://h/page.aspx"});
    log_.clear();

    page_->is_html = false;
    EXPECT_FALSE(navigate(pdf_url));
    browser_->document.Release();
    EXPECT_FALSE(navigate(pdf_url));
    EXPECT_TRUE(log_.lines().empty());
    EXPECT_TRUE(bench_.starts(0).empty());
}

TEST_F(Aggregator, LetsNavigationsOfOtherPagesPass)
{
    const auto plain = show_plain_page();
    EXPECT_FALSE(navigate(pdf_url));
    plain->add_to_head({.tag = L"META", .name = L"GENERATOR", .content = L"SharePoint"});
    plain->add_to_head({.tag = L"SCRIPT", .src = L"https://x.sharepointonline.com/x.js"});
    EXPECT_FALSE(navigate(pdf_url));
    EXPECT_EQ(log_.lines(), lines(2, "debug: detect click to http://h/Doc.pdf"));
    EXPECT_TRUE(bench_.starts(0).empty());
}

TEST_F(Aggregator, CancelsARepeatWithoutASecondEditor)
{
    EXPECT_TRUE(navigate(L"http://h/Doc.pdf"));
    log_.clear();
    EXPECT_TRUE(navigate(L"HTTP://H/DOC.PDF"));
    EXPECT_EQ(log_.lines(),
              (lines{"debug: detect click to HTTP://H/DOC.PDF", "info: sharepoint document has been detected",
                     "info: HTTP://H/DOC.PDF just canceled"}));
    EXPECT_EQ(bench_.starts(1).size(), 1u);
}

TEST_F(Aggregator, OpensTheSameAddressAgainLater)
{
    EXPECT_TRUE(navigate(pdf_url));
    pass_the_repeat_window();
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(bench_.starts(2).size(), 2u);
}

TEST_F(Aggregator, OpensAnotherAddressAtOnce)
{
    EXPECT_TRUE(navigate(L"http://h/a.pdf"));
    EXPECT_TRUE(navigate(L"http://h/b.pdf"));
    EXPECT_EQ(bench_.starts(2).size(), 2u);
}

TEST_F(Aggregator, ForgetsTheRepeatWhenAPageIsComplete)
{
    EXPECT_TRUE(navigate(pdf_url));
    complete();
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(bench_.starts(2).size(), 2u);
}

// With no editor the default handler gets the address, and the navigation stays cancelled.
TEST_F(Aggregator, CancelsAlsoWithoutAnEditor)
{
    bench_.set_editor(L"C:\\nowhere\\editor.exe");
    aggregator_ = std::make_shared<browser_events_aggregator>();
    EXPECT_TRUE(navigate(pdf_url));
    const auto starts = bench_.starts(1);
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0].command_line, editor_bench::default_handler_line(pdf_url));
}

TEST_F(Aggregator, RecordsAPageOnce)
{
    complete();
    EXPECT_EQ(
        log_.lines(),
        (lines{"debug: opening document by http://h/list", "info: sharepoint document has been detected",
               "info: http://h/list events subscribed ", "debug: http://h/list is new document"}));
    log_.clear();
    complete();
    EXPECT_EQ(log_.lines(),
              (lines{"debug: opening document by http://h/list", "debug: document already exists"}));
    log_.clear();
    page_->change_ready_state(L"complete");
    EXPECT_EQ(log_.lines(), (lines{"info: Ready state change.", "debug: document already exists"}));
    EXPECT_EQ(page_->events().sinks(), 1u);
}

TEST_F(Aggregator, KeepsARecordForEveryPage)
{
    complete();
    const auto plain = show_plain_page();
    log_.clear();
    complete();
    EXPECT_EQ(log_.lines(),
              (lines{"debug: opening document by http://h/list", "info: http://plain/ events subscribed ",
                     "debug: http://plain/ is new document",
                     "debug: Should not modify links on regular documents"}));
    EXPECT_EQ(page_->events().sinks(), 1u);
    EXPECT_EQ(plain->events().sinks(), 1u);
    aggregator_.reset();
    EXPECT_EQ(page_->events().sinks(), 0u);
    EXPECT_EQ(plain->events().sinks(), 0u);
}

TEST_F(Aggregator, RecordsAPageThatIsReadyBeforeItIsComplete)
{
    aggregator_->on_document_ready(page_);
    EXPECT_EQ(log_.lines().back(), "debug: http://h/list is new document");
    EXPECT_EQ(page_->events().sinks(), 1u);
}

TEST_F(Aggregator, IgnoresACompletionWithoutAPage)
{
    browser_->document.Release();
    complete();
    EXPECT_TRUE(log_.lines().empty());
}

// A page's kind is found out once, when it is recorded.
TEST_F(Aggregator, ClassifiesARecordedPageOnce)
{
    complete();
    page_->add_to_head({.tag = L"SCRIPT", .src = L"https://x.sharepointonline.com/x.js"});
    auto& link = page_->add_to_body(list_link(L"/x.pdf"));
    const auto event = make_fake<fake_event>(scene_, &link);
    EXPECT_TRUE(is_bool(page_->click(event).value, false));
    EXPECT_EQ(bench_.starts(1).size(), 1u);
}

// A page may tell its readiness as soon as it is connected to.
TEST_F(Aggregator, RecordsAPageOnceThatIsReadyOnTheWay)
{
    scene_.interrupt_calls_named("IHTMLDocument2::get_URL", [&] {
        scene_.interrupt_calls_named({}, {});
        page_->change_ready_state(L"complete");
    });
    complete();
    EXPECT_TRUE(scene_.has_interrupted());
    EXPECT_EQ(page_->events().sinks(), 1u);
    EXPECT_EQ(log_.lines().back(), "debug: document already exists");
    complete();
    EXPECT_EQ(page_->events().sinks(), 1u);
}

TEST_F(Aggregator, LosesNothingWhenAPageTakesNoConnection)
{
    page_->has_events = false;
    EXPECT_THROW(complete(), std::system_error);
    page_->has_events = true;
    log_.clear();
    complete();
    EXPECT_EQ(log_.lines().back(), "debug: http://h/list is new document");
}

} // namespace
} // namespace quill::test
