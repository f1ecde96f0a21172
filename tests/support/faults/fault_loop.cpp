#include "tests/support/faults/fault_loop.h"

#include "tests/support/balance.h"
#include "tests/support/fault_points.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace quill::test {
namespace {

template <class Run>
void run_each(const char* routine, fault_kind kind, const std::vector<fault_place>& places, int usual_step,
              const Run& run)
{
    std::vector<fault_place> chosen;
    for (const fault_place& place : places)
        if ((place.group == memory_group) == (kind == fault_kind::memory))
            chosen.push_back(place);
    const auto step = every_fault_is_wanted() ? std::size_t{1} : static_cast<std::size_t>(usual_step);
    std::size_t points = 0;
    for (std::size_t index = step / 2; index < chosen.size(); index += step) {
        const fault_place& place = chosen[index];
        SCOPED_TRACE(to_text(place));
        std::printf("fails: %s\n", to_text(place).c_str()); // what a crash was about
        std::fflush(stdout);
        const bool has_failed = run(place);
        if (testing::Test::HasFailure())
            return;
        points += has_failed;
    }
    EXPECT_GT(points, 0u) << "no place was reached";
    report_fault_points(routine, points);
}

} // namespace

void fail_each(const char* routine, fault_kind kind, const std::vector<fault_place>& places, int usual_step,
               const std::function<bool(const fault_place&)>& life)
{
    run_each(routine, kind, places, usual_step, [&](const fault_place& place) {
        bool has_failed = false;
        expect_balance_in_loop([&] { has_failed = life(place) || has_failed; });
        return has_failed;
    });
}

void fail_each_uncounted(const char* routine, fault_kind kind, const std::vector<fault_place>& places,
                         int usual_step, const std::function<bool(const fault_place&)>& life)
{
    run_each(routine, kind, places, usual_step, life);
}

} // namespace quill::test
