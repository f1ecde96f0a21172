#include "tests/sharepoint/fake_scene.h"

#include "tests/sharepoint/fake_object.h"

#include <atlbase.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

// Counts the objects of the code under test, as the module it belongs to would.
class test_module : public CAtlDllModuleT<test_module>
{
} module_of_this_program;

} // namespace

// Whatever a fake does not have was not to be called.
HRESULT unimplemented_method(const char* name) noexcept
{
    ADD_FAILURE() << "unexpected call of " << name;
    return E_NOTIMPL;
}

namespace quill::test {

fake_scene::fake_scene() : module_locks_before_(module_of_this_program.GetLockCount()) {}

fake_scene::~fake_scene()
{
    if (expects_leaks_)
        return;
    EXPECT_EQ(module_of_this_program.GetLockCount(), module_locks_before_) << "objects were left behind";
    EXPECT_EQ(live_objects_, 0) << "references to fakes were not given back";
}

void fake_scene::fail_call(int number, failure how)
{
    failing_number_ = number;
    how_number_fails_ = how;
}

void fake_scene::fail_calls_named(std::string name, failure how)
{
    failing_name_ = std::move(name);
    how_name_fails_ = how;
}

int fake_scene::count_calls(const std::string& name) const
{
    return static_cast<int>(std::count(calls_.begin(), calls_.end(), name));
}

std::optional<HRESULT> fake_scene::enter(const char* call)
{
    calls_.emplace_back(call);
    if (failing_name_ == call)
        return result_of(how_name_fails_);
    if (failing_number_ > 0 && --failing_number_ == 0)
        return result_of(how_number_fails_);
    return std::nullopt;
}

std::optional<HRESULT> fake_scene::result_of(failure how)
{
    has_failed_ = true;
    return how == failure::error ? E_FAIL : S_OK;
}

} // namespace quill::test
