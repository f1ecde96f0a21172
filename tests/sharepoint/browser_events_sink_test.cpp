#include "sharepoint/events/browser_events_sink.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace quill {
namespace {

using test::before_navigate_arguments;
using test::fake_browser;
using test::fake_document;
using test::fake_tab;
using test::log_capture;
using test::make_fake;
using lines = std::vector<std::string>;

class recording_handler : public browser_events_handler
{
public:
    std::function<bool(IWebBrowser2*, std::wstring_view, bool)> before_navigate = [](auto&&...) {
        return false;
    };
    std::function<void(IWebBrowser2*, std::wstring_view)> document_complete = [](auto&&...) {};
    std::vector<std::wstring> navigations; // with " (post)"
    std::vector<std::wstring> completions;

    bool on_before_navigate(IWebBrowser2* browser, std::wstring_view url, bool is_post) override
    {
        navigations.push_back(std::wstring(url) + (is_post ? L" (post)" : L""));
        return before_navigate(browser, url, is_post);
    }
    void on_document_complete(IWebBrowser2* browser, std::wstring_view url) override
    {
        completions.emplace_back(url);
        document_complete(browser, url);
    }
};

class BrowserEventsSink : public testing::Test
{
protected:
    void SetUp() override
    {
        browser_->document = page_->dispatch();
        sink_ = browser_events_sink::connect(browser_, handler_);
        tab_.forget_calls();
    }
    void TearDown() override
    {
        if (sink_)
            sink_->disconnect(browser_);
    }
    void block_everything()
    {
        handler_->before_navigate = [](auto&&...) { return true; };
    }

