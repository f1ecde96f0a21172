#include "sharepoint/browser_events_aggregator.h"
#include "sharepoint/pdf_editor.h"
#include "tests/sharepoint/editor_bench.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/support/log_capture.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <mshtmdid.h>

#include <algorithm>
#include <optional>
#include <system_error>

namespace quill {
namespace {

using test::element_text;
using test::fake_browser;
using test::fake_document;
using test::fake_event;
using test::fake_scene;
using test::make_fake;
using test::program_start;
using lines = std::vector<std::string>;

constexpr wchar_t page_url[] = L"http://h/list";
constexpr wchar_t pdf_url[] = L"http://h/Doc.pdf";

class Aggregator : public testing::Test
{
protected:
    Aggregator()
    {
        bench_.use_editor();
        aggregator_ = std::make_shared<browser_events_aggregator>();
        browser_->document = page_->dispatch();
        log_.clear();
    }
    ~Aggregator() override { aggregator_.reset(); }

    bool navigate(const wchar_t* url, bool is_post = false)
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
        ASSERT_TRUE(test::wait_until([&] { return GetTickCount64() - begin >= 100; }));
    }

    test::editor_bench bench_;
    fake_scene scene_;
    CComPtr<fake_document> page_ = test::sharepoint_page(scene_, page_url);
    CComPtr<fake_browser> browser_ = make_fake<fake_browser>(scene_);
    test::log_capture log_;
    std::shared_ptr<browser_events_aggregator> aggregator_;
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
    EXPECT_EQ(starts[0].command_line, test::editor_bench::default_handler_line(pdf_url));
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
    auto& link = page_->add_to_body(test::list_link(L"/x.pdf"));
    const auto event = make_fake<fake_event>(scene_, &link);
    EXPECT_TRUE(test::is_bool(page_->click(event).value, false));
    EXPECT_EQ(bench_.starts(1).size(), 1u);
}

TEST_F(Aggregator, RewritesTheLinksOfASharePointPage)
{
    auto& handled = page_->add_to_body(
        {.tag = L"A",
         .outer_html = LR"m(<a href="/x.pdf" onclick="PdfFile.OpenDocuments(1)" id="i">x</a>)m",
         .href = L"/x.pdf"});
    auto& other_link =
        page_->add_to_body({.tag = L"A",
                            .outer_html = LR"m(<a href="/x.doc" onclick="PdfFile.OpenDocuments(1)">x</a>)m",
                            .href = L"/x.doc"});
    auto& plain_link =
        page_->add_to_body({.tag = L"A", .outer_html = L"<a href=\"/y.pdf\">y</a>", .href = L"/y.pdf"});
    auto& anchor = page_->add_to_body({.tag = L"A", .outer_html = L"<a name=\"z\"></a>"});
    auto& unreadable = page_->add_to_body({.tag = L"A", .href = L"/z.pdf"});
    unreadable.is_element = false;
    complete();
    EXPECT_EQ(handled.written_html(), std::vector<std::wstring>{L"<a href=\"/x.pdf\"  id=\"i\">x</a>"});
    for (test::fake_element* untouched : {&other_link, &plain_link, &anchor, &unreadable})
        EXPECT_TRUE(untouched->written_html().empty());
    // Markup is read of PDF links only.
    EXPECT_EQ(scene_.count_calls("IHTMLElement::get_outerHTML"), 2);
    EXPECT_EQ(
        log_.lines(),
        (lines{"debug: opening document by http://h/list", "info: sharepoint document has been detected",
               "info: http://h/list events subscribed ", "debug: http://h/list is new document",
               "debug: detect click to /x.pdf", "debug: detect click to /x.doc",
               "debug: detect click to /y.pdf", "debug: detect click to "}));

    // Pages go on adding links: the next readiness finds those.
    auto& late = page_->add_to_body(
        {.tag = L"A", .outer_html = L"onclick=\"PdfFile.OpenDocuments\"", .href = L"/l.pdf"});
    page_->change_ready_state(L"complete");
    EXPECT_EQ(late.written_html(), std::vector<std::wstring>{L""});
    EXPECT_EQ(handled.written_html().size(), 1u);
}

TEST_F(Aggregator, LeavesTheLinksOfOtherPagesAlone)
{
    const auto plain = show_plain_page();
    plain->add_to_body({.tag = L"A", .outer_html = L"onclick=\"PdfFile.OpenDocuments\"", .href = L"/x.pdf"});
    complete();
    plain->change_ready_state(L"complete");
    EXPECT_EQ(scene_.count_calls("IHTMLElement::getAttribute"), 0);
    EXPECT_EQ(scene_.count_calls("IHTMLElement::put_outerHTML"), 0);
}

class ClassifiedPage : public Aggregator
{
protected:
    // Which kind the page is taken for, as its log lines tell.
    bool is_sharepoint()
    {
        complete();
        const auto logged = log_.lines();
        return std::find(logged.begin(), logged.end(),
                         "debug: Should not modify links on regular documents") == logged.end();
    }
    CComPtr<fake_document> plain_ = show_plain_page();
    const element_text generator_ = {
        .tag = L"META", .name = L"generator", .content = L"My SharePointServer 16"};
};

TEST_F(ClassifiedPage, IsFoundByItsGenerator)
{
    plain_->add_to_head({.tag = L"LINK"});
    plain_->add_to_head({.tag = L"SCRIPT", .src = L"/_layouts/init.js"});
    plain_->add_to_head({.tag = L"META"});
    plain_->add_to_head(generator_);
    plain_->add_to_head({.tag = L"SCRIPT"});
    EXPECT_TRUE(is_sharepoint());
}

TEST_F(ClassifiedPage, IsFoundByEnginesWithTheOlderSearch)
{
    plain_->head->has_element2 = false;
    plain_->add_to_head(generator_);
    EXPECT_TRUE(is_sharepoint());
}

TEST_F(ClassifiedPage, IsNotFoundInTheBody)
{
    plain_->add_to_body(generator_);
    EXPECT_FALSE(is_sharepoint());
}

TEST_F(ClassifiedPage, IsRegularWithSharePointOnlineScripts)
{
    plain_->add_to_head(generator_);
    plain_->add_to_head({.tag = L"SCRIPT", .src = L"https://x.SharePointOnline.com/x.js"});
    EXPECT_FALSE(is_sharepoint());
    EXPECT_EQ(scene_.count_calls("IHTMLMetaElement::get_name"), 0);
}

TEST_F(ClassifiedPage, IsRegularWithoutARootElement)
{
    plain_->has_root = false;
    plain_->add_to_head(generator_);
    EXPECT_FALSE(is_sharepoint());
}

TEST_F(ClassifiedPage, IsRegularWithoutAHead)
{
    plain_->has_head = false;
    plain_->add_to_head(generator_);
    EXPECT_FALSE(is_sharepoint());
}

TEST_F(ClassifiedPage, IsRegularInAnEngineWithoutTheNewerDocument)
{
    plain_->has_document3 = false;
    plain_->add_to_head(generator_);
    EXPECT_FALSE(is_sharepoint());
}

TEST_F(ClassifiedPage, SkipsWhatCannotBeRead)
{
    plain_->add_to_head({.tag = L"META", .name = L"GENERATOR"});
    plain_->add_to_head({.tag = L"META", .content = L"SharePoint"});
    plain_->add_to_head(generator_);
    EXPECT_TRUE(is_sharepoint());
}

class Click : public Aggregator
{
protected:
    Click()
    {
        complete();
        log_.clear();
    }

