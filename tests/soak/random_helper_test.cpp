// Random sequences against the helper object. QUILL_SOAK_SEED and QUILL_SOAK_STEPS repeat a sequence; with
// QUILL_SOAK_TRACE each step is printed before it is made.
#include "tests/sharepoint/editor_programs.h"
#include "tests/soak/random_helper.h"
#include "tests/soak/soak_settings.h"

#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::soak {
namespace {

constexpr std::uint64_t short_steps = 2'000;
constexpr std::uint64_t steps_of_a_stretch = 40;

TEST(RandomSequence, OfTheHelper)
{
    ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
    const std::uint64_t steps = number_setting(L"QUILL_SOAK_STEPS", short_steps);
    random_source random(announced_seed("helper"));
    {
        test::editor_programs editors;
        editors.break_default_handler(); // what would be started is not the question here
        test::module_under_test module;
        for (std::uint64_t number = 0; number < steps && !HasFailure(); number += steps_of_a_stretch) {
            test::fake_tab tab;
            random_helper helper(module, random, tab);
            for (std::uint64_t i = 0; i < steps_of_a_stretch; ++i)
                trace_step(number + i, helper.step());
        }
        EXPECT_EQ(module.can_unload_now(), S_OK);
    }
    EXPECT_EQ(GetModuleHandleW(L"QuillPDF.IE.dll"), nullptr);
    OleUninitialize();
}

} // namespace
} // namespace quill::soak
