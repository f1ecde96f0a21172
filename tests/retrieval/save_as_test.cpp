// Saving a copy through the browser's functions, as a test's own ieframe.dll has them.
#include "retrieval/browser_save.h"
#include "retrieval/save_as.h"
#include "tests/retrieval/ieframe/browser_script.h"
#include "tests/retrieval/ieframe/own_folder.h"
#include "tests/support/log_capture.h"
#include "tests/support/process_resources.h"
#include "tests/support/scopes.h"
#include "tests/support/task_memory.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <objbase.h>

#include <functional>
#include <optional>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const HWND document_window = reinterpret_cast<HWND>(0x1234);
const HANDLE save_state = reinterpret_cast<HANDLE>(0x5678);

wchar_t* task_string(const std::wstring& text)
{
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    auto* const copy = static_cast<wchar_t*>(CoTaskMemAlloc(bytes));
    text.copy(copy, text.size());
    copy[text.size()] = L'\0';
    return copy;
}

std::vector<std::wstring> files_in(const std::wstring& folder)
{
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &found);
    for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileW(search, &found)) {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            names.emplace_back(found.cFileName);
    }
    FindClose(search);
    return names;
}

struct SaveAs : testing::Test
{
    // The script of the browser.
    HRESULT dialog_result = S_OK;
    HRESULT folder_result = S_OK;
    HRESULT save_result = S_OK;
    HRESULT cancel_result = S_OK;
    bool gives_destination = true;
    bool gives_folder = true;
    std::function<void()> while_dialog_is_up;
    std::wstring suggested;
    std::vector<std::string> calls;
    int loads = 0;
    int unloads = 0;
    // Folders as the browser has them.
    scratch_directory documents;                    // where the shown file lies
    scratch_directory cache;                        // where the document may write
    scratch_directory chosen;                       // where the user wants the copy
    std::wstring shown = documents / L"doc[1].pdf"; // the document's own path buffer
    std::wstring cache_path = cache.path();
    std::wstring destination = chosen / L"saved.pdf";

    log_capture log;
    static inline SaveAs* current = nullptr;

    SaveAs()
    {
        current = this;
        EXPECT_TRUE(write_file(shown, "%PDF-1.7 of the cache"));
    }
    ~SaveAs() override
    {
        EXPECT_THAT(files_in(cache.path()), IsEmpty()) << "left in the folder for copies";
        EXPECT_THAT(log.lines(), IsEmpty());
        EXPECT_EQ(loads, unloads);
        EXPECT_EQ(GetModuleHandleW(L"ieframe.dll"), nullptr);
        current = nullptr;
    }

    int save()
    {
        const long memory = outstanding_task_memory();
        const int result = SaveDocumentAs(document_window, shown.c_str());
        EXPECT_EQ(outstanding_task_memory(), memory) << "a string of the browser is not freed";
        return result;
    }
};

// The functions that the library's calls end in.

void loaded(bool is_loaded)
{
    ++(is_loaded ? SaveAs::current->loads : SaveAs::current->unloads);
}

HRESULT show_dialog(HWND window, const wchar_t* file_name, const wchar_t* folder, const wchar_t* filter,
                    const wchar_t* extension, DWORD filter_index, DWORD flags, wchar_t** destination,
                    HANDLE* state)
{
    SaveAs& test = *SaveAs::current;
    test.calls.emplace_back("dialog");
    test.suggested = file_name;
    if (test.while_dialog_is_up)
        test.while_dialog_is_up();
    EXPECT_EQ(window, document_window);
    EXPECT_EQ(folder, nullptr);
    EXPECT_STREQ(filter, L"PDF files (*.pdf)|*.PDF|");
    EXPECT_STREQ(extension, L"pdf");
    EXPECT_EQ(filter_index, 0u);
    EXPECT_EQ(flags, 2u);
    EXPECT_EQ(*destination, nullptr);
    EXPECT_EQ(*state, nullptr);
    if (test.gives_destination)
        *destination = task_string(test.destination);
    if (test.dialog_result == S_OK)
        *state = save_state;
    return test.dialog_result;
}

