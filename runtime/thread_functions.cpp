// What the C++ library asks of a thread library, over the system's own locks. The toolchain's thread library
// is not linked into the module: at its start it puts a vectored exception handler in front of all others of
// the process and takes a TLS index, and it opens handles that it closes for threads only that end before the
// module does.
#include "runtime/once.h"

#include <windows.h>

#include <pthread.h>

#include <exception>

namespace {

static_assert(sizeof(pthread_mutex_t) == sizeof(SRWLOCK) && alignof(pthread_mutex_t) == alignof(SRWLOCK));
static_assert(sizeof(pthread_once_t) == sizeof(quill::runtime::once_word) && PTHREAD_ONCE_INIT == 0);

// A mutex is either initialised by a call or by a constant, which no lock in use looks like.
SRWLOCK* lock_of(pthread_mutex_t* mutex) noexcept
{
    pthread_mutex_t value = __atomic_load_n(mutex, __ATOMIC_RELAXED);
    if (value == PTHREAD_RECURSIVE_MUTEX_INITIALIZER || value == PTHREAD_ERRORCHECK_MUTEX_INITIALIZER)
        std::terminate(); // kinds that the system's lock is not
    if (value == PTHREAD_MUTEX_INITIALIZER)
        __atomic_compare_exchange_n(mutex, &value, pthread_mutex_t{0}, false, __ATOMIC_RELAXED,
                                    __ATOMIC_RELAXED);
    return reinterpret_cast<SRWLOCK*>(mutex);
}

} // namespace

extern "C" {

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes)
{
    if (attributes)
        std::terminate(); // as above
    *reinterpret_cast<SRWLOCK*>(mutex) = SRWLOCK_INIT;
    return 0;
}

int pthread_mutex_destroy(pthread_mutex_t*)
{
    return 0; // the system's lock holds nothing
}

int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    AcquireSRWLockExclusive(lock_of(mutex));
    return 0;
}

int pthread_mutex_unlock(pthread_mutex_t* mutex)
{
    ReleaseSRWLockExclusive(reinterpret_cast<SRWLOCK*>(mutex));
    return 0;
}

// Conditions are never initialised: nothing here waits on one.
int pthread_cond_destroy(pthread_cond_t*)
{
    return 0;
}

int pthread_once(pthread_once_t* once, void (*initialise)())
{
    auto& word = *reinterpret_cast<quill::runtime::once_word*>(once);
    if (quill::runtime::begin_once(word) != quill::runtime::once_answer::begin)
        return 0;
    try {
        initialise();
    } catch (...) {
        quill::runtime::end_once(word, false);
        throw;
    }
    quill::runtime::end_once(word, true);
    return 0;
}

} // extern "C"
