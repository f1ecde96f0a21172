#include "tests/support/host/call_log.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace quill::test {

const char* to_text(bad_answer kind)
{
    switch (kind) {
    case bad_answer::none:
        return "as usual";
    case bad_answer::failure:
        return "failure";
    case bad_answer::failure_untouched:
        return "failure, out argument untouched";
    case bad_answer::success_null:
        return "success with nothing";
    case bad_answer::success_untouched:
        return "success, out argument untouched";
    }
    return "?";
}

call_log::call_log() : thread_(GetCurrentThreadId()) {}

void call_log::allow(std::string_view name)
{
    allowed_.emplace(name);
}

void call_log::forbid(std::string_view name)
{
    allowed_.erase(std::string{name});
}

void call_log::make_fail(std::string_view name, bad_answer kind, int nth)
{
    bad_answers_[std::string{name}] = {kind, nth};
}

void call_log::fail_call_number(int number, bad_answer kind)
{
    failing_number_ = number;
    failing_kind_ = kind;
}

void call_log::when(std::string_view name, std::function<void()> action)
{
    actions_[std::string{name}] = std::move(action);
}

void call_log::when_call_number(int number, std::function<void()> action)
{
    action_number_ = number;
    action_at_number_ = std::move(action);
}

bad_answer call_log::arrive(std::string_view name, std::string_view arguments)
{
    EXPECT_NE(allowed_.find(name), allowed_.end()) << "unexpected call: " << name << " " << arguments;
    std::string line{name};
    if (!arguments.empty())
        line.append(" ").append(arguments);
    calls_.push_back(std::move(line));
    names_.emplace_back(name);
    return arrive_query(name);
}

bad_answer call_log::arrive_query(std::string_view name)
{
    EXPECT_EQ(GetCurrentThreadId(), thread_) << name << " called on another thread";
    ++total_;
    const int number = ++counts_[std::string{name}];
    const bad_answer kind = answer_of(name, number);
    if (total_ == failing_number_)
        failed_call_ = name;
    if (action_number_ != 0 && total_ == action_number_) {
        failed_call_ = name;
        const auto run = action_at_number_;
        run();
    }
    if (const auto action = actions_.find(name); action != actions_.end()) {
        const auto run = action->second;
        run();
    }
    return kind;
}

bad_answer call_log::answer_of(std::string_view name, int number) const
{
    if (failing_number_ != 0 && total_ == failing_number_)
        return failing_kind_;
    const auto planned = bad_answers_.find(name);
    if (planned == bad_answers_.end())
        return bad_answer::none;
    return planned->second.nth == 0 || planned->second.nth == number ? planned->second.kind
                                                                     : bad_answer::none;
}

int call_log::count(std::string_view name) const
{
    const auto found = counts_.find(name);
    return found == counts_.end() ? 0 : found->second;
}

std::vector<std::string> call_log::calls_of(const std::set<std::string, std::less<>>& names) const
{
    std::vector<std::string> chosen;
    for (std::size_t index = 0; index < calls_.size(); ++index) {
        if (names.find(names_[index]) != names.end())
            chosen.push_back(calls_[index]);
    }
    return chosen;
}

void call_log::forget_calls()
{
    total_ = 0;
    counts_.clear();
    calls_.clear();
    names_.clear();
}

} // namespace quill::test
