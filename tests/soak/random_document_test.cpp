// Random sequences against the whole document object. QUILL_SOAK_SEED and QUILL_SOAK_STEPS repeat a sequence;
// with QUILL_SOAK_TRACE each step is printed before it is made.
#include "tests/soak/random_document.h"
#include "tests/soak/resource_samples.h"
#include "tests/soak/soak_settings.h"
#include "tests/support/module_threads.h"

#include <gtest/gtest.h>

namespace quill::soak {
namespace {

constexpr std::uint64_t short_steps = 400;
constexpr std::uint64_t rounds = 4;

TEST(RandomSequence, OfTheDocument)
{
    const std::uint64_t steps = number_setting(L"QUILL_SOAK_STEPS", short_steps);
    random_source random(announced_seed("document"));
    {
        document_soak_fixture fixture;
        fixture.use(download_path::urlmon);
        // Each round ends without a document; nothing may be left then.
        const auto one_round = [&](std::uint64_t round) {
            random_documents documents(fixture, random);
            for (std::uint64_t i = 0; i < steps / (rounds + 1) && !HasFailure(); ++i)
                trace_step(round * (steps / (rounds + 1)) + i, documents.step());
            documents.end();
            fixture.server.release();
            EXPECT_TRUE(fixture.server.wait_idle(10'000));
            EXPECT_EQ(fixture.module.can_unload_now(), S_OK);
            EXPECT_EQ(test::threads_of(fixture.module.handle()), 0u);
            fixture.empty_cache();
        };
        growth_limits limits;
        limits.kernel_handles = 4; // workers of the system that start and end
        limits.threads = 3;
        limits.gdi_objects = 6; // created once by the window system, at some first painting
        // What the download services allocate for each download, complete or aborted.
        limits.heap_blocks += steps / 4;
        limits.heap_bytes_each = 256 * steps;
        limits.task_memory += static_cast<long>(steps / 100);
        expect_flat([&] {
            sample_table table("random calls of documents, in rounds");
            run_cycles(table, 1, rounds, one_round);
            return table.growth_beyond(1, limits);
        });
    }
    EXPECT_EQ(GetModuleHandleW(L"QuillPDF.IE.dll"), nullptr);
}

} // namespace
} // namespace quill::soak
