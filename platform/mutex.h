// The module's mutex type: a Windows critical section behind the standard library's names.
#pragma once

#include <windows.h>

namespace quill::platform {

// Re-entrant on one thread. Usable wherever a BasicLockable is asked for.
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
