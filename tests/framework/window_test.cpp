// CWindowImpl: classes, messages, and the ways in which a window and its object may end.
#include "atl/atlwin.h"
#include "tests/support/process_resources.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using ATL::_AtlWinModule;
using quill::test::process_resources;

namespace {

constexpr UINT message_run = WM_APP + 1;
constexpr UINT message_first = WM_APP + 10;
constexpr UINT message_last = WM_APP + 12;
constexpr UINT message_passed_on = WM_APP + 20;

// Counts what it is told and runs what it is given; may count its own end.
class test_window : public ATL::CWindowImpl<test_window>
{
public:
    DECLARE_WND_CLASS(L"QuillFrameworkTestWindow")

    explicit test_window(int* ends = nullptr) : ends_(ends) {}
    ~test_window() override
    {
        if (ends_)
            ++*ends_;
    }

    BEGIN_MSG_MAP(test_window)
    MESSAGE_HANDLER(WM_GETMINMAXINFO, OnGetMinMaxInfo)
    MESSAGE_HANDLER(WM_NCCREATE, OnNcCreate)
    MESSAGE_HANDLER(WM_CREATE, OnCreate)
    MESSAGE_HANDLER(WM_DESTROY, OnDestroy)
    MESSAGE_HANDLER(message_run, OnRun)
    MESSAGE_HANDLER(message_passed_on, OnPassedOn)
    MESSAGE_RANGE_HANDLER(message_first, message_last, OnRange)
    COMMAND_HANDLER(5, 7, OnCommandExact)
    COMMAND_ID_HANDLER(6, OnCommandId)
    COMMAND_CODE_HANDLER(8, OnCommandCode)
    CHAIN_MSG_MAP_ALT(test_window, 1)
    ALT_MSG_MAP(1)
    MESSAGE_HANDLER(message_passed_on, OnReached)
    END_MSG_MAP()

    void OnFinalMessage(HWND window) override
    {
        finals.push_back(window);
        if (on_final)
            on_final(*this);
    }

    LRESULT run(std::function<LRESULT(test_window&)> function)
    {
        to_run = std::move(function);
        return ::SendMessageW(m_hWnd, message_run, 0, 0);
    }

    HWND handle_in_min_max_info = nullptr;
    bool refuse_nc_create = false;
    LRESULT create_result = 0;
    void* create_param = nullptr;
    std::function<void(test_window&)> on_create;
    std::function<void(test_window&)> on_destroy;
    std::function<void(test_window&)> on_final;
    std::function<LRESULT(test_window&)> to_run;
    std::vector<std::string> heard;
    std::vector<HWND> finals;

private:
    LRESULT OnGetMinMaxInfo(UINT, WPARAM, LPARAM, BOOL& handled)
    {
        if (!handle_in_min_max_info)
            handle_in_min_max_info = m_hWnd;
        handled = FALSE;
        return 0;
    }
    LRESULT OnNcCreate(UINT, WPARAM, LPARAM, BOOL& handled)
    {
        handled = refuse_nc_create;
        return FALSE;
    }
    LRESULT OnCreate(UINT, WPARAM, LPARAM lparam, BOOL&)
    {
        create_param = reinterpret_cast<CREATESTRUCTW*>(lparam)->lpCreateParams;
        heard.emplace_back("create");
        if (on_create)
            on_create(*this);
        return create_result;
    }
    LRESULT OnDestroy(UINT, WPARAM, LPARAM, BOOL&)
    {
        heard.emplace_back("destroy");
        if (on_destroy)
            on_destroy(*this);
        return 0;
    }
    LRESULT OnRun(UINT, WPARAM, LPARAM, BOOL&)
    {
        const auto function = std::move(to_run);
        return function(*this);
    }
    LRESULT OnPassedOn(UINT, WPARAM, LPARAM, BOOL& handled)
    {
        heard.emplace_back("passed on");
        handled = FALSE;
        return 1;
    }
    LRESULT OnReached(UINT, WPARAM, LPARAM, BOOL&)
    {
        heard.emplace_back("reached");
        return 2;
    }
    LRESULT OnRange(UINT message, WPARAM, LPARAM, BOOL&) { return static_cast<LRESULT>(message); }
    LRESULT OnCommandExact(WORD code, WORD id, HWND control, BOOL&)
    {
        heard.emplace_back("exact");
        return code * 100 + id + (control == m_hWnd);
    }
    LRESULT OnCommandId(WORD, WORD, HWND, BOOL&) { return 60; }
    LRESULT OnCommandCode(WORD, WORD, HWND, BOOL&) { return 80; }

