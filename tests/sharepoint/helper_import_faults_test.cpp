// Fault injection: during a visit to a SharePoint page, each call into the system fails once in each way, and
// so does each allocation. The tab stays usable and no click is lost: the editor or the default handler gets
// the URL of each cancelled event. The same with a second failure after the first.
#include "sharepoint/events/event_identifiers.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/module_fixture.h"
#include "tests/sharepoint/page_visit.h"
#include "tests/sharepoint/recorded_launches.h"
#include "tests/support/faults/fault_loop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace quill::test {
namespace {

CComPtr<ITypeLib> type_library(const GUID& id, WORD major, WORD minor)
{
    CComPtr<ITypeLib> library;
    EXPECT_EQ(LoadRegTypeLib(id, major, minor, 0, &library), S_OK);
    return library;
}

// Functions whose failure can fail an event; that of all others costs a log line or the editor's path at
// most.
bool may_cost_an_event(const fault_place& place)
{
    static constexpr const char* functions[] = {"DispCallFunc", "LoadRegTypeLib", "SysAllocString",
                                                "SysAllocStringLen", memory_group};
    return std::find(std::begin(functions), std::end(functions), place.group) != std::end(functions);
}

class SharepointImportFaults : public testing::TestWithParam<fault_kind>
{
protected:
    SharepointImportFaults()
    {
        editors_.use_editor();
        faults_.stand_in("CreateProcessW", recording_create_process());
        faults_.stand_in("ShellExecuteW", recording_shell_execute());
    }

    std::vector<fault_place> places_of_a_visit()
    {
        for (int run = 1; run <= 2; ++run) { // the first run includes what happens once for each process
            const module_fixture module;
            faults_.count();
            normal_ = visit(module);
            faults_.stop();
            expect_opened_what_was_cancelled(normal_);
        }
        EXPECT_EQ(normal_.opened.size(), 3u); // two clicks, one navigation
        EXPECT_EQ(recorded_launches().default_urls.size(), 0u);
        EXPECT_TRUE(normal_.is_rewritten);
        return faults_.places();
    }

    // Visits with the failure, and once more in the same module without one. Returns whether the call failed.
    bool visit_with(const fault_place& place)
    {
        const module_fixture module;
        faults_.fail(place);
        const visit_record seen = visit(module);
        const int failures = faults_.failures();
        // A default handler that fails records no URL.
        const std::size_t unrecorded = import_faults::failed_next() == "ShellExecuteW" ? 1 : 0;
        faults_.stop();
        expect_opened_what_was_cancelled(seen, unrecorded);
        if (may_cost_an_event(place) || failures > 1)
            expect_no_click_lost(place, seen);
        else
            expect_normal(seen);
        if (failures == 1 && place.group == "CreateProcessW")
            EXPECT_EQ(recorded_launches().default_urls.size(), 1u);
        const visit_record next = visit(module);
        expect_opened_what_was_cancelled(next);
        expect_normal(next);
        return failures == place.failures();
    }

private:
    static visit_record visit(const module_fixture& module)
    {
        recorded_launches() = {};
        CComPtr<IObjectWithSite> helper;
        const HRESULT created = module.create_helper(&helper);
        EXPECT_EQ(created, helper ? S_OK : E_OUTOFMEMORY);
        if (!helper)
            return {};
        fake_tab tab;
        return visit_page(tab, helper, true, L"/x.pdf");
    }

    void expect_normal(const visit_record& record) const
    {
        EXPECT_EQ(record.outcomes, normal_.outcomes);
        EXPECT_EQ(record.repeats, normal_.repeats);
        EXPECT_EQ(record.is_rewritten, normal_.is_rewritten);
    }

    void expect_no_click_lost(const fault_place& place, const visit_record& record) const
    {
        const auto at = [](visit_step step) { return static_cast<std::size_t>(step); };
        std::size_t changed = 0;
        for (std::size_t step = 0; step < visit_steps; ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            changed += expect_tolerable(record.outcomes[step], normal_.outcomes[step]);
            changed += expect_tolerable(record.repeats[step], normal_.repeats[step]);
        }
        // One failure costs one event, or all of them if SetSite fails. Two may cost both events that report
        // the page, and with them all events of the page.
        const auto& attached = record.outcomes[at(visit_step::attach)];
        const std::size_t of_page = place.failures() > 1 ? 4 : 0;
        if (!place.stays && attached && attached->code == S_OK)
            EXPECT_LE(changed, static_cast<std::size_t>(place.failures()) + of_page);
    }

    static bool is_cancelled(const std::optional<event_outcome>& outcome)
    {
        return outcome && outcome->is_cancelled;
    }

    // An event may fail or not be cancelled; none may be cancelled that would not be without a failure.
    // Returns whether the outcome differs.
    static bool expect_tolerable(const std::optional<event_outcome>& seen,
                                 const std::optional<event_outcome>& normal)
    {
        if (seen == normal)
            return false;
        EXPECT_FALSE(is_cancelled(seen));
        return true;
    }

    editor_programs editors_;
    // Held, so that they are not loaded for each visit.
    const CComPtr<ITypeLib> browser_types_ =
        type_library(quill::LIBID_browser, quill::browser_library_major, quill::browser_library_minor);
    const CComPtr<ITypeLib> page_types_ =
        type_library(quill::LIBID_html_engine, quill::html_library_major, quill::html_library_minor);
    import_faults faults_;
    visit_record normal_;
};

TEST_P(SharepointImportFaults, LoseNoClickAndLeaveTheTabUsable)
{
    const auto places = places_of_a_visit();
    ASSERT_GT(places.size(), 300u);
    constexpr int usual_step = 15;
    fail_each(GetParam() == fault_kind::calls ? "the system's part in a visit to a SharePoint page"
                                              : "memory for a visit to a SharePoint page",
              GetParam(), places, usual_step, [this](const fault_place& place) { return visit_with(place); });
}

TEST_P(SharepointImportFaults, LoseNoClickWhenTwoFailAndLeaveTheTabUsable)
{
    constexpr std::size_t usual_pairs = 5;
    fail_pairs("two failures in a visit to a SharePoint page", GetParam(), places_of_a_visit(), usual_pairs,
               [this](const fault_place& pair) { return visit_with(pair); });
}

INSTANTIATE_TEST_SUITE_P(Sharepoint, SharepointImportFaults,
                         testing::Values(fault_kind::calls, fault_kind::memory),
                         [](const testing::TestParamInfo<fault_kind>& kind) {
                             return kind.param == fault_kind::calls ? "Calls" : "Memory";
                         });

} // namespace
} // namespace quill::test
