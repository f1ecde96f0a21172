// The worker with servers that respond well, slowly, unusually and badly.
#include "tests/retrieval/download_fixture.h"
#include "tests/retrieval/unabortable_protocol.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string checked = "debug: ACTIVEDOC isPDF [TRUE]";

class DownloadFromServer : public download_fixture
{
protected:
    // Downloads target with a correct window and expects it to be opened as file (below TEMP).
    void expect_opened(const std::wstring& target, const std::wstring& file, const std::string& body)
    {
        fake_document_window window({.url = server_.url(target)});
        download(window);
        EXPECT_TRUE(wait_until([&] { return loads(window) == 1; }));
        EXPECT_THAT(window.violations(), IsEmpty());
        EXPECT_EQ(window.cache_file(), temporary_ / file);
        EXPECT_EQ(contents(file), body);
        progress_ = window.progress();
        window.close();
        auto messages = window.messages();
        std::erase(messages, WM_USER_PROGRESS);
        EXPECT_THAT(messages, ElementsAre(WM_USER_GETURLLENGTH, WM_USER_GETURL, WM_USER_SETCACHEFILE,
                                          WM_USER_LOADFILE));

        const std::string name(file.begin(), file.end());
        auto expected = lines_up_to_download(server_.url(target), name);
        expected.push_back("debug: ACTIVEDOC DownloadPDFFile CACHE:TEMP\\" + name);
        expected.push_back(checked);
        EXPECT_EQ(lines(), expected);
    }

    // Downloads url with a correct window and expects these lines after the usual ones.
    void expect_refused(const std::wstring& url, const std::string& file,
                        const std::vector<std::string>& after)
    {
        fake_document_window window({.url = url});
        download(window);
        window.close();
        EXPECT_THAT(window.violations(), IsEmpty());
        auto messages = window.messages();
        std::erase(messages, WM_USER_PROGRESS);
        EXPECT_THAT(messages, ElementsAre(WM_USER_GETURLLENGTH, WM_USER_GETURL));
        auto expected = lines_up_to_download(url, file);
        expected.insert(expected.end(), after.begin(), after.end());
        EXPECT_EQ(lines(), expected);
    }

    static long long loads(const fake_document_window& window)
    {
        const auto messages = window.messages();
        return std::count(messages.begin(), messages.end(), WM_USER_LOADFILE);
    }

    std::vector<seen_progress> progress_;
};

TEST_F(DownloadFromServer, OpensASmallBody)
{
    server_.route("/docs/My%20File.pdf", http_response::ok(pdf_body(100)));
    expect_opened(L"/docs/My%20File.pdf", L"qll0\\My File.pdf", pdf_body(100));
    ASSERT_EQ(server_.requests().size(), 1u);
    EXPECT_EQ(server_.requests()[0].method, "GET");
}

