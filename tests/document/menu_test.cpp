// The frame's menu: merged once after the first successful load, unmerged with the window.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"

#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::test {
namespace {

using lines = std::vector<std::string>;

lines menu_calls(document_bench& bench)
{
    return bench.host.calls.calls_of({"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu"});
}

bool is_freed(HOLEMENU descriptor)
{
    return GlobalFlags(descriptor) == GMEM_INVALID_HANDLE;
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsMergedAfterTheLoadAndTakenBackAtTheEnd)
{
    bench.show_file(bench.pdf());
    ASSERT_EQ(menu_calls(bench), (lines{"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu"}));
    const HMENU shared = bench.host.frame.filled_menus[0];
    const auto merged = bench.host.frame.set_menus[0];
    EXPECT_EQ(merged.menu, shared);
    EXPECT_NE(merged.descriptor, nullptr);
    EXPECT_EQ(merged.window, bench.window());
    EXPECT_TRUE(IsMenu(shared));
    EXPECT_EQ(GetMenuItemCount(shared), 3) << "the container's groups and nothing of the document's";
    EXPECT_FALSE(is_freed(merged.descriptor));

    bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
    ASSERT_EQ(bench.host.frame.set_menus.size(), 2u);
    const auto unmerged = bench.host.frame.set_menus[1];
    EXPECT_EQ(unmerged.menu, nullptr);
    EXPECT_EQ(unmerged.descriptor, nullptr);
    EXPECT_EQ(unmerged.window, nullptr);
    EXPECT_FALSE(IsMenu(shared)) << "the shared menu leaks";
    EXPECT_TRUE(is_freed(merged.descriptor)) << "the descriptor leaks";
    bench.close_in_order();
    EXPECT_EQ(bench.host.frame.set_menus.size(), 2u);
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsMergedAfterPageAndZoomAreShown)
{
    bench.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    lines viewer_calls;
    bench.host.calls.when("IOleInPlaceFrame::InsertMenus",
                          [&] { viewer_calls = bench.viewer.texts(viewer_set_zoom); });
    bench.show_file(bench.pdf());
    EXPECT_EQ(viewer_calls, lines{"9(R8 0.5)"});
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsMergedOnce)
{
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.send(message_load_file), 0);
    EXPECT_EQ(bench.send(message_load_file), 0);
    EXPECT_EQ(bench.viewer.texts(viewer_open).size(), 3u);
    EXPECT_EQ(menu_calls(bench), (lines{"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu"}));
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMenu, WaitsForTheFirstSuccessfulLoad)
{
    bench.viewer.answer_bool(viewer_open, VARIANT_FALSE);
    bench.show_file(bench.pdf());
    EXPECT_EQ(menu_calls(bench), lines{});
    bench.viewer.answer_bool(viewer_open, VARIANT_TRUE);
    EXPECT_EQ(bench.send(message_load_file), 0);
    EXPECT_EQ(menu_calls(bench), (lines{"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu"}));
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsNotMergedAfterInPlaceActivation)
{
    bench.create();
    bench.set_site();
    bench.load_file(bench.pdf());
    EXPECT_EQ(bench.do_verb(OLEIVERB_INPLACEACTIVATE), S_OK);
    EXPECT_EQ(bench.viewer.texts(viewer_open).size(), 1u);
    EXPECT_EQ(menu_calls(bench), lines{});
    EXPECT_EQ(bench.send(message_load_file), 0);
    EXPECT_EQ(menu_calls(bench), lines{});
    bench.close_in_order();
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceFrame::InsertMenus"), 0);
}

// The verb that clears the flag need not be the one that activates.
QUILL_DOCUMENT_TEST(DocumentMenu, StaysUnmergedForGoodAfterInPlaceActivation)
{
    bench.create();
    bench.set_site();
    bench.load_file(bench.pdf());
    bench.host.order = activation_order::nothing;
    EXPECT_EQ(bench.do_verb(OLEIVERB_INPLACEACTIVATE), S_OK);
    bench.host.order = activation_order::create_view_with_site;
    bench.show();
    EXPECT_EQ(bench.host.calls.count("IOleInPlaceFrame::InsertMenus"), 0);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMenu, RefusedByTheFrameIsDestroyedAtOnce)
{
    bench.host.calls.make_fail("IOleInPlaceFrame::InsertMenus", bad_answer::failure_untouched);
    bench.show_file(bench.pdf());
    EXPECT_EQ(menu_calls(bench), lines{"IOleInPlaceFrame::InsertMenus"});
    ASSERT_EQ(bench.host.frame.filled_menus.size(), 1u);
    EXPECT_FALSE(IsMenu(bench.host.frame.filled_menus[0]));
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMenu, NotTakenByTheFrameIsDestroyedInTheEnd)
{
    bench.host.calls.make_fail("IOleInPlaceFrame::SetMenu", bad_answer::failure);
    bench.show_file(bench.pdf());
    ASSERT_EQ(bench.host.frame.filled_menus.size(), 1u);
    ASSERT_GE(bench.host.frame.set_menus.size(), 1u);
    bench.close_in_order();
    EXPECT_FALSE(IsMenu(bench.host.frame.filled_menus[0]));
    EXPECT_TRUE(is_freed(bench.host.frame.set_menus[0].descriptor));
}

QUILL_DOCUMENT_TEST(DocumentMenu, WithoutAFrameAtTheEndIsDestroyedAllTheSame)
{
    for (const bad_answer kind : every_bad_answer) {
        SCOPED_TRACE(to_text(kind));
        bench.host.frame.filled_menus.clear();
        bench.host.frame.set_menus.clear();
        bench.show_file(bench.pdf());
        ASSERT_EQ(bench.host.frame.filled_menus.size(), 1u);
        bench.host.calls.make_fail("IOleInPlaceSite::GetWindowContext", kind);
        bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
        EXPECT_FALSE(IsMenu(bench.host.frame.filled_menus[0]));
        EXPECT_TRUE(is_freed(bench.host.frame.set_menus[0].descriptor));
        bench.host.calls.make_fail("IOleInPlaceSite::GetWindowContext", bad_answer::none);
        bench.close_in_order();
        bench.release();
    }
}

QUILL_DOCUMENT_TEST(DocumentMenu, IsTakenBackAlsoWhenTheWindowsGoFirst)
{
    bench.show_file(bench.pdf());
    const HMENU shared = bench.host.frame.filled_menus[0];
    bench.host.destroy_windows();
    EXPECT_FALSE(IsMenu(shared));
    ASSERT_EQ(bench.host.frame.set_menus.size(), 2u);
    EXPECT_EQ(bench.host.frame.set_menus[1].menu, nullptr);
    bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
}

QUILL_DOCUMENT_TEST(DocumentMenu, AnUnmergedDocumentResetsTheFrameToo)
{
    bench.show_url(unserved_url);
    bench.wait_for_failed_worker();
    bench.close_in_order();
    EXPECT_EQ(menu_calls(bench), lines{"IOleInPlaceFrame::SetMenu null"});
}

QUILL_DOCUMENT_TEST(DocumentMenu, LeavesNothingBehindAfterReactivation)
{
    bench.show_file(bench.pdf());
    bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
    EXPECT_EQ(bench.host.view->Show(TRUE), S_OK);
    EXPECT_NE(bench.window(), nullptr);
    bench.close_in_order();
    for (const HMENU menu : bench.host.frame.filled_menus)
        EXPECT_FALSE(IsMenu(menu));
    for (const auto& call : bench.host.frame.set_menus)
        EXPECT_TRUE(!call.descriptor || is_freed(call.descriptor));
}

} // namespace
} // namespace quill::test
