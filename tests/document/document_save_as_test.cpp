// Saving a copy of the shown document, by the browser's command and by the viewer's message: a real file
// through the whole document; a save that fails shows nothing and leaves no file.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/retrieval/ieframe/own_folder.h"
#include "tests/retrieval/ieframe/save_browser.h"
#include "tests/support/http_server.h"
#include "tests/support/wait.h"

#include <windows.h>

#include <docobj.h>
#include <gmock/gmock.h>
#include <ole2.h>

#include <optional>
#include <ostream>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

enum class request
{
    by_command, // of the browser
    by_message  // of the viewer
};

void PrintTo(request which, std::ostream* out)
{
    *out << (which == request::by_command ? "Command" : "Message");
}

// Counts the windows that this thread creates, including message boxes.
class window_watch
{
public:
    window_watch() : hook_(SetWindowsHookExW(WH_CBT, note, nullptr, GetCurrentThreadId()))
    {
        EXPECT_NE(hook_, nullptr);
        made_ = 0;
    }
    ~window_watch() { UnhookWindowsHookEx(hook_); }
    window_watch(const window_watch&) = delete;
    window_watch& operator=(const window_watch&) = delete;

    static int made() { return made_; }

private:
    static LRESULT CALLBACK note(int code, WPARAM wparam, LPARAM lparam)
    {
        made_ += code == HCBT_CREATEWND;
        return CallNextHookEx(nullptr, code, wparam, lparam);
    }

    static inline int made_ = 0;
    HHOOK hook_;
};

struct DocumentSaveAs : testing::TestWithParam<request>
{
    static void SetUpTestSuite()
    {
        static const bool is_here = (copy_library(L"QuillPDF.IE.dll"), true);
        ASSERT_TRUE(is_here);
    }

    // Requests a copy. Command and message return the same whatever the outcome, S_OK and 0. Neither shows
    // anything, calls the viewer or writes a log line.
    static void ask(document_fixture& fixture)
    {
        fixture.viewer.forget_calls();
        fixture.take_log();
        const window_watch watch;
        if (GetParam() == request::by_command) {
            VARIANT out{};
            out.vt = VT_I4;
            out.lVal = 6;
            EXPECT_EQ(fixture.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_SAVEAS,
                                                            OLECMDEXECOPT_PROMPTUSER, nullptr, &out),
                      S_OK);
            EXPECT_EQ(out.lVal, 6);
            EXPECT_EQ(fixture.take_log(), lines{"@ Exec 4"});
        } else {
            EXPECT_EQ(fixture.send(message_save_as), 0);
            EXPECT_EQ(fixture.take_log(), lines{});
        }
        EXPECT_EQ(window_watch::made(), 0);
        EXPECT_EQ(fixture.viewer.texts(), lines{});
    }

    // Runs the scenario with a fixture and a browser for each run, until the process is balanced.
    static void in_balance(const std::function<void(document_fixture&, save_browser&)>& scenario)
    {
        expect_balance([&] {
            document_fixture fixture;
            save_browser browser;
            scenario(fixture, browser);
            EXPECT_THAT(files_in(fixture.temp.path()), IsEmpty());
        });
    }

    // A document that shows a fetched file, which is not held open.
    static std::wstring show_fetched(document_fixture& fixture, save_browser& browser,
                                     const std::wstring& name = L"report[1].pdf")
    {
        fixture.show_url(unserved_url);
        fixture.wait_for_failed_worker();
        const std::wstring path = fixture.pdf(name);
        load_fetched_file(fixture, path);
        browser.owner = fixture.window();
        return path;
    }

    // Expects that no copy is saved, and these calls of the browser up to its failure.
    static void expect_no_copy(document_fixture& fixture, save_browser& browser, const lines& calls)
    {
        browser.calls.clear();
        const auto shown = files_in(fixture.files.path());
        ask(fixture);
        EXPECT_EQ(browser.calls, calls);
        EXPECT_THAT(files_in(browser.chosen.path()), IsEmpty());
        EXPECT_THAT(files_in(browser.cache.path()), IsEmpty());
        EXPECT_EQ(files_in(fixture.files.path()), shown);
    }
};

