// Loops that make each place of a routine fail in turn, alone or in pairs.
#pragma once

#include "tests/support/faults/import_faults.h"

#include <functional>

namespace quill::test {

// Makes each place of a kind fail in turn, checks the balance of resources, and reports the number of places
// that failed for the routine. scenario gets the place, calls import_faults::fail with it when the set-up is
// complete, and returns whether the place failed; false if the module did not reach it. The short form takes
// every usual_step-th place.
void fail_each(const char* routine, fault_kind kind, const std::vector<fault_place>& places, int usual_step,
               const std::function<bool(const fault_place&)>& scenario);

// The same without checking the balance: once for each place.
void fail_each_uncounted(const char* routine, fault_kind kind, const std::vector<fault_place>& places,
                         int usual_step, const std::function<bool(const fault_place&)>& scenario);

// Two failures: a call fails (the first ones of each function and every fourth, its ways in turn), and then a
// later call of the given kind on the same thread: the first, second, third, fifth, eighth and so on, up to a
// few dozen calls later. scenario is as for fail_each and returns whether both failed. The short form takes
// usual_pairs of them at random; QUILL_FAULT_SEED changes the choice.
void fail_pairs(const char* routine, fault_kind second, const std::vector<fault_place>& places,
                std::size_t usual_pairs, const std::function<bool(const fault_place&)>& scenario);
void fail_pairs_uncounted(const char* routine, fault_kind second, const std::vector<fault_place>& places,
                          std::size_t usual_pairs, const std::function<bool(const fault_place&)>& scenario);

} // namespace quill::test
