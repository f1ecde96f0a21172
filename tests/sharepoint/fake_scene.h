// The stage of one test: counts the fakes that live and the calls they get, and makes one of the calls fail.
#pragma once

#include <windows.h>

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
        error, // the call returns a failure code
        empty  // the call succeeds and hands out nothing
    };

    fake_scene();
    ~fake_scene();
    fake_scene(const fake_scene&) = delete;
    fake_scene& operator=(const fake_scene&) = delete;

    // Makes the number-th call from now on fail; the first is 1.
    void fail_call(int number, failure how);
    // Makes every call of that name fail.
    void fail_calls_named(std::string name, failure how);
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
    void object_created() { ++live_objects_; }
    void object_destroyed() { --live_objects_; }
    int live_objects() const { return live_objects_; }

private:
    std::optional<HRESULT> result_of(failure how);

    std::vector<std::string> calls_;
    int failing_number_ = 0;
    failure how_number_fails_ = failure::error;
    std::string failing_name_;
    failure how_name_fails_ = failure::error;
    bool has_failed_ = false;
    int live_objects_ = 0;
    bool expects_leaks_ = false;
    LONG module_locks_before_;
};

} // namespace quill::test
