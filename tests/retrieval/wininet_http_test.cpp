// The download with a real HTTP server, as the worker of the document runs it.
#include "retrieval/download/wininet_download.h"
#include "tests/retrieval/progress_steps.h"
#include "tests/support/http_server.h"
#include "tests/support/log_capture.h"
#include "tests/support/scopes.h"
#include "tests/support/wait.h"

#include <windows.h>

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using testing::ElementsAre;

struct WinInetHttp : testing::Test
{
    http_server server;
    log_capture log;
    scratch_directory folder;
    std::wstring path = folder / L"a.pdf";
    HANDLE cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);

    ~WinInetHttp() override { CloseHandle(cancel); }

    std::uint32_t download(const fake_document_window& window, const std::wstring& url)
    {
        return DownloadWithWinINet({window.handle(), cancel, nullptr}, url.c_str(), path.c_str());
    }
    void expect_success() const { EXPECT_THAT(log.lines(), ElementsAre("debug: ACTIVEDOC DEBUG SUCCESS")); }
};

// Progress never decreases, has the same maximum every time, and ends with everything.
void expect_steady(const fake_document_window& window, std::uint32_t size, std::uint32_t maximum)
{
    const auto steps = steps_of(window);
    ASSERT_FALSE(steps.empty());
    std::uint32_t before = 0;
    for (const auto& [progress, progress_max] : steps) {
        EXPECT_GT(progress, before);
        EXPECT_EQ(progress_max, maximum);
        before = progress;
    }
    EXPECT_EQ(before, size);
    EXPECT_EQ(window.violations(), std::vector<std::string>());
}

TEST_F(WinInetHttp, SendsItsUserAgent)
{
    server.route("/a.pdf", http_response::ok("hello"));
    fake_document_window window({});
    EXPECT_EQ(download(window, server.url(L"/a.pdf?x=%20y")), 0u);
    ASSERT_EQ(server.requests().size(), 1u);
    const http_request request = server.requests().front();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.target, "/a.pdf?x=%20y");
    EXPECT_EQ(request.header("User-Agent"), "Quill5_IEactivedoc");
    EXPECT_EQ(read_file(path), "hello");
    expect_success();
}

TEST_F(WinInetHttp, DoesNotSendTheFragment)
{
    server.route("/a.pdf", http_response::ok("hello"));
    fake_document_window window({});
    EXPECT_EQ(download(window, server.url(L"/a.pdf?q=1#page=2#zoom=50")), 0u);
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests().front().target, "/a.pdf?q=1");
}

