// Keys: which ones the document passes to its viewer and which it leaves to the browser.
#include "tests/document/document_fixture.h"

#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::test {
namespace {

constexpr char translate[] = "IOleInPlaceFrame::TranslateAccelerator";

// Holds keys of this thread down in its scope.
class held_keys
{
public:
    explicit held_keys(std::initializer_list<int> keys)
    {
        GetKeyboardState(before_);
        BYTE state[256]{};
        for (const int key : keys)
            state[key] = 0x80;
        SetKeyboardState(state);
    }
    held_keys(const held_keys&) = delete;
    held_keys& operator=(const held_keys&) = delete;
    ~held_keys() { SetKeyboardState(before_); }

private:
    BYTE before_[256]{};
};

// A window in place of the viewer's own; records the keys that it gets.
class key_window
{
public:
    key_window()
    {
        window_ =
            CreateWindowExW(0, L"STATIC", L"keys", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        old_ = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
    }
    key_window(const key_window&) = delete;
    key_window& operator=(const key_window&) = delete;
    ~key_window() { DestroyWindow(window_); }

    HWND handle() const { return window_; }
    std::vector<std::pair<WPARAM, LPARAM>> keys;

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
    {
        auto* const self = reinterpret_cast<key_window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (message == WM_KEYDOWN)
            self->keys.emplace_back(wparam, lparam);
        return CallWindowProcW(self->old_, window, message, wparam, lparam);
    }

    HWND window_ = nullptr;
    WNDPROC old_ = nullptr;
};

using keys = std::vector<std::pair<WPARAM, LPARAM>>;

HRESULT press(document_fixture& fixture, UINT message, WPARAM key)
{
    MSG event{};
    event.hwnd = fixture.window();
    event.message = message;
    event.wParam = key;
    event.lParam = 0x210001;
    return fixture.as<IOleInPlaceActiveObject>()->TranslateAccelerator(&event);
}

QUILL_DOCUMENT_TEST(DocumentKeys, NullMessageIsRefused)
{
    fixture.create();
    EXPECT_EQ(fixture.as<IOleInPlaceActiveObject>()->TranslateAccelerator(nullptr), E_POINTER);
    EXPECT_EQ(fixture.take_log(), std::vector<std::string>{});
}

QUILL_DOCUMENT_TEST(DocumentKeys, AreNotTranslatedBeforeActivation)
{
    fixture.create();
    fixture.set_site();
    fixture.take_log();
    EXPECT_EQ(press(fixture, WM_KEYDOWN, 'F'), S_FALSE);
    EXPECT_EQ(fixture.take_log(), std::vector<std::string>{"@ TranslateAccelerator"});
    EXPECT_EQ(press(fixture, WM_CHAR, 'f'), S_FALSE);
    const held_keys control{VK_CONTROL, VK_LCONTROL};
    EXPECT_EQ(press(fixture, WM_KEYDOWN, 'O'), S_FALSE);
    EXPECT_EQ(fixture.host.calls.count(translate), 0);
    press(fixture, WM_KEYDOWN, 'F'); // there is no window to send it to
}

QUILL_DOCUMENT_TEST(DocumentKeys, ControlWithAnEditingKeyIsSentToTheViewer)
{
    key_window viewer_window;
    fixture.viewer.window = viewer_window.handle();
    fixture.show_file(fixture.pdf());
    for (const int control : {VK_LCONTROL, VK_RCONTROL}) {
        const held_keys held{VK_CONTROL, control};
        for (const WPARAM key : {WPARAM{'A'}, WPARAM{'C'}, WPARAM{'F'}, WPARAM{'P'}}) {
            SCOPED_TRACE(key);
            viewer_window.keys.clear();
            fixture.take_log();
            EXPECT_EQ(press(fixture, WM_KEYDOWN, key), S_OK);
            EXPECT_EQ(viewer_window.keys, (keys{{key, 0x210001}}));
            EXPECT_EQ(fixture.take_log(), std::vector<std::string>{"@ TranslateAccelerator"});
        }
    }
    EXPECT_EQ(fixture.host.calls.count(translate), 0) << "the frame got the document's keys";
    fixture.close_in_order();
}

// Forwarded to its own window, a key would loop endlessly.
QUILL_DOCUMENT_TEST(DocumentKeys, DoNotLoopWhenTheViewerReturnsTheDocumentWindow)
{
    fixture.show_file(fixture.pdf());
    fixture.viewer.window = fixture.window();
    const held_keys held{VK_CONTROL, VK_LCONTROL};
    EXPECT_EQ(press(fixture, WM_KEYDOWN, 'F'), S_OK);
    EXPECT_EQ(fixture.viewer.texts(viewer_get_window).size(), 1u);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentKeys, OtherKeysAreOfferedToTheFrame)
{
    key_window viewer_window;
    fixture.viewer.window = viewer_window.handle();
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(press(fixture, WM_KEYDOWN, 'F'), S_OK) << "no Control key: the frame's own F";
    EXPECT_EQ(fixture.host.frame.commands, std::vector<WORD>{18});
    {
        const held_keys control{VK_CONTROL, VK_LCONTROL};
        EXPECT_EQ(press(fixture, WM_KEYDOWN, 'O'), S_OK);
        EXPECT_EQ(fixture.host.frame.commands, (std::vector<WORD>{18, 17}));
        EXPECT_EQ(press(fixture, WM_KEYDOWN, 'B'), S_FALSE) << "unassigned key";
        EXPECT_EQ(press(fixture, WM_KEYUP, 'F'), S_FALSE) << "only pressing counts";
        EXPECT_EQ(press(fixture, WM_SYSKEYDOWN, 'C'), S_FALSE);
        EXPECT_EQ(press(fixture, WM_KEYDOWN, 'a'), S_FALSE) << "0x61 is a key of the number pad";
    }
    {
        const held_keys alt{VK_MENU, VK_LMENU};
        EXPECT_EQ(press(fixture, WM_SYSKEYDOWN, 'F'), S_OK);
        EXPECT_EQ(fixture.host.frame.commands, (std::vector<WORD>{18, 17, 19}));
    }
    EXPECT_EQ(viewer_window.keys, keys{});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentKeys, GenericControlStateAloneIsNotEnough)
{
    fixture.show_file(fixture.pdf());
    const held_keys only_generic{VK_CONTROL};
    EXPECT_NE(press(fixture, WM_KEYDOWN, 'P'), S_OK) << "neither the left nor the right key is down";
    EXPECT_EQ(fixture.viewer.texts(viewer_get_window), std::vector<std::string>{});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentKeys, AreNotTranslatedAfterDeactivation)
{
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(press(fixture, WM_KEYDOWN, 'F'), S_OK);
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    fixture.host.calls.forget_calls();
    EXPECT_EQ(press(fixture, WM_KEYDOWN, 'F'), S_FALSE) << "the frame is released";
    EXPECT_EQ(fixture.host.calls.count(translate), 0);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentKeys, TheFrameMayRefuse)
{
    fixture.show_file(fixture.pdf());
    fixture.host.calls.make_fail(translate, call_fault::error);
    EXPECT_EQ(press(fixture, WM_KEYDOWN, 'F'), E_FAIL);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentKeys, KeyDownMessagesAreSentToTheViewerWindow)
{
    key_window viewer_window;
    fixture.viewer.window = viewer_window.handle();
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.send(WM_KEYDOWN, VK_NEXT, 0x1510001), 0);
    EXPECT_EQ(fixture.send(WM_KEYDOWN, 'Z', 1), 0);
    EXPECT_EQ(viewer_window.keys, (keys{{VK_NEXT, 0x1510001}, {'Z', 1}}));
    EXPECT_EQ(fixture.viewer.texts(viewer_get_window).size(), 2u) << "queried for each key";
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentKeys, AreIgnoredWithoutAViewerWindow)
{
    key_window viewer_window;
    fixture.viewer.window = nullptr;
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.send(WM_KEYDOWN, VK_NEXT, 1), 0);

    VARIANT answer{};
    answer.vt = VT_I8; // the right number in the wrong type
    answer.ullVal = reinterpret_cast<ULONG_PTR>(viewer_window.handle());
    fixture.viewer.answer(viewer_get_window, S_OK, answer);
    EXPECT_EQ(fixture.send(WM_KEYDOWN, VK_NEXT, 1), 0);

    answer.vt = VT_UI8;
    fixture.viewer.answer(viewer_get_window, DISP_E_EXCEPTION, answer);
    EXPECT_EQ(fixture.send(WM_KEYDOWN, VK_NEXT, 1), 0);

    answer.ullVal = 0xdead0;
    fixture.viewer.answer(viewer_get_window, S_OK, answer);
    EXPECT_EQ(fixture.send(WM_KEYDOWN, VK_NEXT, 1), 0);
    EXPECT_EQ(viewer_window.keys, keys{});
    fixture.close_in_order();
}

} // namespace
} // namespace quill::test