    int* ends_;
};

class unnamed_window : public ATL::CWindowImpl<unnamed_window>
{
public:
    BEGIN_MSG_MAP(unnamed_window)
    END_MSG_MAP()
};

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
        log_.push_back(name_ + " last"); // handled: what is below hears of it all the same
        return 0;
    }

    std::vector<std::string>& log_;
    std::string name_;
};

// For the length of one call.
ATL::_U_RECT at(RECT&& place)
{
    return place;
}

bool class_exists(LPCWSTR name)
{
    WNDCLASSEXW found{};
    found.cbSize = sizeof found;
    return GetClassInfoExW(GetModuleHandleW(nullptr), name, &found) != 0;
}

class framework_window : public testing::Test
{
protected:
    void SetUp() override
    {
        // What a thread's first windows and its first exception bring with them stays.
        test_window warm_up;
        test_window warm_up_child;
        ASSERT_TRUE(create(warm_up));
        ASSERT_TRUE(warm_up_child.Create(warm_up, at({0, 0, 9, 9})));
        warm_up.run([](test_window&) -> LRESULT { throw 0; });
        warm_up.DestroyWindow();
        _AtlWinModule.Term();
        before_ = process_resources::now();
    }
    void TearDown() override
    {
        _AtlWinModule.Term();
        EXPECT_EQ(process_resources::now(), before_);
        EXPECT_FALSE(class_exists(L"QuillFrameworkTestWindow"));
    }

    static HWND create(test_window& window, LPVOID parameter = nullptr)
    {
        return window.Create(nullptr, at({10, 20, 310, 220}), L"title", WS_OVERLAPPEDWINDOW, 0, 0U,
                             parameter);
    }

private:
    process_resources before_;
};

TEST_F(framework_window, class_is_registered_on_first_use_and_gone_after_term)
{
    EXPECT_FALSE(class_exists(L"QuillFrameworkTestWindow"));
    test_window window;
    ASSERT_TRUE(create(window));
    EXPECT_TRUE(class_exists(L"QuillFrameworkTestWindow"));

    _AtlWinModule.Term();
    EXPECT_TRUE(class_exists(L"QuillFrameworkTestWindow")) << "a class with windows stays";
    EXPECT_EQ(window.run([](test_window&) { return LRESULT{42}; }), 42) << "and its windows work";

    window.DestroyWindow();
    _AtlWinModule.Term();
    EXPECT_FALSE(class_exists(L"QuillFrameworkTestWindow"));
    ASSERT_TRUE(create(window)) << "registered again when it is used again";
    window.DestroyWindow();
}

TEST_F(framework_window, class_without_a_name_gets_one_of_its_own)
{
    unnamed_window window;
    ASSERT_TRUE(window.Create(HWND_MESSAGE));
    wchar_t name[64]{};
    GetClassNameW(window, name, std::size(name));
    EXPECT_EQ(std::wstring(name).substr(0, 4), L"ATL:");
    EXPECT_TRUE(class_exists(name));
    window.DestroyWindow();
    _AtlWinModule.Term();
    EXPECT_FALSE(class_exists(name));
}

TEST_F(framework_window, position_title_styles_and_parameter_reach_the_window)
{
    test_window window;
    int parameter = 0;
    ASSERT_TRUE(create(window, &parameter));
    EXPECT_EQ(window.create_param, &parameter);
    RECT place{};
    window.GetWindowRect(&place);
    EXPECT_EQ(place.left, 10);
    EXPECT_EQ(place.top, 20);
    EXPECT_EQ(place.right, 310);
    EXPECT_EQ(place.bottom, 220);
    wchar_t title[16]{};
    GetWindowTextW(window, title, std::size(title));
    EXPECT_STREQ(title, L"title");

    test_window child;
    ASSERT_TRUE(child.Create(window, at({1, 2, 30, 40}), nullptr, 0, 0, 9U));
    EXPECT_EQ(child.GetStyle() & (WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS),
              DWORD{WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS});
    EXPECT_EQ(child.GetDlgCtrlID(), 9);
    window.DestroyWindow();
    EXPECT_EQ(child.m_hWnd, nullptr) << "children end with their parent";
    EXPECT_EQ(child.finals.size(), 1u);
}

TEST_F(framework_window, messages_before_nccreate_find_the_object)
{
    test_window window;
    const HWND handle = create(window);
    ASSERT_TRUE(handle);
    EXPECT_EQ(window.handle_in_min_max_info, handle);
    window.DestroyWindow();
}

