#include "sharepoint/sharepoint_bho.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

namespace quill {
namespace {

using test::fake_browser;
using test::fake_tab;
using test::make_fake;
using lines = std::vector<std::string>;

constexpr char unload_line[] = "debug: unload BHO for closing IE TAB";
constexpr char begin_line[] = "debug: initilize BHO for IE TAB...";
constexpr char editor_line[] = "debug: PDF Editor: ";
constexpr char created_line[] = "info: subscription for IE Browser events created";

class SharepointBho : public testing::Test
{
protected:
    SharepointBho()
    {
        EXPECT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(nullptr, IID_IObjectWithSite,
                                                                reinterpret_cast<void**>(&helper_)),
                  S_OK);
    }
    void expect_attached()
    {
        EXPECT_EQ(log_.lines(), (lines{unload_line, begin_line, editor_line, created_line}));
        log_.clear();
    }

    test::editor_programs editors_;
    fake_tab tab_;
    CComPtr<fake_browser> browser_ = make_fake<fake_browser>(tab_);
    CComPtr<test::fake_document> page_ = test::sharepoint_page(tab_, L"http://h/");
    CComPtr<IObjectWithSite> helper_;
    test::log_capture log_;
};

TEST_F(SharepointBho, AttachesAndDetaches)
{
    EXPECT_EQ(helper_->SetSite(browser_->unknown()), S_OK);
    expect_attached();
    EXPECT_EQ(browser_->events().sinks(), 1u);

    EXPECT_EQ(helper_->SetSite(nullptr), S_OK);
    EXPECT_EQ(log_.lines(), lines{unload_line});
    EXPECT_EQ(browser_->events().sinks(), 0u);
}

TEST_F(SharepointBho, AcceptsNullWithoutASite)
{
    EXPECT_EQ(helper_->SetSite(nullptr), S_OK);
    EXPECT_EQ(helper_->SetSite(nullptr), S_OK);
    EXPECT_EQ(log_.lines(), (lines{unload_line, unload_line}));
}

TEST_F(SharepointBho, HasOneSubscriptionWhenTheSameSiteIsSetTwice)
{
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(helper_->SetSite(browser_->unknown()), S_OK);
        expect_attached();
        EXPECT_EQ(browser_->events().sinks(), 1u);
    }
    helper_->SetSite(nullptr);
    EXPECT_EQ(browser_->events().sinks(), 0u);
}

TEST_F(SharepointBho, MovesToANewSite)
{
    const auto other = make_fake<fake_browser>(tab_);
    helper_->SetSite(browser_->unknown());
    EXPECT_EQ(helper_->SetSite(other->unknown()), S_OK);
    EXPECT_EQ(browser_->events().sinks(), 0u);
    EXPECT_EQ(other->events().sinks(), 1u);
    helper_->SetSite(nullptr);
}

TEST_F(SharepointBho, AcceptsASiteThatIsNoBrowser)
{
    browser_->is_browser = false;
    EXPECT_EQ(helper_->SetSite(browser_->unknown()), S_OK);
    expect_attached();
    EXPECT_EQ(browser_->events().sinks(), 0u);
    EXPECT_EQ(helper_->SetSite(nullptr), S_OK);
}

TEST_F(SharepointBho, UnadvisesInItsDestructor)
{
    helper_->SetSite(browser_->unknown());
    helper_.Release();
    EXPECT_EQ(browser_->events().sinks(), 0u);
}

