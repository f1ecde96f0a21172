// Clicks on the elements of a recorded page.
#include "sharepoint/document_record.h"
#include "sharepoint/editor/pdf_editor.h"
#include "tests/sharepoint/aggregator_fixture.h"

#include <gtest/gtest.h>
#include <mshtmdid.h>

#include <optional>

namespace quill::test {
namespace {

class Click : public aggregator_fixture
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
        const auto event = make_fake<fake_event>(tab_, &element);
        log_.clear();
        const auto result = page_->click(event);
        EXPECT_EQ(result.code, S_OK);
        const bool is_cancelled = is_bool(result.value, false);
        EXPECT_NE(is_cancelled, event->is_untouched());
        return {is_cancelled, log_.lines()};
    }
    // Clicks something other than a list link to a PDF.
    void expect_not_cancelled(element_text text, std::optional<std::string> logged_url = std::nullopt)
    {
        lines expected = {"debug: CLICK!", "debug: click handling..."};
        if (logged_url)
            expected.push_back("debug: detect click to " + *logged_url);
        expected.push_back("info: do not block clicks for not-pdf links");
        const outcome clicked = click(std::move(text));
        EXPECT_FALSE(clicked.is_cancelled);
        EXPECT_EQ(clicked.log, expected);
    }
};

TEST_F(Click, OnAListLinkOpensTheEditor)
{
    const outcome clicked = click(list_link(L"http://h/a/x.pdf"));
    EXPECT_TRUE(clicked.is_cancelled);
    EXPECT_EQ(clicked.log,
              (lines{"debug: CLICK!", "debug: click handling...", "debug: detect click to http://h/a/x.pdf",
                     "info: checkout file http://h/a/x.pdf", "info: blocking click event..."}));
    EXPECT_EQ(editors_.starts(1), std::vector{editors_.editor_start(L"http://h/a/x.pdf")});
}

TEST_F(Click, OnAServerRelativeListLinkOpensTheEditor)
{
    EXPECT_TRUE(click(list_link(L"/x.pdf")).is_cancelled);
    EXPECT_EQ(editors_.starts(1), std::vector{editors_.editor_start(L"http://h/x.pdf")});
}

// Unlike navigations, clicks are not checked for repeats.
TEST_F(Click, OnTheSameLinkTwiceOpensItTwice)
{
    EXPECT_TRUE(click(list_link(L"http://h/x.pdf")).is_cancelled);
    EXPECT_TRUE(click(list_link(L"http://h/x.pdf")).is_cancelled);
    EXPECT_EQ(editors_.starts(2), std::vector(2, editors_.editor_start(L"http://h/x.pdf")));
}

TEST_F(Click, OnAnythingElseIsNotCancelled)
{
    element_text link = list_link(L"/x.pdf");
    link.tag = L"SPAN";
    expect_not_cancelled(link);

    link = list_link(L"/x.pdf");
    link.outer_html.replace(link.outer_html.find(L"ms-draggable"), 12, L"ms-dropable!");
    expect_not_cancelled(link);

    link = list_link(L"/x.pdf");
    link.outer_html.replace(link.outer_html.find(L"DispEx"), 6, L"Other!");
    expect_not_cancelled(link);

    expect_not_cancelled(list_link(L"/x.docx"), "/x.docx");
    expect_not_cancelled(list_link(L"/_vti_history/1/x.pdf"), "/_vti_history/1/x.pdf");
    link = list_link(L"/x.pdf");
    link.href.reset();
    expect_not_cancelled(link, "");
    EXPECT_TRUE(editors_.starts(0).empty());
}

TEST_F(Click, OnARegularPageIsNotCancelled)
{
    page_ = show_plain_page();
    complete();
    const outcome clicked = click(list_link(L"/x.pdf"));
    EXPECT_FALSE(clicked.is_cancelled);
    EXPECT_EQ(clicked.log, (lines{"debug: CLICK!", "debug: click handling...",
                                  "debug: do not block clicks for regular documents"}));
}

TEST_F(Click, WithoutAnElementIsNotCancelled)
{
    const auto event = make_fake<fake_event>(tab_, nullptr);
    EXPECT_TRUE(is_bool(page_->click(event).value, true));
    EXPECT_EQ(log_.lines().back(), "info: do not block clicks for not-pdf links");
}

TEST_F(Click, OnAPageWithoutARecordIsNotCancelled)
{
    const auto link = make_fake<fake_element>(tab_, list_link(L"/x.pdf"));
    const auto other = sharepoint_page(tab_, L"http://other/");
    EXPECT_FALSE(aggregator_->on_click(other, link));
    EXPECT_EQ(log_.lines(), lines{"warning: click: opened document not found"});
}

TEST_F(Click, WithoutAnEditorObjectIsNotCancelled)
{
    const auto link = make_fake<fake_element>(tab_, list_link(L"/x.pdf"));
    auto editor = std::make_shared<pdf_editor>();
    const document_record record(page_, editor, aggregator_);
    editor.reset();
    log_.clear();
    EXPECT_FALSE(record.click(link));
    EXPECT_EQ(log_.lines(), lines{"warning: click handler is missing"});
}

TEST_F(Click, AfterTheTabIsClosedIsNotCancelled)
{
    const CComPtr<IDispatch> sink = page_->events().first_sink();
    aggregator_.reset();
    auto& link = page_->add_to_body(list_link(L"/x.pdf"));
    const auto event = make_fake<fake_event>(tab_, &link);
    VARIANT argument{};
    argument.vt = VT_DISPATCH;
    argument.pdispVal = event;
    EXPECT_TRUE(is_bool(fire_at(sink, DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, {argument}).value, true));
    EXPECT_TRUE(event->is_untouched());
}

} // namespace
} // namespace quill::test
