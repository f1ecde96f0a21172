// Recognises the second BeforeNavigate2 that the browser fires for one click. Used by the aggregator.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace quill {

class repeat_guard
{
public:
    // now is the system's tick count in milliseconds, here and below.
    explicit repeat_guard(std::uint64_t now) : last_cancel_tick_(now) {}

    // Whether url was cancelled less than 100 ms ago or is being opened; ignores case.
    bool is_repeat(std::wstring_view url, std::uint64_t now) const;

    // Starts the 100 ms, also for a repeat. Does not allocate if a URL of this length was passed before.
    void cancelled(std::wstring_view url, std::uint64_t now);

    // Sets the URL that is being opened: it is a repeat until the caller restores the returned URL, however
    // long that takes. Empty means none.
    std::wstring exchange_opening(std::wstring url) { return std::exchange(opening_url_, std::move(url)); }

    // Forgets both URLs, but not the time.
    void forget_url()
    {
        last_canceled_url_.clear();
        opening_url_.clear();
    }
    // The same if url is the one that was cancelled last; ignores case.
    void forget_url(std::wstring_view url);

private:
    std::uint64_t last_cancel_tick_;
    std::wstring last_canceled_url_;
    std::wstring opening_url_;
};

} // namespace quill