TEST_P(DocumentSaveAs, SavesACopyOfTheFetchedFileAtTheChosenPath)
{
    in_balance([](document_fixture& fixture, save_browser& browser) {
        const ieframe_scope library;
        const std::wstring path = show_fetched(fixture, browser);
        ask(fixture);
        EXPECT_THAT(browser.calls, ElementsAre("dialog", "folder", "save"));
        EXPECT_EQ(browser.suggested, L"report.pdf");
        EXPECT_THAT(files_in(browser.chosen.path()), ElementsAre(L"saved.pdf"));
        EXPECT_EQ(read_file(browser.destination), small_pdf);
        EXPECT_EQ(read_file(path), small_pdf) << "the shown file stays";
        fixture.close_in_order();
    });
}

// The document keeps a local file open against writing; it can be copied anyway.
TEST_P(DocumentSaveAs, SavesACopyOfALocalFileAtTheChosenPath)
{
    in_balance([](document_fixture& fixture, save_browser& browser) {
        const ieframe_scope library;
        fixture.show_file(fixture.pdf(L"plan.pdf"));
        browser.owner = fixture.window();
        ask(fixture);
        EXPECT_EQ(browser.suggested, L"plan.pdf");
        EXPECT_EQ(read_file(browser.destination), small_pdf);
        fixture.close_in_order();
    });
}

// From the server to the place that the user chose. Not in balance: the system's download service keeps
// handles.
TEST_P(DocumentSaveAs, SavesWhatTheServerSent)
{
    http_server server;
    const std::string body = pdf_body(300'000);
    server.route("/a/My%20Plan.pdf", http_response::ok(body));
    document_fixture fixture;
    save_browser browser;
    const ieframe_scope library;
    fixture.show_url(server.url(L"/a/My%20Plan.pdf#page=2"));
    ASSERT_TRUE(wait_until([&] { return !fixture.viewer.texts(viewer_open).empty(); }));
    browser.owner = fixture.window();
    ask(fixture);
    EXPECT_EQ(browser.suggested, L"My Plan.pdf");
    EXPECT_TRUE(read_file(browser.destination) == body);
    EXPECT_TRUE(read_file(fixture.temp / L"qll0\\My Plan.pdf") == body) << "the shown file stays";
    fixture.close_in_order();
}

TEST_P(DocumentSaveAs, ChangesNothingWhenTheUserCancels)
{
    in_balance([](document_fixture& fixture, save_browser& browser) {
        const ieframe_scope library;
        show_fetched(fixture, browser);
        browser.dialog_result = S_FALSE;
        for (const bool with_destination : {false, true}) {
            browser.gives_destination = with_destination;
            expect_no_copy(fixture, browser, {"dialog"});
        }
        fixture.close_in_order();
    });
}

TEST_P(DocumentSaveAs, HandlesEachFunctionMissing)
{
    in_balance([](document_fixture& fixture, save_browser& browser) {
        show_fetched(fixture, browser);
        expect_no_copy(fixture, browser, {}); // the system's own library has none of the functions
        {
            const ieframe_scope library(ieframe::without_dialog);
            expect_no_copy(fixture, browser, {});
        }
        {
            const ieframe_scope library(ieframe::without_folder);
            expect_no_copy(fixture, browser, {"dialog", "cancel"});
        }
        {
            const ieframe_scope library(ieframe::without_save);
            expect_no_copy(fixture, browser, {"dialog", "folder"});
        }
        {
            const ieframe_scope library(ieframe::without_cancel);
            browser.folder_result = E_FAIL;
            expect_no_copy(fixture, browser, {"dialog", "folder"});
        }
        fixture.close_in_order();
    });
}

TEST_P(DocumentSaveAs, HandlesEachFunctionFailing)
{
    in_balance([](document_fixture& fixture, save_browser& browser) {
        const ieframe_scope library;
        show_fetched(fixture, browser);
        browser.dialog_result = E_ACCESSDENIED;
        expect_no_copy(fixture, browser, {"dialog"});
        browser.dialog_result = S_OK;
        browser.folder_result = E_FAIL;
        expect_no_copy(fixture, browser, {"dialog", "folder", "cancel"});
        browser.cancel_result = E_FAIL;
        expect_no_copy(fixture, browser, {"dialog", "folder", "cancel"});
        browser.folder_result = S_OK;
        browser.cache_path = browser.cache / L"missing";
        expect_no_copy(fixture, browser, {"dialog", "folder", "cancel"});
        browser.cache_path = browser.cache.path();
        browser.save_result = E_OUTOFMEMORY;
        expect_no_copy(fixture, browser, {"dialog", "folder", "save"});
        // A copy can still be saved afterwards.
        browser.save_result = S_OK;
        ask(fixture);
        EXPECT_EQ(read_file(browser.destination), small_pdf);
        fixture.close_in_order();
    });
}

TEST_P(DocumentSaveAs, CancelsWhenTheFetchedFileIsMissing)
{
    in_balance([](document_fixture& fixture, save_browser& browser) {
        const ieframe_scope library;
        const std::wstring path = show_fetched(fixture, browser);
        EXPECT_TRUE(DeleteFileW(path.c_str()));
        expect_no_copy(fixture, browser, {"dialog", "folder", "cancel"});
        fixture.close_in_order();
    });
}

TEST_P(DocumentSaveAs, ShowsNoDialogBeforeThereIsAFile)
{
    in_balance([](document_fixture& fixture, save_browser& browser) {
        const ieframe_scope library;
        fixture.show_url(unserved_url);
        fixture.wait_for_failed_worker();
        expect_no_copy(fixture, browser, {});
        EXPECT_EQ(browser.loads, 0);
        fixture.close_in_order();
    });
}

// The dialog pumps messages, so the browser may close the document meanwhile.
TEST_P(DocumentSaveAs, HandlesBeingClosedDuringTheDialog)
{
    in_balance([](document_fixture& fixture, save_browser& browser) {
        const ieframe_scope library;
        show_fetched(fixture, browser);
        browser.while_dialog_is_up = [&] { fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(); };
        if (GetParam() == request::by_command)
            EXPECT_EQ(fixture.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_SAVEAS, 0, nullptr, nullptr),
                      S_OK);
        else
            fixture.send(message_save_as);
        EXPECT_EQ(fixture.window(), nullptr);
        EXPECT_EQ(read_file(browser.destination), small_pdf);
        fixture.close_in_order();
    });
}

