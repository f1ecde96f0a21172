// The resources of the process at points of a long run, as a table, and the check that they do not grow.
#pragma once

#include "tests/support/process_resources.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace quill::soak {

struct sample
{
    std::size_t done = 0;
    test::process_resources counts;
    DWORD user_objects =
        0; // where the system does not count them: windows of all threads, invisible ones included, and menus
    long task_memory = 0; // strings and task memory blocks
    std::uint64_t heap_bytes = 0;
    std::uint64_t heap_blocks = 0;
    std::uint64_t private_bytes = 0;
};

sample take_sample(std::size_t done);

// Limits of the growth between warm-up and end, for the whole run. Counts are exact: a leak would appear once
// for each cycle.
struct growth_limits
{
    DWORD kernel_handles = 0;
    DWORD gdi_objects = 0;
    DWORD threads = 0;
    long task_memory = 4;           // allocated by a thread that the system starts meanwhile
    std::uint64_t heap_blocks = 24; // the same
    std::uint64_t heap_bytes_each = 16;
    std::uint64_t private_bytes_each = 1024;
};

// What grew by more than its limit, a text each; empty if nothing did.
using growth_report = std::vector<std::string>;

class sample_table
{
public:
    explicit sample_table(std::string title) : title_(std::move(title))
    {
        lines_.reserve(16); // the table itself must not appear in it
    }

    // Adds a line; a settled one first waits for resources that are being freed, if there are more than after
    // the warm-up.
    void add(std::size_t done, bool settled);
    void print() const;
    // Compares the last line with the one at the index, the end of the warm-up.
    growth_report growth_beyond(std::size_t index, const growth_limits& limits) const;
    // Growth for each cycle from the line at the index to the last.
    double heap_bytes_each(std::size_t index) const;
    const std::vector<sample>& lines() const { return lines_; }

private:
    std::string title_;
    std::vector<sample> lines_;
};

// The growth of a run without the module, and a little more: the limits for the same run with it.
growth_limits growth_of(const sample_table& table, std::size_t index);

// Growth with a known cause.
struct known_growth
{
    double kernel_handles = 0;
    double task_memory = 0;
    double heap_blocks = 0;
    double heap_bytes = 0;
};

// Compares a run in the browser's engine with the same run without the code under test: from the line at the
// index to the last, nothing may grow by more than in the other run, the known growth, and what comes and
// goes.
growth_report growth_beyond(const sample_table& bare, const sample_table& table, std::size_t index,
                            const known_growth& known = {});
// The growth of a table from the line at the index to the last.
known_growth growth_since(const sample_table& table, std::size_t index);

// Fails the test if something grew in each of three measurements; a measurement without growth ends it. A
// leak appears in each; a thread that the system starts or what it allocates at some first use does not.
void expect_flat(const std::function<growth_report()>& measure);

// A run of many cycles, with a line of the table after the warm-up and at regular intervals; ends early if a
// test has failed.
template <class Cycle>
void run_cycles(sample_table& table, std::size_t warm_up, std::size_t cycles, bool settles,
                const Cycle& cycle)
{
    constexpr std::size_t intervals = 8;
    table.add(0, false);
    for (std::size_t i = 0; i < warm_up; ++i)
        cycle(i);
    table.add(warm_up, false);
    std::size_t lines = 0;
    for (std::size_t i = 0; i < cycles; ++i) {
        cycle(warm_up + i);
        if ((i + 1) * intervals / cycles > lines) {
            lines = (i + 1) * intervals / cycles;
            table.add(warm_up + i + 1, settles && i + 1 == cycles);
        }
    }
    table.print();
}

// The same, with a settled last line.
template <class Cycle>
void run_cycles(sample_table& table, std::size_t warm_up, std::size_t cycles, const Cycle& cycle)
{
    run_cycles(table, warm_up, cycles, true, cycle);
}

} // namespace quill::soak
