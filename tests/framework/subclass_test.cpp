// One or several objects on windows that exist already.
#include "tests/framework/window_fixture.h"

#include <thread>

namespace quill::test {
namespace {

// A second object for a window.
class overlay : public ATL::CWindowImpl<overlay>
{
public:
    explicit overlay(std::vector<std::string>& log, std::string name) : log_(log), name_(std::move(name)) {}

    BEGIN_MSG_MAP(overlay)
    MESSAGE_HANDLER(message_run, OnRun)
    MESSAGE_HANDLER(WM_NCDESTROY, OnNcDestroy)
    END_MSG_MAP()

    void OnFinalMessage(HWND) override { log_.push_back(name_ + " final"); }

private:
    LRESULT OnRun(UINT, WPARAM, LPARAM, BOOL& handled)
    {
        log_.push_back(name_);
        handled = FALSE;
        return 0;
    }
    LRESULT OnNcDestroy(UINT, WPARAM, LPARAM, BOOL&)
    {
        log_.push_back(name_ + " last"); // handled: the procedure below gets it anyway
        return 0;
    }

    std::vector<std::string>& log_;
    std::string name_;
};

using FrameworkSubclass = window_fixture;

TEST_F(FrameworkSubclass, ObjectOnAWindowOfTheSystem)
{
    const HWND edit =
        CreateWindowExW(0, L"EDIT", L"text", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    ASSERT_TRUE(edit);
    const LONG_PTR original = GetWindowLongPtrW(edit, GWLP_WNDPROC);
    std::vector<std::string> log;
    overlay on_top(log, "a");
    ASSERT_TRUE(on_top.SubclassWindow(edit));
    EXPECT_FALSE(on_top.SubclassWindow(edit)) << "the object is attached already";
    SendMessageW(edit, message_run, 0, 0);
    EXPECT_EQ(GetWindowTextLengthW(edit), 4) << "an unhandled message is passed to the edit control";
    EXPECT_EQ(on_top.UnsubclassWindow(), edit);
    EXPECT_EQ(on_top.UnsubclassWindow(), nullptr);
    EXPECT_EQ(GetWindowLongPtrW(edit, GWLP_WNDPROC), original);
    SendMessageW(edit, message_run, 0, 0);
    EXPECT_EQ(log, std::vector<std::string>{"a"});

    ASSERT_TRUE(on_top.SubclassWindow(edit));
    DestroyWindow(edit);
    EXPECT_EQ(log, (std::vector<std::string>{"a", "a last", "a final"}));
    EXPECT_EQ(on_top.m_hWnd, nullptr);
}

TEST_F(FrameworkSubclass, SeveralObjectsOnOneWindow)
{
    test_window window;
    const HWND handle = create(window);
    ASSERT_TRUE(handle);
    std::vector<std::string> log;
    overlay first(log, "first");
    overlay second(log, "second");
    ASSERT_TRUE(first.SubclassWindow(handle));
    ASSERT_TRUE(second.SubclassWindow(handle));
    const auto run = [&log](test_window&) {
        log.emplace_back("window");
        return LRESULT{5};
    };
    EXPECT_EQ(window.run(run), 5);
    EXPECT_EQ(log, (std::vector<std::string>{"second", "first", "window"}));

    log.clear();
    EXPECT_EQ(first.UnsubclassWindow(), handle) << "removed below the latest object";
    EXPECT_EQ(window.run(run), 5);
    EXPECT_EQ(log, (std::vector<std::string>{"second", "window"}));

    log.clear();
    ASSERT_TRUE(first.SubclassWindow(handle));
    DestroyWindow(handle);
    EXPECT_EQ(log, (std::vector<std::string>{"first last", "second last", "second final", "first final"}));
    EXPECT_EQ(window.finals.size(), 1u);
    EXPECT_EQ(window.m_hWnd, nullptr);
}

TEST_F(FrameworkSubclass, ObjectUnsubclassesBelowAnotherProcedure)
{
    static WNDPROC below = nullptr;
    static int passed = 0;
    passed = 0;
    const HWND edit =
        CreateWindowExW(0, L"EDIT", L"text", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    ASSERT_TRUE(edit);
    std::vector<std::string> log;
    overlay object(log, "a");
    ASSERT_TRUE(object.SubclassWindow(edit));
    const auto foreign = +[](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        ++passed;
        return CallWindowProcW(below, window, message, wparam, lparam);
    };
    below =
        reinterpret_cast<WNDPROC>(SetWindowLongPtrW(edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(foreign)));
    EXPECT_EQ(object.UnsubclassWindow(), edit);
    EXPECT_EQ(GetWindowTextLengthW(edit), 4) << "the message reaches the edit control";
    EXPECT_EQ(log.size(), 0u);
    EXPECT_GT(passed, 0);

    ASSERT_TRUE(object.SubclassWindow(edit)) << "and can be subclassed again";
    SendMessageW(edit, message_run, 0, 0);
    EXPECT_EQ(log, std::vector<std::string>{"a"});
    EXPECT_EQ(GetWindowTextLengthW(edit), 4);
    DestroyWindow(edit);
    EXPECT_EQ(log, (std::vector<std::string>{"a", "a last", "a final"}));
}

TEST_F(FrameworkSubclass, WindowsOfOtherThreadsAndNoWindowsAreRefused)
{
    HWND foreign = nullptr;
    const HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread other([&] {
        foreign =
            CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
        SetEvent(ready);
        WaitForSingleObject(done, 10000);
        DestroyWindow(foreign);
    });
    ASSERT_EQ(WaitForSingleObject(ready, 10000), WAIT_OBJECT_0);
    std::vector<std::string> log;
    overlay object(log, "a");
    EXPECT_FALSE(object.SubclassWindow(foreign));
    EXPECT_FALSE(object.SubclassWindow(nullptr));
    EXPECT_EQ(object.m_hWnd, nullptr);
    SetEvent(done);
    other.join();
    CloseHandle(ready);
    CloseHandle(done);
}

} // namespace
} // namespace quill::test
