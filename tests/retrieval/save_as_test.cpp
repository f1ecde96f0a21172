// Saving a copy through the browser's functions, in the test's own ieframe.dll.
#include "retrieval/save_as/browser_save.h"
#include "retrieval/save_as/save_as.h"
#include "tests/retrieval/ieframe/own_folder.h"
#include "tests/retrieval/ieframe/save_browser.h"
#include "tests/support/balance.h"
#include "tests/support/log_capture.h"
#include "tests/support/scopes.h"
#include "tests/support/task_memory.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <optional>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const HWND document_window = reinterpret_cast<HWND>(0x1234);

struct SaveAs : testing::Test, save_browser
{
    scratch_directory documents;                    // the folder of the shown file
    std::wstring shown = documents / L"doc[1].pdf"; // the document's own path buffer
    log_capture log;

    SaveAs()
    {
        owner = document_window;
        EXPECT_TRUE(write_file(shown, "%PDF-1.7 of the cache"));
    }
    ~SaveAs() override { EXPECT_THAT(log.lines(), IsEmpty()); }

    int save()
    {
        const long memory = outstanding_task_memory();
        const int result = SaveDocumentAs(document_window, shown.c_str());
        EXPECT_EQ(outstanding_task_memory(), memory) << "a string of the browser is not freed";
        return result;
    }
};

TEST_F(SaveAs, SavesACopyAtTheChosenPath)
{
    const ieframe_scope browser;
    EXPECT_EQ(save(), 1);
    EXPECT_THAT(calls, ElementsAre("dialog", "folder", "save"));
    EXPECT_EQ(suggested, L"doc.pdf");
    EXPECT_EQ(read_file(destination), "%PDF-1.7 of the cache");
    EXPECT_EQ(read_file(shown), "%PDF-1.7 of the cache");
    EXPECT_EQ(loads, 3) << "the library is loaded for each call";
}

TEST_F(SaveAs, ReplacesAFileIfTheUserAgrees)
{
    const ieframe_scope browser;
    ASSERT_TRUE(write_file(destination, "older"));
    EXPECT_EQ(save(), 1);
    EXPECT_EQ(read_file(destination), "%PDF-1.7 of the cache");
}

TEST_F(SaveAs, SucceedsWhenTheUserCancels)
{
    const ieframe_scope browser;
    dialog_result = S_FALSE;
    for (const bool with_destination : {false, true}) {
        gives_destination = with_destination;
        calls.clear();
        EXPECT_EQ(save(), 1);
        EXPECT_THAT(calls, ElementsAre("dialog"));
    }
    EXPECT_THAT(files_in(chosen.path()), IsEmpty());
}

TEST_F(SaveAs, FailsWhenTheDialogFails)
{
    const ieframe_scope browser;
    for (const HRESULT result : {E_FAIL, E_ACCESSDENIED, static_cast<HRESULT>(2)}) {
        dialog_result = result;
        calls.clear();
        EXPECT_EQ(save(), 0);
        EXPECT_THAT(calls, ElementsAre("dialog"));
    }
}

TEST_F(SaveAs, CancelsWithoutAFolder)
{
    const ieframe_scope browser;
    const auto expect_cancelled = [&] {
        calls.clear();
        EXPECT_EQ(save(), 0);
        EXPECT_THAT(calls, ElementsAre("dialog", "folder", "cancel"));
    };
    folder_result = E_FAIL;
    expect_cancelled();
    gives_folder = false;
    expect_cancelled();
    folder_result = S_OK;
    expect_cancelled();
    gives_folder = true;
    cache_path = cache / L"missing";
    expect_cancelled();
    cache_path = std::wstring(300, L'x');
    expect_cancelled();
    EXPECT_THAT(files_in(chosen.path()), IsEmpty());
}

TEST_F(SaveAs, CancelsWhenTheShownFileIsMissing)
{
    const ieframe_scope browser;
    ASSERT_TRUE(DeleteFileW(shown.c_str()));
    EXPECT_EQ(save(), 0);
    EXPECT_THAT(calls, ElementsAre("dialog", "folder", "cancel"));
    EXPECT_EQ(read_file(destination), std::nullopt);
}

TEST_F(SaveAs, FailsWhenTheBrowserDoesNotSave)
{
    const ieframe_scope browser;
    for (const HRESULT result : {E_FAIL, S_FALSE}) {
        save_result = result;
        calls.clear();
        EXPECT_EQ(save(), 0);
        EXPECT_THAT(calls, ElementsAre("dialog", "folder", "save"))
            << "the browser has ended the save itself";
        EXPECT_THAT(files_in(cache.path()), IsEmpty());
    }
}

