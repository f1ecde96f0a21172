// The progress messages of a window, in a form that tests can compare.
#pragma once

#include "tests/retrieval/fake_document_window.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace quill::test {

using progress_step = std::pair<std::uint32_t, std::uint32_t>; // progress, maximum

inline std::vector<progress_step> steps_of(const fake_document_window& window)
{
    std::vector<progress_step> steps;
    for (const seen_progress& seen : window.progress()) {
        EXPECT_EQ(seen.status_code, 5u);
        steps.emplace_back(seen.progress, seen.progress_max);
    }
    return steps;
}

} // namespace quill::test