TEST_F(WinInetHttp, ReportsProgressAgainstTheLength)
{
    const std::string body = pdf_body(300'000);
    server.route("/a.pdf", http_response::ok(body));
    fake_document_window window({});
    EXPECT_EQ(download(window, server.url(L"/a.pdf")), 0u);
    EXPECT_TRUE(read_file(path) == body);
    expect_steady(window, 300'000, 300'000);
}

TEST_F(WinInetHttp, FetchesBodiesWithoutALength)
{
    for (const auto framing : {http_response::framing::chunked, http_response::framing::until_close}) {
        http_response response = http_response::ok(pdf_body(100'000));
        response.body_framing = framing;
        response.piece_size = 30'000;
        server.route("/a.pdf", response);
        fake_document_window window({});
        log.clear();
        EXPECT_EQ(download(window, server.url(L"/a.pdf")), 0u);
        EXPECT_TRUE(read_file(path) == response.body);
        expect_steady(window, 100'000, 0);
        expect_success();
    }
}

TEST_F(WinInetHttp, FollowsRedirects)
{
    server.route("/a.pdf", http_response::redirect("/b/c.pdf"));
    server.route("/b/c.pdf", http_response::ok("moved"));
    fake_document_window window({});
    EXPECT_EQ(download(window, server.url(L"/a.pdf")), 0u);
    EXPECT_EQ(read_file(path), "moved");
    EXPECT_EQ(server.requests().size(), 2u);
}

TEST_F(WinInetHttp, WritesAnErrorPageLikeAnyBody)
{
    server.route("/a.pdf", http_response::not_found("nothing here"));
    fake_document_window window({});
    EXPECT_EQ(download(window, server.url(L"/a.pdf")), 0u);
    EXPECT_EQ(read_file(path), "nothing here");
    expect_success();
}

TEST_F(WinInetHttp, ReplacesTheFileAndAcceptsAnEmptyBody)
{
    ASSERT_TRUE(write_file(path, "what was there before"));
    server.route("/a.pdf", http_response::ok(""));
    fake_document_window window({});
    EXPECT_EQ(download(window, server.url(L"/a.pdf")), 0u);
    EXPECT_EQ(read_file(path), "");
    EXPECT_THAT(steps_of(window), ElementsAre());
}

TEST_F(WinInetHttp, KeepsTheDataOfATruncatedBody)
{
    http_response response = http_response::ok(pdf_body(50'000));
    response.cut_after = 20'000;
    server.route("/a.pdf", response);
    fake_document_window window({});
    EXPECT_EQ(download(window, server.url(L"/a.pdf")), 0u);
    EXPECT_TRUE(read_file(path) == response.body.substr(0, 20'000));
    expect_steady(window, 20'000, 50'000);
}

// Depending on when the reset arrives, there is no request or a request without data: the download always
// ends.
TEST_F(WinInetHttp, HandlesAResetAfterTheHeaders)
{
    auto response = http_response::ok(pdf_body(1'000));
    response.cut_after = 0;
    response.reset = true;
    server.route("/reset.pdf", response);
    fake_document_window window({});
    const std::uint32_t result = download(window, server.url(L"/reset.pdf"));
    if (result == 0)
        EXPECT_EQ(read_file(path), "");
    else
        EXPECT_EQ(result, 1u);
    EXPECT_THAT(steps_of(window), ElementsAre());
}

TEST_F(WinInetHttp, ReportsAnUnreachableServer)
{
    fake_document_window window({});
    EXPECT_EQ(download(window, http_server::refused_url(L"/a.pdf")), 1u);
    EXPECT_THAT(log.lines(), ElementsAre("debug: ACTIVEDOC DEBUG InternetOpenUrl FAILED 12029"));
    EXPECT_EQ(read_file(path), std::nullopt);
}

TEST_F(WinInetHttp, ReportsAnInvalidUrl)
{
    fake_document_window window({});
    EXPECT_EQ(download(window, L"no scheme"), 1u);
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_TRUE(log.lines().front().starts_with("debug: ACTIVEDOC DEBUG InternetOpenUrl FAILED 12"));
}

TEST_F(WinInetHttp, ReportsAFileThatCannotBeCreated)
{
    server.route("/a.pdf", http_response::ok("hello"));
    path = folder / L"missing\\a.pdf";
    fake_document_window window({});
    EXPECT_EQ(download(window, server.url(L"/a.pdf")), 1u);
    EXPECT_THAT(log.lines(), ElementsAre("debug: ACTIVEDOC DEBUG FAILED TO CREATE CACHE FILE 3"));
    EXPECT_TRUE(server.wait_idle(default_deadline_ms)) << "the request is closed";
}

TEST_F(WinInetHttp, StopsBetweenChunks)
{
    auto response = http_response::slow(pdf_body(400'000), 1'000, 1);
    server.route("/a.pdf", response);
    fake_document_window window({.url = {}, .on_progress = [&](const seen_progress& seen) {
                                     if (seen.progress >= 5'000)
                                         SetEvent(cancel);
                                 }});
    EXPECT_EQ(download(window, server.url(L"/a.pdf")), 0x80004004u);
    const std::string part = read_file(path).value_or("");
    EXPECT_GE(part.size(), 5'000u);
    EXPECT_LT(part.size(), response.body.size());
    EXPECT_TRUE(response.body.starts_with(part));
    EXPECT_THAT(log.lines(), ElementsAre());
    EXPECT_TRUE(server.wait_idle(default_deadline_ms)) << "the request is closed";
}

// The UI thread may wait for this very download: a window that does not reply only delays it.
TEST_F(WinInetHttp, ContinuesWithoutAWindow)
{
    server.route("/a.pdf", http_response::ok("hello"));
    EXPECT_EQ(DownloadWithWinINet({nullptr, cancel, nullptr}, server.url(L"/a.pdf").c_str(), path.c_str()),
              0u);
    fake_document_window window({.url = {}, .to_progress = reply::vanish});
    EXPECT_EQ(download(window, server.url(L"/a.pdf")), 0u);
    EXPECT_EQ(read_file(path), "hello");
}

// Counts the internet handles that the system's functions return and close.
class counting_wininet
{
public:
    counting_wininet()
    {
        open_ = 0;
        opened_ = 0;
        functions_.open = [](auto... arguments) { return count(InternetOpenW(arguments...)); };
        functions_.open_url = [](auto... arguments) { return count(InternetOpenUrlW(arguments...)); };
        functions_.connect = [](auto... arguments) { return count(InternetConnectW(arguments...)); };
        functions_.open_request = [](auto... arguments) { return count(HttpOpenRequestW(arguments...)); };
        functions_.close_handle = [](HINTERNET handle) {
            const BOOL closed = InternetCloseHandle(handle);
            open_ -= closed != FALSE;
            return closed;
        };
    }

    const wininet_functions& functions() const { return functions_; }
    static int open() { return open_; }
    static int opened() { return opened_; }

private:
    static HINTERNET count(HINTERNET handle)
    {
        open_ += handle != nullptr;
        opened_ += handle != nullptr;
        return handle;
    }

    static inline int open_ = 0;
    static inline int opened_ = 0;
    wininet_functions functions_ = system_wininet;
};

// The system's own threads and events come and go, so only internet handles and the file are counted.
TEST_F(WinInetHttp, LeavesNothingOpen)
{
    auto slow = http_response::slow(pdf_body(100'000), 5'000, 1);
    server.route("/a.pdf", http_response::ok("hello"));
    server.route("/slow.pdf", slow);
    fake_document_window window({.url = {}, .on_progress = [&](const seen_progress& seen) {
                                     if (seen.progress >= 6'000)
                                         SetEvent(cancel);
                                 }});
    const counting_wininet wininet;
    const auto expect_closed = [&](const std::wstring& url, std::uint32_t result, int handles) {
        const int before = counting_wininet::opened();
        const download_job job{window.handle(), cancel, nullptr};
        EXPECT_EQ(DownloadWithWinINet(job, url.c_str(), path.c_str(), wininet.functions()), result);
        EXPECT_EQ(counting_wininet::opened() - before, handles);
        EXPECT_EQ(counting_wininet::open(), 0);
        EXPECT_TRUE(!read_file(path) || DeleteFileW(path.c_str())) << "the file is still open";
        EXPECT_TRUE(server.wait_idle(default_deadline_ms)) << "the connection is still open";
    };
    expect_closed(server.url(L"/a.pdf"), 0, 2);
    expect_closed(server.url(L"/slow.pdf"), 0x80004004, 2);
    ResetEvent(cancel);
    expect_closed(http_server::refused_url(L"/a.pdf"), 1, 1);
    path = folder / L"missing\\a.pdf";
    expect_closed(server.url(L"/a.pdf"), 1, 2);
}

} // namespace
} // namespace quill::test
