// The ordinary messages of the window, and the progress pane.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"

#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::test {
namespace {

void expect_place(HWND window, LONG left, LONG top, LONG width, LONG height)
{
    const RECT actual = in_parent(window);
    EXPECT_EQ(actual.left, left);
    EXPECT_EQ(actual.top, top);
    EXPECT_EQ(actual.right - actual.left, width);
    EXPECT_EQ(actual.bottom - actual.top, height);
}

bool has_visible_style(HWND window)
{
    return (GetWindowLongW(window, GWL_STYLE) & WS_VISIBLE) != 0;
}

void show_idle(document_fixture& fixture)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    fixture.take_log();
}

QUILL_DOCUMENT_TEST(DocumentWindow, SizeIsLoggedAndPassedToTheViewersHost)
{
    show_idle(fixture);
    EXPECT_EQ(fixture.send(WM_SIZE, SIZE_RESTORED, MAKELPARAM(500, 400)), 0);
    EXPECT_EQ(fixture.take_log(), lines{"@ OnSize {0 500 400}"});
    expect_place(fixture.viewer_host_window(), 0, 0, 500, 400);
    EXPECT_EQ(fixture.send(WM_SIZE, SIZE_MAXIMIZED, MAKELPARAM(65535, 40000)), 0);
    EXPECT_EQ(fixture.take_log(), lines{"@ OnSize {2 65535 40000}"});
    EXPECT_EQ(fixture.send(WM_SIZE, SIZE_MINIMIZED, 0), 0);
    EXPECT_EQ(fixture.take_log(), lines{"@ OnSize {1 0 0}"});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWindow, SizeShowsTheViewersHost)
{
    show_idle(fixture);
    ShowWindow(fixture.viewer_host_window(), SW_HIDE);
    EXPECT_EQ(fixture.send(WM_SIZE, 0, MAKELPARAM(500, 400)), 0);
    EXPECT_TRUE(has_visible_style(fixture.viewer_host_window()));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWindow, HostWindowFollowsTheDocument)
{
    show_idle(fixture);
    RECT rect{0, 0, 600, 500};
    EXPECT_EQ(fixture.host.view->SetRect(&rect), S_OK);
    expect_place(fixture.window(), 0, 0, 600, 500);
    expect_place(fixture.viewer_host_window(), 0, 0, 600, 500);
    expect_place(fixture.pane(), 125, 205, 350, 45);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWindow, CommandsAreLoggedOnly)
{
    show_idle(fixture);
    EXPECT_EQ(fixture.send(WM_COMMAND, 0x10064, MAKELPARAM(0x1234, 0xfffe)), 0);
    EXPECT_EQ(fixture.take_log(), lines{"@ OnCommand {65636 4660 65534}"});
    EXPECT_EQ(fixture.viewer.texts(viewer_print), lines{});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWindow, AMouseClickActivatesTheUserInterface)
{
    show_idle(fixture);
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIActivate"), 0);
    EXPECT_EQ(fixture.send(WM_MOUSEACTIVATE, 42, MAKELPARAM(HTCLIENT, WM_LBUTTONDOWN)), MA_ACTIVATE);
    EXPECT_EQ(fixture.take_log(), lines{"@ OnMouseActivate {42 1 513}"});
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIActivate"), 1);
    EXPECT_EQ(fixture.send(WM_MOUSEACTIVATE, 42, MAKELPARAM(HTCLIENT, WM_RBUTTONDOWN)), MA_ACTIVATE);
    EXPECT_EQ(fixture.take_log(), lines{"@ OnMouseActivate {42 1 516}"});
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceSite::OnUIActivate"), 1) << "UI-active already";
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWindow, AMouseClickWithoutASiteIsIgnored)
{
    show_idle(fixture);
    fixture.as<IOleObject>()->SetClientSite(nullptr);
    EXPECT_EQ(fixture.send(WM_MOUSEACTIVATE, 0, 0), MA_ACTIVATE);
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
}

QUILL_DOCUMENT_TEST(DocumentPane, IsCentredFromTheBeginning)
{
    show_idle(fixture);
    ASSERT_NE(fixture.pane(), nullptr);
    EXPECT_TRUE(has_visible_style(fixture.pane()));
    RECT client{};
    GetClientRect(fixture.window(), &client);
    expect_place(fixture.pane(), (client.right - 350) / 2, client.bottom / 2 - 45, 350, 45);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPane, IsCentredAgainWithEachSize)
{
    show_idle(fixture);
    for (const SIZE size : {SIZE{700, 500}, SIZE{351, 91}, SIZE{200, 60}, SIZE{0, 0}, SIZE{500, 300}}) {
        SCOPED_TRACE(size.cx);
        RECT rect{10, 10, 10 + size.cx, 10 + size.cy};
        EXPECT_EQ(fixture.host.view->SetRect(&rect), S_OK);
        fixture.send(WM_SIZE, 0, MAKELPARAM(size.cx, size.cy));
        expect_place(fixture.pane(), (size.cx - 350) / 2, size.cy / 2 - 45, 350, 45);
        EXPECT_TRUE(has_visible_style(fixture.pane()));
    }
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPane, StaysHiddenAfterTheLoad)
{
    show_idle(fixture);
    load_fetched_file(fixture, fixture.pdf());
    ASSERT_NE(fixture.pane(), nullptr);
    EXPECT_FALSE(has_visible_style(fixture.pane()));
    fixture.send(WM_SIZE, 0, MAKELPARAM(500, 400));
    EXPECT_FALSE(has_visible_style(fixture.pane())) << "resizing does not show it again";
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPane, IsHiddenAtOnceForALocalFile)
{
    fixture.show_file(fixture.pdf());
    ASSERT_NE(fixture.pane(), nullptr);
    EXPECT_FALSE(has_visible_style(fixture.pane()));
    fixture.close_in_order();
}

