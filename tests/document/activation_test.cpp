// In-place activation in the orders that hosts use, and the methods of the in-place interfaces.
#include "tests/document/document_fixture.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <utility>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

QUILL_DOCUMENT_TEST(DocumentActivation, ViewWithSiteThenShow)
{
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.host.activation_results, (std::vector<HRESULT>{S_OK, S_OK, S_OK}));
    EXPECT_EQ(GetParent(fixture.window()), fixture.host.view_window());
    const RECT actual = in_parent(fixture.window());
    EXPECT_TRUE(EqualRect(&actual, &fixture.host.position));
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIActivate"), 0);
    EXPECT_EQ(fixture.host.frame.active_object(), nullptr);
    fixture.close_in_order();
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 0);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
}

QUILL_DOCUMENT_TEST(DocumentActivation, SiteThenUiActivateThenShow)
{
    fixture.host.order = activation_order::site_then_ui_activate;
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.host.activation_results, (std::vector<HRESULT>{S_OK, S_OK, S_OK, S_OK, S_OK}));
    const RECT actual = in_parent(fixture.window());
    EXPECT_TRUE(EqualRect(&actual, &fixture.host.position));
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIActivate"), 1);
    EXPECT_NE(fixture.host.frame.active_object(), nullptr);
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 1u) << "loaded once, whatever the order";
    fixture.close_in_order();
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 1);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
    EXPECT_EQ(fixture.host.frame.active_object(), nullptr);
}

QUILL_DOCUMENT_TEST(DocumentActivation, DeactivatesTheUserInterfaceFirst)
{
    fixture.host.order = activation_order::site_then_ui_activate;
    fixture.show_file(fixture.pdf());
    fixture.host.calls.forget_calls();
    const HWND window = fixture.window();
    bool is_destroyed = false;
    fixture.host.calls.when("IOleInPlaceSite::OnInPlaceDeactivate",
                            [&] { is_destroyed = !IsWindow(window); });
    EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_TRUE(is_destroyed) << "the site was called while the window existed";
    EXPECT_EQ(fixture.host.calls.calls_of(
                  {"IOleInPlaceSite::OnUIDeactivate", "IOleInPlaceSite::OnInPlaceDeactivate"}),
              (lines{"IOleInPlaceSite::OnUIDeactivate", "IOleInPlaceSite::OnInPlaceDeactivate"}));
    EXPECT_EQ(fixture.window(), nullptr);
    EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentActivation, SucceedsAgainAfterDeactivation)
{
    fixture.show_file(fixture.pdf());
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
        EXPECT_EQ(fixture.window(), nullptr);
        EXPECT_EQ(fixture.viewers.living_viewers(), 0) << "the viewer is released with the window";
        EXPECT_EQ(fixture.host.view->Show(TRUE), S_OK);
        EXPECT_NE(fixture.window(), nullptr);
        EXPECT_EQ(fixture.viewers.living_viewers(), 1);
    }
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentActivation, SiteMayForbidIt)
{
    fixture.create();
    fixture.set_site();
    fixture.host.calls.make_fail("IOleInPlaceSite::CanInPlaceActivate", call_fault::error);
    fixture.do_verb(OLEIVERB_SHOW);
    EXPECT_EQ(fixture.window(), nullptr);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 0);
}

QUILL_DOCUMENT_TEST(DocumentActivation, WorksWithAnExtendedSite)
{
    fixture.host.site.offered.in_place_site_ex = true;
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceActivate"), 1);
    fixture.close_in_order();
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 1);
}

QUILL_DOCUMENT_TEST(DocumentActivation, WindowActivationIsLoggedOnly)
{
    fixture.create();
    const auto active = fixture.as<IOleInPlaceActiveObject>();
    EXPECT_EQ(active->OnDocWindowActivate(TRUE), S_OK);
    EXPECT_EQ(active->OnDocWindowActivate(FALSE), S_OK);
    EXPECT_EQ(fixture.take_log(), (lines{"@ OnDocWindowActivate 1", "@ OnDocWindowActivate 0"}));
    EXPECT_EQ(fixture.host.calls.calls(), lines{});
}

QUILL_DOCUMENT_TEST(DocumentActivation, NoBorderSpaceIsNegotiated)
{
    fixture.create();
    const RECT border{-1, 2, 300, 400};
    EXPECT_EQ(fixture.as<IOleInPlaceActiveObject>()->ResizeBorder(&border, &fixture.host.frame, TRUE), S_OK);
    EXPECT_EQ(fixture.take_log(), lines{"@ ResizeBorder {-1 2 300 400}"});
    EXPECT_EQ(fixture.as<IOleInPlaceActiveObject>()->ResizeBorder(&border, nullptr, FALSE), S_OK);
    EXPECT_EQ(fixture.host.calls.calls(), lines{});
    fixture.as<IOleInPlaceActiveObject>()->ResizeBorder(nullptr, nullptr, FALSE); // must not crash
}

