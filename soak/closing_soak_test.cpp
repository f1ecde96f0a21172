// A document closed at every stage of its download, at random: the closing ends, nothing is shown afterwards,
// nothing stays.
#include "retrieval/window_messages.h"
#include "soak/document_world.h"
#include "soak/samples.h"
#include "soak/settings.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>

namespace quill::soak {
namespace {

constexpr std::size_t short_closings = 8;
constexpr std::size_t warm_up_closings = 12;
// The longest that a worker may keep a closing document waiting: two sends of two seconds to a window that
// does not answer any more, and the poll.
constexpr ULONGLONG longest_closing_ms = 5'000;

// How far the download has come when the document is closed.
enum class stage
{
    window_made,   // the worker may not have asked for anything yet
    requested,     // the server has the request
    first_bytes,   // the viewer's pane has been told of progress, or the body is half there
    moments_later, // anywhere
    body_sent,     // the worker checks or hands over
    load_posted,   // the request to load waits in the queue
    shown,         // the viewer has it
    count
};

constexpr const char* stage_names[] = {"window made", "requested",   "first bytes", "moments later",
                                       "body sent",   "load posted", "shown"};

struct plan
{
    stage at = stage::window_made;
    download_path path = download_path::urlmon;
    std::size_t way_down = 0;
    DWORD moments_ms = 0;
    bool slow = false;
};

plan draw(std::mt19937_64& random)
{
    plan drawn;
    drawn.at = static_cast<stage>(random() % static_cast<unsigned>(stage::count));
    drawn.path = random() % 2 ? download_path::wininet : download_path::urlmon;
    drawn.way_down = random() % 3;
    drawn.moments_ms = static_cast<DWORD>(random() % 120);
    drawn.slow = drawn.at != stage::body_sent && drawn.at != stage::load_posted && drawn.at != stage::shown &&
                 random() % 4 != 0;
    return drawn;
}

void pump_for(DWORD milliseconds)
{
    const ULONGLONG end = GetTickCount64() + milliseconds;
    test::wait_until([end] { return GetTickCount64() >= end; });
}

// Delivers what is sent to the window, but takes nothing from its queue.
bool wait_for_posted_load()
{
    const ULONGLONG end = GetTickCount64() + test::default_deadline_ms;
    MSG message{};
    while (!PeekMessageW(&message, nullptr, WM_USER_LOADFILE, WM_USER_LOADFILE, PM_NOREMOVE)) {
        if (GetTickCount64() >= end)
            return false;
        MsgWaitForMultipleObjectsEx(0, nullptr, 10, QS_ALLINPUT, 0);
    }
    return true;
}

void reach(stage wanted, const plan& drawn, document_world& world, viewer_store& viewers)
{
    switch (wanted) {
    case stage::window_made:
    case stage::count:
        break;
    case stage::moments_later:
        pump_for(drawn.moments_ms);
        break;
    case stage::requested:
        EXPECT_TRUE(test::wait_until([&] { return !world.server.requests().empty(); }));
        break;
    case stage::first_bytes:
        EXPECT_TRUE(test::wait_until([&] { return !world.server.requests().empty(); }));
        pump_for(drawn.moments_ms);
        break;
    case stage::body_sent:
        EXPECT_TRUE(test::wait_until([&] { return !world.server.requests().empty(); }));
        EXPECT_TRUE(world.server.wait_idle(10'000));
        break;
    case stage::load_posted:
        EXPECT_TRUE(wait_for_posted_load());
        break;
    case stage::shown:
        EXPECT_TRUE(viewers.wait_until_opened());
        break;
    }
}

void take_down(hosted_document& document, std::size_t way)
{
    switch (way) {
    case 0:
        return document.close_as_navigating_away();
    case 1:
        return document.close_as_closed_browser();
    default:
        return document.close_view_alone();
    }
}

class closings
{
public:
    explicit closings(std::uint64_t seed) : random_(seed)
    {
        world_.server.route("/quick.pdf", test::http_response::ok(test::pdf_body(20'000)));
        auto slow = test::http_response::ok(test::pdf_body(400'000));
        slow.piece_size = 2'000;
        slow.piece_delay_ms = 20;
        world_.server.route("/slow.pdf", slow);
    }

    void live(std::size_t number)
    {
        const plan drawn = draw(random_);
        SCOPED_TRACE("closing " + std::to_string(number) + ": " +
                     stage_names[static_cast<std::size_t>(drawn.at)]);
        world_.use(drawn.path);
        viewer_store viewers;
        {
            hosted_document document(world_);
            document.load_url(world_.server.url(drawn.slow ? L"/slow.pdf" : L"/quick.pdf"));
            EXPECT_EQ(document.do_verb(OLEIVERB_SHOW), S_OK);
            reach(drawn.at, drawn, world_, viewers);
            const std::size_t opened = viewers.opened();
            const ULONGLONG begin = GetTickCount64();
            take_down(document, drawn.way_down);
            longest_ms_ = std::max(longest_ms_, GetTickCount64() - begin);
            EXPECT_LT(GetTickCount64() - begin, longest_closing_ms);
            test::pump_messages();
            EXPECT_EQ(viewers.opened(), opened) << "something was shown after the end";
        }
        EXPECT_EQ(world_.module.can_unload_now(), S_OK);
        EXPECT_TRUE(world_.server.wait_idle(10'000)) << "somebody still downloads";
        world_.server.forget_requests();
        world_.empty_cache();
    }

    ULONGLONG longest_ms() const { return longest_ms_; }

private:
    document_world world_;
    std::mt19937_64 random_;
    ULONGLONG longest_ms_ = 0;
};

TEST(ClosingSoak, AtAnyStageOfADownload)
{
    sample_table table("documents closed at a stage of their download, at random");
    {
        const auto closings_wanted =
            static_cast<std::size_t>(number_setting(L"QUILL_SOAK_CLOSINGS", short_closings));
        closings run(announced_seed("closing"));
        run_lives(table, warm_up_closings, closings_wanted, [&](std::size_t number) {
            if (!testing::Test::HasFailure())
                run.live(number);
        });
        growth_limits limits;
        // What the download services keep of a download that is not broken off, too.
        limits.heap_blocks += 2 * closings_wanted;
        limits.heap_bytes_each = 256;
        limits.kernel_handles = 2; // of workers of the system's that come and go
        limits.threads = 2;
        // Downloads that are broken off leave a string of the system's now and then, up to one in twenty.
        limits.task_memory += static_cast<long>(closings_wanted / 20);
        table.expect_flat_from(1, limits);
        std::printf("longest closing: %llu ms\n", run.longest_ms());
    }
    EXPECT_EQ(GetModuleHandleW(L"QuillPDF.IE.dll"), nullptr);
}

} // namespace
} // namespace quill::soak