TEST_F(DownloadFromServer, ReportsTheProgressOfASlowBody)
{
    auto response = http_response::slow(pdf_body(400'000), 100'000, 100);
    server_.route("/slow.pdf", response);
    expect_opened(L"/slow.pdf", L"qll0\\slow.pdf", response.body);
    ASSERT_FALSE(progress_.empty());
    for (const seen_progress& each : progress_) {
        EXPECT_EQ(each.progress_max, 400'000u);
        EXPECT_LE(each.progress, 400'000u);
        EXPECT_EQ(each.status_code, 5u);
    }
    EXPECT_TRUE(std::is_sorted(progress_.begin(), progress_.end(),
                               [](const auto& a, const auto& b) { return a.progress < b.progress; }));
}

TEST_F(DownloadFromServer, OpensAChunkedBody)
{
    auto response = http_response::ok(pdf_body(300'000));
    response.body_framing = http_response::framing::chunked;
    response.piece_size = 100'000;
    response.piece_delay_ms = 100;
    server_.route("/chunked.pdf", response);
    expect_opened(L"/chunked.pdf", L"qll0\\chunked.pdf", response.body);
    ASSERT_FALSE(progress_.empty());
    for (const seen_progress& each : progress_)
        EXPECT_EQ(each.progress_max, 0u);
}

TEST_F(DownloadFromServer, OpensABodyWithoutLength)
{
    auto response = http_response::ok(pdf_body(50'000));
    response.body_framing = http_response::framing::until_close;
    server_.route("/endless.pdf", response);
    expect_opened(L"/endless.pdf", L"qll0\\endless.pdf", response.body);
}

TEST_F(DownloadFromServer, FollowsARedirectUnderTheFirstName)
{
    server_.route("/old.pdf", http_response::redirect("/new/place.pdf"));
    server_.route("/new/place.pdf", http_response::ok(pdf_body(100)));
    expect_opened(L"/old.pdf", L"qll0\\old.pdf", pdf_body(100));
}

TEST_F(DownloadFromServer, KeepsTheExtensionOfAProtectedDocument)
{
    server_.route("/a.ppdf", http_response::ok("0000000.pfile of the suite"));
    fake_document_window window({.url = server_.url(L"/a.ppdf")});
    download(window);
    EXPECT_EQ(window.cache_file(), temporary_ / L"qll0\\a.pdf");
    auto expected = lines_up_to_download(server_.url(L"/a.ppdf"), "qll0\\a.pdf");
    expected.push_back("debug: ACTIVEDOC DownloadPDFFile CACHE:TEMP\\qll0\\a.pdf");
    expected.push_back("debug: ACTIVEDOC isPDF [TRUE] - ppdf file");
    EXPECT_EQ(lines(), expected);
}

TEST_F(DownloadFromServer, NamesADocumentWithoutANameUntitled)
{
    server_.route("/dir/", http_response::ok(pdf_body(100)));
    expect_opened(L"/dir/", L"qll0\\Untitled.pdf", pdf_body(100));
}

TEST_F(DownloadFromServer, OpensTheFileOfATruncatedBody)
{
    auto response = http_response::ok(pdf_body(10'000));
    response.cut_after = 4'000;
    server_.route("/cut.pdf", response);
    expect_opened(L"/cut.pdf", L"qll0\\cut.pdf", pdf_body(10'000).substr(0, 4'000));
}

TEST_F(DownloadFromServer, RequestsEachTimeAndKeepsEachResponse)
{
    int asked = 0;
    server_.route("/same.pdf", [&asked](const http_request&) {
        return http_response::ok(pdf_body(100) + std::to_string(asked++));
    });
    expect_opened(L"/same.pdf", L"qll0\\same.pdf", pdf_body(100) + "0");
    expect_opened(L"/same.pdf", L"qll1\\same.pdf", pdf_body(100) + "1");
    EXPECT_EQ(contents(L"qll0\\same.pdf"), pdf_body(100) + "0");
}

TEST_F(DownloadFromServer, LogsARefusedConnection)
{
    expect_refused(http_server::refused_url(L"/a.pdf"), "qll0\\a.pdf",
                   {"debug: ACTIVEDOC DownloadPDFFile FAILED " + std::to_string(INET_E_DOWNLOAD_FAILURE)});
}

TEST_F(DownloadFromServer, LogsAnInvalidUrl)
{
    fake_document_window window({.url = L"no url at all"});
    download(window);
    const auto written = lines();
    ASSERT_EQ(written.size(), 4u);
    EXPECT_EQ(written[1], "debug: ACTIVEDOC DownloadPDFFile CACHE: TEMP\\qll0\\Untitled.pdf");
    EXPECT_THAT(written[3], testing::StartsWith("debug: ACTIVEDOC DownloadPDFFile FAILED -"));
}

TEST_F(DownloadFromServer, RefusesThePageOfA404)
{
    expect_refused(server_.url(L"/missing.pdf"), "qll0\\missing.pdf",
                   {"debug: ACTIVEDOC DownloadPDFFile CACHE:TEMP\\qll0\\missing.pdf",
                    "debug: ACTIVEDOC isPDF [FALSE]", "debug: ACTIVEDOC DownloadPDFFile MISSING FILE"});
    EXPECT_EQ(contents(L"qll0\\missing.pdf"), http_response::not_found().body);
}

// The system reports success anyway.
TEST_F(DownloadFromServer, ReportsAFileThatCouldNotBeWrittenAsMissing)
{
    server_.route("/a.pdf", [this](const http_request&) {
        EXPECT_TRUE(RemoveDirectoryW((temporary_ / L"qll0").c_str()));
        return http_response::ok(pdf_body(100));
    });
    expect_refused(server_.url(L"/a.pdf"), "qll0\\a.pdf",
                   {"debug: ACTIVEDOC DownloadPDFFile CACHE:TEMP\\qll0\\a.pdf",
                    "debug: ACTIVEDOC isPDF [FALSE] MISSING FILE",
                    "debug: ACTIVEDOC DownloadPDFFile MISSING FILE"});
}

TEST_F(DownloadFromServer, EndsWithAbortWhenTheDocumentCloses)
{
    auto response = http_response::slow(pdf_body(4'000'000), 100'000, 100);
    server_.route("/long.pdf", response);
    fake_document_window window({.url = server_.url(L"/long.pdf"),
                                 .on_progress = [this](const seen_progress&) { SetEvent(cancel_event_); }});
    download(window);
    window.close();
    EXPECT_THAT(window.messages(), ElementsAre(WM_USER_GETURLLENGTH, WM_USER_GETURL, WM_USER_PROGRESS));
    auto expected = lines_up_to_download(server_.url(L"/long.pdf"), "qll0\\long.pdf");
    expected.push_back("debug: ACTIVEDOC DownloadPDFFile FAILED " + std::to_string(E_ABORT));
    EXPECT_EQ(lines(), expected);
}

TEST_F(DownloadFromServer, EndsWithAbortWhenTheDocumentIsClosedAlready)
{
    server_.route("/a.pdf", http_response::ok(pdf_body(100)));
    SetEvent(cancel_event_);
    expect_refused(server_.url(L"/a.pdf"), "qll0\\a.pdf",
                   {"debug: ACTIVEDOC DownloadPDFFile FAILED " + std::to_string(E_ABORT)});
}

// The event of the document is auto-reset, and not every protocol ends when it is aborted.
TEST_F(DownloadFromServer, EndsWithAbortWhenTheSystemContinues)
{
    const std::wstring url = std::wstring(unabortable_scheme) + L"://host/a.pdf";
    const std::wstring source = temporary_ / L"source";
    ASSERT_TRUE(write_file(source, pdf_body(100)));
    const unabortable_protocol protocol(source);
    const HANDLE once = CreateEventW(nullptr, FALSE, TRUE, nullptr);
    fake_document_window window({.url = url});
    {
        const download_thread worker({window.handle(), once, nullptr});
        EXPECT_TRUE(worker.ended_within(default_deadline_ms));
    }
    EXPECT_EQ(WaitForSingleObject(once, 0), DWORD{WAIT_TIMEOUT}) << "the event was not consumed";
    CloseHandle(once);
    window.close();
    EXPECT_EQ(contents(L"qll0\\a.pdf"), pdf_body(100)) << "the system did not go on";
    auto expected = lines_up_to_download(url, "qll0\\a.pdf");
    expected.push_back("debug: ACTIVEDOC DownloadPDFFile FAILED " + std::to_string(E_ABORT));
    EXPECT_EQ(lines(), expected);
    EXPECT_EQ(window.cache_file(), L"");
    EXPECT_THAT(window.messages(), testing::Not(testing::Contains(WM_USER_LOADFILE)));
}

TEST_F(DownloadFromServer, UsesWinINetWhenConfigured)
{
    user_settings_.set_string(switch_value, L"/b 1");
    server_.route("/w.pdf", http_response::ok(pdf_body(100)));
    fake_document_window window({.url = server_.url(L"/w.pdf")});
    download(window);
    EXPECT_EQ(window.cache_file(), temporary_ / L"qll0\\w.pdf");
    ASSERT_EQ(server_.requests().size(), 1u);
    EXPECT_EQ(server_.requests()[0].header("User-Agent"), "Quill5_IEactivedoc");
    auto expected = lines_up_to_download(server_.url(L"/w.pdf"), "qll0\\w.pdf");
    expected.back() = "debug: ACTIVEDOC KIEBrowserPlugin: WinINet";
    expected.insert(expected.end(), {"debug: ACTIVEDOC DEBUG SUCCESS",
                                     "debug: ACTIVEDOC DownloadPDFFile CACHE:TEMP\\qll0\\w.pdf", checked});
    EXPECT_EQ(lines(), expected);
}

// With WinINet nothing waits for the event between the last chunk and the worker's own check.
TEST_F(DownloadFromServer, EndsSilentlyWhenTheDocumentClosesAfterTheDownload)
{
    user_settings_.set_string(switch_value, L"/b 1");
    const std::string body = pdf_body(100);
    server_.route("/w.pdf", http_response::ok(body));
    fake_document_window window(
        {.url = server_.url(L"/w.pdf"), .on_progress = [&](const seen_progress& seen) {
             if (seen.progress == body.size())
                 SetEvent(cancel_event_);
         }});
    download(window);
    window.close();
    EXPECT_THAT(window.messages(), ElementsAre(WM_USER_GETURLLENGTH, WM_USER_GETURL, WM_USER_PROGRESS));
    const auto written = lines();
    ASSERT_FALSE(written.empty());
    EXPECT_EQ(written.back(), "debug: ACTIVEDOC DownloadPDFFile CACHE:TEMP\\qll0\\w.pdf");
}

} // namespace
} // namespace quill::test
