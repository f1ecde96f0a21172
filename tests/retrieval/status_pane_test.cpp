// The status pane on a real display: its pixels, and the resources that it leaves.
#include "retrieval/pane/status_pane.h"
#include "tests/retrieval/static_class_watch.h"
#include "tests/support/balance.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <vector>

namespace quill::test {
namespace {

constexpr COLORREF ground = RGB(79, 79, 79);
constexpr COLORREF white = RGB(255, 255, 255);
constexpr COLORREF bar = RGB(25, 30, 80);

struct place
{
    LONG left, top, width, height;
    friend bool operator==(const place&, const place&) = default;
    friend std::ostream& operator<<(std::ostream& out, const place& at)
    {
        return out << at.left << ", " << at.top << ", " << at.width << " x " << at.height;
    }
};

class parent_window
{
public:
    parent_window(int client_width, int client_height)
        : window_(CreateWindowExW(WS_EX_TOPMOST, L"STATIC", L"", WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN, 40,
                                  40, client_width, client_height, nullptr, nullptr, nullptr, nullptr))
    {
    }
    ~parent_window() { destroy(); }
    parent_window(const parent_window&) = delete;
    parent_window& operator=(const parent_window&) = delete;

    HWND handle() const { return window_; }
    void destroy()
    {
        if (window_)
            DestroyWindow(window_);
        window_ = nullptr;
    }
    void resize(int width, int height) const
    {
        SetWindowPos(window_, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
    }

private:
    HWND window_;
};

place place_of(HWND child)
{
    RECT area{};
    GetWindowRect(child, &area);
    MapWindowPoints(nullptr, GetParent(child), reinterpret_cast<POINT*>(&area), 2);
    return {area.left, area.top, area.right - area.left, area.bottom - area.top};
}

// A copy of the pixels of a window.
class picture
{
public:
    explicit picture(HWND window)
    {
        RECT client{};
        GetClientRect(window, &client);
        width_ = client.right;
        height_ = client.bottom;
        const HDC shown = GetDC(window);
        const HDC copy = CreateCompatibleDC(shown);
        const HBITMAP bitmap = CreateCompatibleBitmap(shown, width_, height_);
        const HGDIOBJ before = SelectObject(copy, bitmap);
        BitBlt(copy, 0, 0, width_, height_, shown, 0, 0, SRCCOPY);
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x)
                pixels_.push_back(GetPixel(copy, x, y));
        SelectObject(copy, before);
        DeleteObject(bitmap);
        DeleteDC(copy);
        ReleaseDC(window, shown);
    }

    COLORREF at(int x, int y) const { return pixels_[static_cast<std::size_t>(y * width_ + x)]; }
    int width() const { return width_; }
    int height() const { return height_; }

    // The number of consecutive pixels of that colour in the row, from x on.
    int run(int x, int y, COLORREF colour) const
    {
        int length = 0;
        while (x + length < width_ && at(x + length, y) == colour)
            ++length;
        return length;
    }

    // Whether every pixel of the area has the colour.
    bool is_filled(const RECT& area, COLORREF colour) const
    {
        for (LONG y = area.top; y < area.bottom; ++y)
            if (run(area.left, y, colour) < area.right - area.left)
                return false;
        return true;
    }

private:
    int width_ = 0;
    int height_ = 0;
    std::vector<COLORREF> pixels_;
};

class StatusPane : public testing::Test
{
protected:
    void create(const parent_window& parent)
    {
        EXPECT_EQ(pane_.Create(parent.handle(), GetModuleHandleW(nullptr)), 1);
    }

    picture show(std::uint32_t percent)
    {
        pane_.SetPercent(percent);
        UpdateWindow(pane_.window());
        pump_messages();
        return picture(pane_.window());
    }

