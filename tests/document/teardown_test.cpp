// Every order of closing: the steps in order, out of order, twice, with the windows destroyed first, without
// deactivation.
#include "tests/document/document_fixture.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

// One letter for each step, so that an order can be written and permuted.
void take_down(document_fixture& fixture, char step)
{
    switch (step) {
    case 'U':
        fixture.as<IOleDocumentView>()->UIActivate(FALSE);
        break;
    case 'H':
        fixture.as<IOleDocumentView>()->Show(FALSE);
        break;
    case 'I':
        fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
        break;
    case 'V':
        fixture.as<IOleDocumentView>()->CloseView(0);
        break;
    case 'P':
        fixture.as<IOleDocumentView>()->SetInPlaceSite(nullptr);
        break;
    case 'C':
        fixture.as<IOleObject>()->Close(OLECLOSE_NOSAVE);
        break;
    case 'S':
        fixture.as<IOleObject>()->SetClientSite(nullptr);
        break;
    case 'W':
        fixture.host.destroy_windows();
        break;
    default:
        ADD_FAILURE() << "no step " << step;
    }
}

void take_down_in(document_fixture& fixture, const std::string& order)
{
    SCOPED_TRACE(order);
    fixture.host.calls.forget_calls();
    for (const char step : order)
        take_down(fixture, step);
    EXPECT_LE(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
    EXPECT_LE(fixture.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 1);
    fixture.release();
}

QUILL_DOCUMENT_TEST(DocumentTeardown, InTheOrderOfNavigatingAway)
{
    fixture.show_file(fixture.pdf());
    fixture.close_in_order();
    fixture.release();
}

QUILL_DOCUMENT_TEST(DocumentTeardown, InTheOrderOfAClosedBrowser)
{
    fixture.show_file(fixture.pdf());
    take_down_in(fixture, "WUIHVPCS");
}

QUILL_DOCUMENT_TEST(DocumentTeardown, EachStepTwice)
{
    fixture.show_file(fixture.pdf());
    take_down_in(fixture, "UUIIHHVVPPCCSSWW");
}

QUILL_DOCUMENT_TEST(DocumentTeardown, EachStepTwiceWithTheUserInterfaceActive)
{
    fixture.host.order = activation_order::site_then_ui_activate;
    fixture.show_file(fixture.pdf());
    take_down_in(fixture, "UUIIHHVVPPCCSSWW");
}

QUILL_DOCUMENT_TEST(DocumentTeardown, WithoutAnyStep)
{
    fixture.show_file(fixture.pdf());
    take_down_in(fixture, "");
    EXPECT_EQ(fixture.host.frame.set_menus.size(), 2u) << "the frame has its own menu again";
}

QUILL_DOCUMENT_TEST(DocumentTeardown, WithoutAnyStepWhileUiActive)
{
    fixture.host.order = activation_order::site_then_ui_activate;
    fixture.show_file(fixture.pdf());
    take_down_in(fixture, "");
}

TEST(DocumentTeardown, AnyOneStepAlone)
{
    for (const char step : std::string{"UHIVPCSW"}) {
        document_fixture fresh;
        fresh.show_file(fresh.pdf());
        take_down_in(fresh, std::string(1, step));
    }
}

QUILL_DOCUMENT_TEST(DocumentTeardown, ADocumentThatWasNeverShown)
{
    fixture.create();
    fixture.set_site();
    take_down_in(fixture, "UHIVPCS");
}

// 120 orders, with and without an active user interface.
void every_order(activation_order order)
{
    std::string steps = "CISVW";
    do {
        document_fixture fresh;
        fresh.host.order = order;
        fresh.show_file(fresh.pdf());
        take_down_in(fresh, steps);
    } while (!testing::Test::HasFailure() && std::next_permutation(steps.begin(), steps.end()));
}

TEST(DocumentTeardownOrders, Shown)
{
    every_order(activation_order::create_view_with_site);
}

TEST(DocumentTeardownOrders, UiActive)
{
    every_order(activation_order::site_then_ui_activate);
}

QUILL_DOCUMENT_TEST(DocumentTeardown, AWindowDestroyedAloneIsDetached)
{
    fixture.show_file(fixture.pdf());
    const HWND window = fixture.window();
    DestroyWindow(window);
    EXPECT_EQ(fixture.viewers.living_viewers(), 0);
    HWND reported = window;
    fixture.as<IOleWindow>()->GetWindow(&reported);
    EXPECT_NE(reported, window);
    take_down_in(fixture, "UIHVPCS");
}

QUILL_DOCUMENT_TEST(DocumentTeardown, TheDestructionOfTheWindowIsLogged)
{
    fixture.show_file(fixture.pdf());
    fixture.take_log();
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    EXPECT_EQ(fixture.take_log(), std::vector<std::string>{"@ OnDestroy"});
    fixture.close_in_order();
}

// A host may release the document inside a call that the document makes.
QUILL_DOCUMENT_TEST(DocumentTeardown, ReleasedFromInsideItsOwnDeactivation)
{
    fixture.show_file(fixture.pdf());
    fixture.as<IOleObject>()->SetClientSite(nullptr);
    auto in_place = fixture.as<IOleInPlaceObject>();
    fixture.host.view.Reset();
    fixture.host.document = nullptr;
    IOleInPlaceObject* const last = in_place.Get();
    fixture.host.calls.when("IOleInPlaceSite::OnInPlaceDeactivate", [&] {
        fixture.document.Reset();
        in_place.Reset();
    });
    fixture.log.skip();
    EXPECT_EQ(last->InPlaceDeactivate(), S_OK);
    const auto logged = fixture.take_log();
    EXPECT_NE(std::find(logged.begin(), logged.end(), "~@"), logged.end());
    EXPECT_EQ(fixture.host.site.references(), 0);
}

QUILL_DOCUMENT_TEST(DocumentTeardown, ReentrantDeactivationNotifiesTheHostOnce)
{
    for (const char* const call : {"IOleInPlaceFrame::SetActiveObject", "IOleInPlaceSite::OnUIDeactivate"}) {
        SCOPED_TRACE(call);
        fixture.host.order = activation_order::site_then_ui_activate;
        fixture.show_file(fixture.pdf());
        fixture.host.calls.forget_calls();
        int calls = 0;
        fixture.host.calls.when(call, [&] {
            if (calls++ == 0)
                EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
        });
        EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
        EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 1);
        fixture.host.calls.when(call, [] {});
        fixture.close_in_order();
        fixture.release();
    }
}

