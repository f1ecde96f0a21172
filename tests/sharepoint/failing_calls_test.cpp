// Fault injection: a visit to a SharePoint page in which each call into the browser and the engine fails
// once. Nothing may leak, hang or reach the browser; other events, the same event's repetition and the next
// visit must work. The default handler gets the URLs of all cancelled events.
#include "sharepoint/sharepoint_bho.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/page_visit.h"
#include "tests/sharepoint/recorded_launches.h"
#include "tests/support/balance.h"
#include "tests/support/fault_points.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quill {
namespace {

using test::event_outcome;
using test::fake_tab;
using test::visit_record;
using test::visit_step;

constexpr std::size_t place(visit_step step)
{
    return static_cast<std::size_t>(step);
}

// The expected outcome of a visit in which one call fails, derived from one without a failure.
class expectation
{
public:
    // call counts from 0.
    expectation(const visit_record& normal, std::size_t call, fake_tab::failure how)
        : expected_(normal), call_(call), how_(how)
    {
        if (is_between(begin_of(visit_step::attach), begin_of(visit_step::other_navigation)))
            expect_of_attaching();
        else if (is_between(begin_of(visit_step::complete), begin_of_repeat(visit_step::complete)))
            expect_of_completing();
        else
            expect_of_decisions();
    }

    const visit_record& expected() const { return expected_; }

private:
    std::size_t begin_of(visit_step step) const { return expected_.calls_before[place(step)]; }
    std::size_t begin_of_repeat(visit_step step) const { return expected_.calls_before_repeat[place(step)]; }
    bool is_between(std::size_t begin, std::size_t end) const { return call_ >= begin && call_ < end; }
    std::size_t find(const char* name, std::size_t from) const
    {
        const auto begin = expected_.calls.begin();
        const auto found = std::find(begin + static_cast<std::ptrdiff_t>(from), expected_.calls.end(), name);
        EXPECT_NE(found, expected_.calls.end()) << name;
        return static_cast<std::size_t>(found - begin);
    }

    // Returns end if it is not found.
    std::size_t find(const char* name, std::size_t from, std::size_t end) const
    {
        const auto begin = expected_.calls.begin();
        const auto place_of = [&](std::size_t index) { return begin + static_cast<std::ptrdiff_t>(index); };
        return static_cast<std::size_t>(std::find(place_of(from), place_of(end), name) - begin);
    }

    // No event is received from first to last.
    void expect_silence(visit_step first, visit_step last)
    {
        for (std::size_t step = place(first); step <= place(last); ++step) {
            expected_.outcomes[step].reset();
            expected_.repeats[step].reset();
        }
    }

    // A site that is no browser is accepted without a subscription. An Advise that reports success is
    // trusted.
    void expect_of_attaching()
    {
        const bool is_browser_query = call_ == 0;
        const bool is_believed =
            expected_.calls[call_] == "IConnectionPoint::Advise" && how_ != fake_tab::failure::error;
        if (!is_browser_query && !is_believed)
            expected_.outcomes[place(visit_step::attach)] = event_outcome{E_FAIL};
        expect_silence(visit_step::other_navigation, visit_step::quit);
        expected_.is_rewritten = false;
    }

    // A page is classified when it is first complete.
    void expect_of_completing()
    {
        const std::size_t recording = find("IHTMLDocument3::get_documentElement", 0) - 1;
        const std::size_t content = find("IHTMLMetaElement::get_content", recording);
        const std::size_t advise = find("IConnectionPoint::Advise", recording);
        if (decides_kind(recording, recording)) {
            leave_to_browser(expected_.outcomes[place(visit_step::click)]);
            leave_to_browser(expected_.repeats[place(visit_step::click)]);
            expected_.is_rewritten = false;
        } else if (call_ == advise && how_ != fake_tab::failure::error) {
            expect_silence(visit_step::click, visit_step::ready);
        } else if (call_ > content && call_ <= advise) {
            expected_.outcomes[place(visit_step::complete)] = event_outcome{E_FAIL};
        }
    }

    // A failure before the decision leaves the event to the browser; one after it changes nothing.
    void expect_of_decisions()
    {
        const auto expect = [&](visit_step step, bool is_repeat, auto&& decides) {
            const std::size_t begin = is_repeat ? begin_of_repeat(step) : begin_of(step);
            if (decides(begin))
                leave_to_browser((is_repeat ? expected_.repeats : expected_.outcomes)[place(step)]);
        };
        for (const bool is_repeat : {false, true}) {
            expect(visit_step::click, is_repeat, [&](std::size_t begin) {
                return is_between(begin, find("IHTMLEventObj::put_returnValue", begin));
            });
            expect(visit_step::navigation, is_repeat, [&](std::size_t begin) {
                return decides_kind(begin, find("IHTMLDocument3::get_documentElement", begin) - 1);
            });
        }
    }

