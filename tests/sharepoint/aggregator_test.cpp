#include "tests/sharepoint/aggregator_fixture.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <system_error>

namespace quill::test {
namespace {

constexpr char just_canceled[] = "info: http://h/Doc.pdf just canceled";

class Aggregator : public aggregator_fixture
{
};

TEST(AggregatorClock, IsTheSystemsTickCount)
{
    const auto is_the_tick_count = [] {
        const std::uint64_t before = GetTickCount64();
        const std::uint64_t now = system_tick_count();
        return before <= now && now <= GetTickCount64();
    };
    EXPECT_TRUE(is_the_tick_count());
    const ULONGLONG start = GetTickCount64();
    EXPECT_TRUE(wait_until([&] { return GetTickCount64() != start; }));
    EXPECT_TRUE(is_the_tick_count());
}

TEST_F(Aggregator, SendsNavigationsToTheEditor)
{
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(log_.lines(),
              (lines{"debug: detect click to http://h/Doc.pdf", "info: sharepoint document has been detected",
                     "info: trying to open pdf link", "info: checkout file http://h/Doc.pdf"}));
    EXPECT_EQ(editors_.starts(1), std::vector{editors_.editor_start(pdf_url)});
}

TEST_F(Aggregator, IgnoresPostsNavigationsToOtherFilesAndOtherDocuments)
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
    EXPECT_TRUE(editors_.starts(0).empty());
}

TEST_F(Aggregator, IgnoresNavigationsFromOtherPages)
{
    const auto plain = show_plain_page();
    EXPECT_FALSE(navigate(pdf_url));
    plain->add_to_head({.tag = L"META", .name = L"GENERATOR", .content = L"SharePoint"});
    plain->add_to_head({.tag = L"SCRIPT", .src = L"https://x.sharepointonline.com/x.js"});
    EXPECT_FALSE(navigate(pdf_url));
    EXPECT_EQ(log_.lines(), lines(2, "debug: detect click to http://h/Doc.pdf"));
    EXPECT_TRUE(editors_.starts(0).empty());
}

TEST_F(Aggregator, CancelsARepeatedNavigationAndStartsOneEditor)
{
    EXPECT_TRUE(navigate(L"http://h/Doc.pdf"));
    log_.clear();
    EXPECT_TRUE(navigate(L"HTTP://H/DOC.PDF"));
    EXPECT_EQ(log_.lines(),
              (lines{"debug: detect click to HTTP://H/DOC.PDF", "info: sharepoint document has been detected",
                     "info: HTTP://H/DOC.PDF just canceled"}));
    EXPECT_EQ(editors_.starts(1), std::vector{editors_.editor_start(pdf_url)});
}

TEST_F(Aggregator, OpensTheSameUrlAgainAfter100Milliseconds)
{
    EXPECT_TRUE(navigate(pdf_url));
    advance_clock(99);
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(log_.lines().back(), just_canceled);
    advance_clock(100);
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(editors_.starts(2), std::vector(2, editors_.editor_start(pdf_url)));
}

// The last navigation comes more than 100 ms after the first one, but less than that after the second one.
TEST_F(Aggregator, CountsThe100MillisecondsFromTheLastRepeat)
{
    EXPECT_TRUE(navigate(pdf_url));
    for (int repeat = 0; repeat < 3; ++repeat) {
        advance_clock(99);
        EXPECT_TRUE(navigate(pdf_url));
        EXPECT_EQ(log_.lines().back(), just_canceled);
    }
    EXPECT_EQ(editors_.starts(1), std::vector{editors_.editor_start(pdf_url)});
}

TEST_F(Aggregator, OpensAnotherUrlImmediately)
{
    EXPECT_TRUE(navigate(L"http://h/a.pdf"));
    EXPECT_TRUE(navigate(L"http://h/b.pdf"));
    EXPECT_THAT(editors_.starts(2), testing::UnorderedElementsAre(editors_.editor_start(L"http://h/a.pdf"),
                                                                  editors_.editor_start(L"http://h/b.pdf")));
}

TEST_F(Aggregator, OpensTheSameUrlAgainAfterDocumentComplete)
{
    EXPECT_TRUE(navigate(pdf_url));
    complete();
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(editors_.starts(2), std::vector(2, editors_.editor_start(pdf_url)));
}

// The default handler gets the URL.
TEST_F(Aggregator, CancelsTheNavigationWithoutAnEditor)
{
    editors_.set_editor(L"C:\\nowhere\\editor.exe");
    make_aggregator();
    EXPECT_TRUE(navigate(pdf_url));
    const auto starts = editors_.starts(1);
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0].command_line, editor_programs::default_handler_line(pdf_url));
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

