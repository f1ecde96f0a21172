// Every way down: in order, out of order, twice, with the windows gone first, without any farewell.
#include "tests/document/document_fixture.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

// One letter a step, so that an order can be written and permuted.
void take_down(document_bench& bench, char step)
{
    switch (step) {
    case 'U':
        bench.as<IOleDocumentView>()->UIActivate(FALSE);
        break;
    case 'H':
        bench.as<IOleDocumentView>()->Show(FALSE);
        break;
    case 'I':
        bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
        break;
    case 'V':
        bench.as<IOleDocumentView>()->CloseView(0);
        break;
    case 'P':
        bench.as<IOleDocumentView>()->SetInPlaceSite(nullptr);
        break;
    case 'C':
        bench.as<IOleObject>()->Close(OLECLOSE_NOSAVE);
        break;
    case 'S':
        bench.as<IOleObject>()->SetClientSite(nullptr);
        break;
    case 'W':
        bench.host.destroy_windows();
        break;
    default:
        ADD_FAILURE() << "no step " << step;
    }
}

void take_down_in(document_bench& bench, const std::string& order)
{
    SCOPED_TRACE(order);
    bench.host.calls.forget_calls();
    for (const char step : order)
        take_down(bench, step);
    EXPECT_LE(bench.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
    EXPECT_LE(bench.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 1);
    bench.release();
}

QUILL_DOCUMENT_TEST(DocumentTeardown, InTheOrderOfNavigatingAway)
{
    bench.show_file(bench.pdf());
    bench.close_in_order();
    bench.release();
}

QUILL_DOCUMENT_TEST(DocumentTeardown, InTheOrderOfAClosedBrowser)
{
    bench.show_file(bench.pdf());
    take_down_in(bench, "WUIHVPCS");
}

QUILL_DOCUMENT_TEST(DocumentTeardown, EachStepTwice)
{
    bench.show_file(bench.pdf());
    take_down_in(bench, "UUIIHHVVPPCCSSWW");
}

QUILL_DOCUMENT_TEST(DocumentTeardown, EachStepTwiceWithTheUserInterfaceActive)
{
    bench.host.order = activation_order::site_then_ui_activate;
    bench.show_file(bench.pdf());
    take_down_in(bench, "UUIIHHVVPPCCSSWW");
}

QUILL_DOCUMENT_TEST(DocumentTeardown, WithoutAnyStep)
{
    bench.show_file(bench.pdf());
    take_down_in(bench, "");
    EXPECT_EQ(bench.host.frame.set_menus.size(), 2u) << "the frame has its menu back";
}

QUILL_DOCUMENT_TEST(DocumentTeardown, WithoutAnyStepAndUiActive)
{
    bench.host.order = activation_order::site_then_ui_activate;
    bench.show_file(bench.pdf());
    take_down_in(bench, "");
}

TEST(DocumentTeardown, AnyOneStepAlone)
{
    for (const char step : std::string{"UHIVPCSW"}) {
        document_bench fresh;
        fresh.show_file(fresh.pdf());
        take_down_in(fresh, std::string(1, step));
    }
}

QUILL_DOCUMENT_TEST(DocumentTeardown, ADocumentThatWasNeverShown)
{
    bench.create();
    bench.set_site();
    take_down_in(bench, "UHIVPCS");
}

// 120 orders, with and without an active user interface.
void every_order(activation_order order)
{
    std::string steps = "CISVW";
    do {
        document_bench fresh;
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

QUILL_DOCUMENT_TEST(DocumentTeardown, AWindowDestroyedAloneIsForgotten)
{
    bench.show_file(bench.pdf());
    const HWND window = bench.window();
    DestroyWindow(window);
    EXPECT_EQ(bench.viewers.living_viewers(), 0);
    HWND reported = window;
    bench.as<IOleWindow>()->GetWindow(&reported);
    EXPECT_NE(reported, window);
    take_down_in(bench, "UIHVPCS");
}

QUILL_DOCUMENT_TEST(DocumentTeardown, TheWindowsEndIsLogged)
{
    bench.show_file(bench.pdf());
    bench.take_log();
    bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
    EXPECT_EQ(bench.take_log(), std::vector<std::string>{"@ OnDestroy"});
    bench.close_in_order();
}

// A host may let go of the document from inside a call that the document makes.
QUILL_DOCUMENT_TEST(DocumentTeardown, ReleasedFromInsideItsOwnDeactivation)
{
    bench.show_file(bench.pdf());
    bench.as<IOleObject>()->SetClientSite(nullptr);
    auto in_place = bench.as<IOleInPlaceObject>();
    bench.host.view.Reset();
    bench.host.document = nullptr;
    IOleInPlaceObject* const last = in_place.Get();
    bench.host.calls.when("IOleInPlaceSite::OnInPlaceDeactivate", [&] {
        bench.document.Reset();
        in_place.Reset();
    });
    bench.log.skip();
    EXPECT_EQ(last->InPlaceDeactivate(), S_OK);
    const auto logged = bench.take_log();
    EXPECT_NE(std::find(logged.begin(), logged.end(), "~@"), logged.end());
    EXPECT_EQ(bench.host.site.references(), 0);
}

QUILL_DOCUMENT_TEST(DocumentTeardown, DeactivatedFromInsideItsDeactivationIsToldOnce)
{
    for (const char* const call : {"IOleInPlaceFrame::SetActiveObject", "IOleInPlaceSite::OnUIDeactivate"}) {
        SCOPED_TRACE(call);
        bench.host.order = activation_order::site_then_ui_activate;
        bench.show_file(bench.pdf());
        bench.host.calls.forget_calls();
        int calls = 0;
        bench.host.calls.when(call, [&] {
            if (calls++ == 0)
                EXPECT_EQ(bench.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
        });
        EXPECT_EQ(bench.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
        EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 1);
        bench.host.calls.when(call, [] {});
        bench.close_in_order();
        bench.release();
    }
}

std::ptrdiff_t ends_of_window(document_bench& bench)
{
    const auto logged = bench.take_log();
    return std::count(logged.begin(), logged.end(), "@ OnDestroy");
}

// Any program can send the window a message.
QUILL_DOCUMENT_TEST(DocumentTeardown, AForgedEndOfTheWindowKeepsNoReference)
{
    bench.show_file(bench.pdf());
    const ULONG before = bench.document.Get()->AddRef();
    EXPECT_EQ(bench.send(WM_DESTROY), 0);
    EXPECT_EQ(bench.send(WM_DESTROY), 0);
    DestroyWindow(bench.window());
    EXPECT_EQ(bench.document.Get()->Release(), before - 1);
    take_down_in(bench, "UHIVPCS");
}

QUILL_DOCUMENT_TEST(DocumentTeardown, ReleasedFromInsideTheWindowsEndDestroysItOnce)
{
    bench.show_file(bench.pdf());
    const HWND window = bench.window();
    bench.host.calls.when("IOleInPlaceFrame::SetMenu", [&] {
        bench.host.view.Reset();
        bench.host.document = nullptr;
        bench.document.Reset();
        bench.host.frame.drop_active_object();
    });
    bench.take_log();
    EXPECT_TRUE(DestroyWindow(window));
    EXPECT_FALSE(bench.document);
    EXPECT_EQ(ends_of_window(bench), 1);
    EXPECT_EQ(bench.host.site.references(), 0);
}

// A host may have a key translated while it closes the document.
QUILL_DOCUMENT_TEST(DocumentTeardown, AFrameAskedForInsideTheDeactivationIsReleased)
{
    bench.host.order = activation_order::site_then_ui_activate;
    bench.show_file(bench.pdf());
    bench.host.calls.when("IOleInPlaceSite::OnUIDeactivate", [&] {
        MSG key{};
        key.message = WM_KEYDOWN;
        key.wParam = 'X';
        const int before = bench.host.frame.references();
        bench.as<IOleInPlaceActiveObject>()->TranslateAccelerator(&key);
        EXPECT_EQ(bench.host.frame.references(), before + 1);
    });
    EXPECT_EQ(bench.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(bench.host.frame.references(), 0);
    bench.close_in_order();
}

} // namespace
} // namespace quill::test
