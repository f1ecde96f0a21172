// Recognises the second BeforeNavigate2 that the browser fires for one click. Used by the aggregator.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

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

    // The URL is a repeat until its opening is ended, however long that takes. Openings may be nested,
    // because messages are dispatched meanwhile.
    void begin_opening(std::wstring_view url) { openings_.emplace_back(url); }
    std::size_t openings() const noexcept { return openings_.size(); }
    // Ends those that were begun when there were count others.
    void end_openings(std::size_t count) noexcept;

    // Forgets the URL that was cancelled last, but neither the time nor the openings.
    void forget_url() { last_canceled_url_.clear(); }
    // The same if url is the one that was cancelled last; ignores case.
    void forget_url(std::wstring_view url);

private:
    std::uint64_t last_cancel_tick_;
    std::wstring last_canceled_url_;
    std::vector<std::wstring> openings_;
};

} // namespace quill
