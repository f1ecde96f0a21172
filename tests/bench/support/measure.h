// Times one action against another. Other work on the machine comes in bursts, so both sides are timed in
// turn, in short rounds, and only the common result of the rounds counts.
#pragma once

#include <cstddef>
#include <functional>
#include <limits>

namespace quill::bench {

// Both times in nanoseconds for one repetition.
struct comparison
{
    double ours = 0;
    double baseline = 0;
    double ratio = 0;
};

// Nanoseconds since a fixed moment.
double now();

// For actions of microseconds that do the same each time. Each side is a function that repeats its work the
// given number of times. The times are the shortest of all rounds: a disturbance can only add.
using repeated = std::function<void(std::size_t times)>;
comparison compare_shortest(const repeated& ours, const repeated& baseline);

// Prepares, does its work, and returns the time of the work alone, in nanoseconds.
using timed_run = std::function<double()>;
// For actions that do the same each time but need preparation. The times are the shortest. With a larger
// ratio than expected_ratio there are more rounds, because a disturbance may be longer than the usual ones
// take.
comparison compare_shortest_runs(const timed_run& ours, const timed_run& baseline,
                                 double expected_ratio = std::numeric_limits<double>::infinity());

// For long actions that vary. The order changes from round to round; the ratio is the mean of the medians of
// both orders, so that a slow phase affects both sides or neither. The times are medians.
comparison compare_medians(const timed_run& ours, const timed_run& baseline, int rounds);

// Keeps a value from being optimised away.
template <class T>
inline void keep(T const& value)
{
    asm volatile("" : : "r,m"(value) : "memory");
}

} // namespace quill::bench
