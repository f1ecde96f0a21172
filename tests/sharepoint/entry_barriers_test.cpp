// System exceptions in the handler and in the browser, below each entry point. The destructor of fake_tab
// checks that the entry has released everything.
#include "platform/unique_handle.h"
#include "sharepoint/events/browser_events_sink.h"
#include "sharepoint/events/html_events_sink.h"
#include "sharepoint/sharepoint_bho.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/support/crashes.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <utility>

namespace quill {
namespace {

using test::fake_browser;
using test::fake_document;
using test::fake_event;
using test::fake_tab;
using test::make_fake;
using lines = std::vector<std::string>;

class crashing_handler : public browser_events_handler, public html_events_handler
{
public:
    std::function<void()> crash;

    bool on_before_navigate(IWebBrowser2*, std::wstring_view, bool) override
    {
        crash();
        return true;
    }
    void on_document_complete(IWebBrowser2*, std::wstring_view) override { crash(); }
    bool on_click(IHTMLDocument2*, IHTMLElement*) override
    {
        crash();
        return true;
    }
    void on_document_ready(IHTMLDocument2*) override { crash(); }
};

class CrashBelow : public testing::TestWithParam<void (*)()>
{
protected:
    CrashBelow()
    {
        handler_->crash = GetParam();
        browser_->document = page_->dispatch();
    }

