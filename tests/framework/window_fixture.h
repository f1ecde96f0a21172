// A window that counts its messages and runs an action for each; checks at the end that no window is left.
#pragma once

#include "atl/atlwin.h"
#include "tests/support/process_resources.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace quill::test {

inline constexpr UINT message_run = WM_APP + 1;
inline constexpr UINT message_first = WM_APP + 10;
inline constexpr UINT message_last = WM_APP + 12;
inline constexpr UINT message_passed_on = WM_APP + 20;

// Counts its messages and runs the action of the test for each; can count its own destruction.
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
    std::vector<std::string> messages;
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
        messages.emplace_back("create");
        if (on_create)
            on_create(*this);
        return create_result;
    }
    LRESULT OnDestroy(UINT, WPARAM, LPARAM, BOOL&)
    {
        messages.emplace_back("destroy");
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
        messages.emplace_back("passed on");
        handled = FALSE;
        return 1;
    }
    LRESULT OnReached(UINT, WPARAM, LPARAM, BOOL&)
    {
        messages.emplace_back("reached");
        return 2;
    }
    LRESULT OnRange(UINT message, WPARAM, LPARAM, BOOL&) { return static_cast<LRESULT>(message); }
    LRESULT OnCommandExact(WORD code, WORD id, HWND control, BOOL&)
    {
        messages.emplace_back("exact");
        return code * 100 + id + (control == m_hWnd);
    }
    LRESULT OnCommandId(WORD, WORD, HWND, BOOL&) { return 60; }
    LRESULT OnCommandCode(WORD, WORD, HWND, BOOL&) { return 80; }

    int* ends_;
};

// For the duration of one call.
inline ATL::_U_RECT at(RECT&& place)
{
    return place;
}

inline bool class_exists(LPCWSTR name)
{
    WNDCLASSEXW found{};
    found.cbSize = sizeof found;
    return GetClassInfoExW(GetModuleHandleW(nullptr), name, &found) != 0;
}

class window_fixture : public testing::Test
{
protected:
    void SetUp() override
    {
        // The first windows and the first exception of a thread allocate resources that stay.
        test_window warm_up;
        test_window warm_up_child;
        ASSERT_TRUE(create(warm_up));
        ASSERT_TRUE(warm_up_child.Create(warm_up, at({0, 0, 9, 9})));
        warm_up.run([](test_window&) -> LRESULT { throw 0; });
        warm_up.DestroyWindow();
        ATL::_AtlWinModule.Term();
        before_ = process_resources::now();
    }
    void TearDown() override
    {
        ATL::_AtlWinModule.Term();
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

} // namespace quill::test