std::ptrdiff_t ends_of_window(document_fixture& fixture)
{
    const auto logged = fixture.take_log();
    return std::count(logged.begin(), logged.end(), "@ OnDestroy");
}

// Any program can send the message to the window.
QUILL_DOCUMENT_TEST(DocumentTeardown, AForgedDestroyMessageLeaksNoReference)
{
    fixture.show_file(fixture.pdf());
    const ULONG before = fixture.document.Get()->AddRef();
    EXPECT_EQ(fixture.send(WM_DESTROY), 0);
    EXPECT_EQ(fixture.send(WM_DESTROY), 0);
    DestroyWindow(fixture.window());
    EXPECT_EQ(fixture.document.Get()->Release(), before - 1);
    take_down_in(fixture, "UHIVPCS");
}

QUILL_DOCUMENT_TEST(DocumentTeardown, ReleaseDuringTheDestructionOfTheWindowDestroysItOnce)
{
    fixture.show_file(fixture.pdf());
    const HWND window = fixture.window();
    fixture.host.calls.when("IOleInPlaceFrame::SetMenu", [&] {
        fixture.host.view.Reset();
        fixture.host.document = nullptr;
        fixture.document.Reset();
        fixture.host.frame.drop_active_object();
    });
    fixture.take_log();
    EXPECT_TRUE(DestroyWindow(window));
    EXPECT_FALSE(fixture.document);
    EXPECT_EQ(ends_of_window(fixture), 1);
    EXPECT_EQ(fixture.host.site.references(), 0);
}

// A host may have a key translated while it closes the document.
QUILL_DOCUMENT_TEST(DocumentTeardown, AFrameQueriedInsideTheDeactivationIsReleased)
{
    fixture.host.order = activation_order::site_then_ui_activate;
    fixture.show_file(fixture.pdf());
    fixture.host.calls.when("IOleInPlaceSite::OnUIDeactivate", [&] {
        MSG key{};
        key.message = WM_KEYDOWN;
        key.wParam = 'X';
        const int before = fixture.host.frame.references();
        fixture.as<IOleInPlaceActiveObject>()->TranslateAccelerator(&key);
        EXPECT_EQ(fixture.host.frame.references(), before + 1);
    });
    EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(fixture.host.frame.references(), 0);
    fixture.close_in_order();
}

} // namespace
} // namespace quill::test