    fake_tab tab_;
    CComPtr<fake_browser> browser_ = make_fake<fake_browser>(tab_);
    CComPtr<fake_document> page_ = make_fake<fake_document>(tab_, L"http://h/");
    std::shared_ptr<crashing_handler> handler_ = std::make_shared<crashing_handler>();
    test::log_capture log_;
};

TEST_P(CrashBelow, ANavigationReturnsAFailure)
{
    const auto sink = browser_events_sink::connect(browser_, handler_);
    const auto result = browser_->before_navigate(L"u");
    EXPECT_EQ(result.code, E_FAIL);
    EXPECT_EQ(result.cancel, VARIANT_FALSE);
    EXPECT_EQ(log_.lines(),
              (lines{"debug: on_before_navigate u",
                     "info: System exception in quill::browser_events_sink::on_before_navigate"}));
    // The next event works.
    handler_->crash = [] {};
    EXPECT_EQ(browser_->before_navigate(L"u").cancel, VARIANT_TRUE);
    sink->disconnect(browser_);
}

TEST_P(CrashBelow, ADocumentCompleteReturnsAFailure)
{
    const auto sink = browser_events_sink::connect(browser_, handler_);
    EXPECT_EQ(browser_->document_complete(L"u"), E_FAIL);
    EXPECT_EQ(log_.lines(),
              (lines{"debug: on_document_complete u",
                     "info: System exception in quill::browser_events_sink::on_document_complete"}));
    handler_->crash = [] {};
    EXPECT_EQ(browser_->document_complete(L"u"), S_OK);
    sink->disconnect(browser_);
}

// Another thread can take the lock afterwards.
TEST_P(CrashBelow, AnEventReleasesTheSinkItsLockAndTheHandler)
{
    auto sink = browser_events_sink::connect(browser_, handler_);
    EXPECT_EQ(browser_->before_navigate(L"u").code, E_FAIL);
    EXPECT_EQ(browser_->document_complete(L"u"), E_FAIL);
    EXPECT_EQ(handler_.use_count(), 1);

    const unique_handle has_quit(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread other([sink = sink.p, quit = has_quit.get()] {
        sink->on_quit();
        SetEvent(quit);
    });
    if (WaitForSingleObject(has_quit.get(), 10'000) != WAIT_OBJECT_0) {
        other.detach();
        FAIL() << "the lock is held";
    }
    other.join();
    sink->disconnect(browser_);
    EXPECT_EQ(sink.Detach()->Release(), 0u);
}

TEST_P(CrashBelow, AClickReleasesTheSinkAndTheHandler)
{
    auto sink = html_events_sink::connect(page_, handler_);
    const auto event = make_fake<fake_event>(tab_, nullptr);
    EXPECT_TRUE(test::is_bool(page_->click(event).value, true));
    EXPECT_EQ(handler_.use_count(), 1);
    sink->disconnect();
    EXPECT_EQ(sink.Detach()->Release(), 0u);
}

TEST_P(CrashBelow, AReadyStateIsIgnored)
{
    auto sink = html_events_sink::connect(page_, handler_);
    EXPECT_EQ(page_->change_ready_state(L"complete").code, S_OK);
    EXPECT_EQ(log_.lines(),
              (lines{"info: Ready state change.", "info: System exception in quill::CrashBorder"}));
    handler_->crash = [] {};
    EXPECT_EQ(page_->change_ready_state(L"complete").code, S_OK);
    sink->disconnect();
    EXPECT_EQ(sink.Detach()->Release(), 0u);
}

TEST_P(CrashBelow, AClickIsNotCancelled)
{
    const auto sink = html_events_sink::connect(page_, handler_);
    const auto event = make_fake<fake_event>(tab_, nullptr);
    const auto result = page_->click(event);
    EXPECT_EQ(result.code, S_OK);
    EXPECT_TRUE(test::is_bool(result.value, true));
    EXPECT_TRUE(event->is_untouched());
    EXPECT_EQ(log_.lines(),
              (lines{"debug: CLICK!", "info: System exception in quill::html_events_sink::on_click"}));
    handler_->crash = [] {};
    EXPECT_TRUE(test::is_bool(page_->click(event).value, false));
    sink->disconnect();
}

// An object whose Release faults, held by a handler that has opened a URL.
struct crashing_object : IUnknown
{
    void (*crash)() = nullptr;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        crash();
        return 1;
    }
};

TEST_P(CrashBelow, ANavigationIsCancelledWhenItsUrlWasOpenedBefore)
{
    const auto sink = browser_events_sink::connect(browser_, handler_);
    crashing_object object;
    object.crash = GetParam();
    handler_->crash = [&] { barrier::release_host(&object); };
    const auto result = browser_->before_navigate(L"u");
    EXPECT_EQ(result.code, E_FAIL);
    EXPECT_EQ(result.cancel, VARIANT_TRUE);
    EXPECT_EQ(tab_.count_calls("IWebBrowser2::Stop"), 1);
    EXPECT_EQ(log_.lines(),
              (lines{"debug: on_before_navigate u", "info:  block navigation to sharepoint PDF!",
                     "info: System exception in quill::browser_events_sink::on_before_navigate"}));
    sink->disconnect(browser_);
}

TEST_P(CrashBelow, ANavigationIsCancelledEvenIfStopFaults)
{
    const auto sink = browser_events_sink::connect(browser_, handler_);
    handler_->crash = [] {};
    tab_.interrupt_calls_named("IWebBrowser2::Stop", GetParam());
    const auto result = browser_->before_navigate(L"u");
    tab_.interrupt_calls_named({}, {});
    EXPECT_EQ(result.code, E_FAIL);
    EXPECT_EQ(result.cancel, VARIANT_TRUE);
    EXPECT_EQ(tab_.count_calls("IWebBrowser2::Stop"), 1);
    EXPECT_EQ(log_.lines(),
              (lines{"debug: on_before_navigate u", "info:  block navigation to sharepoint PDF!",
                     "info: System exception in quill::browser_events_sink::on_before_navigate"}));
    sink->disconnect(browser_);
}

TEST_P(CrashBelow, AClickIsBlockedWhenItsUrlWasOpenedBefore)
{
    const auto sink = html_events_sink::connect(page_, handler_);
    crashing_object object;
    object.crash = GetParam();
    handler_->crash = [&] { barrier::release_host(&object); };
    const auto event = make_fake<fake_event>(tab_, nullptr);
    EXPECT_TRUE(test::is_bool(page_->click(event).value, true));
    EXPECT_TRUE(event->is_blocked());
    EXPECT_EQ(log_.lines(), (lines{"debug: CLICK!", "info: blocking click event...",
                                   "info: System exception in quill::html_events_sink::on_click"}));
    sink->disconnect();
}

// Both calls that block a click are made, even if one of them faults.
TEST_P(CrashBelow, AClickIsBlockedByEachCallThatDoesNotFault)
{
    const auto sink = html_events_sink::connect(page_, handler_);
    handler_->crash = [] {};
    for (const char* call : {"IHTMLEventObj::put_returnValue", "IHTMLEventObj::put_cancelBubble"}) {
        SCOPED_TRACE(call);
        tab_.forget_calls();
        log_.clear();
        tab_.interrupt_calls_named(call, GetParam());
        const auto event = make_fake<fake_event>(tab_, nullptr);
        EXPECT_TRUE(test::is_bool(page_->click(event).value, true));
        EXPECT_EQ(tab_.count_calls("IHTMLEventObj::put_returnValue"), 1);
        EXPECT_EQ(tab_.count_calls("IHTMLEventObj::put_cancelBubble"), 1);
        EXPECT_EQ(log_.lines().back(), "info: System exception in quill::html_events_sink::on_click");
    }
    tab_.interrupt_calls_named({}, {});
    sink->disconnect();
}

class crashing_browser : public fake_browser
{
public:
    using fake_browser::fake_browser;
    void (*crash)() = nullptr;

protected:
    IUnknown* find_interface(REFIID iid) override
    {
        if (iid == IID_IConnectionPointContainer && crash)
            std::exchange(crash, nullptr)();
        return fake_browser::find_interface(iid);
    }
};

TEST_P(CrashBelow, SetSiteReturnsAFailure)
{
    test::editor_programs editors;
    CComPtr<IObjectWithSite> helper;
    ASSERT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(nullptr, IID_IObjectWithSite,
                                                            reinterpret_cast<void**>(&helper)),
              S_OK);
    const auto crashing = make_fake<crashing_browser>(tab_);
    crashing->crash = GetParam();
    EXPECT_EQ(helper->SetSite(crashing->unknown()), E_FAIL);
    EXPECT_EQ(log_.lines().back(), "info: System exception in quill::sharepoint_bho::SetSite");
    EXPECT_EQ(helper->SetSite(browser_->unknown()), S_OK);
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    EXPECT_EQ(helper.Detach()->Release(), 0u);
}

INSTANTIATE_TEST_SUITE_P(OfEveryKind, CrashBelow,
                         testing::Values(&test::read_nowhere, &test::divide_by_zero,
                                         &test::raise_own_exception));

} // namespace
} // namespace quill
