#include "runtime/once.h"

#include <windows.h>

namespace quill::runtime {
namespace {

// Any other value is the id of the thread that initialises.
constexpr once_word not_begun = 0;
constexpr once_word finished = 0xFFFFFFFF;

// One lock serves all words: each is initialised once, in no time that matters.
constinit SRWLOCK words_lock = SRWLOCK_INIT;
constinit CONDITION_VARIABLE word_changed = CONDITION_VARIABLE_INIT;

} // namespace

once_answer begin_once(once_word& word) noexcept
{
    if (__atomic_load_n(&word, __ATOMIC_ACQUIRE) == finished)
        return once_answer::done;
    const once_word self = GetCurrentThreadId();
    AcquireSRWLockExclusive(&words_lock);
    while (word != not_begun && word != finished && word != self)
        SleepConditionVariableSRW(&word_changed, &words_lock, INFINITE, 0);
    const once_answer answer = word == finished ? once_answer::done
                               : word == self   ? once_answer::recursive
                                                : once_answer::begin;
    if (answer == once_answer::begin)
        word = self;
    ReleaseSRWLockExclusive(&words_lock);
    return answer;
}

void end_once(once_word& word, bool is_done) noexcept
{
    AcquireSRWLockExclusive(&words_lock);
    __atomic_store_n(&word, is_done ? finished : not_begun, __ATOMIC_RELEASE);
    ReleaseSRWLockExclusive(&words_lock);
    WakeAllConditionVariable(&word_changed);
}

} // namespace quill::runtime
