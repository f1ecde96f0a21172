// The stage of one test: counts the fakes that live and the calls they get, and makes one of the calls fail.
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

// Fakes outlive no scene: at its end every reference to them has to be given back, and the objects of the
// code under test that came after it have to be gone.
class fake_scene
{
public:
    enum class failure
    {
        error,    // the call returns a failure code
        empty,    // the call succeeds and hands out nothing
        untouched // the call succeeds and leaves its out argument as it was
    };

    fake_scene();
    ~fake_scene();
    fake_scene(const fake_scene&) = delete;
    fake_scene& operator=(const fake_scene&) = delete;

    // Makes the number-th call from now on fail; the first is 1.
    void fail_call(int number, failure how);
    // Makes every call of that name fail.
    void fail_calls_named(std::string name, failure how);
    // Does something in the middle of a call, before its answer: in the number-th from now on, or in every
    // call of that name. It may throw, and it may call back into the code under test.
    void interrupt_call(int number, std::function<void()> action);
    void interrupt_calls_named(std::string name, std::function<void()> action);
    bool has_interrupted() const { return has_interrupted_; }
    // The same for the calls of AddRef and Release that a module makes: at the beginning of an AddRef and at
    // the end of a Release. number 0 only counts them.
    void interrupt_reference_call(HMODULE module, int number, std::function<void()> action);
    int reference_calls() const { return reference_calls_; }

    // Whether a call has been made to fail.
    bool has_failed() const { return has_failed_; }

    // The names of the calls so far, as "IHTMLElement::get_tagName".
    const std::vector<std::string>& calls() const { return calls_; }
    int count_calls(const std::string& name) const;
    void forget_calls() { calls_.clear(); }

    // For scenes in which something crashes: what that interrupts stays behind.
    void expect_leaks() { expects_leaks_ = true; }

    // For the fakes. A result of enter() is what the call has to return at once.
    std::optional<HRESULT> enter(const char* call);
    // The same for a call that hands something out: the variable has to be initialised, and is cleared unless
    // the call is to leave it as it was.
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
    // Whether the call that has just failed is to do so without writing anything.
    bool leaves_out_untouched() const { return how_last_failed_ == failure::untouched; }
    void object_created() { ++live_objects_; }
    void object_destroyed() { --live_objects_; }
    int live_objects() const { return live_objects_; }
    void reference_call(const void* caller)
    {
        if (caller >= watched_begin_ && caller < watched_end_)
            count_reference_call();
    }
    // Memory of a fake that is gone: kept to the end of the scene, and filled so that a call through a
    // pointer that somebody kept crashes.
    static void bury(void* memory, std::size_t size);

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
