// A system exception in each system function that opens a URL: the event is cancelled if the URL was opened
// and otherwise left to the browser, and the next attempt works.
#include "sharepoint/sharepoint_bho.h"
#include "tests/sharepoint/aggregator_fixture.h"
#include "tests/sharepoint/recorded_launches.h"
#include "tests/support/crashes.h"
#include "tests/support/faults/replaced_import.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

struct opening_call
{
    const char* function;
    bool has_editor;
    bool is_open_before; // whether the URL is open when the function is called
};

class OpeningFaults : public aggregator_fixture, public testing::WithParamInterface<opening_call>
{
protected:
    OpeningFaults()
    {
        if (!GetParam().has_editor)
            editors_.set_editor(L"C:\\nowhere\\editor.exe");
        EXPECT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(nullptr, IID_IObjectWithSite,
                                                                reinterpret_cast<void**>(&helper_)),
                  S_OK);
        EXPECT_EQ(helper_->SetSite(browser_->unknown()), S_OK);
        EXPECT_EQ(browser_->document_complete(L"http://h/"), S_OK);
        log_.clear();
    }
    ~OpeningFaults() override
    {
        EXPECT_EQ(helper_->SetSite(nullptr), S_OK);
        EXPECT_EQ(helper_.Detach()->Release(), 0u);
    }

    static std::size_t opened() { return recorded_launches().urls().size(); }
    static std::size_t opened_before() { return GetParam().is_open_before ? 1 : 0; }

    CComPtr<IObjectWithSite> helper_;
    const launch_recording recording_;
};

TEST_P(OpeningFaults, CancelANavigationOnlyIfItsUrlIsOpen)
{
    {
        const replaced_import fault(GetParam().function, &read_nowhere);
        const auto result = browser_->before_navigate(L"http://h/x.pdf");
        EXPECT_EQ(result.code, E_FAIL);
        EXPECT_EQ(result.cancel == VARIANT_TRUE, GetParam().is_open_before);
        EXPECT_EQ(opened(), opened_before());
    }
    EXPECT_EQ(log_.lines().back(),
              "info: System exception in quill::browser_events_sink::on_before_navigate");
    if (GetParam().is_open_before)
        return;
    // Not a repeat, because the first navigation opened nothing.
    EXPECT_EQ(browser_->before_navigate(L"http://h/x.pdf").cancel, VARIANT_TRUE);
    EXPECT_EQ(opened(), 1u);
}

TEST_P(OpeningFaults, CancelAClickOnlyIfItsUrlIsOpen)
{
    auto& link = page_->add_to_body(list_link(L"http://h/x.pdf"));
    {
        const replaced_import fault(GetParam().function, &read_nowhere);
        const auto event = make_fake<fake_event>(tab_, &link);
        EXPECT_TRUE(is_bool(page_->click(event).value, true));
        EXPECT_EQ(event->is_blocked(), GetParam().is_open_before);
        EXPECT_EQ(event->is_untouched(), !GetParam().is_open_before);
        EXPECT_EQ(opened(), opened_before());
    }
    EXPECT_EQ(log_.lines().back(), "info: System exception in quill::html_events_sink::on_click");
    const auto event = make_fake<fake_event>(tab_, &link);
    EXPECT_TRUE(is_bool(page_->click(event).value, false));
    EXPECT_EQ(opened(), opened_before() + 1);
}

INSTANTIATE_TEST_SUITE_P(OfEveryCall, OpeningFaults,
                         testing::Values(opening_call{"GetFileAttributesW", true, false},
                                         opening_call{"CreateProcessW", true, false},
                                         opening_call{"ShellExecuteW", false, false},
                                         opening_call{"AllowSetForegroundWindow", true, true}),
                         [](const auto& call) { return std::string(call.param.function); });

} // namespace
} // namespace quill::test
