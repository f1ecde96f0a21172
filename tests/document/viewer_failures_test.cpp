// A viewer that is not there, cannot be made, or fails its calls.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>

namespace quill::test {
namespace {

using lines = std::vector<std::string>;

// Without a viewer the window stays, empty, and nothing is fetched.
void expect_an_empty_window(document_bench& bench)
{
    bench.create();
    bench.set_site();
    bench.load_url(unserved_url);
    bench.take_log();
    bench.show();
    const auto logged = without(bench.take_log(), "OnSize");
    EXPECT_EQ(lines(logged.begin() + 1, logged.end()), lines{"@ OnCreate [#1] {10 400 20 300}"});
    EXPECT_NE(bench.window(), nullptr);
    EXPECT_EQ(bench.pane(), nullptr);
    EXPECT_EQ(bench.viewer.texts(), lines{});
    EXPECT_EQ(bench.log.worker_lines(), lines{});

    load_fetched_file(bench, bench.pdf());
    bench.send(WM_KEYDOWN, 'A', 1);
    bench.send(WM_SIZE, 0, MAKELPARAM(300, 200));
    const std::uint32_t progress[4] = {1, 100, 5, 0};
    bench.send(message_progress, 0, reinterpret_cast<LPARAM>(progress));
    bench.send(message_save_as);
    EXPECT_EQ(bench.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_PRINT, 0, nullptr, nullptr),
              OLECMDERR_E_NOTSUPPORTED);
    EXPECT_EQ(bench.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_SAVEAS, 0, nullptr, nullptr),
              OLECMDERR_E_NOTSUPPORTED);
    EXPECT_EQ(bench.viewer.texts(), lines{});
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWithoutViewer, OnAMachineWithoutTheSuite)
{
    bench.registration.remove();
    expect_an_empty_window(bench);
}

// Not in balance: the system itself keeps handles when it looks for such a class.
TEST(DocumentWithoutViewer, WhenNobodyServesItsClass)
{
    document_bench bench;
    bench.viewers.revoke();
    expect_an_empty_window(bench);
}

QUILL_DOCUMENT_TEST(DocumentWithoutViewer, WhenItsClassFails)
{
    bench.host.calls.make_fail("viewer class::CreateInstance", bad_answer::failure);
    expect_an_empty_window(bench);
}

QUILL_DOCUMENT_TEST(DocumentWithoutViewer, WhenItsClassGivesNothing)
{
    bench.host.calls.make_fail("viewer class::CreateInstance", bad_answer::success_null);
    expect_an_empty_window(bench);
}

QUILL_DOCUMENT_TEST(DocumentWithoutViewer, WhenItIsSomethingElse)
{
    bench.viewer.answers_viewer_interface = false;
    expect_an_empty_window(bench);
}

QUILL_DOCUMENT_TEST(DocumentWithoutViewer, WhenItIsAnotherFullControl)
{
    bench.viewer.answers_viewer_interface = false;
    bench.viewer.answers_ole_object = true;
    expect_an_empty_window(bench);
}

QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, SetupGoesOnWhateverItAnswers)
{
    for (const char* call : {"viewer::23", "viewer::24", "viewer::15", "viewer::16"}) {
        for (const bad_answer kind : {bad_answer::failure, bad_answer::success_null}) {
            SCOPED_TRACE(std::string{call} + ": " + to_text(kind));
            bench.viewer.forget_calls();
            bench.host.calls.make_fail(call, kind);
            bench.show_file(bench.pdf());
            EXPECT_EQ(bench.viewer.texts().size(), 5u);
            bench.close_in_order();
            bench.release();
        }
        bench.host.calls.make_fail(call, bad_answer::none);
    }
}

QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, EveryCallFailing)
{
    for (const char* call : {"viewer::1", "viewer::4", "viewer::9", "viewer::12", "viewer::15", "viewer::16",
                             "viewer::19", "viewer::23", "viewer::24"})
        bench.host.calls.make_fail(call, bad_answer::failure);
    bench.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.viewer.texts(viewer_open).size(), 1u);
    bench.send(WM_KEYDOWN, 'A', 1);
    bench.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_PRINT, 0, nullptr, nullptr);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, EveryResultOfAnotherType)
{
    VARIANT text{};
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocString(L"not what was asked for");
    for (const DISPID method : {1, 4, 9, 12, 15, 16, 19, 23, 24})
        bench.viewer.answer(method, S_OK, text);
    SysFreeString(text.bstrVal);
    bench.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.viewer.texts(viewer_go_to_page), lines{});
    bench.send(WM_KEYDOWN, 'A', 1);
    bench.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_PRINT, 0, nullptr, nullptr);
    bench.close_in_order();
}

// The viewer's answer may come after the browser has gone: opening runs messages.
QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, ThatClosesTheDocumentWhileOpening)
{
    bench.show_url(unserved_url);
    bench.wait_for_failed_worker();
    bench.host.calls.when("viewer::1", [&] {
        bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
        EXPECT_EQ(bench.window(), nullptr);
    });
    load_fetched_file(bench, bench.pdf());
    EXPECT_EQ(bench.viewer.texts(viewer_open).size(), 1u);
    bench.close_in_order();
    for (const HMENU menu : bench.host.frame.filled_menus)
        EXPECT_FALSE(IsMenu(menu)) << "a menu merged for a window that is gone is never taken back";
    ASSERT_FALSE(bench.host.frame.set_menus.empty());
    EXPECT_EQ(bench.host.frame.set_menus.back().menu, nullptr) << "the frame keeps a menu that nobody owns";
}

// The viewer may already ask for the window's services while it is set up.
QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, ThatAsksBackDuringItsSetup)
{
    bench.create();
    bench.set_site();
    bench.load_file(bench.pdf());
    bench.host.calls.when("viewer::24", [&] {
        const auto& calls = bench.viewer.received;
        const auto first = std::find_if(calls.begin(), calls.end(), [](const recorded_call& call) {
            return call.id == viewer_notify_links;
        });
        ASSERT_NE(first, calls.end());
        const auto window = reinterpret_cast<HWND>(static_cast<ULONG_PTR>(first->arguments[0].integer));
        EXPECT_EQ(instance_number(window), 0u);
        HWND browser = nullptr;
        SendMessageW(window, message_get_browser_window, 0, reinterpret_cast<LPARAM>(&browser));
        EXPECT_EQ(browser, bench.host.frame_window());
        SendMessageW(window, message_load_file, 0, 0);
        SendMessageW(window, WM_SIZE, 0, MAKELPARAM(100, 100));
    });
    bench.show();
    bench.close_in_order();
}

} // namespace
} // namespace quill::test
