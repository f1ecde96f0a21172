// The browser closed, or navigated away, at every stage of a document, at random, in the system's own engine;
// compared with a document object that does nothing and has a bare download.
#include "tests/soak/closing_plan.h"
#include "tests/soak/engine_soak_fixture.h"
#include "tests/soak/resource_samples.h"
#include "tests/soak/soak_settings.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <oleidl.h>
#include <urlmon.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace quill::soak {
namespace {

using Microsoft::WRL::ComPtr;

constexpr std::size_t short_closings = 8; // half of them in each of the two runs
constexpr std::size_t warm_up_closings = 6;
constexpr DWORD patience_ms = 4'000;
constexpr std::uint32_t server_rest_ms = 10'000;

enum class way_to_close : std::size_t
{
    closed,
    window_destroyed_first,
    site_taken_first,
    stopped,
    quit,
    gone_elsewhere,
    gone_to_nothing,
    count
};

test::http_response in_drops(std::size_t size, const std::string& type)
{
    test::http_response response = test::http_response::ok(test::pdf_body(size), type);
    response.piece_size = slow_piece_size;
    response.piece_delay_ms = slow_piece_delay_ms;
    return response;
}

// The resources of one document.
known_growth resources_of_a_document()
{
    constexpr std::size_t count = 16;
    std::vector<ComPtr<IPersistMoniker>> documents(count);
    sample_table table("documents that are only held");
    table.add(0, false);
    for (auto& document : documents) {
        ComPtr<IMoniker> moniker;
        EXPECT_EQ(CreateURLMoniker(nullptr, L"http://127.0.0.1:80/plan.pdf?1000", &moniker), S_OK);
        EXPECT_EQ(CoCreateInstance(test::active_document_class_id, nullptr, CLSCTX_INPROC_SERVER,
                                   IID_PPV_ARGS(&document)),
                  S_OK);
        EXPECT_EQ(document->Load(FALSE, moniker.Get(), nullptr, STGM_READ), S_OK);
    }
    table.add(count, false);
    known_growth weight = growth_since(table, 0);
    for (double* each :
         {&weight.kernel_handles, &weight.task_memory, &weight.heap_blocks, &weight.heap_bytes})
        *each = std::ceil(std::max(*each, 0.0) / count);
    return weight;
}

struct outcome
{
    sample_table table;
    ULONGLONG longest_ms = 0;
    long kept = 0;          // documents that the engine has not released
    long kept_measured = 0; // of these, since the warm-up
    long strayed = 0;       // how often the browser did not arrive at its URL while something loaded
};

class EngineClosings : public engine_soak_fixture
{
protected:
    EngineClosings()
    {
        server.route("/other.bin", test::http_response::ok(test::pdf_body(6'000), trivial_type));
    }

    // Closes as often as configured, at stages at which the engine has completed its own request or has not.
    template <class Living>
    outcome run(engine_guest& guest, bool through, const char* title, const Living& living)
    {
        outcome result{sample_table(title)};
        std::mt19937_64 random(seed);
        serve(guest);
        longest_ms = 0;
        strayed = 0;
        const std::size_t closings = std::max<std::size_t>(
            1, static_cast<std::size_t>(number_setting(L"QUILL_SOAK_CLOSINGS", short_closings)) / 2);
        const long before = living();
        long warm = before;
        // What the engine keeps never settles, and the short form has no time to show that.
        const bool settles = through || closings > short_closings;
        run_cycles(result.table, warm_up_closings, closings, settles, [&](std::size_t number) {
            closing_plan drawn =
                draw_closing_in_browser(random, static_cast<std::size_t>(way_to_close::count));
            while (host_is_through(drawn) != through)
                drawn = draw_closing_in_browser(random, static_cast<std::size_t>(way_to_close::count));
            if (number < warm_up_closings) // everything that is initialised once is initialised now
                drawn.path = number & 1 ? download_path::wininet : download_path::urlmon;
            trace_step(number, text_of(drawn, number).c_str());
            if (!HasFailure())
                open_and_close(guest, drawn, number);
            if (number + 1 == warm_up_closings) // reading the log allocates on the heap too
                warm = living();
        });
        result.longest_ms = longest_ms;
        result.kept = living() - before;
        result.kept_measured = living() - warm;
        result.strayed = strayed;
        std::printf("longest closing: %llu ms; documents kept by the engine: %ld; navigations away that did "
                    "not arrive: %ld\n",
                    result.longest_ms, result.kept, result.strayed);
        return result;
    }
    outcome run_trivial(bool through)
    {
        trivial_guest guest(trivial, files);
        return run(guest, through, "trivial documents with a bare download, closed at random in the engine",
                   [this] { return trivial.living(); });
    }
    outcome run_module(bool through)
    {
        module_guest guest(downloads);
        // Includes the documents that the browser opens when it navigates away.
        return run(guest, through, "documents, closed at random in the engine",
                   [this] { return live_documents() + trivial.living(); });
    }

private:
    // The first request of a cycle is the engine's, the second the worker's. The quick response for the
    // engine comes in one piece.
    void serve(const engine_guest& guest)
    {
        const auto path = guest.path();
        server.route(std::string(path.begin(), path.end()),
                     [this, type = guest.type()](const test::http_request& request) {
                         if (!request.target.ends_with(mark))
                             return test::http_response::not_found();
                         if (requests++ == 0)
                             return plan.slow_host ? in_drops(30'000, type)
                                                   : test::http_response::ok(test::pdf_body(6'000), type);
                         return plan.slow ? in_drops(slow_body_size, type)
                                          : test::http_response::ok(test::pdf_body(20'000), type);
                     });
    }

    void open_and_close(engine_guest& guest, const closing_plan& drawn, std::size_t number)
    {
        SCOPED_TRACE(text_of(drawn, number));
        mark = "?" + std::to_string(number);
        plan = drawn;
        requests = 0;
        guest.begin(drawn.path);
        {
            test::engine browser;
            browser.open(server.url(guest.path() + L"?" + std::to_wstring(number)));
            reach(drawn, server,
                  {[&] { return requests.load(); }, 2, [&] { return guest.load_waits(); },
                   [&] { return guest.done() > 0; }});
            guest.leave();
            const auto way = static_cast<way_to_close>(drawn.way_to_close);
            ULONGLONG begin = GetTickCount64();
            if (!leave(browser, way, drawn.moments_ms, number)) {
                ++strayed;
                begin = GetTickCount64();
            }
            const std::size_t shown = guest.shown();
            close(browser, way);
            const ULONGLONG took = GetTickCount64() - begin;
            longest_ms = std::max(longest_ms, took);
            EXPECT_LT(took, longest_closing_ms);
            test::pump_messages();
            EXPECT_EQ(guest.shown(), shown) << "a document was shown after it was closed";
        }
        EXPECT_EQ(guest.end(), 0u) << "a worker is left";
        EXPECT_TRUE(server.wait_idle(server_rest_ms)) << "a download is still running";
        test::pump_messages();
        server.forget_requests();
    }

    // What a user or a page does in a browser that stays open. False if the browser does not arrive at its
    // URL.
    bool leave(test::engine& browser, way_to_close way, DWORD moments_ms, std::size_t number)
    {
        const std::wstring other = server.url(L"/other.bin?" + std::to_wstring(number));
        switch (way) {
        case way_to_close::stopped:
            browser.control().browser()->Stop();
            pump_for(moments_ms);
            return true;
        case way_to_close::quit:
            browser.control().browser()->Quit();
            return true;
        case way_to_close::gone_elsewhere:
            browser.open(other);
            return test::wait_until([&] { return trivial.last_shown() == other; }, patience_ms);
        case way_to_close::gone_to_nothing:
            browser.open(L"about:blank");
            pump_for(moments_ms);
            return true;
        default:
            return true;
        }
    }

    static void close(test::engine& browser, way_to_close way)
    {
        if (way == way_to_close::window_destroyed_first)
            DestroyWindow(browser.window());
        if (way == way_to_close::site_taken_first) {
            const CComQIPtr<IOleObject> object(browser.control().browser());
            object->SetClientSite(nullptr);
        }
        browser.close();
    }

    const std::uint64_t seed = announced_seed("closing in the engine");
    ULONGLONG longest_ms = 0;
    long strayed = 0;
    // Changed between cycles only; read on the threads of the server.
    std::string mark;
    closing_plan plan;
    std::atomic<std::size_t> requests = 0;
};

TEST_F(EngineClosings, AtAnyStageOfTheDownload)
{
    expect_flat([&] {
        const outcome bare = run_trivial(true);
        const outcome documents = run_module(true);
        EXPECT_EQ(bare.kept, 0);
        EXPECT_EQ(documents.kept, 0);
        growth_report report = growth_beyond(bare.table, documents.table, 1);
        if (documents.strayed > 0)
            report.push_back("navigations away that did not arrive");
        return report;
    });
    EXPECT_TRUE(test::wait_until([&] { return module.can_unload(); })) << "an object keeps the module loaded";
}

// The engine leaks any document that is closed while it still reads its own response.
TEST_F(EngineClosings, WhileTheEngineLoads)
{
    long kept_documents = 0;
    expect_flat([&] {
        const outcome bare = run_trivial(false);
        const outcome documents = run_module(false);
        kept_documents += documents.kept;
        const auto kept = static_cast<double>(documents.kept_measured);
        const auto kept_bare = static_cast<double>(bare.kept_measured);
        const known_growth each = resources_of_a_document();
        const known_growth engine = growth_since(bare.table, 1);
        const double more = kept_bare > 0 ? std::max(kept - kept_bare, 0.0) / kept_bare : kept;
        growth_report report = growth_beyond(bare.table, documents.table, 1,
                                             {kept * each.kernel_handles + more * engine.kernel_handles,
                                              kept * each.task_memory + more * engine.task_memory,
                                              kept * each.heap_blocks + more * engine.heap_blocks,
                                              kept * each.heap_bytes + more * engine.heap_bytes});
        std::printf("a document that is held: %.0f handles, %.0f blocks, %.0f bytes\n", each.kernel_handles,
                    each.heap_blocks, each.heap_bytes);
        // Timing decides which of them are leaked or do not navigate.
        const auto cycles = static_cast<double>(documents.table.lines().back().done);
        const auto about = [cycles](double count) { return count + 2 + cycles / 50 + 2 * std::sqrt(count); };
        if (kept > about(kept_bare))
            report.push_back("documents that the engine keeps");
        if (static_cast<double>(documents.strayed) > about(static_cast<double>(bare.strayed)))
            report.push_back("navigations away that did not arrive");
        return report;
    });
    if (kept_documents == 0)
        EXPECT_TRUE(test::wait_until([&] { return module.can_unload(); }))
            << "an object keeps the module loaded";
}

} // namespace
} // namespace quill::soak
