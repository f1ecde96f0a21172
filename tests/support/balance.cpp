#include "tests/support/balance.h"

#include "tests/support/fault_points.h"
#include "tests/support/process_resources.h"
#include "tests/support/task_memory.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <ostream>
#include <sstream>

namespace quill::test {
namespace {

// Resources that no fake counts.
struct counted
{
    process_resources resources;
    long task_memory = 0;

    static counted now() { return {process_resources::now(), outstanding_task_memory()}; }

    friend bool operator==(const counted&, const counted&) = default;
    friend std::ostream& operator<<(std::ostream& out, const counted& counts)
    {
        return out << counts.resources << ", strings and task memory " << counts.task_memory;
    }
};

// Under load the system's own threads close some handles a moment later; a leak stays. Polls, because nothing
// signals that, and dispatches no messages, which could release what the scenario left behind.
counted settled(const counted& wanted)
{
    constexpr ULONGLONG deadline_ms = 2'000;
    constexpr DWORD look_again_ms = 10;
    const ULONGLONG end = GetTickCount64() + deadline_ms;
    counted counts = counted::now();
    while (counts != wanted && GetTickCount64() < end) {
        Sleep(look_again_ms);
        counts = counted::now();
    }
    return counts;
}

} // namespace

void expect_balance(const std::function<void()>& scenario, balance_proof proof)
{
    constexpr int most_runs = 10; // the system's own threads start and end
    constexpr int strict = 2;     // a single balanced run may occur between two that leak
    int balanced_runs_wanted = proof == balance_proof::one_of_many ? 1 : strict;
    int balanced_runs = 0;
    std::ostringstream seen;
    counted before = counted::now();
    seen << "before: " << before;
    for (int run = 1; run <= most_runs && !testing::Test::HasFailure(); ++run) {
        scenario();
        // The first run creates what the system keeps, so waiting would not help.
        const counted after = run == 1 ? counted::now() : settled(before);
        seen << "\nafter run " << run << ": " << after;
        if (after != before)
            balanced_runs_wanted = strict;
        balanced_runs = after == before ? balanced_runs + 1 : 0;
        if (balanced_runs == balanced_runs_wanted)
            return;
        before = after;
    }
    if (!testing::Test::HasFailure())
        ADD_FAILURE() << "every run leaks\n" << seen.str();
}

void expect_balance_in_loop(const std::function<void()>& scenario)
{
    expect_balance(scenario, every_fault_is_wanted() ? balance_proof::strict : balance_proof::one_of_many);
}

} // namespace quill::test
