// Tells whether the document's window is still the one that something began for. A host may destroy the
// window inside any call that the document makes, and have another one created before the call returns. The
// window handle tells neither.
#pragma once

#include <cstdint>

namespace quill {

// From the window's WM_CREATE to its WM_DESTROY. User-interface thread only.
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

// Built before the first call out, asked after each one. The document must be kept alive meanwhile.
class window_watch
{
public:
    explicit window_watch(const window_lifetime& lifetime) noexcept
        : lifetime_(lifetime), number_(lifetime.number_)
    {
    }

    // Whether the window that was open at construction still is; false when there was none.
    bool is_open() const noexcept { return lifetime_.is_open_ && lifetime_.number_ == number_; }

private:
    const window_lifetime& lifetime_;
    std::uint32_t number_;
};

} // namespace quill
