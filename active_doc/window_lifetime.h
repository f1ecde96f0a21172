// Tells whether the document's window is still the one for which an operation began. During any call into the
// host, the host may destroy the window and have another one created; the handle value may be reused.
//
//     const window_watch window(window_lifetime_);
//     site->GetWindow(&parent);                    // any call into the host
//     if (!window.is_open())
//         return;
#pragma once

#include <cstdint>

namespace quill {

// Covers the time from WM_CREATE to WM_DESTROY. UI thread only.
class window_lifetime
{
public:
    void begin() noexcept
    {
        ++number_;
        is_open_ = true;
    }
    void end() noexcept { is_open_ = false; }

private:
    friend class window_watch;

    std::uint32_t number_ = 0;
    bool is_open_ = false;
};

// Construct before the first call out and check after each one. The caller holds a reference to the document
// meanwhile.
class window_watch
{
public:
    explicit window_watch(const window_lifetime& lifetime) noexcept
        : lifetime_(lifetime), number_(lifetime.number_)
    {
    }

    // Whether the window that was open at construction still is; false if there was none.
    bool is_open() const noexcept { return lifetime_.is_open_ && lifetime_.number_ == number_; }

private:
    const window_lifetime& lifetime_;
    std::uint32_t number_;
};

} // namespace quill
