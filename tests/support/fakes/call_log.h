// The calls that fakes get, in order, and the result of each. A call that is not allowed fails the test.
#pragma once

#include "tests/support/fakes/call_fault.h"

#include <windows.h>

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quill::test {

enum class unlisted_calls
{
    fail,  // a call must be allowed by name
    allow, // for fakes whose unexpected methods fail by themselves
};

// Belongs to the thread that builds it; a call from another thread fails the test.
class call_log
{
public:
    explicit call_log(unlisted_calls unlisted = unlisted_calls::fail);

    // Names have the form "IInterface::Method".
    void allow(std::string_view name);
    void forbid(std::string_view name);

    // Makes the call of this name fail, every time or only the nth time (counted from 1).
    void make_fail(std::string_view name, call_fault fault, int nth = 0);
    // Makes the nth call of all (counted from 1, interface queries included) fail; 0 for none.
    void fail_call_number(int number, call_fault fault);
    // The name of the call that fail_call_number or when_call_number selected; empty if it was not made.
    const std::string& failed_call() const { return failed_call_; }
    // The result of `note` for this name.
    void make_return(std::string_view name, HRESULT result);

    // Runs before the call of this name returns.
    void when(std::string_view name, std::function<void()> action);
    // Runs before the nth call of all (counted from 1, interface queries included) returns.
    void when_call_number(int number, std::function<void()> action);
    // Runs with the name of each call before it returns; nullptr for no action.
    void when_any(std::function<void(const std::string&)> action);

    // For the fakes: records the call and returns its fault.
    call_fault arrive(std::string_view name, std::string_view arguments = {});
    // As arrive, for interface queries: counted and able to fail, never listed and always allowed.
    call_fault arrive_query(std::string_view name);
    // As arrive, for methods without an out parameter: returns their result.
    HRESULT note(std::string_view name);

    // What `note` returns for a call that fails by a fault.
    static constexpr HRESULT injected_failure = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0F17);

    int count(std::string_view name) const;
    // All calls so far, interface queries included.
    int total() const { return total_; }
    // "IInterface::Method arguments", oldest first.
    const std::vector<std::string>& calls() const { return calls_; }
    // The listed calls with one of these names.
    std::vector<std::string> calls_of(const std::set<std::string, std::less<>>& names) const;
    // The calls listed since the last time. The total is not reset.
    std::vector<std::string> take();
    // Clears the list and the counts; permissions and faults are kept.
    void forget_calls();

private:
    struct planned_fault
    {
        call_fault fault = call_fault::none;
        int nth = 0;
    };

    call_fault fault_of(std::string_view name, int number) const;

    unsigned long thread_;
    bool allows_all_;
    int total_ = 0;
    int failing_number_ = 0;
    call_fault number_fault_ = call_fault::none;
    std::string failed_call_;
    int action_number_ = 0;
    std::function<void()> action_at_number_;
    std::function<void(const std::string&)> action_at_any_;
    std::set<std::string, std::less<>> allowed_;
    std::map<std::string, planned_fault, std::less<>> faults_;
    std::map<std::string, HRESULT, std::less<>> results_;
    std::map<std::string, std::function<void()>, std::less<>> actions_;
    std::map<std::string, int, std::less<>> counts_;
    std::vector<std::string> calls_;
    std::vector<std::size_t> name_lengths_; // of calls_, without the arguments
};

} // namespace quill::test
