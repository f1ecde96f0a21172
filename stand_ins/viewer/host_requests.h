// The viewer's requests to its host, sent as private messages to the windows that the host has set.
#pragma once

#include <windows.h>

#include <string>

namespace quill {

class host_requests
{
public:
    // The target of a request: a window and the message to send to it.
    void set_link_target(HWND window, UINT message) { link_ = {window, message}; }
    void set_save_target(HWND window, UINT message) { save_ = {window, message}; }

    // These send a message, so the host may re-enter or destroy the viewer inside the call. Without a target,
    // or if its window no longer exists, they do nothing.
    void open_link(const std::wstring& link, bool new_window) const;
    void save_as() const;
    // The host appends the flag to the text, as 0 or 1.
    void log(const std::wstring& text, bool flag) const;

    // The index of this document among those of its browser window.
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
