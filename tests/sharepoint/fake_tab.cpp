#include "tests/sharepoint/fake_tab.h"

#include "tests/sharepoint/fake_object.h"

#include <atlbase.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

// The module object of this program: its lock count is the number of objects of the code under test.
class test_module : public CAtlDllModuleT<test_module>
{
} module_of_this_program;

std::vector<void*> destroyed;

void free_destroyed()
{
    for (void* const memory : std::exchange(destroyed, {}))
        ::operator delete(memory);
}

} // namespace

namespace quill::test {

fake_tab::fake_tab() : module_locks_before_(module_of_this_program.GetLockCount()) {}

fake_tab::~fake_tab()
{
    free_destroyed();
    if (expects_leaks_)
        return;
    EXPECT_EQ(module_of_this_program.GetLockCount(), module_locks_before_)
        << "objects of the code under test leak";
    EXPECT_EQ(live_objects_, 0) << "references to fakes leak";
}

void fake_tab::fail_call(int number, failure how)
{
    failing_number_ = number;
    how_number_fails_ = how;
}

void fake_tab::fail_calls_named(std::string name, failure how)
{
    failing_name_ = std::move(name);
    how_name_fails_ = how;
}

int fake_tab::count_calls(const std::string& name) const
{
    return static_cast<int>(std::count(calls_.begin(), calls_.end(), name));
}

std::optional<HRESULT> fake_tab::enter(const char* call)
{
    calls_.emplace_back(call);
    interrupt(call);
    if (failing_name_ == call)
        return result_of(how_name_fails_);
    if (failing_number_ > 0 && --failing_number_ == 0)
        return result_of(how_number_fails_);
    return std::nullopt;
}

std::optional<HRESULT> fake_tab::enter(const char* call, VARIANT* out)
{
    EXPECT_EQ(out->vt, VT_EMPTY) << call << " gets an uninitialised out parameter";
    const auto result = enter(call);
    if (!result || !leaves_out_untouched())
        VariantInit(out);
    return result;
}

void fake_tab::interrupt_call(int number, std::function<void()> action)
{
    interrupted_number_ = number;
    number_interruption_ = std::move(action);
}

void fake_tab::interrupt_calls_named(std::string name, std::function<void()> action)
{
    interrupted_name_ = std::move(name);
    name_interruption_ = std::move(action);
}

void fake_tab::interrupt_reference_call(HMODULE module, int number, std::function<void()> action)
{
    const auto* const begin = reinterpret_cast<const std::byte*>(module);
    const auto& dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(begin);
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS*>(begin + dos.e_lfanew);
    watched_begin_ = begin;
    watched_end_ = begin + headers.OptionalHeader.SizeOfImage;
    reference_calls_ = 0;
    interrupted_reference_call_ = number;
    reference_interruption_ = std::move(action);
}

void fake_tab::count_reference_call()
{
    if (++reference_calls_ != interrupted_reference_call_)
        return;
    has_interrupted_ = true;
    reference_interruption_();
}

void fake_tab::destroy(void* memory, std::size_t size)
{
    std::memset(memory, 0xDD, size);
    destroyed.push_back(memory);
}

void fake_tab::interrupt(const char* call)
{
    const bool is_number = interrupted_number_ > 0 && --interrupted_number_ == 0;
    if (!is_number && interrupted_name_ != call)
        return;
    has_interrupted_ = true;
    // A copy, because the action may replace it.
    const auto action = is_number ? number_interruption_ : name_interruption_;
    action();
}

std::optional<HRESULT> fake_tab::result_of(failure how)
{
    has_failed_ = true;
    how_last_failed_ = how;
    return how == failure::error ? E_FAIL : S_OK;
}

} // namespace quill::test
