// Classification of pages and the rewriting of their links.
#include "tests/sharepoint/aggregator_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quill::test {
namespace {

class RewrittenPage : public aggregator_fixture
{
};

TEST_F(RewrittenPage, RewritesTheLinksOfASharePointPage)
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
    for (fake_element* untouched : {&other_link, &plain_link, &anchor, &unreadable})
        EXPECT_TRUE(untouched->written_html().empty());
    // Only the markup of PDF links is read.
    EXPECT_EQ(tab_.count_calls("IHTMLElement::get_outerHTML"), 2);
    EXPECT_EQ(
        log_.lines(),
        (lines{"debug: opening document by http://h/list", "info: sharepoint document has been detected",
               "info: http://h/list events subscribed ", "debug: http://h/list is new document",
               "debug: detect click to /x.pdf", "debug: detect click to /x.doc",
               "debug: detect click to /y.pdf", "debug: detect click to "}));

    // Links that the page adds later are rewritten at the next event.
    auto& late = page_->add_to_body(
        {.tag = L"A", .outer_html = L"onclick=\"PdfFile.OpenDocuments\"", .href = L"/l.pdf"});
    page_->change_ready_state(L"complete");
    EXPECT_EQ(late.written_html(), std::vector<std::wstring>{L""});
    EXPECT_EQ(handled.written_html().size(), 1u);
}

TEST_F(RewrittenPage, KeepsTheLinksOfOtherPages)
{
    const auto plain = show_plain_page();
    plain->add_to_body({.tag = L"A", .outer_html = L"onclick=\"PdfFile.OpenDocuments\"", .href = L"/x.pdf"});
    complete();
    plain->change_ready_state(L"complete");
    EXPECT_EQ(tab_.count_calls("IHTMLElement::getAttribute"), 0);
    EXPECT_EQ(tab_.count_calls("IHTMLElement::put_outerHTML"), 0);
}

class ClassifiedPage : public aggregator_fixture
{
protected:
    // The page's kind, by the log lines.
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

TEST_F(ClassifiedPage, IsSharePointByItsGenerator)
{
    plain_->add_to_head({.tag = L"LINK"});
    plain_->add_to_head({.tag = L"SCRIPT", .src = L"/_layouts/init.js"});
    plain_->add_to_head({.tag = L"META"});
    plain_->add_to_head(generator_);
    plain_->add_to_head({.tag = L"SCRIPT"});
    EXPECT_TRUE(is_sharepoint());
}

TEST_F(ClassifiedPage, IsSharePointInEnginesWithTheOlderSearch)
{
    plain_->head->has_element2 = false;
    plain_->add_to_head(generator_);
    EXPECT_TRUE(is_sharepoint());
}

// There the search returns all elements of the head, whatever their tag.
TEST_F(ClassifiedPage, IsSharePointInEnginesWithoutASearch)
{
    plain_->head->has_element2 = false;
    tab_.fail_calls_named("IHTMLElementCollection::tags", fake_tab::failure::error);
    plain_->add_to_head({.tag = L"TITLE"});
    plain_->add_to_head({.tag = L"SCRIPT", .src = L"/x.js"});
    plain_->add_to_head(generator_);
    EXPECT_TRUE(is_sharepoint());
}

TEST_F(ClassifiedPage, IsRegularWithSharePointOnlineScriptsWithoutASearch)
{
    plain_->head->has_element2 = false;
    tab_.fail_calls_named("IHTMLElementCollection::tags", fake_tab::failure::empty);
    plain_->add_to_head(generator_);
    plain_->add_to_head({.tag = L"SCRIPT", .src = L"https://x.SharePointOnline.com/x.js"});
    EXPECT_FALSE(is_sharepoint());
}

TEST_F(ClassifiedPage, IsNotClassifiedByItsBody)
{
    plain_->add_to_body(generator_);
    EXPECT_FALSE(is_sharepoint());
}

TEST_F(ClassifiedPage, IsRegularWithSharePointOnlineScripts)
{
    plain_->add_to_head(generator_);
    plain_->add_to_head({.tag = L"SCRIPT", .src = L"https://x.SharePointOnline.com/x.js"});
    EXPECT_FALSE(is_sharepoint());
    EXPECT_EQ(tab_.count_calls("IHTMLMetaElement::get_name"), 0);
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

// A search for all heads visits every element of the page.
TEST_F(ClassifiedPage, IsNotSearchedForAHeadThatIsTheRootsFirstChild)
{
    plain_->add_to_head(generator_);
    EXPECT_TRUE(is_sharepoint());
    EXPECT_EQ(tab_.count_calls("IHTMLDocument3::getElementsByTagName"), 1) << "for the links";
}

TEST_F(ClassifiedPage, IsSearchedForAHeadThatIsNotTheRootsFirstChild)
{
    plain_->is_head_first = false;
    plain_->add_to_head(generator_);
    EXPECT_TRUE(is_sharepoint());
    EXPECT_EQ(tab_.count_calls("IHTMLDocument3::getElementsByTagName"), 2);
}

TEST_F(ClassifiedPage, IsSearchedForAHeadInEnginesWithoutTheRootsChildren)
{
    plain_->add_to_head(generator_);
    tab_.fail_calls_named("IHTMLElement::get_children", fake_tab::failure::empty);
    EXPECT_TRUE(is_sharepoint());
}

TEST_F(ClassifiedPage, IsRegularInAnEngineWithoutIHTMLDocument3)
{
    plain_->has_document3 = false;
    plain_->add_to_head(generator_);
    EXPECT_FALSE(is_sharepoint());
}

TEST_F(ClassifiedPage, IgnoresElementsThatCannotBeRead)
{
    plain_->add_to_head({.tag = L"META", .name = L"GENERATOR"});
    plain_->add_to_head({.tag = L"META", .content = L"SharePoint"});
    plain_->add_to_head(generator_);
    EXPECT_TRUE(is_sharepoint());
}

} // namespace
} // namespace quill::test