// Another document may be loaded meanwhile: the copy is of what was shown when the user asked for it.
TEST_P(DocumentSaveAs, SavesWhatWasShownAtTheRequest)
{
    in_balance([](document_fixture& fixture, save_browser& browser) {
        const ieframe_scope library;
        show_fetched(fixture, browser);
        const std::wstring other = fixture.file(L"other.pdf", "%PDF-1.7 another one");
        browser.while_dialog_is_up = [&] { fixture.send_text(message_set_cache_file, 0, other.c_str()); };
        ask(fixture);
        EXPECT_EQ(read_file(browser.destination), small_pdf);
        fixture.close_in_order();
    });
}

INSTANTIATE_TEST_SUITE_P(Either, DocumentSaveAs, testing::Values(request::by_command, request::by_message),
                         testing::PrintToStringParamName());

// The viewer sends the message to the window and with the number that it was given at its creation.
TEST(ViewerSaveAs, IsSentToTheDocumentAsConfigured)
{
    DocumentSaveAs::SetUpTestSuite();
    expect_balance([] {
        document_fixture fixture;
        save_browser browser;
        const ieframe_scope library;
        fixture.show_file(fixture.pdf());
        browser.owner = fixture.window();
        for (const recorded_call& call : fixture.viewer.received) {
            if (call.id != viewer_notify_save_as)
                continue;
            const auto target = reinterpret_cast<HWND>(static_cast<ULONG_PTR>(call.arguments.at(0).integer));
            SendMessageW(target, static_cast<UINT>(call.arguments.at(1).integer), 0, 0);
        }
        EXPECT_EQ(read_file(browser.destination), small_pdf);
        fixture.close_in_order();
    });
}

} // namespace
} // namespace quill::test
