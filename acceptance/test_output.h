// Reads what a test program printed: how many tests passed, which failed, and what was seen.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quill::acceptance {

struct test_results
{
    std::size_t passed = 0;
    std::vector<std::string> failed;
    std::vector<std::string> skipped;
    std::vector<std::string> unfinished;        // started, and the program ended before the test did
    std::vector<std::string> seen;              // lines "seen: TEXT"
    std::map<std::string, std::string> answers; // lines "answer ID: TEXT"

    std::size_t started() const { return passed + failed.size() + skipped.size() + unfinished.size(); }
};

test_results parse_test_output(std::string_view output);

} // namespace quill::acceptance
