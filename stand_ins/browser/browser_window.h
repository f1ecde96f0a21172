// The browser's window: a bar with buttons and the URL, the page, and a status line. Polls until the document
// is shown and reports the result.
#pragma once

#include "stand_ins/browser/browser_control.h"
#include "stand_ins/browser/command_line.h"
#include "stand_ins/browser/helper_objects.h"
#include "stand_ins/browser/shown_document.h"
#include "stand_ins/browser/tab_browser.h"
#include "stand_ins/common/gdi_object.h"

#include <windows.h>

#include <atlbase.h>
#include <atlwin.h>

#include <string>

namespace quill {

class browser_window : public CWindowImpl<browser_window>, private browser_events_owner
{
public:
    DECLARE_WND_CLASS_EX(L"QuillBrowser", CS_HREDRAW, -1)

    explicit browser_window(browser_options options);

    // Creates the window and navigates to the URL. Prints the reason and returns false on failure.
    bool open();

    // True if the window or the page processed the key message, which must then not be dispatched.
    bool translate_key(MSG& message);

    // Whether the document was shown and, if requested, the screenshot saved.
    bool succeeded() const { return succeeded_; }

    BOOL ProcessWindowMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result,
                              DWORD map = 0) override;

private:
    bool handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result);
    bool create_children();
    void lay_out();
    void paint();
    void draw_button(const DRAWITEMSTRUCT& item) const;
    void on_command(int id);
    void go_to(const std::wstring& address);
    void follow_address();
    bool load_helpers();
    void close_control();

    // Called by the timer until the document is shown, fails or times out.
    void watch();
    shown_document current_document();
    void click_first();
    void end_watch(bool shown, const std::wstring& why);

    void on_title(const std::wstring& title) override;
    void on_status(const std::wstring& text) override;
    void on_navigate(const std::wstring& address) override;
    void on_failure(const std::wstring& address, long status) override;
    void on_new_window(const std::wstring& address) override;
    void on_command_state(bool back, bool enabled) override;

    browser_options options_;
    browser_control control_;
    CComPtr<tab_browser> tab_; // only with helper objects
    helper_objects helpers_;
    CWindow address_;
    RECT address_box_ = {};
    CWindow content_;
    std::wstring status_;
    std::wstring last_address_;
    gdi_object font_ = make_interface_font(13);
    gdi_object symbol_font_ = make_interface_font(19, FW_BOLD);
    gdi_object small_font_ = make_interface_font(11);
    ULONGLONG deadline_ = 0; // for the document, by GetTickCount64
    bool watching_ = false;
    bool clicked_ = false;
    bool succeeded_ = false;
};

} // namespace quill
