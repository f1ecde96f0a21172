// Many documents open at once in browsers of one process, all fetching at the same moment, compared with as
// many document objects that do nothing and have a bare download each.
#include "tests/soak/engine_soak_fixture.h"
#include "tests/soak/resource_samples.h"
#include "tests/soak/soak_settings.h"
#include "tests/support/module_threads.h"
#include "tests/support/process_resources.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace quill::soak {
namespace {

constexpr std::size_t short_crowd = 4;
constexpr std::size_t crowds = 2; // after as many to warm up: one on each download path
constexpr DWORD deadline_ms = 120'000;

class EngineCrowd : public engine_soak_fixture
{
protected:
    EngineCrowd() : everybody_waits(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    ~EngineCrowd() override { CloseHandle(everybody_waits); }

    void run(engine_guest& guest, sample_table& table)
    {
        serve(guest);
        threads_at_once = 0;
        run_cycles(table, crowds, crowds, false, [&](std::size_t number) {
            if (HasFailure())
                return;
            open_and_close(guest, number & 1 ? download_path::wininet : download_path::urlmon);
            if (size > short_crowd)
                wait_for_the_systems_workers();
        });
        std::printf("most threads at once: %lu\n", threads_at_once);
    }

    const std::size_t size = static_cast<std::size_t>(number_setting(L"QUILL_SOAK_CROWD", short_crowd));

private:
    // The first request of a document is the engine's; the second, the worker's, is served when every other
    // worker has made its request too.
    void serve(const engine_guest& guest)
    {
        const auto path = guest.path();
        server.route(std::string(path.begin(), path.end()),
                     [this, type = guest.type()](const test::http_request& request) {
                         if (is_of_worker(request.target))
                             WaitForSingleObject(everybody_waits, deadline_ms);
                         return test::http_response::ok(test::pdf_body(20'000), type);
                     });
    }
    bool is_of_worker(const std::string& target)
    {
        const std::lock_guard lock(guard);
        if (requests[target]++ == 0)
            return false;
        ++waiting;
        return true;
    }
    std::size_t waiting_workers()
    {
        const std::lock_guard lock(guard);
        return waiting;
    }

    void open_and_close(engine_guest& guest, download_path path)
    {
        guest.begin(path);
        {
            std::vector<std::unique_ptr<test::engine>> browsers(size);
            for (std::size_t i = 0; i < size; ++i) {
                browsers[i] = std::make_unique<test::engine>();
                browsers[i]->open(server.url(guest.path() + L"?" + std::to_wstring(i)));
                // A thread that has not dispatched messages for seconds counts as hung, and a worker does not
                // wait for such a thread.
                test::pump_messages();
            }
            if (!test::wait_until([&] { return waiting_workers() == size; }, deadline_ms))
                report_pending();
            EXPECT_EQ(guest.workers(), size);
            threads_at_once = std::max(threads_at_once, test::process_resources::now().threads);
            EXPECT_EQ(guest.done(), 0u);
            SetEvent(everybody_waits);
            EXPECT_TRUE(test::wait_until([&] { return guest.done() == size; }, deadline_ms))
                << guest.done() << " documents are shown";
            for (std::size_t i = 0; i < size; ++i)
                close(*browsers[i], i);
        }
        EXPECT_EQ(guest.end(), 0u) << "a worker is left";
        EXPECT_TRUE(server.wait_idle(deadline_ms));
        EXPECT_EQ(trivial.living(), 0);
        EXPECT_TRUE(test::wait_until([&] { return module.can_unload(); }))
            << "an object keeps the module loaded";
        forget_requests();
    }
    // Prints the documents without a request of the engine or of the worker, and the log of the module.
    void report_pending()
    {
        const std::lock_guard lock(guard);
        for (std::size_t i = 0; i < size; ++i) {
            const auto found = std::find_if(requests.begin(), requests.end(), [i](const auto& each) {
                return each.first.ends_with("?" + std::to_string(i));
            });
            const std::size_t count = found == requests.end() ? 0 : found->second;
            if (count != 2)
                ADD_FAILURE() << "document " << i << " has made " << count << " requests";
        }
        print_last_lines();
    }
    // The system's own threads end after some idle seconds and free some blocks each: hundreds of them would
    // hide a leak.
    void wait_for_the_systems_workers() const
    {
        constexpr DWORD patience_ms = 60'000;
        test::wait_until([this] { return test::process_resources::now().threads <= threads_before + 1; },
                         patience_ms);
    }
    static void close(test::engine& browser, std::size_t number)
    {
        if (number & 1)
            DestroyWindow(browser.window());
        browser.close();
    }
    void forget_requests()
    {
        const std::lock_guard lock(guard);
        requests.clear();
        waiting = 0;
        server.forget_requests();
        ResetEvent(everybody_waits);
    }

    const HANDLE everybody_waits;
    const DWORD threads_before = test::process_resources::now().threads;
    DWORD threads_at_once = 0;
    std::mutex guard; // called on the threads of the server
    std::map<std::string, std::size_t> requests;
    std::size_t waiting = 0;
};

TEST_F(EngineCrowd, ManyAtOnce)
{
    expect_flat([&] {
        sample_table bare("trivial documents with a bare download, many at once in the engine");
        sample_table table("documents, many at once in the engine");
        trivial_guest trivial_ones(trivial, files);
        run(trivial_ones, bare);
        module_guest documents(downloads);
        run(documents, table);
        return growth_beyond(bare, table, 1);
    });
}

} // namespace
} // namespace quill::soak