    struct outcome
    {
        bool is_cancelled = false;
        lines log = {};
    };
    // Clicks an element of the page.
    outcome click(element_text text)
    {
        auto& element = page_->add_to_body(std::move(text));
        const auto event = make_fake<fake_event>(scene_, &element);
        log_.clear();
        const auto result = page_->click(event);
        EXPECT_EQ(result.code, S_OK);
        const bool is_cancelled = test::is_bool(result.value, false);
        EXPECT_NE(is_cancelled, event->is_untouched());
        return {is_cancelled, log_.lines()};
    }
    // Clicks what is not the list's link to a PDF.
    void expect_let_through(element_text text, std::optional<std::string> asked_about = std::nullopt)
    {
        lines expected = {"debug: CLICK!", "debug: click handling..."};
        if (asked_about)
            expected.push_back("debug: detect click to " + *asked_about);
        expected.push_back("info: do not block clicks for not-pdf links");
        const outcome clicked = click(std::move(text));
        EXPECT_FALSE(clicked.is_cancelled);
        EXPECT_EQ(clicked.log, expected);
    }
};

TEST_F(Click, OnAListLinkOpensTheEditor)
{
    const outcome clicked = click(test::list_link(L"http://h/a/x.pdf"));
    EXPECT_TRUE(clicked.is_cancelled);
    EXPECT_EQ(clicked.log,
              (lines{"debug: CLICK!", "debug: click handling...", "debug: detect click to http://h/a/x.pdf",
                     "info: checkout file http://h/a/x.pdf", "info: blocking click event..."}));
    EXPECT_EQ(bench_.starts(1), std::vector{bench_.editor_start(L"http://h/a/x.pdf")});
}

TEST_F(Click, OnAServerRelativeListLinkOpensTheEditor)
{
    EXPECT_TRUE(click(test::list_link(L"/x.pdf")).is_cancelled);
    EXPECT_EQ(bench_.starts(1), std::vector{bench_.editor_start(L"http://h/x.pdf")});
}

// Clicks are the user's: two of them are two starts.
TEST_F(Click, KnowsNoRepeats)
{
    EXPECT_TRUE(click(test::list_link(L"http://h/x.pdf")).is_cancelled);
    EXPECT_TRUE(click(test::list_link(L"http://h/x.pdf")).is_cancelled);
    EXPECT_EQ(bench_.starts(2).size(), 2u);
}

TEST_F(Click, OnAnythingElseIsLetThrough)
{
    element_text link = test::list_link(L"/x.pdf");
    link.tag = L"SPAN";
    expect_let_through(link);

    link = test::list_link(L"/x.pdf");
    link.outer_html.replace(link.outer_html.find(L"ms-draggable"), 12, L"ms-dropable!");
    expect_let_through(link);

    link = test::list_link(L"/x.pdf");
    link.outer_html.replace(link.outer_html.find(L"DispEx"), 6, L"Other!");
    expect_let_through(link);

    expect_let_through(test::list_link(L"/x.docx"), "/x.docx");
    expect_let_through(test::list_link(L"/_vti_history/1/x.pdf"), "/_vti_history/1/x.pdf");
    link = test::list_link(L"/x.pdf");
    link.href.reset();
    expect_let_through(link, "");
    EXPECT_TRUE(bench_.starts(0).empty());
}

TEST_F(Click, OnARegularPageIsLetThrough)
{
    page_ = show_plain_page();
    complete();
    const outcome clicked = click(test::list_link(L"/x.pdf"));
    EXPECT_FALSE(clicked.is_cancelled);
    EXPECT_EQ(clicked.log, (lines{"debug: CLICK!", "debug: click handling...",
                                  "debug: do not block clicks for regular documents"}));
}

TEST_F(Click, OnNothingIsLetThrough)
{
    const auto event = make_fake<fake_event>(scene_, nullptr);
    EXPECT_TRUE(test::is_bool(page_->click(event).value, true));
    EXPECT_EQ(log_.lines().back(), "info: do not block clicks for not-pdf links");
}

TEST_F(Click, OnAPageNeverRecordedIsLetThrough)
{
    const auto link = make_fake<test::fake_element>(scene_, test::list_link(L"/x.pdf"));
    const auto other = test::sharepoint_page(scene_, L"http://other/");
    EXPECT_FALSE(aggregator_->on_click(other, link));
    EXPECT_EQ(log_.lines(), lines{"warning: click: opened document not found"});
}

TEST_F(Click, WithoutItsEditorIsLetThrough)
{
    const auto link = make_fake<test::fake_element>(scene_, test::list_link(L"/x.pdf"));
    auto editor = std::make_shared<pdf_editor>();
    const document_record record(page_, editor, aggregator_);
    editor.reset();
    log_.clear();
    EXPECT_FALSE(record.click(link));
    EXPECT_EQ(log_.lines(), lines{"warning: click handler is missing"});
}

TEST_F(Click, AfterTheTabIsClosedIsLetThrough)
{
    const CComPtr<IDispatch> sink = page_->events().first_sink();
    aggregator_.reset();
    auto& link = page_->add_to_body(test::list_link(L"/x.pdf"));
    const auto event = make_fake<fake_event>(scene_, &link);
    VARIANT argument{};
    argument.vt = VT_DISPATCH;
    argument.pdispVal = event;
    EXPECT_TRUE(
        test::is_bool(test::fire_at(sink, DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, {argument}).value, true));
    EXPECT_TRUE(event->is_untouched());
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
} // namespace quill
