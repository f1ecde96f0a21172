// Tells the worker whether the URL that it received is still the one of its window. Belongs to the document;
// advanced on the window's thread, before the window answers with another URL.
#pragma once

#include "platform/mutex.h"

#include <cstdint>
#include <mutex>

namespace quill {

class url_version
{
public:
    std::uint32_t current() noexcept
    {
        const std::lock_guard lock(mutex_);
        return version_;
    }

    void advance() noexcept
    {
        const std::lock_guard lock(mutex_);
        ++version_;
    }

    // Makes the call unless there is another version by now: when advance() returns, a call for a former
    // version is either done or will not be made. The call must not wait.
    template <class Call>
    void if_current(std::uint32_t version, const Call& call) noexcept
    {
        const std::lock_guard lock(mutex_);
        if (version == version_)
            call();
    }

private:
    platform::MutexImpl mutex_;
    std::uint32_t version_ = 0;
};

} // namespace quill
