// The lines of the table that the benchmarks print.
#pragma once

#include "tests/bench/support/measure.h"

#include <optional>
#include <string>

namespace quill::bench {

// What the program was started with.
struct options
{
    bool is_short = false;       // --short: a few rounds with small data, which judge nothing
    std::wstring server = {};    // --server URL: where the download benchmarks fetch from
    std::wstring documents = {}; // --documents FOLDER: what make-old-documents made
};
const options& current_options();
bool is_short_run(); // current_options().is_short

// The largest value that will do.
struct target
{
    double most;
    // A target that cannot be met is kept and shown as missed, but does not make the run a failure. The line
    // that says so says why.
    bool is_known_missed = false;

    // NOLINTNEXTLINE(google-explicit-constructor): a number is a target
    constexpr target(double largest) : most(largest) {}
    static constexpr target known_missed(double largest)
    {
        target made(largest);
        made.is_known_missed = true;
        return made;
    }
};

// One line: what was measured, both times, their ratio and its target; none for a line that only informs.
void report(const std::string& what, const comparison& measured, std::optional<target> aim = {});
// A line with figures of its own. value and limit are in the unit.
void report_value(const std::string& what, double value, const std::string& unit,
                  std::optional<target> limit = {});

// Runs a program's benchmarks. The exit code: 0, or 1 when a target is missed that is not known to be, 2 when
// a benchmark failed.
int run(int argc, wchar_t** argv, void (*benchmarks)());

} // namespace quill::bench
