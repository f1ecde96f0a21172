// What the viewer asks of its host by the private messages that the host registered it for.
#pragma once

#include <windows.h>

#include <string>

namespace quill {

class host_requests
{
public:
    // Where requests go: a window, and the message that it wants to be sent.
    void set_link_target(HWND window, UINT message) { link_ = {window, message}; }
    void set_save_target(HWND window, UINT message) { save_ = {window, message}; }

    // Each is sent, so the host may do anything inside, also destroy the viewer. Without a target, or when
    // its window is gone, nothing happens.
    void open_link(const std::wstring& link, bool new_window) const;
    void save_as() const;
    // The host writes the flag behind the text, as 0 or 1.
    void log(const std::wstring& text, bool flag) const;

    // The number of this document among those of its browser window.
    unsigned instance() const;

private:
    struct target
    {
        HWND window = nullptr;
        UINT message = 0;

        explicit operator bool() const { return IsWindow(window) != FALSE && message != 0; }
    };

    target link_;
    target save_;
};

} // namespace quill
