#include "runtime/once.h"

#include <windows.h>

namespace quill::runtime {
namespace {

// Any other value is the identifier of the initialising thread.
constexpr once_word not_begun = 0;
constexpr once_word finished = 0xFFFFFFFF;

// One lock for all words: it is never held during an initialisation.
constinit SRWLOCK words_lock = SRWLOCK_INIT;
constinit CONDITION_VARIABLE word_changed = CONDITION_VARIABLE_INIT;

} // namespace

once_result begin_once(once_word& word) noexcept
{
    if (__atomic_load_n(&word, __ATOMIC_ACQUIRE) == finished)
        return once_result::done;
    const once_word self = GetCurrentThreadId();
    AcquireSRWLockExclusive(&words_lock);
    while (word != not_begun && word != finished && word != self)
        SleepConditionVariableSRW(&word_changed, &words_lock, INFINITE, 0);
    const once_result result = word == finished ? once_result::done
                               : word == self   ? once_result::recursive
                                                : once_result::begin;
    if (result == once_result::begin)
        word = self;
    ReleaseSRWLockExclusive(&words_lock);
    return result;
}

void end_once(once_word& word, bool is_done) noexcept
{
    AcquireSRWLockExclusive(&words_lock);
    __atomic_store_n(&word, is_done ? finished : not_begun, __ATOMIC_RELEASE);
    ReleaseSRWLockExclusive(&words_lock);
    WakeAllConditionVariable(&word_changed);
}

} // namespace quill::runtime
