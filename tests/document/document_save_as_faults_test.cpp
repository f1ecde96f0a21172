// Saving a copy through the whole document, with each call of the browser failing once in every way: command
// and message return what they always return, and the next request saves.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/retrieval/ieframe/save_faults.h"
#include "tests/support/fault_points.h"

#include <docobj.h>
#include <gmock/gmock.h>
#include <ole2.h>

namespace quill::test {
namespace {

class DocumentSaveAsFaults : public testing::TestWithParam<bool>
{
protected:
    static void SetUpTestSuite()
    {
        static const bool is_here = (copy_library(L"QuillPDF.IE.dll"), true);
        ASSERT_TRUE(is_here);
    }

    static bool is_command() { return GetParam(); }

    static void save(document_fixture& fixture, const std::wstring& shown, const save_fault& fault)
    {
        EXPECT_TRUE(write_file(shown, small_pdf));
        save_browser browser;
        browser.owner = fixture.window();
        std::optional<ieframe_scope> library;
        if (fault.library)
            library.emplace(*fault.library);
        fault.arrange(browser, shown);
        if (is_command())
            EXPECT_EQ(fixture.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_SAVEAS, 0, nullptr, nullptr),
                      S_OK);
        else
            EXPECT_EQ(fixture.send(message_save_as), 0);
        expect_tidy(browser, fault);
        if (fault.saves)
            EXPECT_EQ(read_file(browser.destination), small_pdf);
    }
};

TEST_P(DocumentSaveAsFaults, AreHandledAndTheNextCopyIsSaved)
{
    const save_fault none = no_save_fault();
    const auto faults = every_save_fault();
    expect_balance([&] {
        document_fixture fixture;
        fixture.show_url(unserved_url);
        fixture.wait_for_failed_worker();
        const std::wstring shown = fixture.pdf(L"report.pdf");
        load_fetched_file(fixture, shown);
        for (const save_fault& fault : faults) {
            SCOPED_TRACE(fault.name);
            save(fixture, shown, fault);
            save(fixture, shown, none);
        }
        EXPECT_THAT(files_in(fixture.temp.path()), testing::IsEmpty());
        fixture.close_in_order();
    });
    report_fault_points("a document's Save As", faults.size());
}

INSTANTIATE_TEST_SUITE_P(Asked, DocumentSaveAsFaults, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& way) {
                             return way.param ? "ByCommand" : "ByMessage";
                         });

} // namespace
} // namespace quill::test
