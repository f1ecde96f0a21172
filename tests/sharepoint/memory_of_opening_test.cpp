// Fault injection: each allocation during a click or a navigation fails. The event is left to the browser and
// nothing is opened, or it is cancelled and the complete URL is opened.
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/sharepoint/module_fixture.h"
#include "tests/sharepoint/recorded_launches.h"
#include "tests/support/fault_points.h"
#include "tests/support/faults/import_faults.h"

#include <gtest/gtest.h>

#include <functional>

namespace quill::test {
namespace {

using urls = std::vector<std::wstring>;

// Each part is longer than the small buffer of a std::wstring.
const std::wstring user_and_server =
    L"user-of-this-server:password-of-the-user@server-of-the-library.example:8080";
const std::wstring path = L"/sites/of-the-library/document-of-the-library-";

// The editor or the default handler gets the URLs.
class MemoryOfOpening : public testing::TestWithParam<bool>
{
protected:
    MemoryOfOpening()
    {
        if (GetParam())
            editors_.use_editor();
        faults_.stand_in("CreateProcessW", recording_create_process());
        faults_.stand_in("ShellExecuteW", recording_shell_execute());
    }

    bool click(const std::wstring& href)
    {
        const auto event = make_fake<fake_event>(tab_, &page_->add_to_body(list_link(href)));
        const auto result = page_->click(event);
        EXPECT_EQ(is_bool(result.value, false), !event->is_untouched());
        return is_bool(result.value, false);
    }
    bool navigate(const std::wstring& url) { return browser_->before_navigate(url).cancel == VARIANT_TRUE; }

    // Fires the event for each allocation and each kind of failure, and each time once more without a
    // failure. The URLs are numbered.
    using event = std::function<bool(const std::wstring& number)>;
    void fail_each_request(const char* routine, const std::wstring& url_without_number, const event& fire)
    {
        const module_fixture module;
        const CComPtr<IObjectWithSite> helper = module.make_helper();
        browser_->document = page_->dispatch();
        ASSERT_EQ(helper->SetSite(browser_->unknown()), S_OK);
        ASSERT_EQ(browser_->document_complete(L"http://h/"), S_OK);
        EXPECT_TRUE(fire(L"first")); // includes what happens once for each process

        faults_.count();
        EXPECT_TRUE(fire(L"other"));
        faults_.stop();
        std::size_t points = 0;
        std::size_t passed = 0;
        for (const fault_place& place : faults_.places()) {
            if (place.group != memory_group)
                continue;
            SCOPED_TRACE(to_text(place));
            const std::wstring number = std::to_wstring(1'000 + points++);
            const urls url = {url_without_number + number + L".pdf"};
            recorded_launches() = {};
            faults_.fail(place);
            const bool is_cancelled = fire(number);
            faults_.stop();
            EXPECT_TRUE(faults_.has_failed());
            EXPECT_EQ(recorded_launches().urls(), is_cancelled ? url : urls{});
            if (is_cancelled)
                continue;
            // The next attempt is no repeat, because nothing was opened.
            ++passed;
            EXPECT_TRUE(fire(number));
            EXPECT_EQ(recorded_launches().urls(), url);
        }
        EXPECT_GT(points, 20u);
        EXPECT_GT(passed, 0u);
        report_fault_points(routine, points);
        EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    }

    editor_programs editors_;
    import_faults faults_;
    fake_tab tab_;
    CComPtr<fake_document> page_ = sharepoint_page(tab_, L"https://" + user_and_server + L"/list");
    CComPtr<fake_browser> browser_ = make_fake<fake_browser>(tab_);
};

TEST_P(MemoryOfOpening, FailuresLoseNoClick)
{
    fail_each_request("memory for a click", L"https://" + user_and_server + path,
                      [&](const std::wstring& number) { return click(path + number + L".pdf"); });
}

TEST_P(MemoryOfOpening, FailuresLoseNoNavigation)
{
    const std::wstring url = L"https://" + user_and_server + path;
    fail_each_request("memory for a navigation", url,
                      [&](const std::wstring& number) { return navigate(url + number + L".pdf"); });
}

INSTANTIATE_TEST_SUITE_P(Sharepoint, MemoryOfOpening, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& with_editor) {
                             return with_editor.param ? "ByTheEditor" : "ByTheDefaultHandler";
                         });

} // namespace
} // namespace quill::test
