// A host that closes the document inside a call that the document makes while it creates its window, loads a
// file or merges its menu: nothing is done for the closed window afterwards.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/document/page_container.h"
#include "tests/support/balance.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <ostream>

namespace quill::test {
namespace {

using lines = std::vector<std::string>;

enum class closing
{
    destroy_host_windows,
    destroy_window,
    deactivate,
    close_view
};

void close(document_bench& bench, closing way)
{
    switch (way) {
    case closing::destroy_host_windows:
        bench.host.destroy_windows();
        break;
    case closing::destroy_window:
        DestroyWindow(bench.window());
        break;
    case closing::deactivate:
        bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
        break;
    case closing::close_view:
        bench.as<IOleDocumentView>()->CloseView(0);
        break;
    }
}

constexpr closing every_closing[] = {closing::destroy_host_windows, closing::destroy_window,
                                     closing::deactivate, closing::close_view};

// Runs the action inside the first call of that name whose line is `line`; the name itself without one.
void once_inside(document_bench& bench, const std::string& name, const std::string& line,
                 std::function<void()> action)
{
    bench.host.calls.when(name, [&bench, line, done = std::make_shared<bool>(false), action] {
        if (*done || bench.host.calls.calls().back() != line)
            return;
        *done = true;
        action();
    });
}

lines menu_calls(const document_bench& bench)
{
    return bench.host.calls.calls_of({"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu"});
}

void expect_no_menu(const document_bench& bench)
{
    for (const HMENU menu : bench.host.frame.filled_menus)
        EXPECT_FALSE(IsMenu(menu)) << "a shared menu leaks";
    for (const auto& call : bench.host.frame.set_menus)
        EXPECT_TRUE(!call.descriptor || GlobalFlags(call.descriptor) == GMEM_INVALID_HANDLE)
            << "a descriptor leaks";
    ASSERT_FALSE(bench.host.frame.set_menus.empty());
    EXPECT_EQ(bench.host.frame.set_menus.back().menu, nullptr) << "the frame keeps the document's menu";
}

void expect_no_window(document_bench& bench)
{
    HWND window = bench.host.frame_window();
    EXPECT_EQ(bench.as<IOleWindow>()->GetWindow(&window), E_FAIL);
    EXPECT_EQ(window, nullptr);
}

void expect_nothing_of_a_window(document_bench& bench)
{
    expect_no_window(bench);
    EXPECT_EQ(bench.viewers.living_viewers(), 0) << "a viewer outlives its window";
}

// A document that has everything to do after its file is opened, closed inside the call of that line.
void close_inside(const std::string& name, const std::string& line, const lines& calls_of_viewer,
                  const lines& calls_of_frame)
{
    for (const closing way : every_closing) {
        SCOPED_TRACE(line + ", way " + std::to_string(static_cast<int>(way)));
        document_bench bench;
        bench.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
        bench.create();
        bench.set_site();
        bench.load_file(bench.pdf());
        bool is_closed = false;
        once_inside(bench, name, line, [&] {
            close(bench, way);
            is_closed = true;
            expect_no_window(bench);
        });
        bench.do_verb(OLEIVERB_SHOW);
        ASSERT_TRUE(is_closed);
        lines viewer_calls = bench.viewer.texts();
        viewer_calls.erase(viewer_calls.begin(), viewer_calls.begin() + 5); // set up, and the file opened
        EXPECT_EQ(viewer_calls, calls_of_viewer);
        EXPECT_EQ(menu_calls(bench), calls_of_frame);
        expect_no_menu(bench);
        expect_nothing_of_a_window(bench);
        bench.release();
    }
}

constexpr char unmerged[] = "IOleInPlaceFrame::SetMenu null";

TEST(DocumentClosedWhileLoading, InsideTheViewersOpenCall)
{
    close_inside("viewer::1", "viewer::1", {}, {unmerged});
}

TEST(DocumentClosedWhileLoading, InsideTheViewersPageCall)
{
    close_inside("viewer::4", "viewer::4", {"4(I4 1)"}, {unmerged});
}

TEST(DocumentClosedWhileLoading, InsideTheViewersZoomCall)
{
    close_inside("viewer::9", "viewer::9", {"4(I4 1)", "9(R8 0.5)"}, {unmerged});
}

TEST(DocumentClosedWhileLoading, InsideInsertMenus)
{
    close_inside("IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::InsertMenus", {"4(I4 1)", "9(R8 0.5)"},
                 {"IOleInPlaceFrame::InsertMenus", unmerged});
}

// A frame may take the menu behind the calls that it makes inside SetMenu: it is told once more.
TEST(DocumentClosedWhileLoading, InsideSetMenu)
{
    close_inside("IOleInPlaceFrame::SetMenu", "IOleInPlaceFrame::SetMenu menu", {"4(I4 1)", "9(R8 0.5)"},
                 {"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu", unmerged, unmerged});
}

QUILL_DOCUMENT_TEST(DocumentClosedWhileMerging, InsideGetWindowContext)
{
    bench.show_url(unserved_url);
    bench.wait_for_failed_worker();
    bool is_closed = false;
    once_inside(bench, "IOleInPlaceSite::GetWindowContext", "IOleInPlaceSite::GetWindowContext", [&] {
        bench.host.destroy_windows();
        is_closed = true;
    });
    load_fetched_file(bench, bench.pdf());
    EXPECT_TRUE(is_closed);
    EXPECT_EQ(menu_calls(bench), lines{unmerged});
    expect_nothing_of_a_window(bench);
    bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
}

QUILL_DOCUMENT_TEST(DocumentClosedWhileLoading, TheResultIsLogged)
{
    const std::wstring path = bench.pdf();
    once_inside(bench, "viewer::1", "viewer::1", [&] { bench.host.destroy_windows(); });
    bench.create();
    bench.set_site();
    bench.load_file(path);
    bench.do_verb(OLEIVERB_SHOW);
    const lines logged = bench.take_log();
    const auto destroyed = std::find(logged.begin(), logged.end(), "@ OnDestroy");
    EXPECT_NE(std::find(destroyed, logged.end(), "@ LOADFILE RESULT -1"), logged.end())
        << testing::PrintToString(logged);
    bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
}

// The file is shown in the new window; the load that began for the old one ends with it.
QUILL_DOCUMENT_TEST(DocumentClosedWhileLoading, AndShownAgainInsideTheCall)
{
    bench.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    once_inside(bench, "viewer::1", "viewer::1", [&] {
        bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
        EXPECT_EQ(bench.host.view->Show(TRUE), S_OK);
        EXPECT_NE(bench.window(), nullptr);
    });
    bench.show_file(bench.pdf());
    EXPECT_NE(bench.window(), nullptr);
    EXPECT_EQ(bench.viewers.living_viewers(), 1);
    EXPECT_EQ(bench.viewer.texts(viewer_open).size(), 2u);
    EXPECT_EQ(bench.viewer.texts(viewer_go_to_page).size(), 1u);
    EXPECT_EQ(bench.viewer.texts(viewer_set_zoom).size(), 1u);
    EXPECT_EQ(menu_calls(bench),
              (lines{unmerged, "IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu"}));
    EXPECT_EQ(bench.host.frame.set_menus.back().window, bench.window());
    bench.close_in_order();
    expect_no_menu(bench);
}

// The viewer pumps messages while it opens a file, and the frame while it fills the menu.
QUILL_DOCUMENT_TEST(DocumentMenu, IsMergedOnceWhenAFileIsLoadedInsideInsertMenus)
{
    once_inside(bench, "IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::InsertMenus",
                [&] { bench.send(message_load_file); });
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.viewer.texts(viewer_open).size(), 2u);
    EXPECT_EQ(menu_calls(bench), (lines{"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu"}));
    bench.close_in_order();
    expect_no_menu(bench);
}

// Every call that the window's creation makes, by the line that it leaves.
struct creation_call
{
    const char* name;
    const char* line;
    bool from_site; // the document's URL is asked of the site

