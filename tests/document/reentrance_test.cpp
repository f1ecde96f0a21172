// A host or a viewer that closes the document from inside any call that the document makes of it.
#include "tests/document/document_life.h"
#include "tests/support/fault_points.h"

#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::test {
namespace {

enum class disturbance
{
    deactivate,
    destroy_window,
    destroy_host_windows,
    take_site_away,
    close_view,
    everything
};

constexpr disturbance every_disturbance[] = {disturbance::deactivate,           disturbance::destroy_window,
                                             disturbance::destroy_host_windows, disturbance::take_site_away,
                                             disturbance::close_view,           disturbance::everything};

void disturb(document_bench& bench, disturbance kind)
{
    if (!bench.document)
        return;
    switch (kind) {
    case disturbance::deactivate:
        bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
        break;
    case disturbance::destroy_window:
        if (const HWND window = bench.window())
            DestroyWindow(window);
        break;
    case disturbance::destroy_host_windows:
        bench.host.destroy_windows();
        break;
    case disturbance::take_site_away:
        bench.as<IOleObject>()->SetClientSite(nullptr);
        break;
    case disturbance::close_view:
        bench.as<IOleDocumentView>()->CloseView(0);
        break;
    case disturbance::everything:
        bench.as<IOleDocumentView>()->CloseView(0);
        bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
        bench.as<IOleObject>()->Close(OLECLOSE_NOSAVE);
        bench.as<IOleObject>()->SetClientSite(nullptr);
        bench.host.view.Reset();
        break;
    }
}

class DisturbingHost : public testing::TestWithParam<std::tuple<activation_order, disturbance>>
{
};

TEST_P(DisturbingHost, IsSurvivedAtEveryCall)
{
    const activation_order order = std::get<0>(GetParam());
    const disturbance kind = std::get<1>(GetParam());
    const int calls = calls_of_a_life(order);
    for (int number = 1; number <= calls && !HasFailure(); ++number) {
        SCOPED_TRACE("inside call " + std::to_string(number) + " of " + std::to_string(calls));
        expect_balance([number, order, kind] {
            document_bench bench;
            prepare_life(bench, order);
            bench.host.calls.when_call_number(number, [&bench, kind] { disturb(bench, kind); });
            live(bench);
            bench.release();
            if (testing::Test::HasFailure())
                ADD_FAILURE() << "the call is " << bench.host.calls.failed_call();
        });
    }
    report_fault_points("a document closed from inside a call", static_cast<std::size_t>(calls));
}

INSTANTIATE_TEST_SUITE_P(Document, DisturbingHost,
                         testing::Combine(testing::Values(activation_order::create_view_with_site,
                                                          activation_order::site_then_ui_activate),
                                          testing::ValuesIn(every_disturbance)));

} // namespace
} // namespace quill::test
