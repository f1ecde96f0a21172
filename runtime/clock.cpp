// clock_gettime for <chrono>, which the toolchain's thread library defines otherwise.
#include <windows.h>

#include <pthread.h>

#include <cerrno>
#include <cstdint>

namespace {

constexpr std::int64_t intervals_per_second = 10'000'000; // FILETIME intervals of 100 ns
constexpr std::int64_t nanoseconds_per_second = 1'000'000'000;
constexpr std::int64_t intervals_from_1601_to_1970 = 116'444'736'000'000'000;

timespec time_of_day() noexcept
{
    FILETIME time{};
    GetSystemTimePreciseAsFileTime(&time);
    const std::int64_t since_1970 =
        static_cast<std::int64_t>((std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime) -
        intervals_from_1601_to_1970;
    return {since_1970 / intervals_per_second, static_cast<long>(since_1970 % intervals_per_second * 100)};
}

timespec time_since_start() noexcept
{
    LARGE_INTEGER frequency{};
    LARGE_INTEGER counter{};
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&counter);
    const std::int64_t rest = counter.QuadPart % frequency.QuadPart;
    return {counter.QuadPart / frequency.QuadPart,
            static_cast<long>(rest * nanoseconds_per_second / frequency.QuadPart)};
}

} // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time)
{
    switch (clock) {
    case CLOCK_REALTIME:
        *time = time_of_day();
        return 0;
    case CLOCK_MONOTONIC:
        *time = time_since_start();
        return 0;
    default:
        errno = EINVAL;
        return -1;
    }
}
