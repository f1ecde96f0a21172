// In-place activation in the orders that hosts use, and the in-place interfaces' own methods.
#include "tests/document/document_fixture.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <utility>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;
using lines = std::vector<std::string>;

RECT in_parent(HWND window)
{
    RECT rect{};
    GetWindowRect(window, &rect);
    MapWindowPoints(nullptr, GetParent(window), reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

QUILL_DOCUMENT_TEST(DocumentActivation, ViewWithSiteThenShow)
{
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.host.activation_results, (std::vector<HRESULT>{S_OK, S_OK, S_OK}));
    EXPECT_EQ(GetParent(bench.window()), bench.host.view_window());
    const RECT actual = in_parent(bench.window());
    EXPECT_TRUE(EqualRect(&actual, &bench.host.position));
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnUIActivate"), 0);
    EXPECT_EQ(bench.host.frame.active_object(), nullptr);
    bench.close_in_order();
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 0);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
}

QUILL_DOCUMENT_TEST(DocumentActivation, SiteThenUiActivateThenShow)
{
    bench.host.order = activation_order::site_then_ui_activate;
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.host.activation_results, (std::vector<HRESULT>{S_OK, S_OK, S_OK, S_OK, S_OK}));
    const RECT actual = in_parent(bench.window());
    EXPECT_TRUE(EqualRect(&actual, &bench.host.position));
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnUIActivate"), 1);
    EXPECT_NE(bench.host.frame.active_object(), nullptr);
    EXPECT_EQ(bench.viewer.texts(viewer_open).size(), 1u) << "loaded once, whatever the order";
    bench.close_in_order();
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 1);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
    EXPECT_EQ(bench.host.frame.active_object(), nullptr);
}