HRESULT get_folder(REFKNOWNFOLDERID folder_id, wchar_t** folder)
{
    static constexpr GUID internet_cache = {
        0x352481E8, 0x33BE, 0x4251, {0xBA, 0x85, 0x60, 0x07, 0xCA, 0xED, 0xCF, 0x9D}};
    SaveAs& test = *SaveAs::current;
    test.calls.emplace_back("folder");
    EXPECT_TRUE(IsEqualGUID(folder_id, internet_cache));
    EXPECT_EQ(*folder, nullptr);
    if (test.gives_folder)
        *folder = task_string(test.cache_path);
    return test.folder_result;
}

// As the browser's broker: moves the copy to where the user wants it.
HRESULT save_file(HANDLE state, const wchar_t* source)
{
    SaveAs& test = *SaveAs::current;
    test.calls.emplace_back("save");
    EXPECT_EQ(state, save_state);
    EXPECT_TRUE(std::wstring(source).starts_with(test.cache_path + L"\\qIE"))
        << testing::PrintToString(source);
    if (test.save_result == S_OK)
        EXPECT_TRUE(
            MoveFileExW(source, test.destination.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED));
    return test.save_result;
}

HRESULT cancel_save(HANDLE state)
{
    SaveAs::current->calls.emplace_back("cancel");
    EXPECT_EQ(state, save_state);
    return SaveAs::current->cancel_result;
}

TEST_F(SaveAs, PutsACopyWhereTheDialogSaid)
{
    const ieframe_scope browser;
    EXPECT_EQ(save(), 1);
    EXPECT_THAT(calls, ElementsAre("dialog", "folder", "save"));
    EXPECT_EQ(suggested, L"doc.pdf");
    EXPECT_EQ(read_file(destination), "%PDF-1.7 of the cache");
    EXPECT_EQ(read_file(shown), "%PDF-1.7 of the cache");
    EXPECT_EQ(loads, 3) << "the library is loaded for each call anew";
}

TEST_F(SaveAs, ReplacesWhatTheUserAgreedToReplace)
{
    const ieframe_scope browser;
    ASSERT_TRUE(write_file(destination, "older"));
    EXPECT_EQ(save(), 1);
    EXPECT_EQ(read_file(destination), "%PDF-1.7 of the cache");
}

TEST_F(SaveAs, IsDoneWhenTheUserCancels)
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

TEST_F(SaveAs, CancelsWhenTheShownFileIsGone)
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

// Without a library beside the program there is the system's, which has none of the functions.
TEST_F(SaveAs, FailsWithoutTheBrowser)
{
    EXPECT_EQ(save(), 0);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(SaveAs, SuggestsTheNameWithoutTheCachesNumber)
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

TEST_F(SaveAs, AsksNothingForAFileWithoutANameOrAnExtension)
{
    const ieframe_scope browser;
    for (const wchar_t* path : {L"", L"C:\\x\\", L"C:\\x\\doc"}) {
        shown = path;
        EXPECT_EQ(save(), 0);
    }
    EXPECT_EQ(SaveDocumentAs(document_window, nullptr), 0);
    EXPECT_EQ(loads, 0);
}

TEST_F(SaveAs, SavesWhatWasShownWhenItWasAskedTo)
{
    const ieframe_scope browser;
    while_dialog_is_up = [&] { shown.assign(shown.size(), L'?'); };
    EXPECT_EQ(save(), 1);
    EXPECT_EQ(read_file(destination), "%PDF-1.7 of the cache");
}

TEST_F(SaveAs, LeavesNoHandleBehind)
{
    const ieframe_scope browser;
    const auto every_end = [&] {
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
    };
    every_end();
    const auto before = process_resources::now();
    every_end();
    EXPECT_EQ(process_resources::now(), before);
}

TEST_F(SaveAs, PassesTheBrowsersOwnAnswersOn)
{
    EXPECT_EQ(IECancelSaveFile(save_state), E_NOTIMPL);
    const ieframe_scope browser;
    cancel_result = 0x12345;
    EXPECT_EQ(IECancelSaveFile(save_state), 0x12345);
    save_result = E_OUTOFMEMORY;
    EXPECT_EQ(IESaveFile(save_state, (cache_path + L"\\qIE").c_str()), E_OUTOFMEMORY);
}

} // namespace
} // namespace quill::test

extern "C" {
__declspec(dllexport) extern const browser_script quill_browser_script;
}
const browser_script quill_browser_script = {quill::test::loaded, quill::test::show_dialog,
                                             quill::test::get_folder, quill::test::save_file,
                                             quill::test::cancel_save};
