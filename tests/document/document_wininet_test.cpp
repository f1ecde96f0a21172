// The download path that the administrator selects in the registry, from the URL to the shown file.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/retrieval/tls_servers.h"
#include "tests/support/download_setting.h"
#include "tests/support/http_server.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <ole2.h>
#include <urlmon.h>

#include <memory>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

struct seen_report
{
    std::uint32_t progress;
    std::uint32_t maximum;
    std::uint32_t status;
};

// Records the messages that are sent to the document window in its scope, on its thread.
class report_watch
{
public:
    report_watch() : hook_(SetWindowsHookExW(WH_CALLWNDPROC, note, nullptr, GetCurrentThreadId()))
    {
        EXPECT_NE(hook_, nullptr);
        forget();
    }
    ~report_watch() { UnhookWindowsHookEx(hook_); }
    report_watch(const report_watch&) = delete;
    report_watch& operator=(const report_watch&) = delete;

    static const std::vector<seen_report>& seen() { return seen_; }
    static void forget() { seen_.clear(); }

private:
    static LRESULT CALLBACK note(int code, WPARAM wparam, LPARAM lparam)
    {
        const auto& message = *reinterpret_cast<const CWPSTRUCT*>(lparam);
        if (code == HC_ACTION && message.message == message_progress && message.lParam)
            seen_.push_back(*reinterpret_cast<const seen_report*>(message.lParam));
        return CallNextHookEx(nullptr, code, wparam, lparam);
    }

    static inline std::vector<seen_report> seen_;
    HHOOK hook_;
};

struct DocumentWinInet : testing::Test
{
    download_setting settings;
    http_server server;
    document_fixture fixture;
    report_watch reports;

    DocumentWinInet() { settings.use_wininet(); }

    // Shows the document and waits for its file. Returns the path that the viewer was called to open.
    std::wstring open(const std::wstring& url)
    {
        fixture.viewer.forget_calls();
        fixture.show_url(url);
        EXPECT_TRUE(wait_until([&] { return !fixture.viewer.texts(viewer_open).empty(); }))
            << testing::PrintToString(fixture.log.worker_lines());
        for (const recorded_call& call : fixture.viewer.received)
            if (call.id == viewer_open)
                return call.arguments.at(0).text;
        return {};
    }

    void close()
    {
        fixture.close_in_order();
        fixture.release();
    }

    // Shows a document whose download fails, and expects these last lines of its worker.
    void expect_nothing_opened(const std::wstring& url, const lines& last)
    {
        fixture.show_url(url);
        const auto logged_last = [&] { return fixture.log.worker_wrote(last.back()); };
        EXPECT_TRUE(wait_until(logged_last));
        fixture.wait_for_no_worker();
        pump_messages();
        const auto all = fixture.log.worker_lines();
        EXPECT_EQ(
            lines(all.end() - static_cast<std::ptrdiff_t>(std::min(last.size(), all.size())), all.end()),
            last);
        EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
        EXPECT_TRUE(server.wait_idle(default_deadline_ms)) << "the request is closed";
        close();
    }

    // Progress increases up to the size, always with the same maximum.
    static void expect_reports(std::uint32_t size, std::uint32_t maximum)
    {
        std::uint32_t before = 0;
        for (const seen_report& report : report_watch::seen()) {
            EXPECT_GT(report.progress, before);
            EXPECT_EQ(report.maximum, maximum);
            EXPECT_EQ(report.status, static_cast<std::uint32_t>(BINDSTATUS_DOWNLOADINGDATA));
            before = report.progress;
        }
        EXPECT_EQ(before, size);
    }
};