TEST_F(framework_window, map_finds_the_handler)
{
    test_window window;
    const HWND handle = create(window);
    ASSERT_TRUE(handle);
    EXPECT_EQ(SendMessageW(handle, message_first, 0, 0), LRESULT{message_first});
    EXPECT_EQ(SendMessageW(handle, message_last, 0, 0), LRESULT{message_last});
    EXPECT_EQ(SendMessageW(handle, message_last + 1, 0, 0), 0);
    EXPECT_EQ(SendMessageW(handle, WM_COMMAND, MAKEWPARAM(5, 7), reinterpret_cast<LPARAM>(handle)), 706);
    EXPECT_EQ(SendMessageW(handle, WM_COMMAND, MAKEWPARAM(5, 9), 0), 0);
    EXPECT_EQ(SendMessageW(handle, WM_COMMAND, MAKEWPARAM(6, 9), 0), 60);
    EXPECT_EQ(SendMessageW(handle, WM_COMMAND, MAKEWPARAM(1, 8), 0), 80);

    window.heard.clear();
    EXPECT_EQ(SendMessageW(handle, message_passed_on, 0, 0), 2);
    EXPECT_EQ(window.heard, (std::vector<std::string>{"passed on", "reached"}));
    window.DestroyWindow();
}

TEST_F(framework_window, object_is_deleted_by_its_final_message)
{
    int ends = 0;
    auto* const window = new test_window(&ends);
    window->on_final = [](test_window& self) { delete &self; };
    const HWND handle = create(*window);
    ASSERT_TRUE(handle);
    DestroyWindow(handle);
    EXPECT_EQ(ends, 1);
    EXPECT_FALSE(IsWindow(handle));
}

TEST_F(framework_window, final_message_waits_for_the_handler_that_destroyed_the_window)
{
    int ends = 0;
    auto* const window = new test_window(&ends);
    window->on_final = [](test_window& self) { delete &self; };
    ASSERT_TRUE(create(*window));
    const LRESULT result = window->run([&](test_window& self) {
        ::DestroyWindow(self.m_hWnd);
        EXPECT_EQ(ends, 0) << "the handler's object is alive";
        EXPECT_EQ(self.finals.size(), 0u);
        return LRESULT{7};
    });
    EXPECT_EQ(result, 7);
    EXPECT_EQ(ends, 1);
}

TEST_F(framework_window, final_message_comes_once_when_the_handle_was_forgotten)
{
    test_window window;
    const HWND handle = create(window);
    ASSERT_TRUE(handle);
    window.on_destroy = [](test_window& self) { self.m_hWnd = nullptr; };
    DestroyWindow(handle);
    EXPECT_EQ(window.finals, std::vector<HWND>{handle});
    EXPECT_FALSE(IsWindow(handle));
    EXPECT_TRUE(create(window)) << "the object can have a new window";
    window.on_destroy = nullptr;
    window.DestroyWindow();
}

TEST_F(framework_window, creation_refused_by_the_object_ends_it)
{
    for (const bool early : {true, false}) {
        int ends = 0;
        auto* const window = new test_window(&ends);
        window->refuse_nc_create = early;
        window->create_result = -1;
        window->on_final = [](test_window& self) { delete &self; };
        EXPECT_EQ(create(*window), nullptr);
        EXPECT_EQ(ends, 1) << early;
    }
}

TEST_F(framework_window, creation_refused_by_a_hook_leaves_nothing_behind)
{
    static bool refuse = false;
    const HHOOK hook = SetWindowsHookExW(
        WH_CBT,
        [](int code, WPARAM wparam, LPARAM lparam) -> LRESULT {
            return code == HCBT_CREATEWND && refuse ? 1 : CallNextHookEx(nullptr, code, wparam, lparam);
        },
        nullptr, GetCurrentThreadId());
    ASSERT_TRUE(hook);
    refuse = true;
    test_window refused;
    EXPECT_EQ(refused.Create(nullptr, at({0, 0, 9, 9}), nullptr, WS_POPUP), nullptr);
    EXPECT_EQ(refused.m_hWnd, nullptr);
    UnhookWindowsHookEx(hook);

    test_window next;
    const HWND handle = create(next);
    ASSERT_TRUE(handle);
    EXPECT_EQ(next.m_hWnd, handle) << "the next window goes to its own object";
    EXPECT_EQ(refused.m_hWnd, nullptr);
    next.DestroyWindow();
}

TEST_F(framework_window, exceptions_stay_inside)
{
    test_window window;
    window.on_create = [](test_window&) { throw std::runtime_error("cannot set up"); };
    EXPECT_EQ(create(window), nullptr);
    EXPECT_EQ(window.finals.size(), 1u);
    window.on_create = nullptr;
    const HWND handle = create(window);
    ASSERT_TRUE(handle);
    EXPECT_EQ(window.run([](test_window&) -> LRESULT { throw 1; }), 0);
    window.on_final = [](test_window&) { throw 2; };
    DestroyWindow(handle);
    EXPECT_EQ(window.m_hWnd, nullptr);
}

