// Proof that what is done again and again leaves nothing behind in the process.
#pragma once

#include <functional>

namespace quill::test {

enum class balance_proof
{
    strict,
    one_of_many // for one of many lives that differ in a detail: one balanced run will do, if it is the first
};

// Runs a life until it has twice in a row left the process as it was before, in handles, GDI objects, menus,
// threads, windows and task memory: at most ten times. What the system makes once and keeps comes with the
// first runs, and some of it goes late; what a life leaves behind comes again and again.
void expect_balance(const std::function<void()>& scenario, balance_proof proof = balance_proof::strict);

// As expect_balance, for the lives of a long loop: strict in the long run, where every call has its turn.
void expect_balance_in_loop(const std::function<void()>& scenario);

} // namespace quill::test