    fake_tab tab_;
    CComPtr<fake_browser> browser_ = make_fake<fake_browser>(tab_);
    CComPtr<fake_document> page_ = make_fake<fake_document>(tab_, L"http://h/");
    std::shared_ptr<recording_handler> handler_ = std::make_shared<recording_handler>();
    CComPtr<browser_events_sink::object> sink_;
    log_capture log_;
};

TEST_F(BrowserEventsSink, ForwardsNavigations)
{
    handler_->before_navigate = [&](IWebBrowser2* browser, std::wstring_view, bool) {
        EXPECT_EQ(browser, static_cast<IWebBrowser2*>(browser_));
        return false;
    };
    const auto result = browser_->before_navigate(L"http://h/ä.pdf");
    EXPECT_EQ(result.code, S_OK);
    EXPECT_EQ(result.cancel, VARIANT_FALSE);
    EXPECT_EQ(browser_->stops, 0);
    EXPECT_EQ(handler_->navigations, std::vector<std::wstring>{L"http://h/ä.pdf"});
    EXPECT_EQ(log_.lines(), lines{"debug: on_before_navigate http://h/ä.pdf"});
}

TEST_F(BrowserEventsSink, CancelsNavigations)
{
    block_everything();
    const auto result = browser_->before_navigate(L"http://h/x.pdf");
    EXPECT_EQ(result.code, S_OK);
    EXPECT_EQ(result.cancel, VARIANT_TRUE);
    EXPECT_EQ(browser_->stops, 1);
    EXPECT_EQ(log_.lines(), (lines{"debug: on_before_navigate http://h/x.pdf",
                                   "info:  block navigation to sharepoint PDF!"}));
}

TEST_F(BrowserEventsSink, StopsTheFrameThatNavigates)
{
    block_everything();
    const auto frame = make_fake<fake_browser>(tab_);
    frame->document = page_->dispatch();
    EXPECT_EQ(browser_->before_navigate(L"http://h/x.pdf", frame).cancel, VARIANT_TRUE);
    EXPECT_EQ(frame->stops, 1);
    EXPECT_EQ(browser_->stops, 0);
}

TEST_F(BrowserEventsSink, StopsANavigationThatIsCancelledAlready)
{
    before_navigate_arguments arguments(browser_, L"http://h/x.pdf");
    arguments.cancel = VARIANT_TRUE;
    EXPECT_EQ(arguments.fire(browser_->events()).code, S_OK);
    EXPECT_EQ(arguments.cancel, VARIANT_TRUE);
    EXPECT_EQ(browser_->stops, 1);
    EXPECT_TRUE(handler_->navigations.empty());
    EXPECT_TRUE(log_.lines().empty());
}

// Only VARIANT_TRUE means cancelled.
TEST_F(BrowserEventsSink, TreatsValuesOtherThanVariantTrueAsNotCancelled)
{
    before_navigate_arguments arguments(browser_, L"http://h/x.pdf");
    arguments.cancel = 1;
    arguments.fire(browser_->events());
    EXPECT_EQ(arguments.cancel, 1);
    EXPECT_EQ(browser_->stops, 0);
    EXPECT_EQ(handler_->navigations.size(), 1u);
}

TEST_F(BrowserEventsSink, IgnoresDocumentsThatAreNotHtml)
{
    block_everything();
    page_->is_html = false;
    EXPECT_EQ(browser_->before_navigate(L"http://h/x.pdf").cancel, VARIANT_FALSE);
    before_navigate_arguments cancelled(browser_, L"http://h/x.pdf");
    cancelled.cancel = VARIANT_TRUE;
    cancelled.fire(browser_->events());
    browser_->document.Release();
    EXPECT_EQ(browser_->before_navigate(L"http://h/x.pdf").cancel, VARIANT_FALSE);
    EXPECT_EQ(browser_->document_complete(L"http://h/x.pdf"), S_OK);
    EXPECT_EQ(browser_->stops, 0);
    EXPECT_TRUE(handler_->navigations.empty());
    EXPECT_TRUE(handler_->completions.empty());
    EXPECT_TRUE(log_.lines().empty());
}

TEST_F(BrowserEventsSink, IgnoresObjectsThatAreNoBrowsers)
{
    block_everything();
    const auto frame = make_fake<fake_browser>(tab_);
    frame->document = page_->dispatch();
    frame->is_browser = false;
    const auto result = browser_->before_navigate(L"http://h/x.pdf", frame);
    EXPECT_EQ(result.code, S_OK);
    EXPECT_EQ(result.cancel, VARIANT_FALSE);
    EXPECT_EQ(browser_->document_complete(L"http://h/", frame), S_OK);
    EXPECT_TRUE(log_.lines().empty());
}

TEST_F(BrowserEventsSink, FailsForUrlsThatAreNoBstr)
{
    block_everything();
    before_navigate_arguments arguments(browser_, L"");
    arguments.url = 5;
    EXPECT_EQ(arguments.fire(browser_->events()).code, E_FAIL);
    EXPECT_EQ(arguments.cancel, VARIANT_FALSE);

    CComVariant url;
    EXPECT_EQ(sink_->on_document_complete(browser_, &url), E_FAIL);
    EXPECT_TRUE(handler_->navigations.empty());
    EXPECT_TRUE(handler_->completions.empty());
    EXPECT_TRUE(log_.lines().empty());
}

TEST_F(BrowserEventsSink, IgnoresEventsWithNullPointers)
{
    block_everything();
    CComVariant url(L"http://h/x.pdf");
    CComVariant wrong(5);
    VARIANT_BOOL cancel = VARIANT_FALSE;
    EXPECT_EQ(sink_->on_before_navigate(nullptr, &wrong, nullptr, nullptr, nullptr, nullptr, &cancel), S_OK);
    EXPECT_EQ(sink_->on_before_navigate(browser_, nullptr, nullptr, nullptr, nullptr, nullptr, &cancel),
              S_OK);
    EXPECT_EQ(sink_->on_before_navigate(browser_, &wrong, nullptr, nullptr, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(sink_->on_document_complete(nullptr, &wrong), S_OK);
    EXPECT_EQ(sink_->on_document_complete(browser_, nullptr), S_OK);
    EXPECT_EQ(cancel, VARIANT_FALSE);
    EXPECT_TRUE(tab_.calls().empty());

    EXPECT_EQ(sink_->on_before_navigate(browser_, &url, nullptr, nullptr, nullptr, nullptr, &cancel), S_OK);
    EXPECT_EQ(cancel, VARIANT_TRUE);
}

TEST_F(BrowserEventsSink, ForwardsAnEmptyUrl)
{
    before_navigate_arguments arguments(browser_, L"");
    SysFreeString(arguments.url.bstrVal);
    arguments.url.bstrVal = nullptr;
    EXPECT_EQ(arguments.fire(browser_->events()).code, S_OK);
    EXPECT_EQ(handler_->navigations, std::vector<std::wstring>{L""});
    EXPECT_EQ(log_.lines(), lines{"debug: on_before_navigate "});
}

// The browser passes form data by reference, which is treated as no data; data in the VARIANT itself is not.
TEST_F(BrowserEventsSink, RecognisesAPostByTheOuterVariantOnly)
{
    const auto fire = [&](VARTYPE outer, bool is_null = false) {
        CComVariant url(L"u");
        VARIANT post_data{};
        post_data.vt = outer;
        VARIANT_BOOL cancel = VARIANT_FALSE;
        EXPECT_EQ(sink_->on_before_navigate(browser_, &url, nullptr, nullptr, is_null ? nullptr : &post_data,
                                            nullptr, &cancel),
                  S_OK);
    };
    fire(VT_EMPTY, true);
    fire(VT_EMPTY);
    fire(VT_VARIANT);
    fire(VT_BYREF | VT_VARIANT);
    fire(VT_ARRAY | VT_VARIANT);
    fire(VT_BYREF | VT_ARRAY | VT_VARIANT);
    fire(VT_ARRAY | VT_UI1);
    fire(VT_BYREF | VT_ARRAY | VT_UI1);
    fire(VT_NULL);
    fire(VT_BSTR);
    EXPECT_EQ(handler_->navigations,
              (std::vector<std::wstring>{L"u", L"u", L"u", L"u", L"u", L"u", L"u (post)", L"u (post)",
                                         L"u (post)", L"u (post)"}));
}

TEST_F(BrowserEventsSink, TreatsFormDataByReferenceAsNone)
{
    const char form[] = "a=b";
    SAFEARRAY* const bytes = SafeArrayCreateVector(VT_UI1, 0, sizeof form);
    before_navigate_arguments arguments(browser_, L"u");
    arguments.post_data.vt = VT_ARRAY | VT_UI1;
    arguments.post_data.parray = bytes;
    arguments.fire(browser_->events());
    EXPECT_EQ(handler_->navigations, std::vector<std::wstring>{L"u"});
    // A browser that does not nest VARIANTs.
    arguments.post_data_argument.pvarVal = &arguments.post_data;
    arguments.fire(browser_->events());
    EXPECT_EQ(handler_->navigations, (std::vector<std::wstring>{L"u", L"u (post)"}));
}

TEST_F(BrowserEventsSink, ForwardsDocumentCompleteOfTheTopLevelBrowserOnly)
{
    EXPECT_EQ(browser_->document_complete(L"http://h/page"), S_OK);
    const auto frame = make_fake<fake_browser>(tab_);
    frame->document = page_->dispatch();
    frame->is_top_level = VARIANT_FALSE;
    EXPECT_EQ(browser_->document_complete(L"http://h/frame", frame), S_OK);
    tab_.fail_calls_named("IWebBrowser2::get_TopLevelContainer", fake_tab::failure::error);
    EXPECT_EQ(browser_->document_complete(L"http://h/page2"), S_OK);
    EXPECT_EQ(handler_->completions, std::vector<std::wstring>{L"http://h/page"});
    EXPECT_EQ(log_.lines(), lines{"debug: on_document_complete http://h/page"});
}

TEST_F(BrowserEventsSink, ForwardsNothingAfterOnQuit)
{
    block_everything();
    browser_->quit();
    EXPECT_EQ(handler_.use_count(), 1);
    EXPECT_EQ(browser_->before_navigate(L"http://h/x.pdf").cancel, VARIANT_FALSE);
    EXPECT_EQ(browser_->document_complete(L"http://h/"), S_OK);
    browser_->quit();
    EXPECT_TRUE(handler_->navigations.empty());
    EXPECT_TRUE(handler_->completions.empty());
    EXPECT_EQ(log_.lines(), (lines{"info: on_quit", "debug: on_before_navigate http://h/x.pdf",
                                   "debug: on_document_complete http://h/", "info: on_quit"}));
}

TEST_F(BrowserEventsSink, DropsEventsWithoutAHandler)
{
    handler_.reset();
    EXPECT_EQ(browser_->before_navigate(L"http://h/x.pdf").cancel, VARIANT_FALSE);
    EXPECT_EQ(browser_->document_complete(L"http://h/"), S_OK);
}

TEST_F(BrowserEventsSink, ReturnsAFailureWhenTheHandlerThrows)
{
    handler_->before_navigate = [](auto&&...) -> bool { throw std::invalid_argument("x"); };
    handler_->document_complete = [](auto&&...) { throw 5; };
    const auto result = browser_->before_navigate(L"u");
    EXPECT_EQ(result.code, E_FAIL);
    EXPECT_EQ(result.cancel, VARIANT_FALSE);
    EXPECT_EQ(browser_->document_complete(L"u"), E_FAIL);
    EXPECT_EQ(log_.lines(),
              (lines{"debug: on_before_navigate u",
                     "error: quill::browser_events_sink::on_before_navigate:70 invalid argument: x",
                     "debug: on_document_complete u",
                     "error: quill::browser_events_sink::on_document_complete:92 unknown exception"}));
    // The lock was released: another thread can take it.
    handler_->before_navigate = [](auto&&...) { return false; };
    std::thread([&] {
        CComVariant url(L"u");
        VARIANT_BOOL cancel = VARIANT_FALSE;
        EXPECT_EQ(sink_->on_before_navigate(browser_, &url, nullptr, nullptr, nullptr, nullptr, &cancel),
                  S_OK);
    }).join();
}

TEST_F(BrowserEventsSink, ForwardsReentrantEventsOfTheSameThread)
{
    handler_->before_navigate = [&](IWebBrowser2*, std::wstring_view url, bool) {
        if (url == L"outer") {
            EXPECT_EQ(browser_->before_navigate(L"inner").cancel, VARIANT_FALSE);
            EXPECT_EQ(browser_->document_complete(L"inner"), S_OK);
            return true;
        }
        return false;
    };
    EXPECT_EQ(browser_->before_navigate(L"outer").cancel, VARIANT_TRUE);
    EXPECT_EQ(handler_->navigations, (std::vector<std::wstring>{L"outer", L"inner"}));
    EXPECT_EQ(handler_->completions, std::vector<std::wstring>{L"inner"});
}

TEST_F(BrowserEventsSink, ExistsUntilAHandlerReturnsThatClosesTheTab)
{
    handler_->before_navigate = [&](auto&&...) {
        browser_->quit();
        sink_->disconnect(browser_);
        sink_.Release();
        handler_.reset();
        return true;
    };
    const auto result = browser_->before_navigate(L"u");
    EXPECT_EQ(result.code, S_OK);
    EXPECT_EQ(result.cancel, VARIANT_TRUE);
    EXPECT_EQ(browser_->stops, 1);
    EXPECT_EQ(browser_->events().sinks(), 0u);
}

TEST_F(BrowserEventsSink, IgnoresOtherEvents)
{
    for (const DISPID other : {DISPID_NAVIGATECOMPLETE2, DISPID_TITLECHANGE, DISPID_DOWNLOADBEGIN, 12345})
        browser_->events().fire(other, {});
    EXPECT_TRUE(log_.lines().empty());
}

TEST_F(BrowserEventsSink, ThrowsTheFailureCodeOfAdvise)
{
    tab_.fail_calls_named("IConnectionPoint::Advise", fake_tab::failure::error);
    try {
        browser_events_sink::connect(browser_, handler_);
        ADD_FAILURE() << "connected";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), E_FAIL);
    }
    EXPECT_EQ(browser_->events().sinks(), 1u);
}

} // namespace
} // namespace quill
