// The system's own browser program, iexplore.exe, with the module and the stand-in viewer in it.
#include "stand_ins/browser/shown_document.h"
#include "tests/browser/engine.h"
#include "tests/browser/registered_module.h"
#include "tests/support/http_server.h"
#include "tests/support/viewer/viewer_class.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

#include <string>

namespace quill::test {
namespace {

constexpr DWORD start_ms = 45'000; // a whole browser starts, and the renderer
constexpr wchar_t program[] = L"C:\\Program Files\\Internet Explorer\\iexplore.exe";

// Terminates a process that is still running at the end of the test.
class browser_process
{
public:
    explicit browser_process(const std::wstring& url)
    {
        std::wstring command = std::wstring(L"\"") + program + L"\" " + url;
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        EXPECT_TRUE(CreateProcessW(program, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                   &startup, &process_));
    }
    browser_process(const browser_process&) = delete;
    browser_process& operator=(const browser_process&) = delete;
    ~browser_process()
    {
        if (process_.hProcess == nullptr)
            return;
        if (!ended())
            TerminateProcess(process_.hProcess, 99);
        CloseHandle(process_.hThread);
        CloseHandle(process_.hProcess);
    }

    bool ended() const { return WaitForSingleObject(process_.hProcess, 0) == WAIT_OBJECT_0; }

    DWORD exit_code() const
    {
        DWORD code = STILL_ACTIVE;
        GetExitCodeProcess(process_.hProcess, &code);
        return code;
    }

    // Its top-level window with a viewer in it; nullptr until there is one.
    HWND window_with_viewer() const
    {
        search wanted = {process_.dwProcessId, nullptr};
        EnumWindows(look_at_window, reinterpret_cast<LPARAM>(&wanted));
        return wanted.found;
    }

private:
    struct search
    {
        DWORD process_id;
        HWND found;
    };

    static BOOL CALLBACK look_at_window(HWND window, LPARAM parameter)
    {
        auto& wanted = *reinterpret_cast<search*>(parameter);
        DWORD process_id = 0;
        GetWindowThreadProcessId(window, &process_id);
        if (process_id == wanted.process_id && find_shown_document(window).state != viewer_state::empty)
            wanted.found = window;
        return wanted.found == nullptr;
    }

    PROCESS_INFORMATION process_ = {};
};

TEST(InternetExplorer, ShowsADocumentAtItsPageAndZoomAndCloses)
{
    const ole_apartment apartment;
    const registered_module module;
    const viewer_registration registration;
    const registered_library viewer(L"QuillPDFCtrl.dll");
    http_server server;
    server.route("/bracket.pdf", http_response::ok(sample(L"bracket.pdf")));

    const browser_process browser(server.url(L"/bracket.pdf#page=2#zoom=150"));
    shown_document document;
    ASSERT_TRUE(wait_until(
        [&] {
            document = find_shown_document(browser.window_with_viewer());
            return document.state == viewer_state::shown || browser.ended();
        },
        start_ms));
    EXPECT_EQ(document.text, L"page 2 of 5 - 150 %");

    PostMessageW(browser.window_with_viewer(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(wait_until([&] { return browser.ended(); }, start_ms));
    EXPECT_EQ(browser.exit_code(), 0u);
}

} // namespace
} // namespace quill::test
