// What a fake is asked, in order, and how it answers. A call that the test did not allow fails the test.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quill::test {

// The ways in which a host answers badly: it fails, it fails and leaves its out argument as it was, it
// succeeds with nothing, it succeeds and leaves its out argument as it was.
enum class bad_answer
{
    none,
    failure,
    failure_untouched,
    success_null,
    success_untouched
};

inline constexpr bad_answer every_bad_answer[] = {bad_answer::failure, bad_answer::failure_untouched,
                                                  bad_answer::success_null, bad_answer::success_untouched};

const char* to_text(bad_answer kind);

// Belongs to the thread that builds it; a call from another thread fails the test.
class call_log
{
public:
    call_log();

    // Calls come as "IInterface::Method"; one that is not allowed fails the test when it arrives.
    void allow(std::string_view name);
    void forbid(std::string_view name);

    // Makes the call of this name answer badly, every time or only the nth time (counted from 1).
    void make_fail(std::string_view name, bad_answer kind, int nth = 0);
    // Makes the nth call of all (counted from 1, interface queries included) answer badly.
    void fail_call_number(int number, bad_answer kind);
    // The name of the call that fail_call_number or when_call_number meant; empty when it did not come.
    const std::string& failed_call() const { return failed_call_; }
    // Runs before the call of this name is answered.
    void when(std::string_view name, std::function<void()> action);

    // Runs before the nth call of all (counted from 1, interface queries included) is answered.
    void when_call_number(int number, std::function<void()> action);

    // For the fakes: takes the call down and says how to answer it.
    bad_answer arrive(std::string_view name, std::string_view arguments = {});
    // As arrive, for interface queries: counted, open to faults, never listed and always allowed.
    bad_answer arrive_query(std::string_view name);

    int count(std::string_view name) const;
    // All calls so far, interface queries included.
    int total() const { return total_; }
    // "IInterface::Method arguments", oldest first.
    const std::vector<std::string>& calls() const { return calls_; }
    // The listed calls whose names are among those given.
    std::vector<std::string> calls_of(const std::set<std::string, std::less<>>& names) const;
    // Forgets what was called; what is allowed and how it fails stays.
    void forget_calls();

private:
    struct planned_answer
    {
        bad_answer kind = bad_answer::none;
        int nth = 0;
    };

    bad_answer answer_of(std::string_view name, int number) const;

    unsigned long thread_;
    int total_ = 0;
    int failing_number_ = 0;
    bad_answer failing_kind_ = bad_answer::none;
    std::string failed_call_;
    int action_number_ = 0;
    std::function<void()> action_at_number_;
    std::set<std::string, std::less<>> allowed_;
    std::map<std::string, planned_answer, std::less<>> bad_answers_;
    std::map<std::string, std::function<void()>, std::less<>> actions_;
    std::map<std::string, int, std::less<>> counts_;
    std::vector<std::string> calls_;
    std::vector<std::string> names_; // of calls_, without the arguments
};

} // namespace quill::test