TEST_F(framework_window, object_deleted_by_its_own_handler_takes_its_window_along)
{
    int ends = 0;
    auto* const window = new test_window(&ends);
    const HWND handle = create(*window);
    ASSERT_TRUE(handle);
    window->to_run = [](test_window& self) {
        delete &self;
        return LRESULT{3};
    };
    EXPECT_EQ(SendMessageW(handle, message_run, 0, 0), 3);
    EXPECT_EQ(ends, 1);
    EXPECT_FALSE(IsWindow(handle));
}

TEST_F(framework_window, object_that_goes_first_destroys_its_window)
{
    HWND handle = nullptr;
    {
        test_window window;
        handle = create(window);
        ASSERT_TRUE(handle);
    }
    EXPECT_FALSE(IsWindow(handle));
}

TEST_F(framework_window, window_created_while_another_is_being_created)
{
    test_window inner;
    test_window outer;
    outer.on_create = [&](test_window& self) {
        inner.Create(self.m_hWnd, at({0, 0, 5, 5}));
        EXPECT_TRUE(inner.m_hWnd);
    };
    const HWND handle = create(outer);
    ASSERT_TRUE(handle);
    EXPECT_EQ(outer.m_hWnd, handle);
    EXPECT_EQ(GetParent(inner.m_hWnd), handle);
    outer.DestroyWindow();
    EXPECT_EQ(inner.m_hWnd, nullptr);
}

TEST_F(framework_window, one_object_has_one_window)
{
    test_window window;
    const HWND handle = create(window);
    ASSERT_TRUE(handle);
    EXPECT_EQ(create(window), nullptr);
    EXPECT_EQ(window.m_hWnd, handle);
    EXPECT_EQ(window.run([](test_window&) { return LRESULT{1}; }), 1);
    window.DestroyWindow();
}

TEST_F(framework_window, threads_create_windows_at_the_same_time)
{
    constexpr int windows_each = 50;
    const auto create_many = [](int& right) {
        for (int i = 0; i < windows_each; ++i) {
            test_window window;
            const HWND handle = window.Create(HWND_MESSAGE, at({0, 0, 1, 1}));
            right += handle && window.m_hWnd == handle &&
                     window.run([&](test_window& self) { return LRESULT{&self == &window}; }) == 1;
            window.DestroyWindow();
        }
    };
    int first = 0;
    int second = 0;
    std::thread other(create_many, std::ref(first));
    create_many(second);
    other.join();
    EXPECT_EQ(first, windows_each);
    EXPECT_EQ(second, windows_each);
}

TEST_F(framework_window, object_on_a_window_of_the_system)
{
    const HWND edit =
        CreateWindowExW(0, L"EDIT", L"text", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    ASSERT_TRUE(edit);
    const LONG_PTR original = GetWindowLongPtrW(edit, GWLP_WNDPROC);
    std::vector<std::string> log;
    overlay on_top(log, "a");
    ASSERT_TRUE(on_top.SubclassWindow(edit));
    EXPECT_FALSE(on_top.SubclassWindow(edit)) << "it sits there already";
    SendMessageW(edit, message_run, 0, 0);
    EXPECT_EQ(GetWindowTextLengthW(edit), 4) << "what is not handled goes to the edit control";
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

TEST_F(framework_window, several_objects_on_one_window)
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
    EXPECT_EQ(first.UnsubclassWindow(), handle) << "out of order";
    EXPECT_EQ(window.run(run), 5);
    EXPECT_EQ(log, (std::vector<std::string>{"second", "window"}));

    log.clear();
    ASSERT_TRUE(first.SubclassWindow(handle));
    DestroyWindow(handle);
    EXPECT_EQ(log, (std::vector<std::string>{"first last", "second last", "second final", "first final"}));
    EXPECT_EQ(window.finals.size(), 1u);
    EXPECT_EQ(window.m_hWnd, nullptr);
}

TEST_F(framework_window, object_leaves_below_somebody_elses_procedure)
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
    EXPECT_EQ(GetWindowTextLengthW(edit), 4) << "still reaches the edit control";
    EXPECT_EQ(log.size(), 0u);
    EXPECT_GT(passed, 0);

    ASSERT_TRUE(object.SubclassWindow(edit)) << "and can come back";
    SendMessageW(edit, message_run, 0, 0);
    EXPECT_EQ(log, std::vector<std::string>{"a"});
    EXPECT_EQ(GetWindowTextLengthW(edit), 4);
    DestroyWindow(edit);
    EXPECT_EQ(log, (std::vector<std::string>{"a", "a last", "a final"}));
}

TEST_F(framework_window, windows_of_other_threads_and_no_windows_are_refused)
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
