// A host that closes the document inside a call that the document makes while it creates its window, loads a
// file or merges its menu: afterwards the document does nothing for the closed window.
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

enum class closing
{
    destroy_host_windows,
    destroy_window,
    deactivate,
    close_view
};

void close(document_fixture& fixture, closing way)
{
    switch (way) {
    case closing::destroy_host_windows:
        fixture.host.destroy_windows();
        break;
    case closing::destroy_window:
        DestroyWindow(fixture.window());
        break;
    case closing::deactivate:
        fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
        break;
    case closing::close_view:
        fixture.as<IOleDocumentView>()->CloseView(0);
        break;
    }
}

constexpr closing every_closing[] = {closing::destroy_host_windows, closing::destroy_window,
                                     closing::deactivate, closing::close_view};

// Runs the action inside the first call of that name whose line is `line`; without a line, inside the first
// call.
void once_inside(document_fixture& fixture, const std::string& name, const std::string& line,
                 std::function<void()> action)
{
    fixture.host.calls.when(name, [&fixture, line, done = std::make_shared<bool>(false), action] {
        if (*done || fixture.host.calls.calls().back() != line)
            return;
        *done = true;
        action();
    });
}

lines menu_calls(const document_fixture& fixture)
{
    return fixture.host.calls.calls_of({"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu"});
}

void expect_no_menu(const document_fixture& fixture)
{
    for (const HMENU menu : fixture.host.frame.filled_menus)
        EXPECT_FALSE(IsMenu(menu)) << "a shared menu leaks";
    for (const auto& call : fixture.host.frame.set_menus)
        EXPECT_TRUE(!call.descriptor || GlobalFlags(call.descriptor) == GMEM_INVALID_HANDLE)
            << "a descriptor leaks";
    ASSERT_FALSE(fixture.host.frame.set_menus.empty());
    EXPECT_EQ(fixture.host.frame.set_menus.back().menu, nullptr) << "the frame keeps the document's menu";
}

void expect_no_window(document_fixture& fixture)
{
    HWND window = fixture.host.frame_window();
    EXPECT_EQ(fixture.as<IOleWindow>()->GetWindow(&window), E_FAIL);
    EXPECT_EQ(window, nullptr);
}

void expect_nothing_of_a_window(document_fixture& fixture)
{
    expect_no_window(fixture);
    EXPECT_EQ(fixture.viewers.living_viewers(), 0) << "a viewer outlives its window";
}

// A document with all its work left after its file is opened, closed inside the call of that line.
void close_inside(const std::string& name, const std::string& line, const lines& calls_of_viewer,
                  const lines& calls_of_frame)
{
    for (const closing way : every_closing) {
        SCOPED_TRACE(line + ", way " + std::to_string(static_cast<int>(way)));
        document_fixture fixture;
        fixture.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
        fixture.create();
        fixture.set_site();
        fixture.load_file(fixture.pdf());
        bool is_closed = false;
        once_inside(fixture, name, line, [&] {
            close(fixture, way);
            is_closed = true;
            expect_no_window(fixture);
        });
        fixture.do_verb(OLEIVERB_SHOW);
        ASSERT_TRUE(is_closed);
        lines viewer_calls = fixture.viewer.texts();
        viewer_calls.erase(viewer_calls.begin(), viewer_calls.begin() + 5); // the set-up, and the file opened
        EXPECT_EQ(viewer_calls, calls_of_viewer);
        EXPECT_EQ(menu_calls(fixture), calls_of_frame);
        expect_no_menu(fixture);
        expect_nothing_of_a_window(fixture);
        fixture.release();
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

// The frame may set the menu after the calls that it makes inside SetMenu, so the document resets it once
// more.
TEST(DocumentClosedWhileLoading, InsideSetMenu)
{
    close_inside("IOleInPlaceFrame::SetMenu", "IOleInPlaceFrame::SetMenu menu", {"4(I4 1)", "9(R8 0.5)"},
                 {"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu", unmerged, unmerged});
}

QUILL_DOCUMENT_TEST(DocumentClosedWhileMerging, InsideGetWindowContext)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    bool is_closed = false;
    once_inside(fixture, "IOleInPlaceSite::GetWindowContext", "IOleInPlaceSite::GetWindowContext", [&] {
        fixture.host.destroy_windows();
        is_closed = true;
    });
    load_fetched_file(fixture, fixture.pdf());
    EXPECT_TRUE(is_closed);
    EXPECT_EQ(menu_calls(fixture), lines{unmerged});
    expect_nothing_of_a_window(fixture);
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
}

QUILL_DOCUMENT_TEST(DocumentClosedWhileLoading, TheResultIsLogged)
{
    const std::wstring path = fixture.pdf();
    once_inside(fixture, "viewer::1", "viewer::1", [&] { fixture.host.destroy_windows(); });
    fixture.create();
    fixture.set_site();
    fixture.load_file(path);
    fixture.do_verb(OLEIVERB_SHOW);
    const lines logged = fixture.take_log();
    const auto destroyed = std::find(logged.begin(), logged.end(), "@ OnDestroy");
    EXPECT_NE(std::find(destroyed, logged.end(), "@ LOADFILE RESULT -1"), logged.end())
        << testing::PrintToString(logged);
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
}

// The file is shown in the new window; the load that began for the old one ends with it.
QUILL_DOCUMENT_TEST(DocumentClosedWhileLoading, AndShownAgainInsideTheCall)
{
    fixture.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    once_inside(fixture, "viewer::1", "viewer::1", [&] {
        fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
        EXPECT_EQ(fixture.host.view->Show(TRUE), S_OK);
        EXPECT_NE(fixture.window(), nullptr);
    });
    fixture.show_file(fixture.pdf());
    EXPECT_NE(fixture.window(), nullptr);
    EXPECT_EQ(fixture.viewers.living_viewers(), 1);
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 2u);
    EXPECT_EQ(fixture.viewer.texts(viewer_go_to_page).size(), 1u);
    EXPECT_EQ(fixture.viewer.texts(viewer_set_zoom).size(), 1u);
    EXPECT_EQ(menu_calls(fixture),
              (lines{unmerged, "IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu"}));
    EXPECT_EQ(fixture.host.frame.set_menus.back().window, fixture.window());
    fixture.close_in_order();
    expect_no_menu(fixture);
}

