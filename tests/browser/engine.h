// The system's browser engine in a window, driven by a test.
#pragma once

#include "stand_ins/browser/browser_control.h"
#include "stand_ins/browser/browser_events.h"

#include <windows.h>

#include <string>
#include <vector>

namespace quill::test {

// An apartment for the calling thread, entered first and left last.
class ole_apartment
{
public:
    ole_apartment();
    ole_apartment(const ole_apartment&) = delete;
    ole_apartment& operator=(const ole_apartment&) = delete;
    ~ole_apartment();
};

class engine final : private browser_events_owner
{
public:
    engine();
    engine(const engine&) = delete;
    engine& operator=(const engine&) = delete;
    ~engine();

    // Navigates; fails the test if the control refuses.
    void open(const std::wstring& url);
    // Closes the control, and then the window, as a closed browser does.
    void close();

    HWND window() const { return window_; }
    browser_control& control() { return control_; }
    // The first descendant window of a class; nullptr without one.
    HWND find_window(const std::wstring& window_class) const;

    // The URLs of the control's navigations, and those that failed.
    const std::vector<std::wstring>& navigations() const { return navigations_; }
    const std::vector<std::wstring>& failures() const { return failures_; }

private:
    void on_title(const std::wstring&) override {}
    void on_status(const std::wstring&) override {}
    void on_navigate(const std::wstring& url) override { navigations_.push_back(url); }
    void on_failure(const std::wstring& url, long) override { failures_.push_back(url); }
    void on_new_window(const std::wstring&) override {}
    void on_command_state(bool, bool) override {}

    HWND window_;
    browser_control control_;
    std::vector<std::wstring> navigations_;
    std::vector<std::wstring> failures_;
};

// The contents of a file in the samples folder.
std::string sample(const std::wstring& name);

} // namespace quill::test
