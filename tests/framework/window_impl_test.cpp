// CWindowImpl: window classes, messages, and every order in which a window and its object are destroyed.
#include "tests/framework/window_fixture.h"

#include <stdexcept>
#include <thread>

using ATL::_AtlWinModule;

namespace quill::test {
namespace {

class unnamed_window : public ATL::CWindowImpl<unnamed_window>
{
public:
    BEGIN_MSG_MAP(unnamed_window)
    END_MSG_MAP()
};

using FrameworkWindow = window_fixture;

TEST_F(FrameworkWindow, ClassIsRegisteredOnFirstUseAndUnregisteredByTerm)
{
    EXPECT_FALSE(class_exists(L"QuillFrameworkTestWindow"));
    test_window window;
    ASSERT_TRUE(create(window));
    EXPECT_TRUE(class_exists(L"QuillFrameworkTestWindow"));

    _AtlWinModule.Term();
    EXPECT_TRUE(class_exists(L"QuillFrameworkTestWindow")) << "a class with windows stays registered";
    EXPECT_EQ(window.run([](test_window&) { return LRESULT{42}; }), 42) << "and its windows work";

    window.DestroyWindow();
    _AtlWinModule.Term();
    EXPECT_FALSE(class_exists(L"QuillFrameworkTestWindow"));
    ASSERT_TRUE(create(window)) << "registered again when it is used again";
    window.DestroyWindow();
}

// A class that outlived its module would point into unmapped memory, and prevent registration when the module
// is loaded again at the same address.
TEST_F(FrameworkWindow, ClassesAreUnregisteredWithTheirModule)
{
    HMODULE first_place = nullptr;
    for (int load = 0; load < 3; ++load) {
        const HMODULE module = LoadLibraryW(L"test_window_module.dll");
        ASSERT_TRUE(module);
        if (!first_place)
            first_place = module;
        EXPECT_EQ(module, first_place) << "loaded at another address: the test proves nothing";
        const auto use = reinterpret_cast<BOOL (*)()>(
            reinterpret_cast<void (*)()>(GetProcAddress(module, "use_window_classes")));
        ASSERT_TRUE(use);
        EXPECT_TRUE(use()) << load;
        FreeLibrary(module);
        EXPECT_FALSE(GetModuleHandleW(L"test_window_module.dll"));
        WNDCLASSEXW found{};
        found.cbSize = sizeof found;
        EXPECT_FALSE(GetClassInfoExW(module, L"QuillFrameworkModuleWindow", &found));
        EXPECT_FALSE(GetClassInfoExW(module, L"AtlAxWin140", &found));
    }
}

TEST_F(FrameworkWindow, ClassWithoutANameGetsAUniqueName)
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

TEST_F(FrameworkWindow, PositionTitleStylesAndParameterReachTheWindow)
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
    EXPECT_EQ(child.m_hWnd, nullptr) << "children are destroyed with their parent";
    EXPECT_EQ(child.finals.size(), 1u);
}

TEST_F(FrameworkWindow, MessagesBeforeNccreateFindTheObject)
{
    test_window window;
    const HWND handle = create(window);
    ASSERT_TRUE(handle);
    EXPECT_EQ(window.handle_in_min_max_info, handle);
    window.DestroyWindow();
}

TEST_F(FrameworkWindow, MapFindsTheHandler)
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

    window.messages.clear();
    EXPECT_EQ(SendMessageW(handle, message_passed_on, 0, 0), 2);
    EXPECT_EQ(window.messages, (std::vector<std::string>{"passed on", "reached"}));
    window.DestroyWindow();
}

TEST_F(FrameworkWindow, ObjectIsDeletedByItsFinalMessage)
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

TEST_F(FrameworkWindow, FinalMessageWaitsForTheHandlerThatDestroyedTheWindow)
{
    int ends = 0;
    auto* const window = new test_window(&ends);
    window->on_final = [](test_window& self) { delete &self; };
    ASSERT_TRUE(create(*window));
    const LRESULT result = window->run([&](test_window& self) {
        ::DestroyWindow(self.m_hWnd);
        EXPECT_EQ(ends, 0) << "the handler's object still exists";
        EXPECT_EQ(self.finals.size(), 0u);
        return LRESULT{7};
    });
    EXPECT_EQ(result, 7);
    EXPECT_EQ(ends, 1);
}

TEST_F(FrameworkWindow, FinalMessageIsDeliveredOnceWhenTheHandleWasDetached)
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

TEST_F(FrameworkWindow, CreationRefusedByTheObjectDestroysIt)
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

TEST_F(FrameworkWindow, CreationRefusedByAHookLeaksNothing)
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

    const HWND plain_window = CreateWindowExW(0, L"QuillFrameworkTestWindow", nullptr, WS_POPUP, 0, 0, 9, 9,
                                              nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    ASSERT_TRUE(plain_window);
    EXPECT_EQ(refused.m_hWnd, nullptr) << "another window of the class was attached to it";
    DestroyWindow(plain_window);

    test_window next;
    const HWND handle = create(next);
    ASSERT_TRUE(handle);
    EXPECT_EQ(next.m_hWnd, handle) << "the next window belongs to its own object";
    EXPECT_EQ(refused.m_hWnd, nullptr);
    next.DestroyWindow();
}

TEST_F(FrameworkWindow, ExceptionsDoNotEscape)
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

TEST_F(FrameworkWindow, ObjectDeletedByItsOwnHandlerDestroysItsWindow)
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

TEST_F(FrameworkWindow, ObjectDestroyedFirstDestroysItsWindow)
{
    HWND handle = nullptr;
    {
        test_window window;
        handle = create(window);
        ASSERT_TRUE(handle);
    }
    EXPECT_FALSE(IsWindow(handle));
}

TEST_F(FrameworkWindow, WindowCreatedWhileAnotherIsBeingCreated)
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

TEST_F(FrameworkWindow, ObjectOfTheModulesClassNeedsNoProperty)
{
    test_window window;
    test_window on_top;
    ASSERT_TRUE(create(window));
    const HWND handle = window.m_hWnd;
    ASSERT_TRUE(on_top.SubclassWindow(handle));
    std::vector<std::wstring> properties; // the system has some classes of its own
    EnumPropsExW(
        handle,
        [](HWND, LPWSTR name, HANDLE, ULONG_PTR names) -> BOOL {
            if (!IS_INTRESOURCE(name) && std::wstring_view(name).starts_with(L"ATL:"))
                reinterpret_cast<std::vector<std::wstring>*>(names)->emplace_back(name);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&properties));
    EXPECT_EQ(properties, std::vector<std::wstring>{});
    EXPECT_EQ(on_top.run([](test_window&) { return LRESULT{3}; }), 3);
    EXPECT_EQ(on_top.UnsubclassWindow(), handle);
    EXPECT_EQ(window.run([](test_window&) { return LRESULT{4}; }), 4);
    EXPECT_TRUE(DestroyWindow(handle));
}

TEST_F(FrameworkWindow, OneObjectHasOneWindow)
{
    test_window window;
    const HWND handle = create(window);
    ASSERT_TRUE(handle);
    EXPECT_EQ(create(window), nullptr);
    EXPECT_EQ(window.m_hWnd, handle);
    EXPECT_EQ(window.run([](test_window&) { return LRESULT{1}; }), 1);
    window.DestroyWindow();
}

TEST_F(FrameworkWindow, ThreadsCreateWindowsAtTheSameTime)
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

} // namespace
} // namespace quill::test