QUILL_DOCUMENT_TEST(DocumentActivation, UiDeactivationComesBeforeDeactivation)
{
    bench.host.order = activation_order::site_then_ui_activate;
    bench.show_file(bench.pdf());
    bench.host.calls.forget_calls();
    EXPECT_EQ(bench.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(bench.host.calls.calls_of(
                  {"IOleInPlaceSite::OnUIDeactivate", "IOleInPlaceSite::OnInPlaceDeactivate"}),
              (lines{"IOleInPlaceSite::OnUIDeactivate", "IOleInPlaceSite::OnInPlaceDeactivate"}));
    EXPECT_EQ(bench.window(), nullptr);
    EXPECT_EQ(bench.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentActivation, OnceMoreAfterDeactivation)
{
    bench.show_file(bench.pdf());
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(bench.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
        EXPECT_EQ(bench.window(), nullptr);
        EXPECT_EQ(bench.viewers.living_viewers(), 0) << "the viewer goes with the window";
        EXPECT_EQ(bench.host.view->Show(TRUE), S_OK);
        EXPECT_NE(bench.window(), nullptr);
        EXPECT_EQ(bench.viewers.living_viewers(), 1);
    }
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentActivation, SiteMayForbidIt)
{
    bench.create();
    bench.set_site();
    bench.host.calls.make_fail("IOleInPlaceSite::CanInPlaceActivate", bad_answer::failure);
    bench.do_verb(OLEIVERB_SHOW);
    EXPECT_EQ(bench.window(), nullptr);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 0);
}

QUILL_DOCUMENT_TEST(DocumentActivation, WorksWithAnExtendedSite)
{
    bench.host.site.offered.in_place_site_ex = true;
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
    bench.close_in_order();
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
}

QUILL_DOCUMENT_TEST(DocumentActivation, WindowActivationIsLoggedOnly)
{
    bench.create();
    const auto active = bench.as<IOleInPlaceActiveObject>();
    EXPECT_EQ(active->OnDocWindowActivate(TRUE), S_OK);
    EXPECT_EQ(active->OnDocWindowActivate(FALSE), S_OK);
    EXPECT_EQ(bench.take_log(), (lines{"@ OnDocWindowActivate 1", "@ OnDocWindowActivate 0"}));
    EXPECT_EQ(bench.host.calls.calls(), lines{});
}

QUILL_DOCUMENT_TEST(DocumentActivation, NoBorderSpaceIsNegotiated)
{
    bench.create();
    const RECT border{-1, 2, 300, 400};
    EXPECT_EQ(bench.as<IOleInPlaceActiveObject>()->ResizeBorder(&border, &bench.host.frame, TRUE), S_OK);
    EXPECT_EQ(bench.take_log(), lines{"@ ResizeBorder {-1 2 300 400}"});
    EXPECT_EQ(bench.as<IOleInPlaceActiveObject>()->ResizeBorder(&border, nullptr, FALSE), S_OK);
    EXPECT_EQ(bench.host.calls.calls(), lines{});
    bench.as<IOleInPlaceActiveObject>()->ResizeBorder(nullptr, nullptr, FALSE); // must not fall over
}

QUILL_DOCUMENT_TEST(DocumentActivation, RectanglesNeedBothArguments)
{
    bench.create();
    const auto in_place = bench.as<IOleInPlaceObject>();
    const RECT rect{1, 2, 30, 40};
    EXPECT_EQ(in_place->SetObjectRects(nullptr, &rect), E_POINTER);
    EXPECT_EQ(in_place->SetObjectRects(&rect, nullptr), E_POINTER);
    EXPECT_EQ(in_place->SetObjectRects(nullptr, nullptr), E_POINTER);
    RECT kept{};
    bench.as<IOleDocumentView>()->GetRect(&kept);
    EXPECT_NE(kept.right, 30) << "a refused rectangle is not kept";
    EXPECT_EQ(in_place->SetObjectRects(&rect, &rect), S_OK);
    bench.as<IOleDocumentView>()->GetRect(&kept);
    EXPECT_TRUE(EqualRect(&kept, &rect));
}

// The region of a window; empty without one.
RECT region_of(HWND window)
{
    const HRGN region = CreateRectRgn(0, 0, 0, 0);
    RECT box{};
    if (GetWindowRgn(window, region) != ERROR)
        GetRgnBox(region, &box);
    DeleteObject(region);
    return box;
}

QUILL_DOCUMENT_TEST(DocumentActivation, ClippingMakesAWindowRegion)
{
    bench.show_file(bench.pdf());
    const auto in_place = bench.as<IOleInPlaceObject>();
    const RECT position{50, 60, 250, 360};
    const RECT clip{70, 0, 150, 100};
    EXPECT_EQ(in_place->SetObjectRects(&position, &clip), S_OK);
    const RECT region = region_of(bench.window());
    const RECT expected{20, 0, 100, 40};
    EXPECT_TRUE(EqualRect(&region, &expected))
        << region.left << " " << region.top << " " << region.right << " " << region.bottom;
    const RECT actual = in_parent(bench.window());
    EXPECT_TRUE(EqualRect(&actual, &position)) << "the clip does not move the window";

    const RECT everything{0, 0, 1000, 1000};
    EXPECT_EQ(in_place->SetObjectRects(&position, &everything), S_OK);
    EXPECT_EQ(region_of(bench.window()).right, 0) << "nothing cut off, no region";

    EXPECT_EQ(in_place->SetObjectRects(&position, &clip), S_OK);
    const RECT elsewhere{500, 500, 600, 600};
    EXPECT_EQ(in_place->SetObjectRects(&position, &elsewhere), S_OK);
    EXPECT_EQ(region_of(bench.window()).right, 0) << "nothing in common, no region";
    bench.close_in_order();
}

// Sizes that do not fit wrap; the debug build ends the program where something overflows.
QUILL_DOCUMENT_TEST(DocumentActivation, RectanglesOfAnyKindAreBorne)
{
    bench.show_file(bench.pdf());
    const auto in_place = bench.as<IOleInPlaceObject>();
    constexpr LONG least = -0x7fffffff - 1, most = 0x7fffffff;
    const RECT rectangles[] = {{least, least, most, most},
                               {most, most, least, least},
                               {least, 0, least, 0},
                               {-2, -2, most, most},
                               {9, 9, 3, 3},
                               {0, 0, 0, 0}};
    for (const RECT& position : rectangles)
        for (const RECT& clip : rectangles)
            EXPECT_EQ(in_place->SetObjectRects(&position, &clip), S_OK);
    const RECT usual{50, 60, 250, 360};
    EXPECT_EQ(in_place->SetObjectRects(&usual, &usual), S_OK);
    const RECT actual = in_parent(bench.window());
    EXPECT_TRUE(EqualRect(&actual, &usual));
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentActivation, FrameIsLetGoWithDeactivation)
{
    bench.show_file(bench.pdf());
    MSG key{};
    key.message = WM_KEYDOWN;
    key.wParam = 'B';
    bench.as<IOleInPlaceActiveObject>()->TranslateAccelerator(&key); // needs the frame
    EXPECT_EQ(bench.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(bench.host.frame.references(), 0);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentActivation, DeactivationLetsGoOfTheDocumentSiteToo)
{
    bench.create();
    bench.set_site();
    EXPECT_EQ(bench.host.site.references(), 2);
    EXPECT_EQ(bench.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(bench.host.site.references(), 1) << "also when it never was active";
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 0);
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 0);
}

QUILL_DOCUMENT_TEST(DocumentActivation, AHostWithoutFrameIsBorne)
{
    for (const bad_answer kind : every_bad_answer) {
        SCOPED_TRACE(to_text(kind));
        bench.create();
        bench.set_site();
        bench.load_file(bench.pdf());
        bench.host.calls.make_fail("IOleInPlaceSite::GetWindowContext", kind);
        bench.do_verb(OLEIVERB_SHOW);
        if (bench.window())
            bench.send(WM_SIZE, 0, MAKELPARAM(10, 10));
        MSG key{};
        key.message = WM_KEYDOWN;
        key.wParam = 'F';
        EXPECT_EQ(bench.as<IOleInPlaceActiveObject>()->TranslateAccelerator(&key), S_FALSE);
        bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
        bench.as<IOleObject>()->SetClientSite(nullptr);
        bench.release();
    }
}

// What a failed call leaves behind is neither used nor released: this frame has no reference to lose.
QUILL_DOCUMENT_TEST(DocumentActivation, AFailedWindowContextGivesNoFrame)
{
    bench.host.order = activation_order::site_then_ui_activate;
    bench.create();
    bench.set_site();
    bench.load_file(bench.pdf());
    bench.host.site.failure_leaves = &bench.host.frame;
    bench.host.calls.make_fail("IOleInPlaceSite::GetWindowContext", bad_answer::failure);
    bench.do_verb(OLEIVERB_SHOW);
    MSG key{};
    key.message = WM_KEYDOWN;
    key.wParam = 'F';
    EXPECT_EQ(bench.as<IOleInPlaceActiveObject>()->TranslateAccelerator(&key), S_FALSE);
    bench.close_in_order();
    EXPECT_EQ(bench.host.frame.references(), 0);
    for (const char* const method : {"SetActiveObject", "SetBorderSpace", "InsertMenus", "SetMenu"})
        EXPECT_EQ(bench.host.calls.count(std::string("IOleInPlaceFrame::") + method), 0) << method;
}

// A frame that deactivates the document before it takes it for its active object.
QUILL_DOCUMENT_TEST(DocumentActivation, DeactivatedInsideSetActiveObjectIsNotTheFramesObject)
{
    bench.host.order = activation_order::site_then_ui_activate;
    bool is_deactivated = false;
    bench.host.calls.when("IOleInPlaceFrame::SetActiveObject", [&] {
        if (std::exchange(is_deactivated, true))
            return;
        EXPECT_EQ(bench.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    });
    bench.create();
    bench.set_site();
    bench.load_file(bench.pdf());
    bench.do_verb(OLEIVERB_SHOW);
    EXPECT_TRUE(is_deactivated);
    EXPECT_EQ(bench.host.frame.active_object(), nullptr);
    bench.release();
}
} // namespace
} // namespace quill::test
