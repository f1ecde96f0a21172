// Fault injection: a visit to a SharePoint page through the DLL with an access violation in each call into
// the browser and the engine, AddRef and Release included. The event fails as specified by its outcome, the
// sink's lock is free for other threads, all other events work, and every reference is released when the tab
// closes. A click or a navigation whose URL was opened is cancelled, wherever the fault is.
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/module_fixture.h"
#include "tests/sharepoint/page_visit.h"
#include "tests/sharepoint/recorded_launches.h"
#include "tests/support/balance.h"
#include "tests/support/crashes.h"
#include "tests/support/fault_points.h"
#include "tests/support/faults/import_table.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quill::test {
namespace {

enum class faulting
{
    call,
    reference_call // an AddRef or a Release
};

constexpr std::size_t place(visit_step step)
{
    return static_cast<std::size_t>(step);
}

// The event during which a call is made; call counts from 0.
struct faulted_event
{
    std::size_t step = 0;
    bool is_repeat = false;
};

template <class Counts>
faulted_event find_event(const Counts& before, const Counts& before_repeat, std::size_t call)
{
    faulted_event found;
    for (std::size_t step = 0; step < visit_steps; ++step) {
        if (static_cast<std::size_t>(before[step]) <= call)
            found = {step, false};
        if (static_cast<std::size_t>(before_repeat[step]) <= call)
            found = {step, true};
    }
    return found;
}

// Whether the browser was stopped. A repeated navigation opens nothing, but is cancelled if it was stopped.
bool has_stopped(const visit_record& visit, const faulted_event& event)
{
    const std::size_t end =
        event.step + 1 < visit_steps ? visit.calls_before[event.step + 1] : visit.calls.size();
    const std::size_t middle = visit.calls_before_repeat[event.step];
    const auto call_at = [&](std::size_t index) {
        return visit.calls.begin() + static_cast<std::ptrdiff_t>(index);
    };
    const auto first = call_at(event.is_repeat ? middle : visit.calls_before[event.step]);
    const auto last = call_at(event.is_repeat ? end : middle);
    return std::find(first, last, "IWebBrowser2::Stop") != last;
}

bool has_opened(const visit_record& visit, const faulted_event& event)
{
    return (event.is_repeat ? visit.opened_in_repeat : visit.opened_in)[event.step] != 0;
}

void expect_of(const visit_record& visit, visit_record expected, const faulted_event& event)
{
    const auto step = static_cast<visit_step>(event.step);
    const bool has_result = step != visit_step::click && step != visit_step::ready;
    (event.is_repeat ? expected.repeats : expected.outcomes)[event.step] =
        event_outcome{has_result ? E_FAIL : S_OK, has_opened(visit, event) || has_stopped(visit, event)};
    expect_opened_what_was_cancelled(visit);
    if (step == visit_step::attach) {
        for (std::size_t later = place(visit_step::other_navigation); later < place(visit_step::detach);
             ++later) {
            expected.outcomes[later].reset();
            expected.repeats[later].reset();
        }
        expected.is_rewritten = false;
    }
    for (std::size_t each = 0; each < visit_steps; ++each) {
        EXPECT_EQ(visit.outcomes[each], expected.outcomes[each]) << "of step " << each;
        EXPECT_EQ(visit.repeats[each], expected.repeats[each]) << "of the repetition of step " << each;
    }
    EXPECT_EQ(visit.is_rewritten, expected.is_rewritten);
}

class FaultingCalls : public testing::TestWithParam<std::tuple<faulting, bool>>
{
protected:
    FaultingCalls()
    {
        redirect_import(module_.handle(), "CreateProcessW", recording_create_process());
        redirect_import(module_.handle(), "ShellExecuteW", recording_shell_execute());
    }

    // number counts from 1; 0 means no fault.
    visit_record visit(std::size_t number)
    {
        const auto [kind, has_element2] = GetParam();
        fake_tab tab;
        const bool is_reference = kind == faulting::reference_call;
        const auto crash = [this] {
            ++faults_;
            read_nowhere();
        };
        tab.interrupt_reference_call(module_.handle(), is_reference ? static_cast<int>(number) : 0, crash);
        if (number && !is_reference)
            tab.interrupt_call(static_cast<int>(number), crash);
        CComPtr<IObjectWithSite> helper = module_.make_helper();
        const visit_record record = visit_page(tab, helper, has_element2);
        reference_calls_ = static_cast<std::size_t>(tab.reference_calls());
        EXPECT_EQ(tab.has_interrupted(), number != 0);
        tab.interrupt_reference_call(module_.handle(), 0, {});
        EXPECT_EQ(helper.Detach()->Release(), 0u) << "references to the helper object";
        EXPECT_TRUE(module_.can_unload());
        return record;
    }

    editor_programs editors_;
    module_fixture module_{{.libraries = {L"crashguard14.dll"}}, L"error"};
    std::size_t reference_calls_ = 0; // of the last visit
    std::size_t faults_ = 0;
};

TEST_P(FaultingCalls, FailTheirEventAndReleaseWhatItHeld)
{
    const auto [kind, has_element2] = GetParam();
    testing::internal::CaptureStderr();
    const visit_record normal = visit(0);
    const std::size_t count = kind == faulting::call ? normal.calls.size() : reference_calls_;
    EXPECT_GT(count, 100u);
    const fault_calls chosen = calls_that_fail(2 * static_cast<int>(kind) + has_element2);
    std::size_t points = 0;
    for (auto number = static_cast<std::size_t>(chosen.first); number <= count && !HasFailure();
         number += static_cast<std::size_t>(chosen.step), ++points) {
        const faulted_event event =
            kind == faulting::call
                ? find_event(normal.calls_before, normal.calls_before_repeat, number - 1)
                : find_event(normal.reference_calls_before, normal.reference_calls_before_repeat, number - 1);
        SCOPED_TRACE("call " + std::to_string(number) + " of step " + std::to_string(event.step) +
                     (kind == faulting::call ? ", " + normal.calls[number - 1] : ""));
        expect_balance_in_loop([&] { expect_of(visit(number), normal, event); });
    }
    const std::string reports = testing::internal::GetCapturedStderr();
    std::size_t reported = 0;
    for (std::size_t at = reports.find("exception c0000005"); at != std::string::npos;
         at = reports.find("exception c0000005", at + 1))
        ++reported;
    EXPECT_EQ(reported, faults_) << "each fault is reported once\n" << reports;
    report_fault_points("a visit to a SharePoint page, by a system exception", points);
}

INSTANTIATE_TEST_SUITE_P(OfEveryKind, FaultingCalls,
                         testing::Combine(testing::Values(faulting::call, faulting::reference_call),
                                          testing::Bool()));

} // namespace
} // namespace quill::test
