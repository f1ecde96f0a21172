// Proves that a repeated scenario leaks nothing in the process.
#pragma once

#include <functional>

namespace quill::test {

enum class balance_proof
{
    strict,
    one_of_many // for one of many similar runs: one balanced run suffices if it is the first
};

// Runs a scenario, at most ten times, until two runs in a row have left the counts of handles, GDI objects,
// menus, threads, windows and task memory unchanged. What the system creates once and keeps appears in the
// first runs only; a leak appears in every run.
void expect_balance(const std::function<void()>& scenario, balance_proof proof = balance_proof::strict);

// As expect_balance, for the scenarios of a long loop: strict in the long form, which takes every call.
void expect_balance_in_loop(const std::function<void()>& scenario);

} // namespace quill::test
