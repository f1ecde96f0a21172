// Timing of one thing against another. The machine has other work to do, and it has it in bursts: both sides
// are timed in turn, in short rounds, and only what the rounds have in common is believed.
#pragma once

#include <cstddef>
#include <functional>

namespace quill::bench {

// Both times in nanoseconds for one repetition.
struct comparison
{
    double ours = 0;
    double baseline = 0;
    double ratio = 0;
};

// Nanoseconds since some moment.
double now();

// For what takes microseconds and does the same each time. Either side is a function that repeats its work as
// often as it is told. The times are the shortest of all rounds: a disturbance only ever adds.
using repeated = std::function<void(std::size_t times)>;
comparison compare_shortest(const repeated& ours, const repeated& baseline);

// Makes what it needs, does its work, and returns how long the work alone took, in nanoseconds.
using timed_run = std::function<double()>;
// For what does the same each time but cannot be repeated without preparation. The times are the shortest.
comparison compare_shortest_runs(const timed_run& ours, const timed_run& baseline);

// For what takes long and differs from time to time. Who is first changes from round to round; the ratio is
// the middle of both orders' medians of the rounds' ratios, so that a slow spell counts for both sides or not
// at all, and the order for none. The times are medians.
comparison compare_medians(const timed_run& ours, const timed_run& baseline, int rounds);

// Keeps a value from being left out as unused.
template <class T>
inline void keep(T const& value)
{
    asm volatile("" : : "r,m"(value) : "memory");
}

} // namespace quill::bench
