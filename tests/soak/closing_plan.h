// How far a document and its download have come when somebody closes it, drawn at random so that it can be
// drawn again.
#pragma once

#include "tests/soak/download_setup.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <string>

namespace quill::test {
class http_server;
}

namespace quill::soak {

// The longest that a worker may keep a closing document waiting: two sends of two seconds to a window that
// does not answer any more, and the poll.
inline constexpr ULONGLONG longest_closing_ms = 5'000;

enum class stage
{
    begun,         // nobody may have asked for anything yet
    requested,     // the server has the worker's request
    amid_body,     // some time after the request: anywhere in a slow body
    moments_later, // some time after the beginning
    body_sent,     // the worker checks or hands over
    load_posted,   // the request to load waits in the queue
    shown,         // the viewer has it
    host_requested // the server has the request of a host that fetches by itself, as browsers do
};

struct closing_plan
{
    stage at = stage::begun;
    download_path path = download_path::urlmon;
    std::size_t way_down = 0;
    DWORD moments_ms = 0;
    bool slow = false;      // the worker's answer comes in drops
    bool slow_host = false; // the host's
};

// In a host that does not fetch anything itself, which can take a document down in some ways.
closing_plan draw_closing(std::mt19937_64& random, std::size_t ways_down);
// In one that fetches by itself before it makes the document.
closing_plan draw_closing_in_browser(std::mt19937_64& random, std::size_t ways_down);
// Whether such a host is through with its own request at the plan's stage.
bool host_is_through(const closing_plan& plan);

// "closing 3: first bytes, urlmon, slow, way 2".
std::string text_of(const closing_plan& plan, std::size_t number);

// A body that takes a third of a second and more: no longer than the longest of the plans' moments, so that
// every part of it has its closings.
inline constexpr std::size_t slow_body_size = 120'000;
inline constexpr std::size_t slow_piece_size = 2'000;
inline constexpr std::uint32_t slow_piece_delay_ms = 5;

// How a plan's stages are told.
struct closing_signs
{
    // How many requests the server has of this cycle; the last is the worker's.
    std::function<std::size_t()> requests;
    std::size_t requests_with_the_worker = 1;
    std::function<bool()> load_waits;
    std::function<bool()> shown;
};

// Pumps messages until the plan's stage is reached; a test failure when it does not come.
void reach(const closing_plan& plan, const test::http_server& server, const closing_signs& signs);

void pump_for(DWORD milliseconds);
// Whether the request to load a file waits in the queue of the calling thread.
bool load_is_posted();

} // namespace quill::soak