TEST_F(SharepointBho, ReturnsItsSite)
{
    CComPtr<IWebBrowser2> site;
    EXPECT_EQ(helper_->GetSite(IID_IWebBrowser2, nullptr), E_POINTER);
    site.p = reinterpret_cast<IWebBrowser2*>(1);
    EXPECT_EQ(helper_->GetSite(IID_IWebBrowser2, reinterpret_cast<void**>(&site.p)), E_FAIL);
    EXPECT_EQ(site.p, nullptr);

    helper_->SetSite(browser_->unknown());
    EXPECT_EQ(helper_->GetSite(IID_IWebBrowser2, reinterpret_cast<void**>(&site)), S_OK);
    EXPECT_EQ(site.p, static_cast<IWebBrowser2*>(browser_));
    void* none = this;
    EXPECT_EQ(helper_->GetSite(IID_IOleWindow, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    helper_->SetSite(nullptr);
    EXPECT_EQ(helper_->GetSite(IID_IUnknown, &none), E_FAIL);
}

TEST_F(SharepointBho, RefusesAggregation)
{
    void* out = this;
    EXPECT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(helper_, IID_IUnknown, &out),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(out, nullptr);
}

// The state after the failure is consistent.
TEST_F(SharepointBho, FailsWhenAdviseFails)
{
    tab_.fail_calls_named("IConnectionPoint::Advise", fake_tab::failure::error);
    EXPECT_EQ(helper_->SetSite(browser_->unknown()), E_FAIL);
    const auto logged = log_.lines();
    ASSERT_EQ(logged.size(), 4u);
    EXPECT_TRUE(logged[3].starts_with("error: quill::sharepoint_bho::SetSite:58 system error(-2147467259): "))
        << logged[3];
    void* site = this;
    EXPECT_EQ(helper_->GetSite(IID_IUnknown, &site), E_FAIL);
    tab_.fail_calls_named({}, fake_tab::failure::error);
    EXPECT_EQ(helper_->SetSite(browser_->unknown()), S_OK);
    EXPECT_EQ(browser_->events().sinks(), 1u);
}

// The old subscription has ended; the site is replaced only after a subscription to the new one.
TEST_F(SharepointBho, KeepsTheOldSiteWhenTheNewOneFails)
{
    EXPECT_EQ(helper_->SetSite(browser_->unknown()), S_OK);
    const auto other = make_fake<fake_browser>(tab_);
    tab_.fail_calls_named("IConnectionPoint::Advise", fake_tab::failure::error);
    EXPECT_EQ(helper_->SetSite(other->unknown()), E_FAIL);
    EXPECT_EQ(browser_->events().sinks(), 0u);
    CComPtr<IUnknown> site;
    EXPECT_EQ(helper_->GetSite(IID_IUnknown, reinterpret_cast<void**>(&site)), S_OK);
    EXPECT_EQ(site.p, browser_->unknown());
    EXPECT_EQ(helper_->SetSite(nullptr), S_OK);
}

TEST_F(SharepointBho, OpensAClickedPdfUntilTheTabIsClosed)
{
    editors_.use_editor();
    helper_->SetSite(browser_->unknown());
    browser_->document = page_->dispatch();
    auto& link = page_->add_to_body(test::list_link(L"http://h/x.pdf"));
    EXPECT_EQ(browser_->document_complete(L"http://h/"), S_OK);
    const auto event = make_fake<test::fake_event>(tab_, &link);
    EXPECT_TRUE(test::is_bool(page_->click(event).value, false));
    const auto navigation = browser_->before_navigate(L"http://h/y.pdf");
    EXPECT_EQ(navigation.cancel, VARIANT_TRUE);
    EXPECT_EQ(editors_.starts(2).size(), 2u);

    browser_->quit();
    EXPECT_EQ(browser_->before_navigate(L"http://h/z.pdf").cancel, VARIANT_FALSE);
    EXPECT_EQ(helper_->SetSite(nullptr), S_OK);
    EXPECT_EQ(page_->events().sinks(), 0u);
    EXPECT_EQ(editors_.starts(2).size(), 2u);
}

// A browser that re-enters during Unadvise.
class returning_browser : public fake_browser
{
public:
    using fake_browser::fake_browser;
    IObjectWithSite* helper = nullptr;
    IUnknown* site = nullptr;
    HRESULT nested = E_UNEXPECTED;

protected:
    IUnknown* find_interface(REFIID iid) override
    {
        if (iid == IID_IConnectionPointContainer && events().sinks() == 1 && helper) {
            IObjectWithSite* const target = std::exchange(helper, nullptr);
            nested = target->SetSite(site);
        }
        return fake_browser::find_interface(iid);
    }
};

TEST_F(SharepointBho, RefusesAReentrantSetSite)
{
    const auto returning = make_fake<returning_browser>(tab_);
    helper_->SetSite(returning->unknown());
    log_.clear();
    returning->helper = helper_;
    returning->site = browser_->unknown();
    EXPECT_EQ(helper_->SetSite(returning->unknown()), E_FAIL);
    EXPECT_EQ(returning->nested, S_OK);
    EXPECT_EQ(browser_->events().sinks(), 1u);
    EXPECT_EQ(returning->events().sinks(), 0u);
    EXPECT_EQ(log_.lines(),
              (lines{unload_line, begin_line, editor_line, created_line, unload_line, begin_line}));
    EXPECT_EQ(helper_->SetSite(nullptr), S_OK);
    EXPECT_EQ(browser_->events().sinks(), 0u);
}

// Unadvise from the old browser may release the new site.
TEST_F(SharepointBho, HoldsANewSiteThatTheBrowserReleasesInUnadvise)
{
    EXPECT_EQ(helper_->SetSite(browser_->unknown()), S_OK);
    auto other = make_fake<fake_browser>(tab_);
    fake_browser* const site = other;
    tab_.interrupt_calls_named("IConnectionPoint::Unadvise", [&] { other.Release(); });
    EXPECT_EQ(helper_->SetSite(site->unknown()), S_OK);
    EXPECT_EQ(other.p, nullptr);
    EXPECT_EQ(site->events().sinks(), 1u);
    EXPECT_EQ(helper_->SetSite(nullptr), S_OK);
}

TEST_F(SharepointBho, ExistsUntilSetSiteReturnsWhenTheBrowserReleasesIt)
{
    struct dropping_browser : fake_browser
    {
        using fake_browser::fake_browser;
        CComPtr<IObjectWithSite>* helper = nullptr;
        IUnknown* find_interface(REFIID iid) override
        {
            if (iid == IID_IConnectionPointContainer && helper)
                std::exchange(helper, nullptr)->Release();
            return fake_browser::find_interface(iid);
        }
    };
    const auto dropping = make_fake<dropping_browser>(tab_);
    helper_->SetSite(dropping->unknown());
    dropping->helper = std::addressof(helper_);
    IObjectWithSite* const helper = helper_;
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    EXPECT_EQ(helper_.p, nullptr);
    EXPECT_EQ(dropping->events().sinks(), 0u);
}

} // namespace
} // namespace quill
