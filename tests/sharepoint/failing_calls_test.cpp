// A whole visit to a SharePoint page, with every single call of the browser's and the engine's objects
// failing in turn: nothing may leak, hang or reach the browser; what the call does not concern goes on as
// ever, the same event works the next time, and so does the next visit. The default handler gets the URLs of
// all events that are cancelled.
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
using test::fake_scene;
using test::visit_record;
using test::visit_step;

constexpr std::size_t place(visit_step step)
{
    return static_cast<std::size_t>(step);
}

// What is to come of a visit in which one call fails, worked out from one in which none did.
class expectation
{
public:
    // call: counted from 0.
    expectation(const visit_record& normal, std::size_t call, fake_scene::failure how)
        : expected_(normal), call_(call), how_(how)
    {
        if (is_between(begin_of(visit_step::attach), begin_of(visit_step::other_navigation)))
            expect_of_attaching();
        else if (is_between(begin_of(visit_step::complete), begin_of_repeat(visit_step::complete)))
            expect_of_completing();
        else
            expect_of_asking();
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

    // end when it is not among them.
    std::size_t find(const char* name, std::size_t from, std::size_t end) const
    {
        const auto begin = expected_.calls.begin();
        const auto place_of = [&](std::size_t index) { return begin + static_cast<std::ptrdiff_t>(index); };
        return static_cast<std::size_t>(std::find(place_of(from), place_of(end), name) - begin);
    }

    // Nothing comes of any step from first to last.
    void expect_silence(visit_step first, visit_step last)
    {
        for (std::size_t step = place(first); step <= place(last); ++step) {
            expected_.outcomes[step].reset();
            expected_.repeats[step].reset();
        }
    }

    // What is no browser is taken all the same, and not listened to. One that says that it took the
    // connection is believed.
    void expect_of_attaching()
    {
        const bool is_browser_query = call_ == 0;
        const bool is_believed =
            expected_.calls[call_] == "IConnectionPoint::Advise" && how_ != fake_scene::failure::error;
        if (!is_browser_query && !is_believed)
            expected_.outcomes[place(visit_step::attach)] = event_outcome{E_FAIL};
        expect_silence(visit_step::other_navigation, visit_step::quit);
        expected_.is_rewritten = false;
    }

    // A page counts as what it was found to be when it was first complete.
    void expect_of_completing()
    {
        const std::size_t recording = find("IHTMLDocument3::get_documentElement", 0) - 1;
        const std::size_t content = find("IHTMLMetaElement::get_content", recording);
        const std::size_t advise = find("IConnectionPoint::Advise", recording);
        if (decides_kind(recording, recording)) {
            let_pass(expected_.outcomes[place(visit_step::click)]);
            let_pass(expected_.repeats[place(visit_step::click)]);
            expected_.is_rewritten = false;
        } else if (call_ == advise && how_ != fake_scene::failure::error) {
            expect_silence(visit_step::click, visit_step::ready);
        } else if (call_ > content && call_ <= advise) {
            expected_.outcomes[place(visit_step::complete)] = event_outcome{E_FAIL};
        }
    }

    // Before the decision the event passes; after it nothing changes any more.
    void expect_of_asking()
    {
        const auto expect = [&](visit_step step, bool is_repeat, auto&& is_asked) {
            const std::size_t begin = is_repeat ? begin_of_repeat(step) : begin_of(step);
            if (is_asked(begin))
                let_pass((is_repeat ? expected_.repeats : expected_.outcomes)[place(step)]);
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

    // Whether the call is one of those, from begin on, without which a page is not known for one of
    // SharePoint's. Scripts that cannot be read are passed over, and a search that fails has a substitute.
    bool decides_kind(std::size_t begin, std::size_t recording) const
    {
        const std::size_t root = find("IHTMLDocument3::get_documentElement", recording);
        const std::size_t source = find("IHTMLScriptElement::get_src", recording);
        const std::size_t inner_search = source + 1; // the query for the way to search inside an element
        const std::string& name = expected_.calls[call_];
        if (is_between(begin, root + 1))
            return true;
        // All heads are looked for when the root's first child is none or cannot be had; nothing stands in
        // for that.
        const std::size_t heads = find("IHTMLDocument3::getElementsByTagName", root, source);
        if (heads < source && is_between(heads, find("IHTMLElementCollection::item", heads) + 2))
            return true;
        return is_between(inner_search + 1, find("IHTMLMetaElement::get_content", recording) + 1) &&
               name != "IHTMLElement2::getElementsByTagName" && name != "IHTMLElementCollection::tags";
    }

    static void let_pass(std::optional<event_outcome>& outcome) { outcome.value().is_cancelled = false; }

    visit_record expected_;
    std::size_t call_;
    fake_scene::failure how_;
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

class FailingCalls : public testing::TestWithParam<std::tuple<fake_scene::failure, bool>>
{
};

TEST_P(FailingCalls, LeaveNothingBehind)
{
    const auto [how, has_element2] = GetParam();
    test::editor_bench bench;
    const test::launch_recording recording;
    CComPtr<IObjectWithSite> helper;
    ASSERT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(nullptr, IID_IObjectWithSite,
                                                            reinterpret_cast<void**>(&helper)),
              S_OK);
    const auto visit = [&](int failing_call) {
        fake_scene scene;
        if (failing_call)
            scene.fail_call(failing_call, how);
        const visit_record record = test::visit_page(scene, helper, has_element2);
        EXPECT_EQ(scene.has_failed(), failing_call != 0);
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
                         testing::Combine(testing::Values(fake_scene::failure::error,
                                                          fake_scene::failure::empty,
                                                          fake_scene::failure::untouched),
                                          testing::Bool()));

} // namespace
} // namespace quill
