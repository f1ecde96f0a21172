// A host or a viewer that closes the document inside any call that it gets from the document.
#include "tests/document/document_run.h"
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

void disturb(document_fixture& fixture, disturbance kind)
{
    if (!fixture.document)
        return;
    switch (kind) {
    case disturbance::deactivate:
        fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
        break;
    case disturbance::destroy_window:
        if (const HWND window = fixture.window())
            DestroyWindow(window);
        break;
    case disturbance::destroy_host_windows:
        fixture.host.destroy_windows();
        break;
    case disturbance::take_site_away:
        fixture.as<IOleObject>()->SetClientSite(nullptr);
        break;
    case disturbance::close_view:
        fixture.as<IOleDocumentView>()->CloseView(0);
        break;
    case disturbance::everything:
        fixture.as<IOleDocumentView>()->CloseView(0);
        fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
        fixture.as<IOleObject>()->Close(OLECLOSE_NOSAVE);
        fixture.as<IOleObject>()->SetClientSite(nullptr);
        fixture.host.view.Reset();
        break;
    }
}

std::string name_of(disturbance kind)
{
    switch (kind) {
    case disturbance::deactivate:
        return "Deactivate";
    case disturbance::destroy_window:
        return "DestroyWindow";
    case disturbance::destroy_host_windows:
        return "DestroyHostWindows";
    case disturbance::take_site_away:
        return "TakeSiteAway";
    case disturbance::close_view:
        return "CloseView";
    case disturbance::everything:
        break;
    }
    return "Everything";
}

class DisturbingHost : public testing::TestWithParam<std::tuple<activation_order, disturbance>>
{
};

TEST_P(DisturbingHost, IsHandledAtEveryCall)
{
    const activation_order order = std::get<0>(GetParam());
    const disturbance kind = std::get<1>(GetParam());
    const int calls = count_host_calls(order);
    std::size_t points = 0;
    const fault_calls chosen = calls_that_fail(2 * static_cast<int>(kind) + static_cast<int>(order));
    for (int number = chosen.first; number <= calls && !HasFailure(); number += chosen.step, ++points) {
        SCOPED_TRACE("inside call " + std::to_string(number) + " of " + std::to_string(calls));
        expect_balance_in_loop([number, order, kind] {
            document_fixture fixture;
            prepare_host(fixture, order);
            fixture.host.calls.when_call_number(number, [&fixture, kind] { disturb(fixture, kind); });
            run_document(fixture);
            fixture.release();
            if (testing::Test::HasFailure())
                ADD_FAILURE() << "the call is " << fixture.host.calls.failed_call();
        });
    }
    report_fault_points("a document closed from inside a call", points);
}

INSTANTIATE_TEST_SUITE_P(Document, DisturbingHost,
                         testing::Combine(testing::Values(activation_order::create_view_with_site,
                                                          activation_order::site_then_ui_activate),
                                          testing::ValuesIn(every_disturbance)),
                         [](const testing::TestParamInfo<DisturbingHost::ParamType>& way) {
                             return name_of(std::get<0>(way.param)) + "_" + name_of(std::get<1>(way.param));
                         });

} // namespace
} // namespace quill::test
