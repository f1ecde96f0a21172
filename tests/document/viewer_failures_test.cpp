// A viewer that is missing, cannot be created, or fails its calls.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>

namespace quill::test {
namespace {

// Without a viewer the window is empty, and nothing is fetched.
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

// Not in balance: the system keeps handles when such a class is requested.
TEST(DocumentWithoutViewer, WhenItsClassIsNotRegistered)
{
    document_fixture fixture;
    fixture.viewers.revoke();
    expect_an_empty_window(fixture);
}

QUILL_DOCUMENT_TEST(DocumentWithoutViewer, WhenItsClassFails)
{
    fixture.host.calls.make_fail("viewer class::CreateInstance", call_fault::error);
    expect_an_empty_window(fixture);
}

QUILL_DOCUMENT_TEST(DocumentWithoutViewer, WhenItsClassReturnsNull)
{
    fixture.host.calls.make_fail("viewer class::CreateInstance", call_fault::null_result);
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

QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, SetupContinuesAfterFailures)
{
    for (const char* call : {"viewer::23", "viewer::24", "viewer::15", "viewer::16"}) {
        for (const call_fault kind : {call_fault::error, call_fault::null_result}) {
            SCOPED_TRACE(std::string{call} + ": " + to_text(kind));
            fixture.viewer.forget_calls();
            fixture.host.calls.make_fail(call, kind);
            fixture.show_file(fixture.pdf());
            EXPECT_EQ(fixture.viewer.texts().size(), 5u);
            fixture.close_in_order();
            fixture.release();
        }
        fixture.host.calls.make_fail(call, call_fault::none);
    }
}

QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, EveryCallFailing)
{
    for (const char* call : {"viewer::1", "viewer::4", "viewer::9", "viewer::12", "viewer::15", "viewer::16",
                             "viewer::19", "viewer::23", "viewer::24"})
        fixture.host.calls.make_fail(call, call_fault::error);
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

// The viewer may return after the browser has closed the document: opening dispatches messages.
QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, ClosesTheDocumentWhileOpening)
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
        EXPECT_FALSE(IsMenu(menu)) << "a menu merged for a destroyed window is never removed";
    ASSERT_FALSE(fixture.host.frame.set_menus.empty());
    EXPECT_EQ(fixture.host.frame.set_menus.back().menu, nullptr) << "the frame keeps a menu without an owner";
}

// The viewer may use the services of the window during its set-up.
QUILL_DOCUMENT_TEST(DocumentWithFailingViewer, ReentersDuringItsSetup)
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