struct progress_values
{
    std::uint32_t progress;
    std::uint32_t maximum;
    std::uint32_t status;
    const wchar_t* text;
};

// Paints the pane and measures the bar.
int bar_length(HWND pane)
{
    RedrawWindow(pane, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
    const HDC dc = GetDC(pane);
    int length = 0;
    while (length < 220 && GetPixel(dc, 10 + length, 20) == RGB(25, 30, 80))
        ++length;
    ReleaseDC(pane, dc);
    return length;
}

QUILL_DOCUMENT_TEST(DocumentPane, ShowsThePercentageOfTheDownload)
{
    show_idle(fixture);
    ShowWindow(fixture.host.frame_window(), SW_SHOWNA);
    UpdateWindow(fixture.host.frame_window());
    struct percent_case
    {
        progress_values values;
        int length;
    };
    const percent_case cases[] = {
        {{50, 200, 5, nullptr}, 50},                                   // 50 / 2 = 25 %
        {{1000, 1000, 5, L"x"}, 200},                                  // 100 %
        {{500, 1000, 4, nullptr}, 200},                                // another status: unchanged
        {{500, 1000, 6, nullptr}, 200}, {{50, 99, 5, nullptr}, 0},     // 99 / 100 is 0
        {{0, 1000, 5, nullptr}, 0},     {{123, 1000, 5, nullptr}, 24}, // 123 / 10 = 12 %
        {{7, 0, 5, nullptr}, 0},        {{4'000'000'000u, 4'200'000'000u, 5, nullptr}, 190}, // 95 %
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(std::to_string(one.values.progress) + " of " + std::to_string(one.values.maximum));
        EXPECT_EQ(fixture.send(message_progress, 0, reinterpret_cast<LPARAM>(&one.values)), 0);
        EXPECT_EQ(bar_length(fixture.pane()), one.length);
    }
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPane, IsDestroyedWithTheWindow)
{
    show_idle(fixture);
    const HWND pane = fixture.pane();
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    EXPECT_FALSE(IsWindow(pane));
    fixture.close_in_order();
}

// Observes the destruction of the viewer's host window, the other child: it follows the document's own
// handler.
class end_of_viewer_host
{
public:
    explicit end_of_viewer_host(document_fixture& fixture)
        : hook_(SetWindowsHookExW(WH_CALLWNDPROC, note, nullptr, GetCurrentThreadId()))
    {
        EXPECT_NE(hook_, nullptr);
        host_window_ = fixture.viewer_host_window();
        pane_ = fixture.pane();
        has_come_ = pane_was_there_ = false;
    }
    ~end_of_viewer_host() { UnhookWindowsHookEx(hook_); }
    end_of_viewer_host(const end_of_viewer_host&) = delete;
    end_of_viewer_host& operator=(const end_of_viewer_host&) = delete;

    static bool has_come() { return has_come_; }
    static bool pane_was_there() { return pane_was_there_; }

private:
    static LRESULT CALLBACK note(int code, WPARAM wparam, LPARAM lparam)
    {
        const auto& message = *reinterpret_cast<const CWPSTRUCT*>(lparam);
        if (code == HC_ACTION && message.message == WM_DESTROY && message.hwnd == host_window_) {
            has_come_ = true;
            pane_was_there_ = IsWindow(pane_);
        }
        return CallNextHookEx(nullptr, code, wparam, lparam);
    }

    static inline HWND host_window_;
    static inline HWND pane_;
    static inline bool has_come_;
    static inline bool pane_was_there_;
    HHOOK hook_;
};

QUILL_DOCUMENT_TEST(DocumentPane, IsDestroyedByTheWindowsOwnHandlerAfterTheMenu)
{
    show_idle(fixture);
    const HWND pane = fixture.pane();
    bool is_there_at_menu = false;
    fixture.host.calls.when("IOleInPlaceFrame::SetMenu", [&] { is_there_at_menu = IsWindow(pane); });
    const end_of_viewer_host end(fixture);
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    EXPECT_TRUE(is_there_at_menu) << "the menu is unmerged first";
    EXPECT_TRUE(end.has_come());
    EXPECT_FALSE(end.pane_was_there());
    fixture.close_in_order();
}

} // namespace
} // namespace quill::test
