// What a fake object was called for, in order, and what it answers: any call can be made to fail, and
// anything can be done from inside a call.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quill::test {

class call_record
{
public:
    // Every fake method begins with this: its result is what the method answers.
    HRESULT note(const std::string& call)
    {
        const int number = count_++;
        calls_.push_back(call);
        if (during)
            during(call);
        if (number == fail_at)
            return injected_failure;
        const auto answer = answers.find(call);
        return answer == answers.end() ? S_OK : answer->second;
    }

    // The calls since the last time.
    std::vector<std::string> take() { return std::exchange(calls_, {}); }
    int count() const { return count_; }
    int count_of(const std::string& call) const
    {
        const auto found = totals();
        const auto entry = found.find(call);
        return entry == found.end() ? 0 : entry->second;
    }

    static constexpr HRESULT injected_failure = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0F17);

    std::map<std::string, HRESULT> answers;
    int fail_at = -1; // the call of this number, from 0, fails
    std::function<void(const std::string&)> during;

private:
    std::map<std::string, int> totals() const
    {
        std::map<std::string, int> result;
        for (const auto& call : calls_)
            ++result[call];
        return result;
    }

    std::vector<std::string> calls_;
    int count_ = 0;
};

// A reference count that does not delete: the fake lives in the test, which checks the count at the end.
class counted
{
public:
    ULONG add() { return ++count_; }
    ULONG drop() { return --count_; }
    ULONG count() const { return count_; }

private:
    ULONG count_ = 1;
};

} // namespace quill::test