    friend std::ostream& operator<<(std::ostream& out, const creation_call& call) { return out << call.line; }
};

// The calls since then that only a window being created makes.
lines creation_calls(const document_bench& bench, std::size_t first)
{
    lines made;
    const auto& calls = bench.host.calls.calls();
    std::copy_if(calls.begin() + static_cast<std::ptrdiff_t>(first), calls.end(), std::back_inserter(made),
                 [](const std::string& call) {
                     return call.rfind("viewer", 0) == 0 || call.rfind("IServiceProvider", 0) == 0 ||
                            call.rfind("IShellBrowser", 0) == 0 || call.rfind("IWebBrowser2", 0) == 0 ||
                            call.rfind("IOleClientSite::GetMoniker", 0) == 0 ||
                            call.rfind("IOleClientSite::GetContainer", 0) == 0;
                 });
    return made;
}

class DocumentClosedWhileCreated : public testing::TestWithParam<creation_call>
{
};

void close_while_created(const creation_call& call, closing way)
{
    document_bench bench;
    bench.create();
    bench.set_site();
    if (!call.from_site)
        bench.load_url(unserved_url);
    std::size_t calls_before = 0;
    once_inside(bench, call.name, call.line, [&] {
        close(bench, way);
        expect_no_window(bench);
        calls_before = bench.host.calls.calls().size();
    });
    bench.do_verb(OLEIVERB_SHOW);
    ASSERT_NE(calls_before, 0u) << "the call did not come";
    EXPECT_EQ(creation_calls(bench, calls_before), lines{});
    expect_nothing_of_a_window(bench);
    const lines logged = bench.take_log();
    EXPECT_EQ(std::count(logged.begin(), logged.end(), "@ OnCreate [URL]"), 0) << "a download begins";
    bench.release();
}

TEST_P(DocumentClosedWhileCreated, DoesNothingMore)
{
    for (const closing way : every_closing) {
        SCOPED_TRACE(static_cast<int>(way));
        expect_balance_in_loop([way] { close_while_created(GetParam(), way); });
    }
}

INSTANTIATE_TEST_SUITE_P(
    Document, DocumentClosedWhileCreated,
    testing::Values(creation_call{"IShellBrowser::GetWindow", "IShellBrowser::GetWindow", false},
                    creation_call{"viewer class::CreateInstance", "viewer class::CreateInstance", false},
                    creation_call{"viewer::23", "viewer::23", false},
                    creation_call{"viewer::24", "viewer::24", false},
                    creation_call{"viewer::15", "viewer::15", false},
                    creation_call{"viewer::16", "viewer::16", false},
                    creation_call{"IWebBrowser2::get_LocationURL", "IWebBrowser2::get_LocationURL", false},
                    creation_call{"IOleClientSite::GetMoniker", "IOleClientSite::GetMoniker 4 3", true},
                    creation_call{"IOleClientSite::GetMoniker", "IOleClientSite::GetMoniker 4 1", true},
                    creation_call{"IOleClientSite::GetContainer", "IOleClientSite::GetContainer", true}));

// The frame takes the first window's menu behind its call for the second one's.
QUILL_DOCUMENT_TEST(DocumentClosedWhileLoading, AndShownAgainInsideSetMenu)
{
    once_inside(bench, "IOleInPlaceFrame::SetMenu", "IOleInPlaceFrame::SetMenu menu", [&] {
        bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
        EXPECT_EQ(bench.host.view->Show(TRUE), S_OK);
        EXPECT_NE(bench.window(), nullptr);
    });
    bench.show_file(bench.pdf());
    const lines calls = menu_calls(bench);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), unmerged), 1) << testing::PrintToString(calls);
    bench.close_in_order();
    expect_no_menu(bench);
}

