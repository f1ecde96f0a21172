// A document closed at every stage of its download, at random: closing ends, nothing is shown afterwards,
// nothing is leaked.
#include "tests/soak/bare_download.h"
#include "tests/soak/closing_plan.h"
#include "tests/soak/document_soak_fixture.h"
#include "tests/soak/resource_samples.h"
#include "tests/soak/soak_settings.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>

namespace quill::soak {
namespace {

constexpr std::size_t short_closings = 6;
constexpr std::size_t warm_up_closings = 12;
constexpr std::size_t ways_to_close = 3;

class closings
{
public:
    explicit closings(std::uint64_t seed) : random_(seed)
    {
        fixture_.server.route("/quick.pdf", test::http_response::ok(test::pdf_body(20'000)));
        auto slow =
            test::http_response::slow(test::pdf_body(slow_body_size), slow_piece_size, slow_piece_delay_ms);
        fixture_.server.route("/slow.pdf", slow);
    }

    void open_and_close(std::size_t number)
    {
        const closing_plan drawn = draw_closing(random_, ways_to_close);
        SCOPED_TRACE(text_of(drawn, number));
        fixture_.use(drawn.path);
        viewer_store viewers;
        {
            hosted_document document(fixture_);
            document.load_url(fixture_.server.url(drawn.slow ? L"/slow.pdf" : L"/quick.pdf"));
            EXPECT_EQ(document.do_verb(OLEIVERB_SHOW), S_OK);
            reach(drawn, fixture_.server,
                  {[&] { return fixture_.server.requests().size(); }, 1, load_is_posted,
                   [&] { return viewers.opened() > 0; }});
            const std::size_t opened = viewers.opened();
            const ULONGLONG begin = GetTickCount64();
            document.close(drawn.way_to_close);
            longest_ms_ = std::max(longest_ms_, GetTickCount64() - begin);
            EXPECT_LT(GetTickCount64() - begin, longest_closing_ms);
            test::pump_messages();
            EXPECT_EQ(viewers.opened(), opened) << "a document was shown after it was closed";
        }
        EXPECT_EQ(fixture_.module.can_unload_now(), S_OK);
        EXPECT_TRUE(fixture_.server.wait_idle(10'000)) << "a download is still running";
        fixture_.server.forget_requests();
        fixture_.empty_cache();
    }

    // A download of the same size in the same rhythm, without the module and not aborted.
    void run_bare(std::size_t number)
    {
        run_bare_download(number & 1 ? download_path::wininet : download_path::urlmon,
                          fixture_.server.url(L"/quick.pdf"), fixture_.cache / L"bare.pdf");
        EXPECT_TRUE(fixture_.server.wait_idle(10'000));
        fixture_.server.forget_requests();
    }

    ULONGLONG longest_ms() const { return longest_ms_; }

private:
    document_soak_fixture fixture_;
    std::mt19937_64 random_;
    ULONGLONG longest_ms_ = 0;
};

TEST(ClosingSoak, AtAnyStageOfADownload)
{
    {
        const auto closings_wanted =
            static_cast<std::size_t>(number_setting(L"QUILL_SOAK_CLOSINGS", short_closings));
        closings run(announced_seed("closing"));
        expect_flat([&] {
            sample_table bare("downloads alone");
            run_cycles(bare, warm_up_closings, closings_wanted,
                       [&](std::size_t number) { run.run_bare(number); });
            sample_table table("documents closed at a stage of their download, at random");
            run_cycles(table, warm_up_closings, closings_wanted, [&](std::size_t number) {
                if (!testing::Test::HasFailure())
                    run.open_and_close(number);
            });
            // What the download services allocate for a download that is not aborted.
            growth_limits limits = growth_of(bare, 1);
            // And what the first of a kind initialises, if it is not in the warm-up.
            limits.heap_blocks += 2 * closings_wanted;
            limits.heap_bytes_each += 256 + 4'096 / closings_wanted;
            limits.kernel_handles += 2; // workers of the system that start and end
            limits.threads = 2;
            // For an aborted download the system sometimes leaks a string, up to one in twenty.
            limits.task_memory += static_cast<long>(closings_wanted / 20);
            return table.growth_beyond(1, limits);
        });
        std::printf("longest closing: %llu ms\n", run.longest_ms());
    }
    EXPECT_EQ(GetModuleHandleW(L"QuillPDF.IE.dll"), nullptr);
}

} // namespace
} // namespace quill::soak
