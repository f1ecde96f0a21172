#include "tests/soak/closing_plan.h"

#include "retrieval/download/window_messages.h"
#include "tests/support/http_server.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

namespace quill::soak {
namespace {

constexpr std::uint32_t server_rest_ms = 10'000;
constexpr DWORD most_moments_ms = 500;

closing_plan draw(std::mt19937_64& random, stage last, std::size_t ways_to_close)
{
    closing_plan drawn;
    drawn.at = static_cast<stage>(random() % (static_cast<unsigned>(last) + 1));
    drawn.path = random() % 2 ? download_path::wininet : download_path::urlmon;
    drawn.way_to_close = random() % ways_to_close;
    drawn.moments_ms = static_cast<DWORD>(random() % most_moments_ms);
    drawn.slow = drawn.at != stage::body_sent && drawn.at != stage::load_posted && drawn.at != stage::shown &&
                 random() % 4 != 0;
    return drawn;
}

const char* name_of(stage at)
{
    switch (at) {
    case stage::begun:
        return "begun";
    case stage::requested:
        return "requested";
    case stage::amid_body:
        return "amid the body";
    case stage::moments_later:
        return "moments later";
    case stage::body_sent:
        return "body sent";
    case stage::load_posted:
        return "load posted";
    case stage::shown:
        return "shown";
    case stage::host_requested:
        return "host requested";
    }
    return "";
}

void dispatch_between(UINT first, UINT last)
{
    MSG message{};
    while (PeekMessageW(&message, nullptr, first, last, PM_REMOVE))
        DispatchMessageW(&message);
}

// Dispatches everything but the request to load.
bool wait_for_load(const closing_signs& signs)
{
    const ULONGLONG end = GetTickCount64() + test::default_deadline_ms;
    while (!signs.load_waits()) {
        if (GetTickCount64() >= end)
            return false;
        dispatch_between(WM_NULL + 1, WM_USER_LOADFILE - 1);
        dispatch_between(WM_USER_LOADFILE + 1, 0xffff);
        MsgWaitForMultipleObjectsEx(0, nullptr, 10, QS_ALLINPUT, 0);
    }
    return true;
}

} // namespace

closing_plan draw_closing(std::mt19937_64& random, std::size_t ways_to_close)
{
    return draw(random, stage::shown, ways_to_close);
}

closing_plan draw_closing_in_browser(std::mt19937_64& random, std::size_t ways_to_close)
{
    closing_plan drawn = draw(random, stage::host_requested, ways_to_close);
    drawn.slow_host = drawn.at != stage::body_sent && drawn.at != stage::load_posted &&
                      drawn.at != stage::shown && random() % 3 == 0;
    return drawn;
}

bool host_is_through(const closing_plan& plan)
{
    return !plan.slow_host && plan.at != stage::begun && plan.at != stage::moments_later &&
           plan.at != stage::host_requested;
}

std::string text_of(const closing_plan& plan, std::size_t number)
{
    return "closing " + std::to_string(number) + ": " + name_of(plan.at) +
           (plan.path == download_path::wininet ? ", WinINet" : ", urlmon") + (plan.slow ? ", slow" : "") +
           (plan.slow_host ? ", host slow" : "") + ", way " + std::to_string(plan.way_to_close);
}

void reach(const closing_plan& plan, const test::http_server& server, const closing_signs& signs)
{
    const auto wait_for_requests = [&](std::size_t count) {
        EXPECT_TRUE(test::wait_until([&] { return signs.requests() >= count; }));
    };
    switch (plan.at) {
    case stage::begun:
        break;
    case stage::moments_later:
        pump_for(plan.moments_ms);
        break;
    case stage::host_requested:
        wait_for_requests(1);
        break;
    case stage::requested:
        wait_for_requests(signs.requests_with_the_worker);
        break;
    case stage::amid_body:
        wait_for_requests(signs.requests_with_the_worker);
        pump_for(plan.moments_ms);
        break;
    case stage::body_sent:
        wait_for_requests(signs.requests_with_the_worker);
        EXPECT_TRUE(server.wait_idle(server_rest_ms));
        break;
    case stage::load_posted:
        EXPECT_TRUE(wait_for_load(signs));
        break;
    case stage::shown:
        EXPECT_TRUE(test::wait_until(signs.shown));
        break;
    }
}

void pump_for(DWORD milliseconds)
{
    const ULONGLONG end = GetTickCount64() + milliseconds;
    test::wait_until([end] { return GetTickCount64() >= end; });
}

bool load_is_posted()
{
    MSG message{};
    return PeekMessageW(&message, nullptr, WM_USER_LOADFILE, WM_USER_LOADFILE, PM_NOREMOVE) != FALSE;
}

} // namespace quill::soak
