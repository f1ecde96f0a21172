// Documents opened and closed many times in one process, and many open at once, without growth.
#include "tests/soak/bare_download.h"
#include "tests/soak/document_soak_fixture.h"
#include "tests/soak/resource_samples.h"
#include "tests/soak/soak_settings.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <memory>
#include <string>
#include <vector>

namespace quill::soak {
namespace {

constexpr std::size_t short_openings = 16;
constexpr std::size_t warm_up_openings = 16;
constexpr std::size_t short_crowd = 25;
constexpr DWORD crowd_deadline_ms = 120'000;
constexpr DWORD server_rest_ms = 5'000;

// Alternates between a local file and a URL, shown in both orders of a host, closed in three ways.
void open_and_close(document_soak_fixture& fixture, std::size_t cycle)
{
    {
        viewer_store viewers;
        hosted_document document(fixture);
        document.host.order = cycle & 1 ? test::activation_order::site_then_ui_activate
                                        : test::activation_order::create_view_with_site;
        if (cycle % 4 < 2)
            document.load_file(fixture.local_pdf);
        else
            document.load_url(fixture.server.url(L"/x.pdf#page=2"));
        EXPECT_EQ(document.do_verb(OLEIVERB_SHOW), S_OK);
        EXPECT_TRUE(viewers.wait_until_opened()) << "cycle " << cycle;
        document.close(cycle);
    }
    EXPECT_TRUE(fixture.server.wait_idle(server_rest_ms));
    EXPECT_EQ(fixture.module.can_unload_now(), S_OK) << "cycle " << cycle;
    fixture.server.forget_requests();
    fixture.empty_cache();
}

// The same number of downloads in the same rhythm, without the module.
void run_bare(document_soak_fixture& fixture, download_path path, std::size_t cycle)
{
    if (cycle % 4 >= 2)
        run_bare_download(path, fixture.server.url(L"/x.pdf"), fixture.cache / L"bare.pdf");
    EXPECT_TRUE(fixture.server.wait_idle(server_rest_ms));
    fixture.server.forget_requests();
}

// As many downloads at the same time, without the module.
void run_bare_crowd(document_soak_fixture& fixture, download_path path, std::size_t crowd_size)
{
    std::vector<std::unique_ptr<bare_download>> crowd;
    for (std::size_t i = 0; i < crowd_size; ++i)
        crowd.push_back(std::make_unique<bare_download>(path, fixture.server.url(L"/x.pdf"),
                                                        fixture.cache / (std::to_wstring(i) + L".pdf")));
    for (const auto& each : crowd)
        EXPECT_TRUE(test::wait_until([&] { return each->is_done(); }, crowd_deadline_ms));
    crowd.clear();
    EXPECT_TRUE(fixture.server.wait_idle(server_rest_ms));
    fixture.server.forget_requests();
}

void soak(download_path path, const std::string& service)
{
    const std::size_t openings = number_setting(L"QUILL_SOAK_OPENINGS", short_openings);
    {
        document_soak_fixture fixture;
        fixture.use(path);
        fixture.server.route("/x.pdf", test::http_response::ok(test::pdf_body(20'000)));
        expect_flat([&] {
            sample_table bare("downloads alone: half of as many, through " + service);
            run_cycles(bare, warm_up_openings, openings,
                       [&](std::size_t number) { run_bare(fixture, path, number); });
            sample_table table("document openings, half of them fetched through " + service);
            run_cycles(table, warm_up_openings, openings, [&](std::size_t number) {
                if (!testing::Test::HasFailure())
                    open_and_close(fixture, number);
            });
            return table.growth_beyond(1, growth_of(bare, 1));
        });
    }
    EXPECT_EQ(GetModuleHandleW(L"QuillPDF.IE.dll"), nullptr);
}

TEST(DocumentSoak, OpeningsThroughUrlmon)
{
    soak(download_path::urlmon, "urlmon");
}

TEST(DocumentSoak, OpeningsThroughWinINet)
{
    soak(download_path::wininet, "WinINet");
}

// All of them fetch at the same time, each with a worker of its own.
TEST(DocumentSoak, ManyAtOnce)
{
    const std::size_t crowd_size = number_setting(L"QUILL_SOAK_CROWD", short_crowd);
    {
        document_soak_fixture fixture;
        fixture.server.route("/x.pdf", test::http_response::ok(test::pdf_body(20'000)));
        const auto path_of = [](std::size_t number) {
            return number & 1 ? download_path::wininet : download_path::urlmon;
        };
        const auto crowd_cycle = [&](std::size_t number) {
            fixture.use(path_of(number));
            viewer_store viewers;
            std::vector<std::unique_ptr<hosted_document>> crowd;
            for (std::size_t i = 0; i < crowd_size; ++i) {
                crowd.push_back(std::make_unique<hosted_document>(fixture));
                crowd.back()->load_url(fixture.server.url(L"/x.pdf"));
                // Placed in a page, so that no menus are merged: one thread never has hundreds of frames.
                EXPECT_EQ(crowd.back()->do_verb(OLEIVERB_INPLACEACTIVATE), S_OK);
            }
            EXPECT_TRUE(viewers.wait_until_opened(crowd_size, crowd_deadline_ms));
            for (std::size_t i = 0; i < crowd.size(); ++i)
                crowd[i]->close(i);
            crowd.clear();
            EXPECT_TRUE(fixture.server.wait_idle(server_rest_ms));
            EXPECT_EQ(fixture.module.can_unload_now(), S_OK);
            fixture.server.forget_requests();
            fixture.empty_cache();
        };
        sample_table bare("as many downloads at once: what the services set up is there afterwards");
        run_cycles(bare, 2, 2,
                   [&](std::size_t number) { run_bare_crowd(fixture, path_of(number), crowd_size); });
        growth_limits limits;
        // What the download services allocate for each: urlmon two blocks, WinINet one. Their sizes vary by
        // kilobytes.
        limits.heap_blocks += 3 * crowd_size;
        limits.heap_bytes_each = 2'048 * crowd_size;
        limits.private_bytes_each = 1024 * crowd_size;
        expect_flat([&] {
            sample_table table("many documents open at once");
            run_cycles(table, 2, 2, crowd_cycle);
            return table.growth_beyond(1, limits);
        });
    }
}

} // namespace
} // namespace quill::soak
