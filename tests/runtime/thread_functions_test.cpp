// The thread functions that the C++ library needs, implemented with the system's locks.
#include "platform/library_function.h"
#include "platform/unique_handle.h"
#include "tests/runtime/runtime_library.h"
#include "tests/support/child_process.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <functional>

namespace quill {
namespace {

using test::mutex_kind;

constexpr DWORD deadline_ms = 10'000;
constexpr int thread_count = 8;

DWORD WINAPI call(void* work)
{
    (*static_cast<const std::function<void()>*>(work))();
    return 0;
}

void run_on_threads(std::function<void()> work)
{
    std::array<unique_handle, thread_count> threads;
    for (auto& thread : threads)
        thread.reset(CreateThread(nullptr, 0, call, &work, 0, nullptr));
    for (const auto& thread : threads)
        EXPECT_EQ(WaitForSingleObject(thread.get(), deadline_ms), WAIT_OBJECT_0);
}

struct ThreadFunctions : testing::Test
{
    const unique_library library{LoadLibraryW(test::beside_this_program(test::runtime_library_name).c_str())};
    const test::runtime_calls& calls =
        *library_function<test::runtime_calls_function*>(library.get(), "calls")();
};

TEST_F(ThreadFunctions, AMutexExcludesOtherThreads)
{
    for (const mutex_kind kind : {mutex_kind::by_call, mutex_kind::by_constant}) {
        constexpr int counts = 20'000;
        run_on_threads([&] {
            for (int i = 0; i < counts; ++i)
                calls.count(kind);
        });
        EXPECT_EQ(calls.count(kind), thread_count * counts + 1);
    }
}

TEST_F(ThreadFunctions, OnceRunsOnceWhileOtherThreadsWait)
{
    std::atomic<int> sum = 0;
    run_on_threads([&] { sum += calls.run_once(); });
    EXPECT_EQ(sum, thread_count);
}

TEST_F(ThreadFunctions, OnceRepeatsARoutineThatThrew)
{
    EXPECT_EQ(calls.runs_until_done(), 2);
}

TEST_F(ThreadFunctions, SetUpLocalesForAllThreads)
{
    std::atomic<int> right = 0;
    run_on_threads([&] { right += calls.upper_case_by_locale(L'x') == L'X'; });
    EXPECT_EQ(right, thread_count);
}

long long system_nanoseconds_since_1970()
{
    FILETIME time{};
    GetSystemTimeAsFileTime(&time);
    constexpr long long from_1601_to_1970 = 116'444'736'000'000'000;
    return (((static_cast<long long>(time.dwHighDateTime) << 32) | time.dwLowDateTime) - from_1601_to_1970) *
           100;
}

TEST_F(ThreadFunctions, TheRealTimeClockIsTheSystems)
{
    constexpr long long tick = 20'000'000; // the resolution of the system's coarse time
    const long long before = system_nanoseconds_since_1970();
    const long long now = calls.nanoseconds_since_1970();
    const long long after = system_nanoseconds_since_1970();
    EXPECT_GE(now, before);
    EXPECT_LE(now, after + tick);
}

TEST_F(ThreadFunctions, TheSteadyClockIsThePerformanceCounter)
{
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    const auto counter_nanoseconds = [&] {
        LARGE_INTEGER counter{};
        QueryPerformanceCounter(&counter);
        return static_cast<double>(counter.QuadPart) / static_cast<double>(frequency.QuadPart) * 1e9;
    };
    constexpr double rounding = 1'000;
    const double before = counter_nanoseconds();
    const auto now = static_cast<double>(calls.nanoseconds_of_steady_clock());
    const double after = counter_nanoseconds();
    EXPECT_GE(now, before - rounding);
    EXPECT_LE(now, after + rounding);
}

TEST_F(ThreadFunctions, RejectOtherClocks)
{
    EXPECT_EQ(calls.error_of_clock(CLOCK_REALTIME), 0);
    EXPECT_EQ(calls.error_of_clock(CLOCK_MONOTONIC), 0);
    EXPECT_EQ(calls.error_of_clock(CLOCK_THREAD_CPUTIME_ID), EINVAL);
}

} // namespace
} // namespace quill
