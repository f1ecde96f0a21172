// The object that starts and stops a document's worker, with real workers, windows and servers.
#include "active_doc/document_download.h"
#include "tests/retrieval/fake_document_window.h"
#include "tests/support/balance.h"
#include "tests/support/http_server.h"
#include "tests/support/log_capture.h"
#include "tests/support/scopes.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DocumentDownload : public testing::Test
{
protected:
    DocumentDownload()
    {
        http_response held = http_response::ok("%PDF-1.7\n" + std::string(100, 'x'));
        server_.route("/a.pdf", held);
        held.hold_head = true;
        server_.route("/held.pdf", held);
    }
    ~DocumentDownload() override { server_.release(); }

    std::wstring url() const { return server_.url(L"/a.pdf"); }
    // Its server is silent until server_.release().
    std::wstring held_url() const { return server_.url(L"/held.pdf"); }

    static void wait_for_end(const document_download& download)
    {
        EXPECT_TRUE(wait_until([&] { return !download.is_running(); }));
    }
    void wait_for_request() const
    {
        EXPECT_TRUE(wait_until([&] { return !server_.requests().empty(); }));
    }
    bool has_logged_its_end() const
    {
        return std::ranges::any_of(log_.lines(), [](const std::string& line) {
            return line.find("DownloadPDFFile FAILED") != std::string::npos;
        });
    }
    static void wait_for_message(const fake_document_window& window, UINT message)
    {
        EXPECT_TRUE(wait_until([&] {
            const auto messages = window.messages();
            return !messages.empty() && messages.back() == message;
        }));
    }

    scratch_directory temporary_;
    environment_scope override_{L"QUILL_TMP_FOLDER", temporary_.path()};
    log_capture log_;
    http_server server_;
};

TEST_F(DocumentDownload, IsIdleBeforeItsStart)
{
    document_download download;
    EXPECT_FALSE(download.is_running());
    EXPECT_FALSE(download.is_outdated());
    download.stop();
    EXPECT_FALSE(download.is_running());
}

TEST_F(DocumentDownload, SendsTheFileToItsWindow)
{
    fake_document_window window({.url = url()});
    document_download download;
    download.start(window.handle(), nullptr);
    wait_for_message(window, WM_USER_LOADFILE);
    EXPECT_THAT(window.violations(), IsEmpty());
    EXPECT_TRUE(window.cache_file().ends_with(L"\\a.pdf"));
    download.stop();
    EXPECT_FALSE(download.is_running());
}

TEST_F(DocumentDownload, StartsAfterAStopAndAfterAnEnd)
{
    document_download download;
    download.stop();
    for (int start = 0; start < 2; ++start) {
        fake_document_window window({.url = url()});
        download.start(window.handle(), nullptr);
        wait_for_message(window, WM_USER_LOADFILE);
        wait_for_end(download);
    }
}

TEST_F(DocumentDownload, StopsAWorkerWhoseServerIsSilent)
{
    fake_document_window window({.url = held_url()});
    document_download download;
    download.start(window.handle(), nullptr);
    wait_for_request();
    EXPECT_TRUE(download.is_running());
    download.stop();
    EXPECT_TRUE(has_logged_its_end()) << "the worker still runs";
    EXPECT_FALSE(download.is_running());
    EXPECT_THAT(window.messages(), ElementsAre(WM_USER_GETURLLENGTH, WM_USER_GETURL));
}

TEST_F(DocumentDownload, StopsAtItsDestruction)
{
    fake_document_window window({.url = held_url()});
    {
        document_download download;
        download.start(window.handle(), nullptr);
        wait_for_request();
    }
    EXPECT_TRUE(has_logged_its_end()) << "the worker still runs";
    EXPECT_THAT(window.messages(), ElementsAre(WM_USER_GETURLLENGTH, WM_USER_GETURL));
}

TEST_F(DocumentDownload, IsOutdatedFromTheReplacementToTheWorkersEnd)
{
    fake_document_window window({.url = held_url()});
    document_download download;
    download.start(window.handle(), nullptr);
    wait_for_request();
    download.url_sent();
    EXPECT_FALSE(download.is_outdated());
    download.url_replaced();
    EXPECT_TRUE(download.is_outdated());
    server_.release();
    wait_for_end(download);
    EXPECT_FALSE(download.is_outdated());
    EXPECT_EQ(window.cache_file(), L"");
}

TEST_F(DocumentDownload, IsNotOutdatedAfterItsNextStart)
{
    fake_document_window window({.url = held_url()});
    document_download download;
    download.start(window.handle(), nullptr);
    wait_for_request();
    download.url_sent();
    download.url_replaced();
    download.stop();
    download.start(window.handle(), nullptr);
    EXPECT_FALSE(download.is_outdated());
    download.stop();
}

// The length may belong to the former URL: the worker requests both again and fetches the new one.
TEST_F(DocumentDownload, RequestsAUrlAgainThatIsReplacedBeforeItWasSent)
{
    document_download download;
    int lengths = 0;
    const auto replace_once = [&] {
        if (lengths++ == 0)
            download.url_replaced();
        EXPECT_FALSE(download.is_outdated());
    };
    fake_document_window window({.url = url(), .on_length = replace_once});
    download.start(window.handle(), nullptr);
    wait_for_message(window, WM_USER_LOADFILE);
    EXPECT_FALSE(download.is_outdated());
    EXPECT_THAT(window.messages(), ElementsAre(WM_USER_GETURLLENGTH, WM_USER_GETURL, WM_USER_GETURLLENGTH,
                                               WM_USER_GETURL, WM_USER_SETCACHEFILE, WM_USER_LOADFILE));
}

// The URL of a former worker is not the next worker's.
TEST_F(DocumentDownload, RequestsAUrlAgainThatIsReplacedAfterItsNextStart)
{
    document_download download;
    {
        fake_document_window window({.url = held_url()});
        download.start(window.handle(), nullptr);
        wait_for_request();
        download.url_sent();
        download.stop();
    }
    int lengths = 0;
    const auto replace_once = [&] {
        if (lengths++ == 0)
            download.url_replaced();
    };
    fake_document_window window({.url = url(), .on_length = replace_once});
    download.start(window.handle(), nullptr);
    wait_for_message(window, WM_USER_LOADFILE);
    EXPECT_THAT(window.messages(), ElementsAre(WM_USER_GETURLLENGTH, WM_USER_GETURL, WM_USER_GETURLLENGTH,
                                               WM_USER_GETURL, WM_USER_SETCACHEFILE, WM_USER_LOADFILE));
}

TEST_F(DocumentDownload, KeepsTheUrlThatTheWorkerHasAtTheFirstLoad)
{
    fake_document_window window({.url = held_url()});
    document_download download;
    download.start(window.handle(), nullptr);
    wait_for_request();
    download.url_sent();
    download.first_url_loaded();
    EXPECT_FALSE(download.is_outdated());
    server_.release();
    wait_for_message(window, WM_USER_LOADFILE);
}

TEST_F(DocumentDownload, ClosesItsHandles)
{
    expect_balance([&] {
        fake_document_window window({.url = url()});
        document_download download;
        download.start(window.handle(), nullptr);
        wait_for_message(window, WM_USER_LOADFILE);
        download.stop();
    });
}

} // namespace
} // namespace quill::test
