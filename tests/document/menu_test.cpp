// The frame's menu: merged once after the first successful load, unmerged with the window.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"

#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::test {
namespace {

lines menu_calls(document_fixture& fixture)
{
    return fixture.host.calls.calls_of({"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu"});
}

bool is_freed(HOLEMENU descriptor)
{
    return GlobalFlags(descriptor) == GMEM_INVALID_HANDLE;
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsMergedAfterTheLoadAndRemovedAtDeactivation)
{
    fixture.show_file(fixture.pdf());
    ASSERT_EQ(menu_calls(fixture),
              (lines{"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu"}));
    const HMENU shared = fixture.host.frame.filled_menus[0];
    const auto merged = fixture.host.frame.set_menus[0];
    EXPECT_EQ(merged.menu, shared);
    EXPECT_NE(merged.descriptor, nullptr);
    EXPECT_EQ(merged.window, fixture.window());
    EXPECT_TRUE(IsMenu(shared));
    EXPECT_EQ(GetMenuItemCount(shared), 3) << "the container's groups only";
    EXPECT_FALSE(is_freed(merged.descriptor));

    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    ASSERT_EQ(fixture.host.frame.set_menus.size(), 2u);
    const auto unmerged = fixture.host.frame.set_menus[1];
    EXPECT_EQ(unmerged.menu, nullptr);
    EXPECT_EQ(unmerged.descriptor, nullptr);
    EXPECT_EQ(unmerged.window, nullptr);
    EXPECT_FALSE(IsMenu(shared)) << "the shared menu leaks";
    EXPECT_TRUE(is_freed(merged.descriptor)) << "the descriptor leaks";
    fixture.close_in_order();
    EXPECT_EQ(fixture.host.frame.set_menus.size(), 2u);
}

QUILL_DOCUMENT_TEST(DocumentMenu, LeavesTheSubmenusToTheContainer)
{
    const HMENU submenu = CreatePopupMenu();
    fixture.host.calls.when("IOleInPlaceFrame::SetMenu", [&] {
        if (fixture.host.frame.set_menus.size() == 1)
            AppendMenuW(fixture.host.frame.filled_menus[0], MF_POPUP, reinterpret_cast<UINT_PTR>(submenu),
                        L"&Tools");
    });
    fixture.show_file(fixture.pdf());
    ASSERT_EQ(fixture.host.frame.filled_menus.size(), 1u);
    EXPECT_EQ(GetSubMenu(fixture.host.frame.filled_menus[0], 3), submenu);
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    EXPECT_FALSE(IsMenu(fixture.host.frame.filled_menus[0]));
    EXPECT_TRUE(DestroyMenu(submenu)) << "it was destroyed with the merged menu";
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsMergedAfterPageAndZoomAreShown)
{
    fixture.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    lines viewer_calls;
    fixture.host.calls.when("IOleInPlaceFrame::InsertMenus",
                            [&] { viewer_calls = fixture.viewer.texts(viewer_set_zoom); });
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(viewer_calls, lines{"9(R8 0.5)"});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsMergedOnce)
{
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.send(message_load_file), 0);
    EXPECT_EQ(fixture.send(message_load_file), 0);
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 3u);
    EXPECT_EQ(menu_calls(fixture),
              (lines{"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu"}));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsMergedAfterTheFirstSuccessfulLoad)
{
    fixture.viewer.answer_bool(viewer_open, VARIANT_FALSE);
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(menu_calls(fixture), lines{});
    fixture.viewer.answer_bool(viewer_open, VARIANT_TRUE);
    EXPECT_EQ(fixture.send(message_load_file), 0);
    EXPECT_EQ(menu_calls(fixture),
              (lines{"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu"}));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsNotMergedAfterInPlaceActivation)
{
    fixture.create();
    fixture.set_site();
    fixture.load_file(fixture.pdf());
    EXPECT_EQ(fixture.do_verb(OLEIVERB_INPLACEACTIVATE), S_OK);
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 1u);
    EXPECT_EQ(menu_calls(fixture), lines{});
    EXPECT_EQ(fixture.send(message_load_file), 0);
    EXPECT_EQ(menu_calls(fixture), lines{});
    fixture.close_in_order();
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceFrame::InsertMenus"), 0);
}

