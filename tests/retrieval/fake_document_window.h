// A strict stand-in for the window of the active document, on a thread of its own as in the browser: handles
// the worker's messages as scripted, counts them and records violations of the protocol.
#pragma once

#include "retrieval/download/window_messages.h"

#include <windows.h>

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quill::test {

struct seen_progress
{
    std::uint32_t progress;
    std::uint32_t progress_max;
    std::uint32_t status_code;
};

// How the window handles one message.
enum class reply
{
    proper,
    nothing, // returns without doing anything
    hang,    // does not return until stop_hanging(), then handles it correctly
    vanish   // destroys itself inside the handler
};

struct window_script
{
    std::wstring url = {};
    reply to_length = reply::proper;
    reply to_url = reply::proper;
    reply to_progress = reply::proper;
    reply to_cache_file = reply::proper;
    // Called on the window's thread.
    std::function<void()> on_length = {};
    std::function<void(const seen_progress&)> on_progress = {};
};

class fake_document_window
{
public:
    explicit fake_document_window(window_script script);
    ~fake_document_window();
    fake_document_window(const fake_document_window&) = delete;
    fake_document_window& operator=(const fake_document_window&) = delete;

    HWND handle() const { return window_; }
    void stop_hanging() { SetEvent(go_on_); }
    // Destroys the window and joins its thread. May be called twice.
    void close();

    // The messages of the protocol in order of arrival; consecutive progress messages are one entry.
    std::vector<UINT> messages() const;
    std::vector<seen_progress> progress() const;
    std::wstring cache_file() const;
    // Violations of the protocol; empty without one.
    std::vector<std::string> violations() const;
    // How many messages have been handled completely.
    std::size_t handled() const;

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    void run(HANDLE ready);
    void note(UINT message);
    void require(bool condition, const char* what);
    void handle_message(UINT message, WPARAM wparam, LPARAM lparam);
    void act(UINT message, WPARAM wparam, LPARAM lparam);
    reply reply_to(UINT message) const;

    const window_script script_;
    HANDLE go_on_;
    HWND window_ = nullptr;
    mutable std::mutex mutex_;
    std::vector<UINT> messages_; // guarded by mutex_, as all below
    std::vector<seen_progress> progress_;
    std::wstring cache_file_;
    std::vector<std::string> violations_;
    std::size_t handled_ = 0;
    std::thread thread_;
};

} // namespace quill::test