QUILL_DOCUMENT_TEST(DocumentActivation, RectanglesNeedBothArguments)
{
    fixture.create();
    const auto in_place = fixture.as<IOleInPlaceObject>();
    const RECT rect{1, 2, 30, 40};
    EXPECT_EQ(in_place->SetObjectRects(nullptr, &rect), E_POINTER);
    EXPECT_EQ(in_place->SetObjectRects(&rect, nullptr), E_POINTER);
    EXPECT_EQ(in_place->SetObjectRects(nullptr, nullptr), E_POINTER);
    RECT kept{};
    fixture.as<IOleDocumentView>()->GetRect(&kept);
    EXPECT_NE(kept.right, 30) << "a refused rectangle is not kept";
    EXPECT_EQ(in_place->SetObjectRects(&rect, &rect), S_OK);
    fixture.as<IOleDocumentView>()->GetRect(&kept);
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
    fixture.show_file(fixture.pdf());
    const auto in_place = fixture.as<IOleInPlaceObject>();
    const RECT position{50, 60, 250, 360};
    const RECT clip{70, 0, 150, 100};
    EXPECT_EQ(in_place->SetObjectRects(&position, &clip), S_OK);
    const RECT region = region_of(fixture.window());
    const RECT expected{20, 0, 100, 40};
    EXPECT_TRUE(EqualRect(&region, &expected))
        << region.left << " " << region.top << " " << region.right << " " << region.bottom;
    const RECT actual = in_parent(fixture.window());
    EXPECT_TRUE(EqualRect(&actual, &position)) << "the clip does not move the window";

    const RECT everything{0, 0, 1000, 1000};
    EXPECT_EQ(in_place->SetObjectRects(&position, &everything), S_OK);
    EXPECT_EQ(region_of(fixture.window()).right, 0) << "not clipped, no region";

    EXPECT_EQ(in_place->SetObjectRects(&position, &clip), S_OK);
    const RECT elsewhere{500, 500, 600, 600};
    EXPECT_EQ(in_place->SetObjectRects(&position, &elsewhere), S_OK);
    EXPECT_EQ(region_of(fixture.window()).right, 0) << "no intersection, no region";
    fixture.close_in_order();
}

// Sizes that do not fit wrap around; the debug build traps on signed overflow.
QUILL_DOCUMENT_TEST(DocumentActivation, AcceptsRectanglesOfAnyKind)
{
    fixture.show_file(fixture.pdf());
    const auto in_place = fixture.as<IOleInPlaceObject>();
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
    const RECT actual = in_parent(fixture.window());
    EXPECT_TRUE(EqualRect(&actual, &usual));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentActivation, DeactivationReleasesTheFrame)
{
    fixture.show_file(fixture.pdf());
    MSG key{};
    key.message = WM_KEYDOWN;
    key.wParam = 'B';
    fixture.as<IOleInPlaceActiveObject>()->TranslateAccelerator(&key); // needs the frame
    EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(fixture.host.frame.references(), 0);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentActivation, DeactivationReleasesTheDocumentSite)
{
    fixture.create();
    fixture.set_site();
    EXPECT_EQ(fixture.host.site.references(), 2);
    EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    EXPECT_EQ(fixture.host.site.references(), 1) << "also when it never was active";
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnInPlaceDeactivate"), 0);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIDeactivate"), 0);
}

QUILL_DOCUMENT_TEST(DocumentActivation, HandlesAHostWithoutFrame)
{
    for (const call_fault kind : host_faults) {
        SCOPED_TRACE(to_text(kind));
        fixture.create();
        fixture.set_site();
        fixture.load_file(fixture.pdf());
        fixture.host.calls.make_fail("IOleInPlaceSite::GetWindowContext", kind);
        fixture.do_verb(OLEIVERB_SHOW);
        if (fixture.window())
            fixture.send(WM_SIZE, 0, MAKELPARAM(10, 10));
        MSG key{};
        key.message = WM_KEYDOWN;
        key.wParam = 'F';
        EXPECT_EQ(fixture.as<IOleInPlaceActiveObject>()->TranslateAccelerator(&key), S_FALSE);
        fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
        fixture.as<IOleObject>()->SetClientSite(nullptr);
        fixture.release();
    }
}

// What a failed call leaves in its out parameters is neither used nor released: this frame has no reference
// to release.
QUILL_DOCUMENT_TEST(DocumentActivation, AFailedWindowContextLeavesNoFrame)
{
    fixture.host.order = activation_order::site_then_ui_activate;
    fixture.create();
    fixture.set_site();
    fixture.load_file(fixture.pdf());
    fixture.host.site.failure_leaves = &fixture.host.frame;
    fixture.host.calls.make_fail("IOleInPlaceSite::GetWindowContext", call_fault::error);
    fixture.do_verb(OLEIVERB_SHOW);
    MSG key{};
    key.message = WM_KEYDOWN;
    key.wParam = 'F';
    EXPECT_EQ(fixture.as<IOleInPlaceActiveObject>()->TranslateAccelerator(&key), S_FALSE);
    fixture.close_in_order();
    EXPECT_EQ(fixture.host.frame.references(), 0);
    for (const char* const method : {"SetActiveObject", "SetBorderSpace", "InsertMenus", "SetMenu"})
        EXPECT_EQ(fixture.host.calls.count(std::string("IOleInPlaceFrame::") + method), 0) << method;
}

// A frame that deactivates the document before it sets the active object.
QUILL_DOCUMENT_TEST(DocumentActivation, DeactivatedInsideSetActiveObjectIsNotTheFramesObject)
{
    fixture.host.order = activation_order::site_then_ui_activate;
    bool is_deactivated = false;
    fixture.host.calls.when("IOleInPlaceFrame::SetActiveObject", [&] {
        if (std::exchange(is_deactivated, true))
            return;
        EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    });
    fixture.create();
    fixture.set_site();
    fixture.load_file(fixture.pdf());
    fixture.do_verb(OLEIVERB_SHOW);
    EXPECT_TRUE(is_deactivated);
    EXPECT_EQ(fixture.host.frame.active_object(), nullptr);
    fixture.release();
}
} // namespace
} // namespace quill::test
