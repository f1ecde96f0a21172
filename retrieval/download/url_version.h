// Tells the worker whether the URL that it received is still the document's. The document owns the version
// and advances it on its UI thread before its window returns another URL.
#pragma once

#include "platform/mutex.h"

#include <cstdint>
#include <mutex>

namespace quill {

// Callable on any thread.
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

    // Calls `call` only if version is still current. Once advance() has returned, calls for earlier versions
    // have either completed or will not be made. `call` runs under the lock and must not block.
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
