// Hosts the WebBrowser control in a window: creation, placement, navigation and shutdown.
#pragma once

#include "stand_ins/browser/browser_events.h"
#include "stand_ins/browser/browser_site.h"

#include <windows.h>

#include <atlbase.h>
#include <exdisp.h>
#include <oleidl.h>

#include <string>

namespace quill {

// Use on one thread, in a single-threaded apartment that pumps messages.
class browser_control
{
public:
    browser_control() = default;
    browser_control(const browser_control&) = delete;
    browser_control& operator=(const browser_control&) = delete;
    ~browser_control() { close(); }

    // Creates the control, which fills `window`.
    HRESULT open(HWND window, browser_events_owner& owner);
    void close();

    HRESULT navigate(const std::wstring& address);
    void go_back();
    void go_forward();
    void reload();

    // Resizes the control to its window.
    void resize();
    void focus();
    // True if the control processed the key message.
    bool translate_key(MSG& message);

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