// The viewer pumps messages while it opens a file, and the frame while it fills the menu.
QUILL_DOCUMENT_TEST(DocumentMenu, IsMergedOnceWhenAFileIsLoadedInsideInsertMenus)
{
    once_inside(fixture, "IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::InsertMenus",
                [&] { fixture.send(message_load_file); });
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 2u);
    EXPECT_EQ(menu_calls(fixture),
              (lines{"IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu"}));
    fixture.close_in_order();
    expect_no_menu(fixture);
}

// Every call of the window's creation, by its line in the log.
struct creation_call
{
    const char* name;
    const char* line;
    bool from_site; // the site is asked for the URL of the document

    friend std::ostream& operator<<(std::ostream& out, const creation_call& call) { return out << call.line; }
};

// The calls since then that only the creation of a window makes.
lines creation_calls(const document_fixture& fixture, std::size_t first)
{
    lines made;
    const auto& calls = fixture.host.calls.calls();
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
    document_fixture fixture;
    fixture.create();
    fixture.set_site();
    if (!call.from_site)
        fixture.load_url(unserved_url);
    std::size_t calls_before = 0;
    once_inside(fixture, call.name, call.line, [&] {
        close(fixture, way);
        expect_no_window(fixture);
        calls_before = fixture.host.calls.calls().size();
    });
    fixture.do_verb(OLEIVERB_SHOW);
    ASSERT_NE(calls_before, 0u) << "the call was not made";
    EXPECT_EQ(creation_calls(fixture, calls_before), lines{});
    expect_nothing_of_a_window(fixture);
    const lines logged = fixture.take_log();
    EXPECT_EQ(std::count(logged.begin(), logged.end(), "@ OnCreate [URL]"), 0) << "a download begins";
    fixture.release();
}

TEST_P(DocumentClosedWhileCreated, StopsTheCreation)
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

// The frame sets the first window's menu after the second window's.
QUILL_DOCUMENT_TEST(DocumentClosedWhileLoading, AndShownAgainInsideSetMenu)
{
    once_inside(fixture, "IOleInPlaceFrame::SetMenu", "IOleInPlaceFrame::SetMenu menu", [&] {
        fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
        EXPECT_EQ(fixture.host.view->Show(TRUE), S_OK);
        EXPECT_NE(fixture.window(), nullptr);
    });
    fixture.show_file(fixture.pdf());
    const lines calls = menu_calls(fixture);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), unmerged), 1) << testing::PrintToString(calls);
    fixture.close_in_order();
    expect_no_menu(fixture);
}

// Page and zoom of the page belong to the window that requested them.
QUILL_DOCUMENT_TEST(DocumentClosedWhileAsking, PageAndZoomOfThePageAreNotThoseOfTheNextWindow)
{
    page_container page(L"http://host.test/page.html#page=3#zoom=40");
    page.add(L"EMBED", L"application/pdf", L"x.pdf");
    fixture.host.container = page.container();
    fixture.host.object_moniker.display_name = L"quilltest://host.test/dir/page.html";
    fixture.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    once_inside(fixture, "IOleClientSite::GetContainer", "IOleClientSite::GetContainer", [&] {
        fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
        fixture.load_file(fixture.pdf());
        EXPECT_EQ(fixture.host.view->Show(TRUE), S_OK);
    });
    fixture.create();
    fixture.set_site();
    fixture.do_verb(OLEIVERB_SHOW);
    EXPECT_NE(fixture.window(), nullptr);
    fixture.viewer.forget_calls();
    EXPECT_EQ(fixture.send(message_load_file), 0);
    EXPECT_EQ(fixture.viewer.texts(viewer_go_to_page), lines{"4(I4 1)"});
    EXPECT_EQ(fixture.viewer.texts(viewer_set_zoom), lines{"9(R8 0.5)"});
    fixture.close_in_order();
    fixture.release();
}

} // namespace
} // namespace quill::test