// The verb that clears the flag need not be the one that activates.
QUILL_DOCUMENT_TEST(DocumentMenu, IsNeverMergedAfterInPlaceActivation)
{
    fixture.create();
    fixture.set_site();
    fixture.load_file(fixture.pdf());
    fixture.host.order = activation_order::nothing;
    EXPECT_EQ(fixture.do_verb(OLEIVERB_INPLACEACTIVATE), S_OK);
    fixture.host.order = activation_order::create_view_with_site;
    fixture.show();
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceFrame::InsertMenus"), 0);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsDestroyedAtOnceWhenTheFrameRefusesIt)
{
    fixture.host.calls.make_fail("IOleInPlaceFrame::InsertMenus", call_fault::error_untouched);
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(menu_calls(fixture), lines{"IOleInPlaceFrame::InsertMenus"});
    ASSERT_EQ(fixture.host.frame.filled_menus.size(), 1u);
    EXPECT_FALSE(IsMenu(fixture.host.frame.filled_menus[0]));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsDestroyedAtTheEndWhenSetMenuFails)
{
    fixture.host.calls.make_fail("IOleInPlaceFrame::SetMenu", call_fault::error);
    fixture.show_file(fixture.pdf());
    ASSERT_EQ(fixture.host.frame.filled_menus.size(), 1u);
    ASSERT_GE(fixture.host.frame.set_menus.size(), 1u);
    fixture.close_in_order();
    EXPECT_FALSE(IsMenu(fixture.host.frame.filled_menus[0]));
    EXPECT_TRUE(is_freed(fixture.host.frame.set_menus[0].descriptor));
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsDestroyedWithoutAFrameAtTheEnd)
{
    for (const call_fault kind : host_faults) {
        SCOPED_TRACE(to_text(kind));
        fixture.host.frame.filled_menus.clear();
        fixture.host.frame.set_menus.clear();
        fixture.show_file(fixture.pdf());
        ASSERT_EQ(fixture.host.frame.filled_menus.size(), 1u);
        fixture.host.calls.make_fail("IOleInPlaceSite::GetWindowContext", kind);
        fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
        EXPECT_FALSE(IsMenu(fixture.host.frame.filled_menus[0]));
        EXPECT_TRUE(is_freed(fixture.host.frame.set_menus[0].descriptor));
        fixture.host.calls.make_fail("IOleInPlaceSite::GetWindowContext", call_fault::none);
        fixture.close_in_order();
        fixture.release();
    }
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsRemovedWhenTheWindowsAreDestroyedFirst)
{
    fixture.show_file(fixture.pdf());
    const HMENU shared = fixture.host.frame.filled_menus[0];
    fixture.host.destroy_windows();
    EXPECT_FALSE(IsMenu(shared));
    ASSERT_EQ(fixture.host.frame.set_menus.size(), 2u);
    EXPECT_EQ(fixture.host.frame.set_menus[1].menu, nullptr);
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
}

QUILL_DOCUMENT_TEST(DocumentMenu, AnUnmergedDocumentResetsTheFrameToo)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    fixture.close_in_order();
    EXPECT_EQ(menu_calls(fixture), lines{"IOleInPlaceFrame::SetMenu null"});
}

QUILL_DOCUMENT_TEST(DocumentMenu, LeaksNothingAfterReactivation)
{
    fixture.show_file(fixture.pdf());
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    EXPECT_EQ(fixture.host.view->Show(TRUE), S_OK);
    EXPECT_NE(fixture.window(), nullptr);
    fixture.close_in_order();
    for (const HMENU menu : fixture.host.frame.filled_menus)
        EXPECT_FALSE(IsMenu(menu));
    for (const auto& call : fixture.host.frame.set_menus)
        EXPECT_TRUE(!call.descriptor || is_freed(call.descriptor));
}

} // namespace
} // namespace quill::test
