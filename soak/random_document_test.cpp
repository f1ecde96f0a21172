// Random sequences against the whole document object. QUILL_SOAK_SEED and QUILL_SOAK_STEPS make a sequence
// again; with QUILL_SOAK_TRACE each step is written before it is made.
#include "soak/random_document.h"
#include "soak/settings.h"

#include <gtest/gtest.h>

namespace quill::soak {
namespace {

constexpr std::uint64_t short_steps = 600;

TEST(RandomSequence, OfTheDocument)
{
    const std::uint64_t steps = number_setting(L"QUILL_SOAK_STEPS", short_steps);
    random_source random(announced_seed("document"));
    {
        document_world world;
        world.use(download_path::urlmon);
        {
            random_documents documents(world, random);
            for (std::uint64_t number = 0; number < steps && !HasFailure(); ++number)
                trace_step(number, documents.step());
            documents.end();
        }
        EXPECT_EQ(world.module.can_unload_now(), S_OK);
    }
    EXPECT_EQ(GetModuleHandleW(L"QuillPDF.IE.dll"), nullptr);
}

} // namespace
} // namespace quill::soak
