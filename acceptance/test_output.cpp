#include "acceptance/test_output.h"

#include <algorithm>

namespace quill::acceptance {
namespace {

constexpr std::string_view run_mark = "[ RUN      ] ";
constexpr std::string_view passed_mark = "[       OK ] ";
constexpr std::string_view failed_mark = "[  FAILED  ] ";
constexpr std::string_view skipped_mark = "[  SKIPPED ] ";

// The test that a line ends: "Suite.Test, where ... (12 ms)". The summary at the end has no time.
std::string_view ended_test(std::string_view line, std::string_view mark)
{
    if (!line.starts_with(mark) || !line.ends_with(" ms)"))
        return {};
    line.remove_prefix(mark.size());
    return line.substr(0, line.find_first_of(", "));
}

void end(test_results& results, std::string_view test)
{
    std::erase(results.unfinished, std::string(test));
}

void read_line(test_results& results, std::string_view line)
{
    if (line.starts_with(run_mark)) {
        results.unfinished.emplace_back(line.substr(run_mark.size()));
    } else if (const auto passed = ended_test(line, passed_mark); !passed.empty()) {
        ++results.passed;
        end(results, passed);
    } else if (const auto failed = ended_test(line, failed_mark); !failed.empty()) {
        results.failed.emplace_back(failed);
        end(results, failed);
    } else if (const auto skipped = ended_test(line, skipped_mark); !skipped.empty()) {
        results.skipped.emplace_back(skipped);
        end(results, skipped);
    } else if (line.starts_with("seen: ")) {
        results.seen.emplace_back(line.substr(6));
    } else if (line.starts_with("answer ")) {
        line.remove_prefix(7);
        const std::size_t colon = line.find(": ");
        if (colon != std::string_view::npos)
            results.answers[std::string(line.substr(0, colon))] = line.substr(colon + 2);
    }
}

} // namespace

test_results parse_test_output(std::string_view output)
{
    test_results results;
    while (!output.empty()) {
        const std::size_t end_of_line = output.find('\n');
        std::string_view line = output.substr(0, end_of_line);
        output.remove_prefix(end_of_line == std::string_view::npos ? output.size() : end_of_line + 1);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        read_line(results, line);
    }
    return results;
}

} // namespace quill::acceptance
