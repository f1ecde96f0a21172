// The fakes of one test: call log, fault injection, and a balance of references at its end.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>
#include <oaidl.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quill::test {

// The destructor fails the test if a fake is still referenced, or if an object of the code under test that
// was created during its lifetime still exists.
class fake_tab
{
public:
    enum class failure
    {
        error,    // the call returns a failure code
        empty,    // the call succeeds and clears its out parameter
        untouched // the call succeeds and does not write its out parameter
    };

    fake_tab();
    ~fake_tab();
    fake_tab(const fake_tab&) = delete;
    fake_tab& operator=(const fake_tab&) = delete;

    // Makes the number-th call from now on fail, counting from 1.
    void fail_call(int number, failure how);
    // Makes each call of that name fail.
    void fail_calls_named(std::string name, failure how);
    // Runs an action inside the number-th call from now on, or inside each call of that name. The action may
    // throw and may re-enter the code under test.
    void interrupt_call(int number, std::function<void()> action);
    void interrupt_calls_named(std::string name, std::function<void()> action);
    bool has_interrupted() const { return has_interrupted_; }
    // The same for AddRef (at its beginning) and Release (at its end) when called by a module. number 0 only
    // counts.
    void interrupt_reference_call(HMODULE module, int number, std::function<void()> action);
    int reference_calls() const { return reference_calls_; }

    // Whether a call has been made to fail.
    bool has_failed() const { return has_failed_; }

    // The names of the calls so far, as "IHTMLElement::get_tagName".
    const std::vector<std::string>& calls() const { return calls_; }
    int count_calls(const std::string& name) const;
    void forget_calls() { calls_.clear(); }

    // For tests with system exceptions, which skip destructors.
    void expect_leaks() { expects_leaks_ = true; }

    // For the fakes: logs a call. If enter() returns a result, the call returns it immediately.
    std::optional<HRESULT> enter(const char* call);
    // The same for a call with an out parameter, which must be initialised. Clears it unless the call is to
    // leave it untouched.
    template <class Out>
    std::optional<HRESULT> enter(const char* call, Out* out)
    {
        EXPECT_EQ(*out, Out{}) << call << " gets a variable that is not initialised";
        const auto result = enter(call);
        if (!result || !leaves_out_untouched())
            *out = Out{};
        return result;
    }
    std::optional<HRESULT> enter(const char* call, VARIANT* out);
    // Whether the call that has just failed must not write its out parameter.
    bool leaves_out_untouched() const { return how_last_failed_ == failure::untouched; }
    void object_created() { ++live_objects_; }
    void object_destroyed() { --live_objects_; }
    int live_objects() const { return live_objects_; }
    void reference_call(const void* caller)
    {
        if (caller >= watched_begin_ && caller < watched_end_)
            count_reference_call();
    }
    // Keeps the memory of a deleted fake until the destructor, filled so that a call through a dangling
    // pointer faults.
    static void destroy(void* memory, std::size_t size);

private:
    std::optional<HRESULT> result_of(failure how);
    void interrupt(const char* call);
    void count_reference_call();

    std::vector<std::string> calls_;
    int failing_number_ = 0;
    failure how_number_fails_ = failure::error;
    std::string failing_name_;
    failure how_name_fails_ = failure::error;
    bool has_failed_ = false;
    failure how_last_failed_ = failure::error;
    int interrupted_number_ = 0;
    std::function<void()> number_interruption_;
    std::string interrupted_name_;
    std::function<void()> name_interruption_;
    const void* watched_begin_ = nullptr;
    const void* watched_end_ = nullptr;
    int reference_calls_ = 0;
    int interrupted_reference_call_ = 0;
    std::function<void()> reference_interruption_;
    bool has_interrupted_ = false;
    int live_objects_ = 0;
    bool expects_leaks_ = false;
    LONG module_locks_before_;
};

} // namespace quill::test
