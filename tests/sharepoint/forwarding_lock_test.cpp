// Forwarded events of one sink exclude each other across threads, in every combination.
#include "platform/unique_handle.h"
#include "sharepoint/events/browser_events_sink.h"
#include "tests/sharepoint/fake_browser.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

namespace quill {
namespace {

using test::fake_browser;
using test::fake_document;
using test::fake_tab;
using test::make_fake;

class waiting_handler : public browser_events_handler
{
public:
    std::function<void()> work = [] {};

    bool on_before_navigate(IWebBrowser2*, std::wstring_view, bool) override
    {
        work();
        return false;
    }
    void on_document_complete(IWebBrowser2*, std::wstring_view) override { work(); }
};

struct forwarded_call
{
    const char* name;
    void (*make)(browser_events_sink& sink, IDispatch* browser);
};

const forwarded_call forwarded_calls[] = {
    {"BeforeNavigate",
     [](browser_events_sink& sink, IDispatch* browser) {
         CComVariant url(L"u");
         VARIANT_BOOL cancel = VARIANT_FALSE;
         sink.on_before_navigate(browser, &url, nullptr, nullptr, nullptr, nullptr, &cancel);
     }},
    {"DocumentComplete",
     [](browser_events_sink& sink, IDispatch* browser) {
         CComVariant url(L"u");
         sink.on_document_complete(browser, &url);
     }},
    {"Quit", [](browser_events_sink& sink, IDispatch*) { sink.on_quit(); }},
};

class ForwardingLock : public testing::TestWithParam<std::tuple<forwarded_call, forwarded_call>>
{
};

// How long the other thread must be kept waiting.
constexpr DWORD grace_ms = 50;

TEST_P(ForwardingLock, ExcludesEventsOfOtherThreads)
{
    const auto& [first, second] = GetParam();
    // Each thread has its own fakes, which are not thread-safe.
    fake_tab tabs[2];
    CComPtr<fake_browser> browsers[2];
    for (std::size_t i = 0; i < 2; ++i) {
        browsers[i] = make_fake<fake_browser>(tabs[i]);
        browsers[i]->document = make_fake<fake_document>(tabs[i], L"http://h/")->dispatch();
    }
    const auto handler = std::make_shared<waiting_handler>();
    const auto sink = browser_events_sink::connect(browsers[0], handler);

    const unique_handle has_started(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const unique_handle has_returned(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const unique_handle first_has_ended(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread other;
    handler->work = [&] {
        if (other.joinable()) { // in the second call
            SetEvent(has_returned.get());
            EXPECT_EQ(WaitForSingleObject(first_has_ended.get(), 10'000), WAIT_OBJECT_0);
            return;
        }
        other = std::thread([&] {
            SetEvent(has_started.get());
            second.make(*sink, browsers[1]);
            SetEvent(has_returned.get());
        });
        EXPECT_EQ(WaitForSingleObject(has_started.get(), 10'000), WAIT_OBJECT_0);
        EXPECT_EQ(WaitForSingleObject(has_returned.get(), grace_ms), WAIT_TIMEOUT);
    };
    first.make(*sink, browsers[0]);
    SetEvent(first_has_ended.get());
    other.join();
    sink->disconnect(browsers[0]);
}

INSTANTIATE_TEST_SUITE_P(OfEvents, ForwardingLock,
                         testing::Combine(testing::Values(forwarded_calls[0], forwarded_calls[1]),
                                          testing::ValuesIn(forwarded_calls)),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param).name) + "Before" +
                                    std::get<1>(test.param).name;
                         });

} // namespace
} // namespace quill
