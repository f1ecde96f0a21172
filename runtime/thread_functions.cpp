// The pthread functions that the C++ library calls, implemented with the system's locks. The module does not
// link the toolchain's thread library, which installs a vectored exception handler in the host process,
// allocates a TLS index, and leaks handles for threads that outlive the module.
#include "runtime/once.h"

#include <windows.h>

#include <pthread.h>

#include <exception>

namespace {

static_assert(sizeof(pthread_mutex_t) == sizeof(SRWLOCK) && alignof(pthread_mutex_t) == alignof(SRWLOCK));
static_assert(sizeof(pthread_once_t) == sizeof(quill::runtime::once_word) && PTHREAD_ONCE_INIT == 0);

// A mutex may be initialised by a function or by a constant that is not a valid SRWLOCK value.
SRWLOCK* lock_of(pthread_mutex_t* mutex) noexcept
{
    pthread_mutex_t value = __atomic_load_n(mutex, __ATOMIC_RELAXED);
    if (value == PTHREAD_RECURSIVE_MUTEX_INITIALIZER || value == PTHREAD_ERRORCHECK_MUTEX_INITIALIZER)
        std::terminate(); // an SRWLOCK cannot implement these types
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
        std::terminate(); // only the default attributes are supported
    *reinterpret_cast<SRWLOCK*>(mutex) = SRWLOCK_INIT;
    return 0;
}

int pthread_mutex_destroy(pthread_mutex_t*)
{
    return 0; // an SRWLOCK owns no resources
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

// No condition is ever initialised: no code in the module waits on one.
int pthread_cond_destroy(pthread_cond_t*)
{
    return 0;
}

int pthread_once(pthread_once_t* once, void (*initialise)())
{
    auto& word = *reinterpret_cast<quill::runtime::once_word*>(once);
    if (quill::runtime::begin_once(word) != quill::runtime::once_result::begin)
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
