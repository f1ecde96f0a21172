// Places fail one after the other.
#pragma once

#include "tests/support/faults/import_faults.h"

#include <functional>

namespace quill::test {

// Lets each place of a kind fail in turn, in balance, and reports how many have failed as places of the
// routine. life is given the place, calls import_faults::fail with it when everything is ready, and says
// whether the place has failed; in a run in which the module did not come to it, nothing has. The usual run
// takes every usual_step-th place.
void fail_each(const char* routine, fault_kind kind, const std::vector<fault_place>& places, int usual_step,
               const std::function<bool(const fault_place&)>& scenario);

// The same without a look at what a life leaves in the process: once for each place.
void fail_each_uncounted(const char* routine, fault_kind kind, const std::vector<fault_place>& places,
                         int usual_step, const std::function<bool(const fault_place&)>& scenario);

// Two failures: a call fails (the first ones of each function and every fourth), its ways taken in turn, and
// then one of the calls that follow on the same thread, of the kind that is given: the first, second, third,
// fifth, eighth and so on, the farthest a few dozen calls away. life is as for fail_each and says whether
// both failed. The usual run takes usual_pairs of them at random; QUILL_FAULT_SEED gives another choice.
void fail_pairs(const char* routine, fault_kind second, const std::vector<fault_place>& places,
                std::size_t usual_pairs, const std::function<bool(const fault_place&)>& scenario);
void fail_pairs_uncounted(const char* routine, fault_kind second, const std::vector<fault_place>& places,
                          std::size_t usual_pairs, const std::function<bool(const fault_place&)>& scenario);

} // namespace quill::test
