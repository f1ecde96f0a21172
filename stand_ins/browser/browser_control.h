// The WebBrowser control in a window: created, placed, navigated, and taken down in good order.
#pragma once

#include "stand_ins/browser/browser_events.h"
#include "stand_ins/browser/browser_site.h"

#include <windows.h>

#include <atlbase.h>
#include <exdisp.h>
#include <oleidl.h>

#include <string>

namespace quill {

// Used on one thread, a single-threaded apartment that pumps messages.
class browser_control
{
public:
    browser_control() = default;
    browser_control(const browser_control&) = delete;
    browser_control& operator=(const browser_control&) = delete;
    ~browser_control() { close(); }

    // Places the control into all of `window`.
    HRESULT open(HWND window, browser_events_owner& owner);
    void close();

    HRESULT navigate(const std::wstring& address);
    void go_back();
    void go_forward();
    void reload();

    // Fits the control to its window.
    void resize();
    void focus();
    // True when the control took the key message.
    bool take_key(MSG& message);

    std::wstring address() const;
    // The control itself; null before open() and after close().
    IWebBrowser2* browser() const { return browser_; }

private:
    HWND window_ = nullptr;
    CComPtr<IWebBrowser2> browser_;
    CComPtr<browser_site> site_;
    CComPtr<browser_events> events_;
};

} // namespace quill
