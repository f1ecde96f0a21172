// The lines of the table that the benchmarks print.
#pragma once

#include "tests/bench/support/measure.h"

#include <optional>
#include <string>

namespace quill::bench {

// The command line of the program.
struct options
{
    bool is_short = false;       // --short: a few rounds with small data, which are not judged
    std::wstring server = {};    // --server URL: the server of the download benchmarks
    std::wstring documents = {}; // --documents FOLDER: the output of make-old-documents
};
const options& current_options();
bool is_short_run(); // current_options().is_short

// The largest acceptable value.
struct target
{
    double most;
    // A target that cannot be met is kept and shown as missed, but does not make the run fail. The line says
    // why.
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

// One line: the name, both times, their ratio and its target; no target for information only.
void report(const std::string& what, const comparison& measured, std::optional<target> aim = {});
// A line with its own figures. value and limit are in the unit.
void report_value(const std::string& what, double value, const std::string& unit,
                  std::optional<target> limit = {});

// Runs the benchmarks of a program. The exit code: 0, or 1 if a target is missed that is not known to be, 2
// if a benchmark failed.
int run(int argc, wchar_t** argv, void (*benchmarks)());

} // namespace quill::bench
