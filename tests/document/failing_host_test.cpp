// Each call that a document makes of its host and its viewer fails once, in every way, without a crash or a
// leak.
#include "tests/document/document_fixture.h"
#include "tests/document/document_run.h"
#include "tests/support/fault_points.h"

#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::test {
namespace {

void fail_each_call(activation_order order, call_fault kind)
{
    const int calls = count_host_calls(order);
    ASSERT_GT(calls, 30) << "the scenario does not reach the host";
    std::size_t points = 0;
    const fault_calls chosen = calls_that_fail(2 * static_cast<int>(kind) + static_cast<int>(order));
    for (int number = chosen.first; number <= calls && !testing::Test::HasFailure();
         number += chosen.step, ++points) {
        SCOPED_TRACE("call " + std::to_string(number) + " of " + std::to_string(calls) + ": " +
                     to_text(kind));
        expect_balance_in_loop([&] {
            document_fixture fixture;
            prepare_host(fixture, order);
            fixture.host.calls.fail_call_number(number, kind);
            run_document(fixture);
            fixture.release();
            if (testing::Test::HasFailure())
                ADD_FAILURE() << "the failing call is " << fixture.host.calls.failed_call();
        });
    }
    report_fault_points("a document on a host", points);
}

class FailingHost : public testing::TestWithParam<std::tuple<activation_order, call_fault>>
{
};

TEST_P(FailingHost, LeaksNothing)
{
    fail_each_call(std::get<0>(GetParam()), std::get<1>(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Document, FailingHost,
                         testing::Combine(testing::Values(activation_order::create_view_with_site,
                                                          activation_order::site_then_ui_activate),
                                          testing::ValuesIn(host_faults)),
                         [](const testing::TestParamInfo<FailingHost::ParamType>& way) {
                             return name_of(std::get<0>(way.param)) + "_" + name_of(std::get<1>(way.param));
                         });

// Without any of the site's further interfaces, alone and together.
TEST(DocumentPoorSite, IsHandledInEveryCombination)
{
    for (unsigned bits = 0; bits < 16; ++bits) {
        SCOPED_TRACE(bits);
        document_fixture fixture;
        prepare_host(fixture, activation_order::create_view_with_site);
        fixture.host.site.offered.document_site = (bits & 1) != 0;
        fixture.host.site.offered.in_place_site = (bits & 2) != 0;
        fixture.host.site.offered.service_provider = (bits & 4) != 0;
        fixture.host.site.offered.in_place_site_ex = (bits & 8) != 0;
        run_document(fixture);
    }
}

TEST(DocumentPoorSite, MayBeMissing)
{
    document_fixture fixture;
    fixture.create();
    fixture.load_file(fixture.pdf());
    for (LONG verb = -5; verb <= 1; ++verb)
        fixture.do_verb(verb);
    const auto view = fixture.as<IOleDocumentView>();
    view->Show(TRUE);
    view->UIActivate(TRUE);
    view->UIActivate(FALSE);
    view->Show(FALSE);
    view->CloseView(0);
    fixture.as<IOleInPlaceObject>()->UIDeactivate();
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    fixture.as<IOleObject>()->Close(OLECLOSE_NOSAVE);
    EXPECT_EQ(fixture.window(), nullptr);
}

} // namespace
} // namespace quill::test
