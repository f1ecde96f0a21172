// The stage of a document and its download at which it is closed, drawn at random and reproducible by its
// seed.
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

// The longest time that a worker may delay the closing of a document: two sends of two seconds each to a
// window that does not reply, and the poll.
inline constexpr ULONGLONG longest_closing_ms = 5'000;

enum class stage
{
    begun,         // there may be no request yet
    requested,     // the server has the worker's request
    amid_body,     // some time after the request: anywhere in a slow body
    moments_later, // some time after the beginning
    body_sent,     // the worker checks or hands over the file
    load_posted,   // the request to load is in the queue
    shown,         // the viewer has it
    host_requested // the server has the request of a host that fetches by itself, as browsers do
};

struct closing_plan
{
    stage at = stage::begun;
    download_path path = download_path::urlmon;
    std::size_t way_to_close = 0;
    DWORD moments_ms = 0;
    bool slow = false;      // the worker's response is slow
    bool slow_host = false; // the host's response is slow
};

// In a host without requests of its own, which can close a document in several ways.
closing_plan draw_closing(std::mt19937_64& random, std::size_t ways_to_close);
// In a host that fetches by itself before it creates the document.
closing_plan draw_closing_in_browser(std::mt19937_64& random, std::size_t ways_to_close);
// Whether such a host has completed its own request at the plan's stage.
bool host_is_through(const closing_plan& plan);

// "closing 3: first bytes, urlmon, slow, way 2".
std::string text_of(const closing_plan& plan, std::size_t number);

// A body that takes a third of a second or more: no longer than the longest delay of the plans, so that
// documents are closed in every part of it.
inline constexpr std::size_t slow_body_size = 120'000;
inline constexpr std::size_t slow_piece_size = 2'000;
inline constexpr std::uint32_t slow_piece_delay_ms = 5;

// How the stages of a plan are recognised.
struct closing_signs
{
    // The number of requests at the server in this cycle; the last is the worker's.
    std::function<std::size_t()> requests;
    std::size_t requests_with_the_worker = 1;
    std::function<bool()> load_waits;
    std::function<bool()> shown;
};

// Dispatches messages until the stage of the plan is reached; otherwise fails the test.
void reach(const closing_plan& plan, const test::http_server& server, const closing_signs& signs);

void pump_for(DWORD milliseconds);
// Whether the request to load a file is in the queue of the calling thread.
bool load_is_posted();

} // namespace quill::soak
