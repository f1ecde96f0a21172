// The helper object's calls into the host in each event: hosts differ in what they support, and the page
// waits.
#include "sharepoint/sharepoint_bho.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"

#include <gmock/gmock.h>

namespace quill {
namespace {

using test::fake_browser;
using test::fake_document;
using test::fake_event;
using test::fake_tab;
using test::make_fake;
using testing::ElementsAre;

class HostCalls : public testing::Test
{
protected:
    HostCalls()
    {
        editors_.break_default_handler(); // nothing needs to be started
        EXPECT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(nullptr, IID_IObjectWithSite,
                                                                reinterpret_cast<void**>(&helper_)),
                  S_OK);
        link_ = &page_->add_to_body(test::list_link(L"http://h/x.pdf"));
        browser_->document = page_->dispatch();
        EXPECT_EQ(helper_->SetSite(browser_->unknown()), S_OK);
    }
    ~HostCalls() override { EXPECT_EQ(helper_->SetSite(nullptr), S_OK); }

    // The calls since the previous call of this function.
    std::vector<std::string> calls()
    {
        auto all = tab_.calls();
        tab_.forget_calls();
        return all;
    }

    test::editor_programs editors_;
    fake_tab tab_;
    CComPtr<fake_browser> browser_ = make_fake<fake_browser>(tab_);
    CComPtr<fake_document> page_ = test::sharepoint_page(tab_, L"http://h/");
    test::fake_element* link_ = nullptr;
    CComPtr<IObjectWithSite> helper_;
};

constexpr char query[] = "IUnknown::QueryInterface";

TEST_F(HostCalls, OfASite)
{
    EXPECT_THAT(calls(), ElementsAre(query, query, "IConnectionPointContainer::FindConnectionPoint",
                                     "IConnectionPoint::Advise"));
    EXPECT_EQ(helper_->SetSite(nullptr), S_OK);
    EXPECT_THAT(calls(), ElementsAre(query, "IConnectionPointContainer::FindConnectionPoint",
                                     "IConnectionPoint::Unadvise"));
}

// The sink checks for an HTML document, and the aggregator reads it.
TEST_F(HostCalls, OfAnOrdinaryNavigation)
{
    calls();
    browser_->before_navigate(L"http://h/other");
    EXPECT_THAT(calls(),
                ElementsAre(query, "IWebBrowser2::get_Document", query, "IWebBrowser2::get_Document", query));
}

TEST_F(HostCalls, OfACancelledNavigation)
{
    calls();
    test::before_navigate_arguments arguments(browser_, L"http://h/x.pdf");
    arguments.cancel = VARIANT_TRUE;
    arguments.fire(browser_->events());
    EXPECT_THAT(calls(), ElementsAre(query, "IWebBrowser2::get_Document", query, "IWebBrowser2::Stop"));
}

TEST_F(HostCalls, OfAFrame)
{
    calls();
    browser_->is_top_level = VARIANT_FALSE;
    browser_->document_complete(L"http://h/");
    EXPECT_THAT(calls(), ElementsAre(query, "IWebBrowser2::get_Document", query,
                                     "IWebBrowser2::get_TopLevelContainer"));
}

TEST_F(HostCalls, OfAPageWhoseRecordIsKept)
{
    browser_->document_complete(L"http://h/");
    calls();
    browser_->document_complete(L"http://h/");
    EXPECT_THAT(calls(),
                ElementsAre(query, "IWebBrowser2::get_Document", query, "IWebBrowser2::get_TopLevelContainer",
                            "IWebBrowser2::get_Document", query, "IHTMLDocument3::getElementsByTagName",
                            "IHTMLElementCollection::get_length", "IHTMLElementCollection::item", query,
                            "IHTMLElement::getAttribute", "IHTMLElement::get_outerHTML"));
}

TEST_F(HostCalls, OfAClick)
{
    browser_->document_complete(L"http://h/");
    const auto event = make_fake<fake_event>(tab_, link_);
    calls();
    page_->click(event);
    EXPECT_THAT(calls(), ElementsAre(query, "IHTMLEventObj::get_srcElement", "IHTMLElement::get_tagName",
                                     "IHTMLElement::get_outerHTML", "IHTMLElement::getAttribute",
                                     "IHTMLEventObj::put_returnValue", "IHTMLEventObj::put_cancelBubble"));
}

TEST_F(HostCalls, OfAPageThatIsLoading)
{
    browser_->document_complete(L"http://h/");
    calls();
    page_->change_ready_state(L"loading");
    EXPECT_THAT(calls(), ElementsAre("IHTMLDocument2::get_readyState"));
}

TEST_F(HostCalls, AreNotMadeByOnQuit)
{
    calls();
    browser_->quit();
    EXPECT_THAT(calls(), testing::IsEmpty());
}

} // namespace
} // namespace quill
