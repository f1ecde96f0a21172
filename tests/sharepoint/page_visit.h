// A visit to a SharePoint page with every event from SetSite to SetSite(nullptr), for fault-injection tests.
#pragma once

#include "tests/sharepoint/fake_browser.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace quill::test {

enum class visit_step
{
    attach,
    other_navigation, // to something other than a PDF
    complete,
    click, // on a list link to a PDF
    ready,
    navigation, // to a PDF
    quit,
    detach
};
inline constexpr std::size_t visit_steps = 8;

// The result of an event.
struct event_outcome
{
    HRESULT code = S_OK;
    bool is_cancelled = false;

    friend bool operator==(const event_outcome&, const event_outcome&) = default;
};
void PrintTo(const event_outcome& outcome, std::ostream* out);

struct visit_record
{
    // std::nullopt for an event that no sink received.
    std::array<std::optional<event_outcome>, visit_steps> outcomes;
    // Of the event's repetition; std::nullopt for events that are fired once.
    std::array<std::optional<event_outcome>, visit_steps> repeats;
    // The URLs that were passed to the editor and the default handler, sorted.
    std::vector<std::wstring> opened;
    // Their number in each event and in its repetition.
    std::array<std::size_t, visit_steps> opened_in{};
    std::array<std::size_t, visit_steps> opened_in_repeat{};
    bool may_open_twice = false; // the repetition came too late to be recognised as a repeat
    bool is_rewritten = false;   // SharePoint's handler was removed from the page's other link
    std::vector<std::string> calls;
    // The number of calls before each event and before its repetition.
    std::array<std::size_t, visit_steps> calls_before{};
    std::array<std::size_t, visit_steps> calls_before_repeat{};
    // The same for AddRef and Release, if the tab counts them.
    std::array<int, visit_steps> reference_calls_before{};
    std::array<int, visit_steps> reference_calls_before_repeat{};
};

// has_element2: whether the engine has IHTMLElement2. href: the list link's attribute for http://h/x.pdf. No
// programs are started (recorded_launches.h). After a fault it also checks that the sink's lock is free.
visit_record visit_page(fake_tab& tab, IObjectWithSite* helper, bool has_element2,
                        const wchar_t* href = L"http://h/x.pdf");

// The URL of each cancelled event was opened, and no other one. unrecorded: the number of URLs that were
// passed to a default handler that failed, which records nothing.
void expect_opened_what_was_cancelled(const visit_record& visit, std::size_t unrecorded = 0);

} // namespace quill::test
