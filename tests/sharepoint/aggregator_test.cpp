#include "tests/sharepoint/aggregator_fixture.h"

#include <gmock/gmock.h>

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
    EXPECT_EQ(bench_.starts(1), std::vector{bench_.editor_start(pdf_url)});
}

TEST_F(Aggregator, OpensTheSameAddressAgainLater)
{
    EXPECT_TRUE(navigate(pdf_url));
    pass_the_repeat_window();
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(bench_.starts(2), std::vector(2, bench_.editor_start(pdf_url)));
}

// The third navigation comes more than 100 ms after the first, and less than that after the second. A machine
// that halts on the way says nothing, and is asked again.
TEST_F(Aggregator, WaitsAnewAfterARepeat)
{
    bench_.set_editor(L"C:\\nowhere\\editor.exe");
    bench_.break_default_handler();
    aggregator_ = std::make_shared<browser_events_aggregator>();
    for (int attempt = 0; attempt < 50; ++attempt) {
        const std::wstring url = L"http://h/" + std::to_wstring(attempt) + L".pdf";
        const std::string repeat = "info: http://h/" + std::to_string(attempt) + ".pdf just canceled";
        EXPECT_TRUE(navigate(url.c_str()));
        const ULONGLONG first = GetTickCount64();
        EXPECT_TRUE(wait_until([&] { return GetTickCount64() - first >= 50; }));
        const ULONGLONG second = GetTickCount64();
        EXPECT_TRUE(navigate(url.c_str()));
        const bool is_repeat = log_.lines().back() == repeat;
        EXPECT_TRUE(wait_until([&] { return GetTickCount64() - first >= 100; }));
        EXPECT_TRUE(navigate(url.c_str()));
        if (!is_repeat || GetTickCount64() - second >= 100)
            continue;
        EXPECT_EQ(log_.lines().back(), repeat);
        return;
    }
    ADD_FAILURE() << "the machine never kept up";
}

TEST_F(Aggregator, OpensAnotherAddressAtOnce)
{
    EXPECT_TRUE(navigate(L"http://h/a.pdf"));
    EXPECT_TRUE(navigate(L"http://h/b.pdf"));
    EXPECT_THAT(bench_.starts(2), testing::UnorderedElementsAre(bench_.editor_start(L"http://h/a.pdf"),
                                                                bench_.editor_start(L"http://h/b.pdf")));
}

TEST_F(Aggregator, ForgetsTheRepeatWhenAPageIsComplete)
{
    EXPECT_TRUE(navigate(pdf_url));
    complete();
    EXPECT_TRUE(navigate(pdf_url));
    EXPECT_EQ(bench_.starts(2), std::vector(2, bench_.editor_start(pdf_url)));
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

// One more interface of a page, in an object of its own: the page's identity tells that it is the same.
class torn_off_page : public fake_object<without_IHTMLDocument2<IHTMLDocument2>>
{
public:
    torn_off_page(fake_scene& scene, fake_document* page) : fake_object(scene), page_(page) {}

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

TEST_F(Aggregator, KnowsAPageByItsIdentity)
{
    auto& link = page_->add_to_body(list_link(L"http://h/x.docx"));
    complete();
    const auto other_interface = make_fake<torn_off_page>(scene_, page_.p);
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

// Each page is its own record's business, however many came after it.
TEST_F(Aggregator, AsksTheRecordOfThePageThatIsClicked)
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
    EXPECT_EQ(bench_.starts(1), std::vector{bench_.editor_start(L"http://h/x.pdf")});
    log_.clear();
    page_->change_ready_state(L"complete");
    EXPECT_EQ(log_.lines(), (lines{"info: Ready state change.", "debug: document already exists",
                                   "debug: detect click to http://h/x.pdf"}));
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
    EXPECT_EQ(bench_.starts(1), std::vector{bench_.editor_start(L"http://h/x.pdf")});
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
