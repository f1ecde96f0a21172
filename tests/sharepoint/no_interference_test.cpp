// On pages that are not SharePoint pages the helper object cancels nothing, changes nothing, and reads little
// of the page.
#include "sharepoint/sharepoint_bho.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace quill {
namespace {

using test::fake_browser;
using test::fake_document;
using test::fake_event;
using test::fake_tab;
using test::make_fake;

constexpr int many = 500;
// Upper limit of calls into the host for one event on a page with any number of links.
constexpr std::size_t most_calls_to_record_a_page = 40;
constexpr std::size_t most_calls_an_event = 30;

class NoInterference : public testing::Test
{
protected:
    NoInterference()
    {
        EXPECT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(nullptr, IID_IObjectWithSite,
                                                                reinterpret_cast<void**>(&helper_)),
                  S_OK);
        for (int i = 0; i < many; ++i)
            page_->add_to_body({.tag = L"A",
                                .outer_html = L"<a onclick=\"PdfFile.OpenDocuments(1)\">",
                                .href = L"/" + std::to_wstring(i) + L".pdf"});
        browser_->document = page_->dispatch();
        EXPECT_EQ(helper_->SetSite(browser_->unknown()), S_OK);
    }
    ~NoInterference() override
    {
        EXPECT_EQ(helper_->SetSite(nullptr), S_OK);
        EXPECT_EQ(browser_->stops, 0);
        EXPECT_EQ(tab_.count_calls("IHTMLElement::put_outerHTML"), 0);
        EXPECT_TRUE(editors_.starts(0).empty());
    }

    // The helper object's calls since the previous call of this function.
    std::size_t calls()
    {
        EXPECT_EQ(tab_.count_calls("IHTMLElement::put_outerHTML"), 0);
        const std::size_t count = all_calls_ += tab_.calls().size();
        tab_.forget_calls();
        return count - std::exchange(seen_calls_, count);
    }
    void navigate(const std::wstring& url, fake_browser* frame = nullptr)
    {
        const auto result = browser_->before_navigate(url, frame);
        EXPECT_EQ(result.code, S_OK);
        EXPECT_EQ(result.cancel, VARIANT_FALSE);
    }
    void click(test::element_text text)
    {
        auto& element = page_->add_to_body(std::move(text));
        const auto event = make_fake<fake_event>(tab_, &element);
        EXPECT_TRUE(test::is_bool(page_->click(event).value, true));
        EXPECT_TRUE(event->is_untouched());
    }

    test::editor_programs editors_;
    fake_tab tab_;
    CComPtr<fake_document> page_ = make_fake<fake_document>(tab_, L"http://plain/");
    CComPtr<fake_browser> browser_ = make_fake<fake_browser>(tab_);
    CComPtr<IObjectWithSite> helper_;
    std::size_t all_calls_ = 0;
    std::size_t seen_calls_ = 0;
};

TEST_F(NoInterference, WithHundredsOfLinks)
{
    calls();
    EXPECT_EQ(browser_->document_complete(L"http://plain/"), S_OK);
    EXPECT_LE(calls(), most_calls_to_record_a_page);
    for (int i = 0; i < many; ++i) {
        page_->change_ready_state(i % 2 ? L"complete" : L"interactive");
        EXPECT_LE(calls(), most_calls_an_event);
    }
}

TEST_F(NoInterference, WithAnyNavigation)
{
    browser_->document_complete(L"http://plain/");
    for (const wchar_t* url : {L"http://h/x.pdf", L"http://h/x.html", L"javascript:void(0)", L"about:blank",
                               L"mailto:a@b", L"file:///c:/x.pdf", L"", L"res://x/y", L"http://h/x.exe"}) {
        calls();
        navigate(url);
        EXPECT_LE(calls(), most_calls_an_event);
    }
    navigate(L"http://h/" + std::wstring(1'000'000, L'x') + L".pdf");
}

TEST_F(NoInterference, WithFrames)
{
    for (int i = 0; i < 20; ++i) {
        const auto frame_page = make_fake<fake_document>(tab_, L"http://frame/");
        const auto frame = make_fake<fake_browser>(tab_);
        frame->document = frame_page->dispatch();
        frame->is_top_level = VARIANT_FALSE;
        navigate(L"http://h/x.pdf", frame);
        EXPECT_EQ(browser_->document_complete(L"http://frame/", frame), S_OK);
        EXPECT_EQ(frame_page->events().sinks(), 0u);
        EXPECT_EQ(frame->stops, 0);
    }
}

TEST_F(NoInterference, WithPosts)
{
    test::before_navigate_arguments arguments(browser_, L"http://h/x.pdf");
    arguments.post_data.vt = VT_ARRAY | VT_UI1;
    arguments.post_data.parray = SafeArrayCreateVector(VT_UI1, 0, 100);
    EXPECT_EQ(arguments.fire(browser_->events()).code, S_OK);
    EXPECT_EQ(arguments.cancel, VARIANT_FALSE);
    arguments.post_data_argument.pvarVal = &arguments.post_data;
    EXPECT_EQ(arguments.fire(browser_->events()).code, S_OK);
    EXPECT_EQ(arguments.cancel, VARIANT_FALSE);
}

TEST_F(NoInterference, WithDownloadsAndOtherContent)
{
    browser_->document.Release();
    navigate(L"http://h/x.pdf");
    EXPECT_EQ(browser_->document_complete(L"http://h/x.pdf"), S_OK);
    page_->is_html = false;
    browser_->document = page_->dispatch();
    navigate(L"http://h/x.pdf");
    EXPECT_EQ(browser_->document_complete(L"http://h/x.pdf"), S_OK);
    EXPECT_EQ(page_->events().sinks(), 0u);
}

TEST_F(NoInterference, WithScriptsThatCannotBeRead)
{
    for (int i = 0; i < 20; ++i)
        page_->add_to_head({.tag = L"SCRIPT", .src = L"/x.js"});
    page_->add_to_head({.tag = L"META", .name = L"GENERATOR", .content = L"Hand"});
    tab_.fail_calls_named("IHTMLScriptElement::get_src", fake_tab::failure::error);
    EXPECT_EQ(browser_->document_complete(L"http://plain/"), S_OK);
    navigate(L"http://h/x.pdf");
    tab_.fail_calls_named("IHTMLMetaElement::get_name", fake_tab::failure::empty);
    navigate(L"http://h/x.pdf");
}

TEST_F(NoInterference, WithClicks)
{
    browser_->document_complete(L"http://plain/");
    calls();
    click(test::list_link(L"http://h/x.pdf"));
    EXPECT_LE(calls(), most_calls_an_event);
    click({.tag = L"INPUT"});
    EXPECT_EQ(tab_.count_calls("IHTMLElement::get_outerHTML"), 0);
}

// A page of SharePoint Online.
TEST_F(NoInterference, WithSharePointOnlinesScripts)
{
    page_->add_to_head({.tag = L"META", .name = L"GENERATOR", .content = L"SharePoint"});
    page_->add_to_head({.tag = L"SCRIPT", .src = L"https://static.sharepointonline.com/x.js"});
    browser_->document_complete(L"http://plain/");
    navigate(L"http://h/x.pdf");
    click(test::list_link(L"http://h/x.pdf"));
    page_->change_ready_state(L"complete");
    EXPECT_EQ(tab_.count_calls("IHTMLElement::getAttribute"), 0);
}

} // namespace
} // namespace quill
