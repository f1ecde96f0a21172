// Recognises the second of two navigations that the browser announces for one click.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace quill {

class repeat_guard
{
public:
    // Ticks are milliseconds of the system's tick count.
    explicit repeat_guard(std::uint64_t now) : last_cancel_tick_(now) {}

    // Whether url, without regard to case, was cancelled less than 100 ms ago or is being opened.
    bool is_repeat(std::wstring_view url, std::uint64_t now) const;

    // Every cancellation begins a new 100 ms, that of a repeat too. Allocates only if no URL of this length
    // was passed before.
    void cancelled(std::wstring_view url, std::uint64_t now);

    // While a URL is being opened, which may take any time, it is a repeat whenever it comes. Returns the URL
    // that was being opened so far, to be set again afterwards; empty for none.
    std::wstring exchange_opening(std::wstring url) { return std::exchange(opening_url_, std::move(url)); }

    // The time is kept.
    void forget_url()
    {
        last_canceled_url_.clear();
        opening_url_.clear();
    }
    // The same, if url is the one that was cancelled last.
    void forget_url(std::wstring_view url);

private:
    std::uint64_t last_cancel_tick_;
    std::wstring last_canceled_url_;
    std::wstring opening_url_;
};

} // namespace quill