    // Whether the call, from begin on, is needed to classify a page as SharePoint's. Unreadable scripts are
    // ignored, and a failed search has a substitute.
    bool decides_kind(std::size_t begin, std::size_t recording) const
    {
        const std::size_t root = find("IHTMLDocument3::get_documentElement", recording);
        const std::size_t source = find("IHTMLScriptElement::get_src", recording);
        const std::size_t inner_search = source + 1; // the query for IHTMLElement2
        const std::string& name = expected_.calls[call_];
        if (is_between(begin, root + 1))
            return true;
        // If the root's first child is not the head, all heads are searched; that search has no substitute.
        const std::size_t heads = find("IHTMLDocument3::getElementsByTagName", root, source);
        if (heads < source && is_between(heads, find("IHTMLElementCollection::item", heads) + 2))
            return true;
        return is_between(inner_search + 1, find("IHTMLMetaElement::get_content", recording) + 1) &&
               name != "IHTMLElement2::getElementsByTagName" && name != "IHTMLElementCollection::tags";
    }

    static void leave_to_browser(std::optional<event_outcome>& outcome)
    {
        outcome.value().is_cancelled = false;
    }

    visit_record expected_;
    std::size_t call_;
    fake_tab::failure how_;
};

void expect_same(const visit_record& visit, const visit_record& expected)
{
    for (std::size_t step = 0; step < test::visit_steps; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        EXPECT_EQ(visit.outcomes[step], expected.outcomes[step]);
        EXPECT_EQ(visit.repeats[step], expected.repeats[step]) << "of the repetition";
    }
    EXPECT_EQ(visit.is_rewritten, expected.is_rewritten);
}

void expect_full_success(const visit_record& visit)
{
    const event_outcome passed{};
    const event_outcome cancelled{S_OK, true};
    for (std::size_t step = 0; step < test::visit_steps; ++step) {
        const bool is_for_editor = step == place(visit_step::click) || step == place(visit_step::navigation);
        EXPECT_EQ(visit.outcomes[step], is_for_editor ? cancelled : passed) << step;
    }
    EXPECT_TRUE(visit.is_rewritten);
}

class FailingCalls : public testing::TestWithParam<std::tuple<fake_tab::failure, bool>>
{
};

TEST_P(FailingCalls, LeakNothingAndAffectTheirOwnEventOnly)
{
    const auto [how, has_element2] = GetParam();
    test::editor_programs editors;
    const test::launch_recording recording;
    CComPtr<IObjectWithSite> helper;
    ASSERT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(nullptr, IID_IObjectWithSite,
                                                            reinterpret_cast<void**>(&helper)),
              S_OK);
    const auto visit = [&](int failing_call) {
        fake_tab tab;
        if (failing_call)
            tab.fail_call(failing_call, how);
        const visit_record record = test::visit_page(tab, helper, has_element2);
        EXPECT_EQ(tab.has_failed(), failing_call != 0);
        test::expect_opened_what_was_cancelled(record);
        return record;
    };
    const visit_record normal = visit(0);
    expect_full_success(normal);
    ASSERT_GT(normal.calls.size(), 160u);
    std::size_t points = 0;
    const test::fault_calls chosen = test::calls_that_fail(2 * static_cast<int>(how) + has_element2);
    for (auto number = static_cast<std::size_t>(chosen.first); number <= normal.calls.size();
         number += static_cast<std::size_t>(chosen.step), ++points) {
        SCOPED_TRACE("call " + std::to_string(number) + ", " + normal.calls[number - 1]);
        const expectation after_failure(normal, number - 1, how);
        test::expect_balance_in_loop([&] {
            expect_same(visit(static_cast<int>(number)), after_failure.expected());
            expect_same(visit(0), normal);
        });
    }
    test::report_fault_points("a visit to a SharePoint page", points);
}

INSTANTIATE_TEST_SUITE_P(InEveryWay, FailingCalls,
                         testing::Combine(testing::Values(fake_tab::failure::error, fake_tab::failure::empty,
                                                          fake_tab::failure::untouched),
                                          testing::Bool()));

} // namespace
} // namespace quill