TEST_F(Aggregator, RecordsEachPage)
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

// A tear-off interface: another interface pointer with the page's identity.
class torn_off_page : public fake_object<without_IHTMLDocument2<IHTMLDocument2>>
{
public:
    torn_off_page(fake_tab& tab, fake_document* page) : fake_object(tab), page_(page) {}

protected:
    IUnknown* find_interface(REFIID iid) override
    {
        if (iid == IID_IHTMLDocument2)
            return this;
        CComPtr<IUnknown> found;
        page_->QueryInterface(iid, reinterpret_cast<void**>(&found));
        return found;
    }

private:
    CComPtr<fake_document> page_;
};

TEST_F(Aggregator, FindsAPageByItsComIdentity)
{
    auto& link = page_->add_to_body(list_link(L"http://h/x.docx"));
    complete();
    const auto other_interface = make_fake<torn_off_page>(tab_, page_.p);
    browser_->document = static_cast<IHTMLDocument2*>(other_interface);
    log_.clear();
    complete();
    EXPECT_FALSE(aggregator_->on_click(other_interface, &link));
    EXPECT_EQ(log_.lines(), (lines{"debug: opening document by http://h/list",
                                   "debug: document already exists", "debug: detect click to http://h/x.docx",
                                   "debug: click handling...", "debug: detect click to http://h/x.docx",
                                   "info: do not block clicks for not-pdf links"}));
    EXPECT_EQ(page_->events().sinks(), 1u);
}

TEST_F(Aggregator, PassesAClickToTheRecordOfItsPage)
{
    auto& link = page_->add_to_body(list_link(L"http://h/x.pdf"));
    const auto first = show_plain_page();
    complete();
    browser_->document = page_->dispatch();
    complete();
    const auto last = show_plain_page();
    complete();
    EXPECT_TRUE(aggregator_->on_click(page_, &link));
    EXPECT_FALSE(aggregator_->on_click(first, &link));
    EXPECT_FALSE(aggregator_->on_click(last, &link));
    EXPECT_EQ(editors_.starts(1), std::vector{editors_.editor_start(L"http://h/x.pdf")});
    log_.clear();
    page_->change_ready_state(L"complete");
    EXPECT_EQ(log_.lines(), (lines{"info: Ready state change.", "debug: document already exists",
                                   "debug: detect click to http://h/x.pdf"}));
}

TEST_F(Aggregator, RecordsAPageThatIsReadyBeforeDocumentComplete)
{
    aggregator_->on_document_ready(page_);
    EXPECT_EQ(log_.lines().back(), "debug: http://h/list is new document");
    EXPECT_EQ(page_->events().sinks(), 1u);
}

TEST_F(Aggregator, IgnoresDocumentCompleteWithoutADocument)
{
    browser_->document.Release();
    complete();
    EXPECT_TRUE(log_.lines().empty());
}

TEST_F(Aggregator, ClassifiesARecordedPageOnce)
{
    complete();
    page_->add_to_head({.tag = L"SCRIPT", .src = L"https://x.sharepointonline.com/x.js"});
    auto& link = page_->add_to_body(list_link(L"/x.pdf"));
    const auto event = make_fake<fake_event>(tab_, &link);
    EXPECT_TRUE(is_bool(page_->click(event).value, false));
    EXPECT_EQ(editors_.starts(1), std::vector{editors_.editor_start(L"http://h/x.pdf")});
}

// A page may fire onreadystatechange as soon as a sink is advised.
TEST_F(Aggregator, RecordsAPageOnceThatIsReadyDuringAdvise)
{
    tab_.interrupt_calls_named("IHTMLDocument2::get_URL", [&] {
        tab_.interrupt_calls_named({}, {});
        page_->change_ready_state(L"complete");
    });
    complete();
    EXPECT_TRUE(tab_.has_interrupted());
    EXPECT_EQ(page_->events().sinks(), 1u);
    EXPECT_EQ(log_.lines().back(), "debug: document already exists");
    complete();
    EXPECT_EQ(page_->events().sinks(), 1u);
}

TEST_F(Aggregator, RecordsAPageLaterWhoseAdviseFailed)
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
