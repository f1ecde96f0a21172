#include "tests/support/fakes/call_log.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <utility>

namespace quill::test {

const char* to_text(call_fault fault)
{
    switch (fault) {
    case call_fault::none:
        return "as usual";
    case call_fault::error:
        return "failure";
    case call_fault::error_untouched:
        return "failure, out parameter untouched";
    case call_fault::error_with_value:
        return "failure with a value";
    case call_fault::null_result:
        return "success with nullptr";
    case call_fault::untouched:
        return "success, out parameter untouched";
    }
    return "?";
}

call_log::call_log(unlisted_calls unlisted)
    : thread_(GetCurrentThreadId()), allows_all_(unlisted == unlisted_calls::allow)
{
}

void call_log::allow(std::string_view name)
{
    allowed_.emplace(name);
}

void call_log::forbid(std::string_view name)
{
    allowed_.erase(std::string{name});
}

void call_log::make_fail(std::string_view name, call_fault fault, int nth)
{
    faults_[std::string{name}] = {fault, nth};
}

void call_log::fail_call_number(int number, call_fault fault)
{
    failing_number_ = number;
    number_fault_ = fault;
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

void call_log::when_any(std::function<void(const std::string&)> action)
{
    action_at_any_ = std::move(action);
}

void call_log::make_return(std::string_view name, HRESULT result)
{
    results_[std::string{name}] = result;
}

call_fault call_log::arrive(std::string_view name, std::string_view arguments)
{
    EXPECT_TRUE(allows_all_ || allowed_.contains(name)) << "unexpected call: " << name << " " << arguments;
    std::string line{name};
    if (!arguments.empty())
        line.append(" ").append(arguments);
    calls_.push_back(std::move(line));
    name_lengths_.push_back(name.size());
    return arrive_query(name);
}

call_fault call_log::arrive_query(std::string_view name)
{
    EXPECT_EQ(GetCurrentThreadId(), thread_) << name << " called on another thread";
    ++total_;
    auto count = counts_.find(name);
    if (count == counts_.end())
        count = counts_.emplace(name, 0).first;
    const int number = ++count->second;
    const call_fault fault = fault_of(name, number);
    if (total_ == failing_number_)
        failed_call_ = name;
    if (action_number_ != 0 && total_ == action_number_) {
        failed_call_ = name;
        const auto run = action_at_number_;
        run();
    }
    if (action_at_any_) {
        const auto run = action_at_any_;
        run(std::string{name});
    }
    if (const auto action = actions_.find(name); action != actions_.end()) {
        const auto run = action->second;
        run();
    }
    return fault;
}

HRESULT call_log::note(std::string_view name)
{
    if (is_error(arrive(name)))
        return injected_failure;
    const auto planned = results_.find(name);
    return planned == results_.end() ? S_OK : planned->second;
}

call_fault call_log::fault_of(std::string_view name, int number) const
{
    if (failing_number_ != 0 && total_ == failing_number_)
        return number_fault_;
    const auto planned = faults_.find(name);
    if (planned == faults_.end())
        return call_fault::none;
    return planned->second.nth == 0 || planned->second.nth == number ? planned->second.fault
                                                                     : call_fault::none;
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
        if (names.contains(std::string_view{calls_[index]}.substr(0, name_lengths_[index])))
            chosen.push_back(calls_[index]);
    }
    return chosen;
}

std::vector<std::string> call_log::take()
{
    counts_.clear();
    name_lengths_.clear();
    return std::exchange(calls_, {});
}

void call_log::forget_calls()
{
    total_ = 0;
    take();
}

} // namespace quill::test
