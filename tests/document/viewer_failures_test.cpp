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
void expect_an_empty_window(document_fixture& fixture)
{
    fixture.create();
    fixture.set_site();
    fixture.load_url(unserved_url);
    fixture.take_log();
    fixture.show();
    const auto logged = without(fixture.take_log(), "OnSize");
    EXPECT_EQ(lines(logged.begin() + 1, logged.end()), lines{"@ OnCreate [#1] {10 400 20 300}"});
    EXPECT_NE(fixture.window(), nullptr);
    EXPECT_EQ(fixture.pane(), nullptr);
    EXPECT_EQ(fixture.viewer.texts(), lines{});
    EXPECT_EQ(fixture.log.worker_lines(), lines{});

    load_fetched_file(fixture, fixture.pdf());
    fixture.send(WM_KEYDOWN, 'A', 1);
    fixture.send(WM_SIZE, 0, MAKELPARAM(300, 200));
    const std::uint32_t progress[4] = {1, 100, 5, 0};
    fixture.send(message_progress, 0, reinterpret_cast<LPARAM>(progress));
    fixture.send(message_save_as);
    EXPECT_EQ(fixture.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_PRINT, 0, nullptr, nullptr),
              OLECMDERR_E_NOTSUPPORTED);
    EXPECT_EQ(fixture.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_SAVEAS, 0, nullptr, nullptr),
              OLECMDERR_E_NOTSUPPORTED);
    EXPECT_EQ(fixture.viewer.texts(), lines{});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWithoutViewer, OnAMachineWithoutTheSuite)
{
    fixture.registration.remove();
    expect_an_empty_window(fixture);
}

// Not in balance: the system itself keeps handles when it looks for such a class.
TEST(DocumentWithoutViewer, WhenNobodyServesItsClass)
{
    document_fixture fixture;
    fixture.viewers.revoke();
    expect_an_empty_window(fixture);
}

QUILL_DOCUMENT_TEST(DocumentWithoutViewer, WhenItsClassFails)
{
    fixture.host.calls.make_fail("viewer class::CreateInstance", bad_answer::failure);
    expect_an_empty_window(fixture);
}

QUILL_DOCUMENT_TEST(DocumentWithoutViewer, WhenItsClassGivesNothing)
{
    fixture.host.calls.make_fail("viewer class::CreateInstance", bad_answer::success_null);
    expect_an_empty_window(fixture);
}

QUILL_DOCUMENT_TEST(DocumentWithoutViewer, WhenItIsSomethingElse)
{
    fixture.viewer.answers_viewer_interface = false;
    expect_an_empty_window(fixture);
}

QUILL_DOCUMENT_TEST(DocumentWithoutViewer, WhenItIsAnotherFullControl)
{
    fixture.viewer.answers_viewer_interface = false;
    fixture.viewer.answers_ole_object = true;
    expect_an_empty_window(fixture);
}

QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, SetupGoesOnWhateverItAnswers)
{
    for (const char* call : {"viewer::23", "viewer::24", "viewer::15", "viewer::16"}) {
        for (const bad_answer kind : {bad_answer::failure, bad_answer::success_null}) {
            SCOPED_TRACE(std::string{call} + ": " + to_text(kind));
            fixture.viewer.forget_calls();
            fixture.host.calls.make_fail(call, kind);
            fixture.show_file(fixture.pdf());
            EXPECT_EQ(fixture.viewer.texts().size(), 5u);
            fixture.close_in_order();
            fixture.release();
        }
        fixture.host.calls.make_fail(call, bad_answer::none);
    }
}

QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, EveryCallFailing)
{
    for (const char* call : {"viewer::1", "viewer::4", "viewer::9", "viewer::12", "viewer::15", "viewer::16",
                             "viewer::19", "viewer::23", "viewer::24"})
        fixture.host.calls.make_fail(call, bad_answer::failure);
    fixture.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 1u);
    fixture.send(WM_KEYDOWN, 'A', 1);
    fixture.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_PRINT, 0, nullptr, nullptr);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, EveryResultOfAnotherType)
{
    VARIANT text{};
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocString(L"not what was asked for");
    for (const DISPID method : {1, 4, 9, 12, 15, 16, 19, 23, 24})
        fixture.viewer.answer(method, S_OK, text);
    SysFreeString(text.bstrVal);
    fixture.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.viewer.texts(viewer_go_to_page), lines{});
    fixture.send(WM_KEYDOWN, 'A', 1);
    fixture.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_PRINT, 0, nullptr, nullptr);
    fixture.close_in_order();
}

// The viewer's answer may come after the browser has gone: opening runs messages.
QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, ThatClosesTheDocumentWhileOpening)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    fixture.host.calls.when("viewer::1", [&] {
        fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
        EXPECT_EQ(fixture.window(), nullptr);
    });
    load_fetched_file(fixture, fixture.pdf());
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 1u);
    fixture.close_in_order();
    for (const HMENU menu : fixture.host.frame.filled_menus)
        EXPECT_FALSE(IsMenu(menu)) << "a menu merged for a window that is gone is never taken back";
    ASSERT_FALSE(fixture.host.frame.set_menus.empty());
    EXPECT_EQ(fixture.host.frame.set_menus.back().menu, nullptr) << "the frame keeps a menu that nobody owns";
}

// The viewer may already ask for the window's services while it is set up.
QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, ThatAsksBackDuringItsSetup)
{
    fixture.create();
    fixture.set_site();
    fixture.load_file(fixture.pdf());
    fixture.host.calls.when("viewer::24", [&] {
        const auto& calls = fixture.viewer.received;
        const auto first = std::find_if(calls.begin(), calls.end(), [](const recorded_call& call) {
            return call.id == viewer_notify_links;
        });
        ASSERT_NE(first, calls.end());
        const auto window = reinterpret_cast<HWND>(static_cast<ULONG_PTR>(first->arguments[0].integer));
        EXPECT_EQ(instance_number(window), 0u);
        HWND browser = nullptr;
        SendMessageW(window, message_get_browser_window, 0, reinterpret_cast<LPARAM>(&browser));
        EXPECT_EQ(browser, fixture.host.frame_window());
        SendMessageW(window, message_load_file, 0, 0);
        SendMessageW(window, WM_SIZE, 0, MAKELPARAM(100, 100));
    });
    fixture.show();
    fixture.close_in_order();
}

} // namespace
} // namespace quill::test
