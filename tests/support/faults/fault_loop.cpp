#include "tests/support/faults/fault_loop.h"

#include "tests/support/balance.h"
#include "tests/support/fault_points.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace quill::test {
namespace {

bool is_of_kind(const fault_place& place, fault_kind kind)
{
    return kind == fault_kind::either || (place.group == memory_group) == (kind == fault_kind::memory);
}

// Whether the place failed.
template <class Run>
bool run_one(const fault_place& place, const Run& run)
{
    SCOPED_TRACE(to_text(place));
    std::printf("fails: %s\n", to_text(place).c_str()); // identifies the place if the run crashes
    std::fflush(stdout);
    const bool has_failed = run(place);
    if (place.failures() > 1)
        std::printf("  then: %s\n", import_faults::failed_next().c_str());
    return has_failed;
}

template <class Run>
void run_each(const char* routine, fault_kind kind, const std::vector<fault_place>& places, int usual_step,
              const Run& run)
{
    std::vector<fault_place> chosen;
    for (const fault_place& place : places)
        if (is_of_kind(place, kind))
            chosen.push_back(place);
    const auto step = every_fault_is_wanted() ? std::size_t{1} : static_cast<std::size_t>(usual_step);
    std::size_t points = 0;
    for (std::size_t index = step / 2; index < chosen.size(); index += step) {
        const fault_place& place = chosen[index];
        points += run_one(place, run);
        if (testing::Test::HasFailure())
            return;
    }
    EXPECT_GT(points, 0u) << "no place was reached";
    report_fault_points(routine, points);
}

// Distances from the first failure to the second: the calls nearby, where the first failure is handled, and
// some farther away.
std::vector<int> distances(fault_kind second)
{
    if (second == fault_kind::memory)
        return {1, 3};
    return {1, 2, 3, 5, 8, 13, 21, 34};
}

// The first calls of each function, then every fourth, since dozens are similar. The ways of a call are taken
// in turn. If memory stays exhausted, every later request fails anyway.
std::vector<fault_place> first_failures(const std::vector<fault_place>& places)
{
    std::vector<fault_place> firsts;
    for (auto call = places.begin(); call != places.end();) {
        const auto end = std::find_if(call, places.end(), [&](const fault_place& each) {
            return each.group != call->group || each.call != call->call;
        });
        const fault_place& chosen = *(call + call->call % (end - call));
        if (call->call <= 4 || call->call % 4 == 0)
            firsts.push_back(chosen.stays ? *call : chosen);
        call = end;
    }
    return firsts;
}

fault_place pair_of(const fault_place& first, fault_kind second, int distance)
{
    fault_place pair = first;
    // Takes the ways of a function in turn.
    pair.next = {distance, second, static_cast<std::size_t>(distance + first.call)};
    return pair;
}

std::mt19937 announced_random()
{
    char text[32] = {};
    GetEnvironmentVariableA("QUILL_FAULT_SEED", text, sizeof text);
    constexpr unsigned long usual_seed = 20;
    const unsigned long seed = *text ? std::strtoul(text, nullptr, 10) : usual_seed;
    std::printf("pairs of failures: seed %lu\n", seed);
    return std::mt19937(seed);
}

// Runs every pair until a test failure; returns how many pairs were reached.
template <class Run>
std::size_t run_all_pairs(const std::vector<fault_place>& firsts, fault_kind second, const Run& run)
{
    std::size_t points = 0;
    for (const fault_place& first : firsts) {
        for (const int distance : distances(second)) {
            const bool have_failed = run_one(pair_of(first, second, distance), run);
            if (testing::Test::HasFailure())
                return points;
            if (!have_failed)
                break; // the thread ended before that call
            ++points;
        }
    }
    return points;
}

// Runs random pairs until a test failure or until enough have been reached: not every first failure is
// followed by as many calls as the distance requires.
template <class Run>
std::size_t run_some_pairs(const std::vector<fault_place>& firsts, fault_kind second, std::size_t wanted,
                           const Run& run)
{
    const auto calls = std::count_if(firsts.begin(), firsts.end(), [second](const fault_place& place) {
        return is_of_kind(place, second);
    });
    std::vector<int> possible = distances(second);
    std::erase_if(possible, [calls](int distance) { return distance > calls && distance > 1; });
    std::mt19937 random = announced_random();
    std::size_t points = 0;
    for (std::size_t tries = 0; points < wanted && tries < 4 * wanted; ++tries) {
        const fault_place& first = firsts[random() % firsts.size()];
        const int distance = possible[random() % possible.size()];
        points += run_one(pair_of(first, second, distance), run);
        if (testing::Test::HasFailure())
            return points;
    }
    return points;
}

template <class Run>
void run_pairs(const char* routine, fault_kind second, const std::vector<fault_place>& places,
               std::size_t usual_pairs, const Run& run)
{
    const auto firsts = first_failures(places);
    ASSERT_FALSE(firsts.empty());
    const std::size_t points = every_fault_is_wanted() ? run_all_pairs(firsts, second, run)
                                                       : run_some_pairs(firsts, second, usual_pairs, run);
    EXPECT_GT(points, 0u) << "no second failure was reached";
    report_fault_points(routine, points);
}

} // namespace

void fail_each(const char* routine, fault_kind kind, const std::vector<fault_place>& places, int usual_step,
               const std::function<bool(const fault_place&)>& scenario)
{
    run_each(routine, kind, places, usual_step, [&](const fault_place& place) {
        bool has_failed = false;
        expect_balance_in_loop([&] { has_failed = scenario(place) || has_failed; });
        return has_failed;
    });
}

void fail_each_uncounted(const char* routine, fault_kind kind, const std::vector<fault_place>& places,
                         int usual_step, const std::function<bool(const fault_place&)>& scenario)
{
    run_each(routine, kind, places, usual_step, scenario);
}

void fail_pairs(const char* routine, fault_kind second, const std::vector<fault_place>& places,
                std::size_t usual_pairs, const std::function<bool(const fault_place&)>& scenario)
{
    run_pairs(routine, second, places, usual_pairs, [&](const fault_place& pair) {
        bool have_failed = false;
        // Thousands in the long form: one balanced run suffices if it is the first.
        expect_balance([&] { have_failed = scenario(pair) || have_failed; }, balance_proof::one_of_many);
        return have_failed;
    });
}

void fail_pairs_uncounted(const char* routine, fault_kind second, const std::vector<fault_place>& places,
                          std::size_t usual_pairs, const std::function<bool(const fault_place&)>& scenario)
{
    run_pairs(routine, second, places, usual_pairs, scenario);
}

} // namespace quill::test