    status_pane pane_;
};

// The rows and columns around the frame of the bar have the background colour.
void expect_frame(const picture& seen)
{
    EXPECT_EQ(seen.width(), 350);
    EXPECT_EQ(seen.height(), 45);
    EXPECT_TRUE(seen.is_filled({0, 0, 350, 10}, ground)) << "above the bar";
    EXPECT_TRUE(seen.is_filled({0, 35, 350, 45}, ground)) << "below the bar";
    EXPECT_TRUE(seen.is_filled({0, 0, 10, 45}, ground)) << "left of the bar";
}

TEST_F(StatusPane, DrawsAnEmptyFrameAtFirst)
{
    const parent_window parent(800, 600);
    create(parent);
    const picture seen = show(0);
    expect_frame(seen);
    EXPECT_TRUE(seen.is_filled({10, 10, 210, 35}, white));
}

TEST_F(StatusPane, DrawsTwoPixelsOfBarForEachPercent)
{
    const parent_window parent(800, 600);
    create(parent);
    for (const std::uint32_t percent : {1u, 50u, 99u}) {
        SCOPED_TRACE(percent);
        const picture seen = show(percent);
        expect_frame(seen);
        const auto end = static_cast<LONG>(10 + 2 * percent);
        EXPECT_TRUE(seen.is_filled({10, 10, end, 35}, bar));
        EXPECT_TRUE(seen.is_filled({end, 10, 210, 35}, white));
        EXPECT_EQ(seen.run(10, 20, bar), static_cast<int>(2 * percent));
    }
}

TEST_F(StatusPane, FillsTheFrameAtAHundredAndNeverMore)
{
    const parent_window parent(800, 600);
    create(parent);
    for (const std::uint32_t percent : {100u, 101u, 200u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(percent);
        const picture seen = show(percent);
        expect_frame(seen);
        EXPECT_TRUE(seen.is_filled({10, 10, 210, 35}, bar));
        EXPECT_EQ(seen.run(10, 12, bar), 200);
        EXPECT_EQ(pane_.percent(), 100u);
    }
}

TEST_F(StatusPane, WritesThePercentageBesideTheBar)
{
    const parent_window parent(800, 600);
    create(parent);
    const auto bright_pixels = [](const picture& seen) {
        int count = 0;
        for (int y = 10; y < 35; ++y)
            for (int x = 210; x < 350; ++x)
                count += GetRValue(seen.at(x, y)) > 200;
        return count;
    };
    const int with_one_digit = bright_pixels(show(1));
    const int with_three_digits = bright_pixels(show(100));
    EXPECT_GT(with_one_digit, 0);
    EXPECT_GT(with_three_digits, with_one_digit);
}

TEST_F(StatusPane, DrawsNoTextWithoutTheString)
{
    const parent_window parent(800, 600);
    EXPECT_EQ(pane_.Create(parent.handle(), GetModuleHandleW(L"kernel32.dll")), 1);
    EXPECT_TRUE(show(50).is_filled({210, 0, 350, 45}, ground));
}

TEST_F(StatusPane, IsCentredAboveTheMiddleOfItsParent)
{
    const parent_window parent(801, 601);
    create(parent);
    EXPECT_EQ(place_of(pane_.window()), (place{225, 255, 350, 45}));
    EXPECT_TRUE(IsWindowVisible(pane_.window()));
    parent.resize(400, 100);
    pane_.recentre();
    EXPECT_EQ(place_of(pane_.window()), (place{25, 5, 350, 45}));
}

TEST_F(StatusPane, IsPartlyOutsideOfASmallParent)
{
    const parent_window parent(100, 50);
    create(parent);
    EXPECT_EQ(place_of(pane_.window()), (place{-125, -20, 350, 45}));
    show(50);
}

TEST_F(StatusPane, IsOutsideOfAnEmptyParent)
{
    const parent_window parent(0, 0);
    create(parent);
    EXPECT_EQ(place_of(pane_.window()), (place{-175, -45, 350, 45}));
    show(50);
}

TEST_F(StatusPane, IsAPlainChildWindow)
{
    const parent_window parent(800, 600);
    create(parent);
    wchar_t class_name[32] = {};
    GetClassNameW(pane_.window(), class_name, 32);
    EXPECT_STRCASEEQ(std::string(class_name, class_name + wcslen(class_name)).c_str(), "static");
    EXPECT_EQ(GetWindowLongPtrW(pane_.window(), GWL_STYLE) & ~WS_CLIPSIBLINGS, WS_CHILD | WS_VISIBLE);
    EXPECT_EQ(GetWindowLongPtrW(pane_.window(), GWL_EXSTYLE) & ~WS_EX_NOPARENTNOTIFY, 0);
    EXPECT_EQ(GetParent(pane_.window()), parent.handle());
    EXPECT_EQ(SendMessageW(pane_.window(), WM_ERASEBKGND, 0, 0), 1);
}

TEST_F(StatusPane, StaysHiddenOnceHidden)
{
    const parent_window parent(800, 600);
    create(parent);
    pane_.Hide();
    EXPECT_FALSE(IsWindowVisible(pane_.window()));
    pane_.SetPercent(70);
    pane_.recentre();
    EXPECT_FALSE(IsWindowVisible(pane_.window()));
    // If other code has shown it, it is not hidden a second time.
    ShowWindow(pane_.window(), SW_SHOWNA);
    pane_.Hide();
    EXPECT_TRUE(IsWindowVisible(pane_.window()));
}

TEST_F(StatusPane, RestoresTheWindowProcedure)
{
    const parent_window parent(800, 600);
    const HWND plain = CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 0, 0, parent.handle(), nullptr,
                                       GetModuleHandleW(nullptr), nullptr);
    create(parent);
    const HWND window = pane_.window();
    EXPECT_NE(GetWindowLongPtrW(window, GWLP_WNDPROC), GetWindowLongPtrW(plain, GWLP_WNDPROC));
    pane_.Detach();
    EXPECT_EQ(GetWindowLongPtrW(window, GWLP_WNDPROC), GetWindowLongPtrW(plain, GWLP_WNDPROC));
    EXPECT_TRUE(IsWindow(window));
    EXPECT_EQ(pane_.window(), nullptr);
    pane_.Detach();
    pane_.SetPercent(1);
    pane_.recentre();
    pane_.Hide();
}

TEST_F(StatusPane, HandlesTheDestructionOfItsWindow)
{
    parent_window parent(800, 600);
    create(parent);
    parent.destroy();
    EXPECT_EQ(pane_.window(), nullptr);
    pane_.SetPercent(1);
    pane_.recentre();
    pane_.Hide();
    pane_.Detach();
}

// The control frees its data for a window at the last message.
TEST_F(StatusPane, ForwardsTheLastMessageToTheControl)
{
    parent_window parent(800, 600);
    const static_class_watch watch;
    create(parent);
    parent.destroy();
    EXPECT_EQ(std::count(watch.messages().begin(), watch.messages().end(), WM_NCDESTROY), 1);
}

TEST_F(StatusPane, DoesNotDestroyItsWindow)
{
    const parent_window parent(800, 600);
    auto pane = std::make_unique<status_pane>();
    pane->Create(parent.handle(), nullptr);
    const HWND window = pane->window();
    pane.reset();
    EXPECT_TRUE(IsWindow(window));
    InvalidateRect(window, nullptr, TRUE);
    UpdateWindow(window);
}

TEST_F(StatusPane, NeedsAParent)
{
    parent_window parent(800, 600);
    const HWND dead = parent.handle();
    parent.destroy();
    EXPECT_EQ(pane_.Create(dead, nullptr), 1);
    EXPECT_EQ(pane_.window(), nullptr);
    pane_.SetPercent(1);
    pane_.recentre();
    pane_.Hide();
}

TEST_F(StatusPane, MayBeCreatedAgain)
{
    const parent_window parent(800, 600);
    create(parent);
    const HWND first = pane_.window();
    create(parent);
    EXPECT_FALSE(IsWindow(first));
    EXPECT_TRUE(IsWindow(pane_.window()));
    EXPECT_EQ(show(50).run(10, 20, bar), 100);
}

TEST_F(StatusPane, ReleasesEverything)
{
    expect_balance([] {
        const parent_window parent(800, 600);
        status_pane pane;
        pane.Create(parent.handle(), GetModuleHandleW(nullptr));
        for (std::uint32_t percent = 0; percent <= 100; percent += 10) {
            pane.SetPercent(percent);
            UpdateWindow(pane.window());
        }
        pane.Hide();
    });
}

} // namespace
} // namespace quill::test