// On some systems the copy of a read-only file is read-only too; it must be removed anyway.
TEST_F(SaveAs, LeavesNoReadOnlyCopy)
{
    const ieframe_scope browser;
    save_result = E_FAIL;
    before_save = [](const wchar_t* copy) {
        EXPECT_TRUE(SetFileAttributesW(copy, FILE_ATTRIBUTE_READONLY));
        EXPECT_FALSE(DeleteFileW(copy)) << "the system deletes such files anyway";
    };
    EXPECT_EQ(save(), 0);
    EXPECT_THAT(files_in(cache.path()), IsEmpty());
}

TEST_F(SaveAs, FailsWithoutOneOfTheFunctions)
{
    {
        const ieframe_scope browser(ieframe::without_dialog);
        EXPECT_EQ(save(), 0);
        EXPECT_THAT(calls, IsEmpty());
        EXPECT_EQ(loads, 1);
    }
    {
        const ieframe_scope browser(ieframe::without_folder);
        EXPECT_EQ(save(), 0);
        EXPECT_THAT(calls, ElementsAre("dialog", "cancel"));
    }
    {
        const ieframe_scope browser(ieframe::without_save);
        calls.clear();
        EXPECT_EQ(save(), 0);
        EXPECT_THAT(calls, ElementsAre("dialog", "folder"));
    }
    {
        const ieframe_scope browser(ieframe::without_cancel);
        calls.clear();
        folder_result = E_FAIL;
        EXPECT_EQ(save(), 0);
        EXPECT_THAT(calls, ElementsAre("dialog", "folder"));
    }
}

// Without a library in the folder of the program, the system's own is loaded, which has none of the
// functions.
TEST_F(SaveAs, FailsWithoutTheBrowser)
{
    EXPECT_EQ(save(), 0);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(SaveAs, SuggestsTheNameWithoutTheCacheNumber)
{
    const ieframe_scope browser;
    dialog_result = S_FALSE;
    const std::pair<const wchar_t*, const wchar_t*> names[] = {{L"doc[2].pdf", L"doc.pdf"},
                                                               {L"a]b.pdf", L"a]b.pdf"},
                                                               {L"my[b].pdf", L"my.pdf"},
                                                               {L"x.ppdf", L"x.ppdf"}};
    for (const auto& [name, suggestion] : names) {
        shown = documents / name;
        EXPECT_EQ(save(), 1);
        EXPECT_EQ(suggested, suggestion);
    }
}

TEST_F(SaveAs, ShowsNoDialogForAFileWithoutANameOrAnExtension)
{
    const ieframe_scope browser;
    for (const wchar_t* path : {L"", L"C:\\x\\", L"C:\\x\\doc"}) {
        shown = path;
        EXPECT_EQ(save(), 0);
    }
    EXPECT_EQ(SaveDocumentAs(document_window, nullptr), 0);
    EXPECT_EQ(loads, 0);
}

TEST_F(SaveAs, SavesWhatWasShownAtTheRequest)
{
    const ieframe_scope browser;
    while_dialog_is_up = [&] { shown.assign(shown.size(), L'?'); };
    EXPECT_EQ(save(), 1);
    EXPECT_EQ(read_file(destination), "%PDF-1.7 of the cache");
}

TEST_F(SaveAs, LeaksNoHandle)
{
    const ieframe_scope browser;
    expect_balance([this] {
        EXPECT_EQ(save(), 1);
        save_result = E_FAIL;
        EXPECT_EQ(save(), 0);
        save_result = S_OK;
        folder_result = E_FAIL;
        EXPECT_EQ(save(), 0);
        folder_result = S_OK;
        dialog_result = S_FALSE;
        EXPECT_EQ(save(), 1);
        dialog_result = S_OK;
    });
}

TEST_F(SaveAs, ReturnsTheResultsOfTheBrowserFunctions)
{
    EXPECT_EQ(IECancelSaveFile(state), E_NOTIMPL);
    const ieframe_scope browser;
    cancel_result = 0x12345;
    EXPECT_EQ(IECancelSaveFile(state), 0x12345);
    save_result = E_OUTOFMEMORY;
    EXPECT_EQ(IESaveFile(state, (cache_path + L"\\qIE").c_str()), E_OUTOFMEMORY);
}

} // namespace
} // namespace quill::test
