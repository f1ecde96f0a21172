// The module's mutex type: a critical section with the standard library's interface.
#pragma once

#include <windows.h>

namespace quill::platform {

// Recursive. Meets the BasicLockable requirements.
class MutexImpl
{
public:
    MutexImpl() noexcept { InitializeCriticalSection(&section_); }
    ~MutexImpl() { DeleteCriticalSection(&section_); }
    MutexImpl(const MutexImpl&) = delete;
    MutexImpl& operator=(const MutexImpl&) = delete;

    void lock() noexcept { EnterCriticalSection(&section_); }
    void unlock() noexcept { LeaveCriticalSection(&section_); }

private:
    CRITICAL_SECTION section_;
};

} // namespace quill::platform
