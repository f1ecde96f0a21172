#include "tests/bench/support/measure.h"

#include "tests/bench/support/report.h"

#include <windows.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace quill::bench {
namespace {

// A batch is long compared with the cost of the clock and short compared with a time slice.
constexpr double batch_ns = 500'000;
constexpr int rounds_in_full = 400;
constexpr int fewest_rounds = 21;
constexpr int rounds_in_short = 8;
constexpr int prepared_rounds_in_short = 2;

double time_batch(const repeated& work, std::size_t times)
{
    const double start = now();
    work(times);
    return (now() - start) / static_cast<double>(times);
}

std::size_t repetitions_for_a_batch(const repeated& work)
{
    work(1); // initialises what is created once and kept
    double one = std::numeric_limits<double>::max();
    std::size_t times = 1;
    for (;;) {
        one = std::min(one, time_batch(work, times));
        if (one * static_cast<double>(times) >= batch_ns / 2 || times >= (1u << 24))
            return std::max<std::size_t>(1, static_cast<std::size_t>(batch_ns / std::max(one, 0.01)));
        times *= 2;
    }
}

// Long work gets fewer rounds.
int rounds_for(double round_ns)
{
    constexpr double budget_ns = 1.0e9;
    const int affordable = static_cast<int>(budget_ns / std::max(round_ns, 1.0));
    return is_short_run() ? rounds_in_short : std::clamp(affordable, fewest_rounds, rounds_in_full);
}

} // namespace

double now()
{
    static const double tick = [] {
        LARGE_INTEGER frequency;
        QueryPerformanceFrequency(&frequency);
        return 1e9 / static_cast<double>(frequency.QuadPart);
    }();
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return static_cast<double>(count.QuadPart) * tick;
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

comparison compare_shortest(const repeated& ours, const repeated& baseline)
{
    const std::size_t our_times = repetitions_for_a_batch(ours);
    const std::size_t baseline_times = repetitions_for_a_batch(baseline);
    comparison best{time_batch(ours, our_times), time_batch(baseline, baseline_times), 0};
    const int rounds = rounds_for(best.ours * static_cast<double>(our_times) +
                                  best.baseline * static_cast<double>(baseline_times));
    for (int round = 0; round < rounds; ++round) {
        best.ours = std::min(best.ours, time_batch(ours, our_times));
        best.baseline = std::min(best.baseline, time_batch(baseline, baseline_times));
    }
    best.ratio = best.ours / best.baseline;
    return best;
}

comparison compare_shortest_runs(const timed_run& ours, const timed_run& baseline, double expected_ratio)
{
    constexpr double budget_ns = 2.0e9; // with all preparation
    constexpr int most_budgets = 4;
    ours(); // initialises what is created once and kept
    comparison best{ours(), baseline(), 0};
    const int most = is_short_run() ? prepared_rounds_in_short : rounds_in_full;
    const int budgets = is_short_run() ? 1 : most_budgets;
    for (int budget = 0; budget < budgets; ++budget) {
        const double start = now();
        for (int round = 0; round < most; ++round) {
            if (round >= fewest_rounds && now() - start > budget_ns)
                break;
            best.ours = std::min(best.ours, ours());
            best.baseline = std::min(best.baseline, baseline());
        }
        best.ratio = best.ours / best.baseline;
        if (best.ratio <= expected_ratio)
            break;
    }
    return best;
}

comparison compare_medians(const timed_run& ours, const timed_run& baseline, int rounds)
{
    baseline(); // the first run initialises what is created once and kept
    ours();
    std::vector<double> our_times, baseline_times;
    std::vector<double> ratios[2]; // of the rounds in which the baseline was first, and the others
    for (int round = 0; round < rounds; ++round) {
        // Alternates the order, so that neither side always runs in the state that the other has left.
        const bool ours_first = round % 2 == 1;
        const double first = ours_first ? ours() : baseline();
        const double second = ours_first ? baseline() : ours();
        our_times.push_back(ours_first ? first : second);
        baseline_times.push_back(ours_first ? second : first);
        ratios[ours_first].push_back(our_times.back() / baseline_times.back());
    }
    // The second one may be slower by a tenth: one median of all would be that of the more frequent order.
    const double ratio =
        ratios[1].empty() ? median(ratios[0]) : std::sqrt(median(ratios[0]) * median(ratios[1]));
    return {median(our_times), median(baseline_times), ratio};
}

} // namespace quill::bench
