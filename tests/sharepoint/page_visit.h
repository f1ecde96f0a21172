// A whole visit to a SharePoint page, from the helper object's attachment to its end, event by event.
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
    other_navigation, // to something that is no PDF
    complete,
    click, // on a list's link to a PDF
    ready,
    navigation, // to a PDF
    quit,
    detach
};
inline constexpr std::size_t visit_steps = 8;

// What came of an event; nothing for one that nobody listened to.
struct event_outcome
{
    HRESULT code = S_OK;
    bool is_cancelled = false;

    friend bool operator==(const event_outcome&, const event_outcome&) = default;
};
void PrintTo(const event_outcome& outcome, std::ostream* out);

struct visit_record
{
    std::array<std::optional<event_outcome>, visit_steps> outcomes;
    // Of each event once more, directly after it; nothing for those that come once.
    std::array<std::optional<event_outcome>, visit_steps> repeats;
    // The URLs that the editor and the default handler got, sorted.
    std::vector<std::wstring> opened;
    // How many of them in each event and in its repetition.
    std::array<std::size_t, visit_steps> opened_in{};
    std::array<std::size_t, visit_steps> opened_in_repeat{};
    bool may_open_twice = false; // the navigation was repeated too late to pass for a repeat
    bool is_rewritten = false;   // whether the page's other link has lost SharePoint's handler
    std::vector<std::string> calls;
    // How many of the calls came before each event and before its repetition; the end is that of the next.
    std::array<std::size_t, visit_steps> calls_before{};
    std::array<std::size_t, visit_steps> calls_before_repeat{};
    // The same of the calls of AddRef and Release, where the scene counts them.
    std::array<int, visit_steps> reference_calls_before{};
    std::array<int, visit_steps> reference_calls_before_repeat{};
};

// has_element2: whether the page's engine can search inside an element by name. href: what the list's link
// has for http://h/x.pdf. Programs are not started: recorded_launches.h.
visit_record visit_page(fake_scene& scene, IObjectWithSite* helper, bool has_element2,
                        const wchar_t* href = L"http://h/x.pdf");

// Every event that was cancelled has had its URL opened, and nothing else was opened. unrecorded: how many
// URLs were given to a default handler that failed, which are missing in the record.
void expect_opened_what_was_cancelled(const visit_record& visit, std::size_t unrecorded = 0);

} // namespace quill::test