TEST_F(DocumentWinInet, ShowsTheServersFile)
{
    const std::string body = pdf_body(300'000);
    server.route("/dir/My%20File.pdf", http_response::ok(body));
    fixture.host.browser.location_url = server.url(L"/dir/My%20File.pdf?v=1#page=3#zoom=125");
    const std::wstring path = open(server.url(L"/dir/My%20File.pdf?v=1#page=3#zoom=125"));
    EXPECT_EQ(path, fixture.temp / L"qll0\\My File.pdf");
    EXPECT_TRUE(read_file(path) == body);
    EXPECT_EQ(fixture.viewer.texts(viewer_go_to_page), lines{"4(I4 2)"});
    EXPECT_EQ(fixture.viewer.texts(viewer_set_zoom), lines{"9(R8 1.25)"});
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_EQ(requests[0].target, "/dir/My%20File.pdf?v=1") << "the fragment stays here";
    EXPECT_EQ(requests[0].header("User-Agent"), "Quill5_IEactivedoc");
    expect_reports(300'000, 300'000);
    const auto all = fixture.log.worker_lines();
    EXPECT_THAT(all, testing::Contains("ACTIVEDOC KIEBrowserPlugin: WinINet"));
    EXPECT_THAT(all, testing::Contains("ACTIVEDOC DEBUG SUCCESS"));
    close();
}

TEST_F(DocumentWinInet, ShowsABodyWithoutALength)
{
    for (const auto framing : {http_response::framing::chunked, http_response::framing::until_close}) {
        auto response = http_response::ok(pdf_body(100'000));
        response.body_framing = framing;
        response.piece_size = 30'000;
        server.route("/x.pdf", response);
        report_watch::forget();
        EXPECT_TRUE(read_file(open(server.url(L"/x.pdf"))) == response.body);
        expect_reports(100'000, 0);
        close();
    }
}

TEST_F(DocumentWinInet, FollowsARedirectUnderTheFirstName)
{
    server.route("/old.pdf", http_response::redirect("/new/place.pdf"));
    server.route("/new/place.pdf", http_response::ok(pdf_body(5'000)));
    const std::wstring path = open(server.url(L"/old.pdf"));
    EXPECT_THAT(path, EndsWith(L"\\old.pdf"));
    EXPECT_TRUE(read_file(path) == pdf_body(5'000));
    for (const http_request& request : server.requests())
        EXPECT_EQ(request.header("User-Agent"), "Quill5_IEactivedoc");
    close();
}

TEST_F(DocumentWinInet, ShowsATruncatedBody)
{
    auto response = http_response::ok(pdf_body(50'000));
    response.cut_after = 20'000;
    server.route("/x.pdf", response);
    EXPECT_TRUE(read_file(open(server.url(L"/x.pdf"))) == response.body.substr(0, 20'000));
    expect_reports(20'000, 50'000);
    close();
}

TEST_F(DocumentWinInet, RefusesThePageOfA404)
{
    expect_nothing_opened(server.url(L"/missing.pdf"),
                          {"ACTIVEDOC DEBUG SUCCESS",
                           "ACTIVEDOC DownloadPDFFile CACHE:" + to_utf8(fixture.temp / L"qll0\\missing.pdf"),
                           "ACTIVEDOC isPDF [FALSE]", "ACTIVEDOC DownloadPDFFile MISSING FILE"});
    EXPECT_EQ(read_file(fixture.temp / L"qll0\\missing.pdf"), http_response::not_found().body);
}

TEST_F(DocumentWinInet, ReportsAnUnreachableServer)
{
    expect_nothing_opened(
        http_server::refused_url(L"/x.pdf"),
        {"ACTIVEDOC DEBUG InternetOpenUrl FAILED 12029", "ACTIVEDOC DownloadPDFFile FAILED 1"});
}

// Its folder is missing.
TEST_F(DocumentWinInet, ReportsACacheFileThatCannotBeWritten)
{
    server.route("/a.pdf", [this](const http_request&) {
        EXPECT_TRUE(RemoveDirectoryW((fixture.temp / L"qll0").c_str()));
        return http_response::ok(pdf_body(5'000));
    });
    expect_nothing_opened(server.url(L"/a.pdf"), {"ACTIVEDOC DEBUG FAILED TO CREATE CACHE FILE 3",
                                                  "ACTIVEDOC DownloadPDFFile FAILED 1"});
    EXPECT_THAT(report_watch::seen(), IsEmpty());
}

TEST_F(DocumentWinInet, ShowsNothingAfterAResetFollowingTheHeaders)
{
    auto response = http_response::ok(pdf_body(1'000));
    response.cut_after = 0;
    response.reset = true;
    server.route("/reset.pdf", response);
    fixture.show_url(server.url(L"/reset.pdf"));
    fixture.wait_for_no_worker();
    pump_messages();
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    EXPECT_THAT(report_watch::seen(), IsEmpty());
    close();
}

TEST_F(DocumentWinInet, ClosedBetweenChunksStopsTheWorker)
{
    auto slow = http_response::slow(pdf_body(10'000'000), 50'000, 20);
    server.route("/slow.pdf", slow);
    fixture.show_url(server.url(L"/slow.pdf"));
    ASSERT_TRUE(wait_until([] { return !report_watch::seen().empty(); }));
    fixture.close_in_order();
    EXPECT_EQ(fixture.log.worker_lines().back(), "ACTIVEDOC DownloadPDFFile FAILED -2147467260");
    const std::string part = read_file(fixture.temp / L"qll0\\slow.pdf").value_or("");
    EXPECT_FALSE(part.empty()) << "the partial file stays";
    EXPECT_TRUE(slow.body.starts_with(part));
    EXPECT_LT(part.size(), slow.body.size());
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    fixture.release();
    EXPECT_TRUE(server.wait_idle(default_deadline_ms)) << "the request is closed";
}

TEST_F(DocumentWinInet, AcceptsBadCertificatesThatTheDefaultPathRefuses)
{
    const tls_servers secure(server.port());
    server.route("/x.pdf", http_response::ok(pdf_body(5'000)));
    const std::string kinds[] = {"self_signed", "expired", "wrong_name"};
    const trusted_root root(secure.root());
    for (const std::string& kind : kinds) {
        SCOPED_TRACE(kind);
        EXPECT_TRUE(read_file(open(secure.url(kind, L"/x.pdf#page=2"))) == pdf_body(5'000));
        EXPECT_EQ(server.requests().back().target, "/x.pdf");
        EXPECT_EQ(server.requests().back().header("User-Agent"), "Quill5_IEactivedoc");
        close();
    }
    // An exception for a certificate must not be remembered or requested on the strict path.
    settings.use_urlmon();
    const std::size_t before = server.requests().size();
    for (const std::string& kind : kinds) {
        SCOPED_TRACE(kind);
        fixture.viewer.forget_calls();
        fixture.show_url(secure.url(kind, L"/x.pdf"));
        fixture.wait_for_failed_worker();
        pump_messages();
        EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
        close();
    }
    EXPECT_EQ(server.requests().size(), before);
}

} // namespace
} // namespace quill::test
