// Each system call that the module makes while it saves a copy fails once, in every way, and so does each
// allocation; then pairs of them fail. The file at the chosen place is kept until a whole copy replaces it.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/retrieval/ieframe/own_folder.h"
#include "tests/retrieval/ieframe/save_browser.h"
#include "tests/support/faults/fault_loop.h"

#include <docobj.h>
#include <gmock/gmock.h>
#include <ole2.h>

#include <algorithm>
#include <iterator>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char former_text[] = "what the user has at the place already";

// Without these the copy cannot be saved.
constexpr const char* needed[] = {"CopyFileExW", "GetProcAddress", "GetTempFileNameW", "LoadLibraryExW",
                                  memory_group};
// These reach the browser: without them the save cannot be cancelled there.
constexpr const char* browser_lookup[] = {"GetProcAddress", "LoadLibraryExW"};
constexpr const char* deletion[] = {"DeleteFileW", "SetFileAttributesW"};

template <std::size_t Count>
bool is_one_of(const std::string& function, const char* const (&functions)[Count])
{
    return std::find(std::begin(functions), std::end(functions), function) != std::end(functions);
}

class DocumentSaveAsImportFaults : public testing::TestWithParam<bool>
{
protected:
    static void SetUpTestSuite()
    {
        static const bool is_here = (copy_library(L"QuillPDF.IE.dll"), true);
        ASSERT_TRUE(is_here);
    }

    std::vector<fault_place> places_of_a_save()
    {
        for (int run = 1; run <= 2; ++run) { // the first run does what the process does once
            document_fixture fixture;
            save_browser browser;
            show(fixture, browser);
            faults_.count();
            ask(fixture);
            faults_.stop();
            EXPECT_EQ(read_file(browser.destination), small_pdf);
            fixture.close_in_order();
        }
        return faults_.places();
    }

    // Once with the failures, and once in the same document without any. Returns whether all of them
    // occurred.
    bool save_with(const fault_place& place)
    {
        document_fixture fixture;
        save_browser browser;
        const std::wstring shown = show(fixture, browser);
        faults_.fail(place);
        ask(fixture);
        const int failures = faults_.failures();
        faults_.stop();
        expect_promised(place, failures, browser);
        EXPECT_EQ(read_file(shown), small_pdf);
        for (const std::wstring& left : files_in(browser.cache.path()))
            EXPECT_TRUE(DeleteFileW((browser.cache / left).c_str()));

        browser.calls.clear();
        EXPECT_TRUE(write_file(browser.destination, former_text));
        ask(fixture);
        EXPECT_THAT(browser.calls, ElementsAre("dialog", "folder", "save"));
        EXPECT_EQ(read_file(browser.destination), small_pdf) << "the next copy is not saved";
        fixture.close_in_order();
        return failures == place.failures();
    }

private:
    static std::wstring show(document_fixture& fixture, save_browser& browser)
    {
        std::wstring path = fixture.pdf(L"report[1].pdf");
        fixture.show_file(path);
        browser.owner = fixture.window();
        browser.before_save = [](const wchar_t* copy) {
            EXPECT_EQ(read_file(copy), small_pdf) << "the browser did not get a complete copy";
        };
        EXPECT_TRUE(write_file(browser.destination, former_text));
        return path;
    }

    static void ask(document_fixture& fixture)
    {
        if (GetParam())
            EXPECT_EQ(fixture.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_SAVEAS, 0, nullptr, nullptr),
                      S_OK);
        else
            EXPECT_EQ(fixture.send(message_save_as), 0);
    }

    static void expect_promised(const fault_place& place, int failures, const save_browser& browser)
    {
        const std::string second = failures > 1 ? import_faults::failed_next() : std::string();
        const auto has_failed = [&](const auto& functions) {
            return failures > 0 && (is_one_of(place.group, functions) || is_one_of(second, functions));
        };
        const auto at_place = read_file(browser.destination);
        const bool is_saved = at_place == small_pdf;
        EXPECT_TRUE(is_saved || at_place == former_text) << "the user's file is lost";
        if (!has_failed(needed))
            EXPECT_TRUE(is_saved) << "saving needs none of these functions";
        if (!has_failed(browser_lookup))
            EXPECT_EQ(browser.states_released, browser.states_returned);
        EXPECT_LE(browser.states_released, browser.states_returned);
        // A deletion that fails once is repeated.
        if (!is_one_of(place.group, deletion) || !is_one_of(second, deletion))
            EXPECT_THAT(files_in(browser.cache.path()), IsEmpty());
    }

    import_faults faults_;
    const ieframe_scope library_;
};

TEST_P(DocumentSaveAsImportFaults, LoseNoFileAndTheNextCopyIsSaved)
{
    constexpr int usual_step = 3;
    fail_each("the system's part in a document's Save As", fault_kind::either, places_of_a_save(), usual_step,
              [this](const fault_place& place) { return save_with(place); });
}

TEST_P(DocumentSaveAsImportFaults, LoseNoFileWhenTwoFailAndTheNextCopyIsSaved)
{
    constexpr std::size_t usual_pairs = 5;
    fail_pairs("two failures in a document's Save As", fault_kind::either, places_of_a_save(), usual_pairs,
               [this](const fault_place& pair) { return save_with(pair); });
}

INSTANTIATE_TEST_SUITE_P(Asked, DocumentSaveAsImportFaults, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& way) {
                             return way.param ? "ByCommand" : "ByMessage";
                         });

} // namespace
} // namespace quill::test