// What the page says belongs to the window that asked it.
QUILL_DOCUMENT_TEST(DocumentClosedWhileAsking, ThePagesPageAndZoomAreNotTheNextWindows)
{
    page_container page(L"http://host.test/page.html#page=3#zoom=40");
    page.add(L"EMBED", L"application/pdf", L"x.pdf");
    bench.host.container = page.container();
    bench.host.object_moniker.display_name = L"quilltest://host.test/dir/page.html";
    bench.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    once_inside(bench, "IOleClientSite::GetContainer", "IOleClientSite::GetContainer", [&] {
        bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
        bench.load_file(bench.pdf());
        EXPECT_EQ(bench.host.view->Show(TRUE), S_OK);
    });
    bench.create();
    bench.set_site();
    bench.do_verb(OLEIVERB_SHOW);
    EXPECT_NE(bench.window(), nullptr);
    bench.viewer.forget_calls();
    EXPECT_EQ(bench.send(message_load_file), 0);
    EXPECT_EQ(bench.viewer.texts(viewer_go_to_page), lines{"4(I4 1)"});
    EXPECT_EQ(bench.viewer.texts(viewer_set_zoom), lines{"9(R8 0.5)"});
    bench.close_in_order();
    bench.release();
}

} // namespace
} // namespace quill::test
