#include "tests/runtime/runtime_library.h"

#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <exception>
#include <locale>
#include <mutex>
#include <stdexcept>
#include <string>

namespace quill::test {
namespace {

std::string text_of(const std::exception_ptr& exception)
{
    try {
        std::rethrow_exception(exception);
    } catch (const std::exception& error) {
        return error.what();
    }
}

wchar_t upper_case_by_locale(wchar_t character)
{
    const std::locale locale;
    return std::use_facet<std::ctype<wchar_t>>(locale).toupper(character);
}

long long nanoseconds_since_1970()
{
    return std::chrono::nanoseconds(std::chrono::system_clock::now().time_since_epoch()).count();
}

long long nanoseconds_of_steady_clock()
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool use_runtime()
{
    static const std::string text(100, 'x');
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    const bool is_usable = upper_case_by_locale(L'x') == L'X' && nanoseconds_since_1970() > 0;
    try {
        try {
            throw std::runtime_error(text);
        } catch (...) {
            throw;
        }
    } catch (const std::exception&) {
        return text_of(std::current_exception()) == text && is_usable;
    }
}

// Read and written in two steps: a lock that admits two threads loses counts.
int add_one(volatile int& number)
{
    const int before = number;
    if (before % 64 == 0)
        SwitchToThread();
    number = before + 1;
    return number;
}

int count(mutex_kind kind)
{
    static std::mutex by_call;
    static pthread_mutex_t by_constant = PTHREAD_MUTEX_INITIALIZER;
    static volatile int numbers[2];
    if (kind == mutex_kind::by_call) {
        const std::lock_guard lock(by_call);
        return add_one(numbers[0]);
    }
    pthread_mutex_lock(&by_constant);
    const int number = add_one(numbers[1]);
    pthread_mutex_unlock(&by_constant);
    return number;
}

int runs_of_throwing_routine = 0;

void throw_in_the_first_run()
{
    if (++runs_of_throwing_routine == 1)
        throw std::runtime_error("not yet");
}

int runs_until_done()
{
    pthread_once_t once = PTHREAD_ONCE_INIT;
    runs_of_throwing_routine = 0;
    for (int i = 0; i < 3; ++i) {
        try {
            pthread_once(&once, throw_in_the_first_run);
        } catch (const std::runtime_error&) {
            continue;
        }
    }
    return runs_of_throwing_routine;
}

std::atomic<int> begun_runs = 0;
std::atomic<int> ended_runs = 0;

void slow_routine()
{
    ++begun_runs;
    for (int i = 0; i < 100; ++i)
        SwitchToThread();
    ++ended_runs;
}

int run_once()
{
    static pthread_once_t once = PTHREAD_ONCE_INIT;
    pthread_once(&once, slow_routine);
    return begun_runs == ended_runs ? ended_runs.load() : -1;
}

int error_of_clock(int clock)
{
    timespec time{};
    return clock_gettime(clock, &time) == 0 ? 0 : errno;
}

constexpr runtime_calls all_calls = {use_runtime,
                                     count,
                                     runs_until_done,
                                     run_once,
                                     upper_case_by_locale,
                                     nanoseconds_since_1970,
                                     nanoseconds_of_steady_clock,
                                     error_of_clock};

} // namespace
} // namespace quill::test

extern "C" __declspec(dllexport) const quill::test::runtime_calls* calls()
{
    return &quill::test::all_calls;
}
