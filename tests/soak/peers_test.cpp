// Servers that are slow, send wrong lengths, never end or never respond, on both download paths: the UI
// thread keeps dispatching messages, closing ends with the worker, only PDFs are shown, nothing is leaked.
#include "tests/soak/document_soak_fixture.h"
#include "tests/soak/soak_settings.h"
#include "tests/support/module_threads.h"
#include "tests/support/process_resources.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace quill::soak {
namespace {

using test::http_request;
using test::http_response;

// The pauses are printed; a machine under load makes them longer than the module does.
constexpr double longest_pause_ms = 400;
constexpr ULONGLONG longest_closing_ms = 5'000;
// The closing window signals the worker every 100 ms; so does a server of one byte a second.
constexpr ULONGLONG longest_wait_for_a_silent_server_ms = 1'200;
constexpr std::size_t megabyte = std::size_t{1} << 20;

std::string announcing(const std::string& length)
{
    return "HTTP/1.1 200 OK\r\nContent-Type: application/pdf\r\nContent-Length: " + length +
           "\r\nConnection: close\r\n\r\n";
}

double now_ms()
{
    LARGE_INTEGER count{};
    LARGE_INTEGER frequency{};
    QueryPerformanceCounter(&count);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(count.QuadPart) * 1'000 / static_cast<double>(frequency.QuadPart);
}

class HostilePeer : public testing::TestWithParam<download_path>
{
protected:
    HostilePeer() { fixture.use(GetParam()); }
    ~HostilePeer() override
    {
        std::printf("  longest pause of the user interface %.1f ms, closing %llu ms\n", pause_ms, closing_ms);
        EXPECT_LT(pause_ms, longest_pause_ms);
    }

    void open(const wchar_t* target = L"/x.pdf")
    {
        opened_before = viewers.opened();
        fixture.server.forget_requests();
        document = std::make_unique<hosted_document>(fixture);
        document->load_url(fixture.server.url(target));
        EXPECT_EQ(document->do_verb(OLEIVERB_SHOW), S_OK);
    }
    // Dispatches messages as a browser does until the condition holds; records the longest pause between
    // messages.
    template <class Condition>
    bool run_until(const Condition& condition, DWORD deadline_ms)
    {
        const ULONGLONG end = GetTickCount64() + deadline_ms;
        while (!condition()) {
            if (GetTickCount64() >= end)
                return false;
            MsgWaitForMultipleObjectsEx(0, nullptr, 5, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
            const double begin = now_ms();
            test::pump_messages();
            pause_ms = std::max(pause_ms, now_ms() - begin);
        }
        return true;
    }
    void dispatch_for(DWORD milliseconds)
    {
        run_until([] { return false; }, milliseconds);
    }
    // The worker and all threads that the system created for it have ended.
    bool dispatch_until_fetched(DWORD deadline_ms)
    {
        return run_until([this] { return viewers.opened() > opened_before || worker_has_ended(); },
                         deadline_ms);
    }
    bool worker_has_ended() const
    {
        return !fixture.server.requests().empty() && test::threads_of(fixture.module.handle()) == 0;
    }
    // Every file that the viewer was called to open begins as a PDF does.
    void expect_pdfs_only() const
    {
        for (const auto& call : viewers.script.received) {
            if (call.id != test::viewer_open)
                continue;
            const std::wstring path = call.arguments.at(0).text;
            const std::string content = test::read_file(path).value_or("");
            EXPECT_NE(content.substr(0, 1'024).find("%PDF-"), std::string::npos) << content.substr(0, 40);
        }
    }
    void close()
    {
        const std::size_t opened = viewers.opened();
        expect_pdfs_only();
        const ULONGLONG begin = GetTickCount64();
        document->close_as_navigating_away();
        document.reset();
        closing_ms = GetTickCount64() - begin;
        test::pump_messages();
        EXPECT_EQ(viewers.opened(), opened);
        EXPECT_EQ(fixture.module.can_unload_now(), S_OK);
    }
    // Closes the document; a worker that still waits for the server is released after a while. Through urlmon
    // there is none.
    template <class Release>
    void close_while(const Release& release)
    {
        constexpr DWORD patience_ms = 1'500;
        const HANDLE closed = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        std::thread patience([&] {
            WaitForSingleObject(closed, patience_ms);
            release();
        });
        close();
        SetEvent(closed);
        patience.join();
        CloseHandle(closed);
        EXPECT_LT(closing_ms, GetParam() == download_path::urlmon ? longest_wait_for_a_silent_server_ms
                                                                  : patience_ms + longest_closing_ms);
    }
    // Fetches to the end and closes; returns how often a document was shown.
    std::size_t shown_after(http_response response, DWORD deadline_ms = 30'000)
    {
        fixture.server.route("/x.pdf", std::move(response));
        open();
        EXPECT_TRUE(dispatch_until_fetched(deadline_ms));
        close();
        EXPECT_LT(closing_ms, longest_closing_ms);
        return viewers.opened();
    }

    // The same for responses that some systems do not accept and keep waiting after.
    std::size_t shown_soon_after(http_response response)
    {
        fixture.server.route("/x.pdf", std::move(response));
        open();
        dispatch_until_fetched(1'000);
        close();
        EXPECT_LT(closing_ms, longest_closing_ms);
        return viewers.opened();
    }

    document_soak_fixture fixture;
    viewer_store viewers;
    std::unique_ptr<hosted_document> document;
    std::size_t opened_before = 0; // by the documents before this one
    double pause_ms = 0;
    ULONGLONG closing_ms = 0;
};

TEST_P(HostilePeer, SendsOneByteASecond)
{
    auto slow = http_response::slow(test::pdf_body(20'000), 1, 1'000);
    fixture.server.route("/x.pdf", slow);
    open();
    dispatch_for(2'500);
    close();
    EXPECT_LT(closing_ms, longest_wait_for_a_silent_server_ms);
    EXPECT_EQ(viewers.opened(), 0u);
}

// The worker waits in the system's call, and closing waits for the worker, as long as that call takes.
TEST_P(HostilePeer, NeverResponds)
{
    http_response silent = http_response::ok(test::pdf_body(20'000));
    silent.hold_head = true;
    fixture.server.route("/x.pdf", silent);
    open();
    EXPECT_TRUE(run_until([this] { return !fixture.server.requests().empty(); }, 10'000));
    dispatch_for(1'000);
    close_while([this] { fixture.server.release(); });
    EXPECT_EQ(viewers.opened(), 0u);
}

TEST_P(HostilePeer, SendsLessThanItAnnounces)
{
    http_response lying = http_response::ok(test::pdf_body(20'000));
    lying.raw_head = announcing("1000000");
    EXPECT_LE(shown_after(lying), 1u); // the file begins as a PDF
    const std::size_t before = viewers.opened();
    lying.body = "<html>" + std::string(20'000, ' ');
    EXPECT_EQ(shown_after(lying), before) << "a response that is no PDF was shown";
}

TEST_P(HostilePeer, SendsMoreThanItAnnounces)
{
    http_response lying = http_response::ok(test::pdf_body(20'000));
    lying.raw_head = announcing("20");
    EXPECT_LE(shown_after(lying), 1u);
    lying.raw_head = announcing("3");
    const std::size_t before = viewers.opened();
    lying.body = "not" + test::pdf_body(20'000); // some systems read on, some stop at the announced length
    EXPECT_LE(shown_after(lying), before + 1);
}

TEST_P(HostilePeer, SendsAnInvalidLength)
{
    for (const char* length : {"-1", "99999999999999999999", "18446744073709551615", "4294967296", "x", ""}) {
        SCOPED_TRACE(length);
        http_response lying = http_response::ok("<html>not a PDF</html>");
        lying.raw_head = announcing(length);
        fixture.server.route("/x.pdf", lying);
        open();
        // Some systems wait for the announced data as long as the connection is open.
        dispatch_until_fetched(300);
        close();
        EXPECT_LT(closing_ms, longest_closing_ms);
        EXPECT_EQ(viewers.opened(), 0u);
    }
}

TEST_P(HostilePeer, SendsAGigabyteThatIsNoPdf)
{
    http_response large = http_response::ok(std::string(megabyte, 'x'));
    large.body_repeats = static_cast<std::size_t>(number_setting(L"QUILL_SOAK_MEGABYTES", 2));
    EXPECT_EQ(shown_after(large, 1'800'000), 0u);
}

TEST_P(HostilePeer, IsClosedInTheMiddleOfAGigabyte)
{
    http_response large = http_response::ok(test::pdf_body(megabyte));
    large.body_repeats = 1'024;
    // Some systems read received data to its end before they close a connection. The server pauses between
    // its pieces, long enough for a reader on a machine under load to keep up.
    large.piece_size = megabyte / 4;
    large.piece_delay_ms = 500;
    fixture.server.route("/x.pdf", large);
    open();
    EXPECT_TRUE(run_until([this] { return !fixture.server.requests().empty(); }, 10'000));
    dispatch_for(1'200); // into the third piece
    close();
    EXPECT_LT(closing_ms, longest_closing_ms);
    EXPECT_EQ(viewers.opened(), 0u);
}

// Where the system does not limit redirections the worker waits in its call until the server stops.
TEST_P(HostilePeer, RedirectsEndlessly)
{
    struct state
    {
        std::atomic<bool> is_tired = false;
        std::atomic<int> number = 0;
    };
    const auto server = std::make_shared<state>(); // requests may arrive after the end of the test
    fixture.server.route("/x.pdf", [server](const http_request&) {
        return server->is_tired ? http_response::not_found()
                                : http_response::redirect("/x.pdf?" + std::to_string(++server->number));
    });
    open();
    EXPECT_TRUE(run_until([&] { return server->number > 3; }, 10'000));
    dispatch_for(500);
    close_while([&] { server->is_tired = true; });
    EXPECT_EQ(viewers.opened(), 0u);
}

TEST_P(HostilePeer, SendsHeadersOfAMegabyte)
{
    http_response talkative = http_response::ok(test::pdf_body(20'000));
    for (int i = 0; i < 128; ++i)
        talkative.headers.emplace_back("X-Filling-" + std::to_string(i), std::string(megabyte / 128, 'x'));
    EXPECT_LE(shown_after(talkative, 60'000), 1u);
}

TEST_P(HostilePeer, SendsOneHeaderOfAMegabyte)
{
    http_response talkative = http_response::ok("<html>not a PDF</html>");
    talkative.headers.emplace_back("X-Filling", std::string(megabyte, 'x'));
    EXPECT_EQ(shown_after(talkative, 60'000), 0u);
}

TEST_P(HostilePeer, SendsNothingAndCloses)
{
    http_response empty;
    empty.body_framing = http_response::framing::until_close;
    EXPECT_EQ(shown_soon_after(empty), 0u);
    empty.raw_head = "\r\n\r\n";
    EXPECT_EQ(shown_soon_after(empty), 0u);
    empty.raw_head = "HTTP/9.9 -7 \r\n";
    EXPECT_EQ(shown_soon_after(empty), 0u);
}

// A head as it is sent, and the body; a file that begins as a PDF may be shown.
struct unusual_response
{
    const char* what;
    const char* head;
    std::string body;
    std::size_t most_shown;
};

std::vector<unusual_response> unusual_responses()
{
    const std::string pdf = test::pdf_body(600);
    const std::string page = "<html>not a PDF</html>";
    return {
        {"a password is required", "401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"r\"", page, 0},
        {"a password is required, by an unknown scheme",
         "401 Unauthorized\r\nWWW-Authenticate: \x01\xff =,\"", page, 0},
        {"a proxy requires a password", "407 Proxy\r\nProxy-Authenticate: NTLM TlRMTVNTUAAC", page, 0},
        {"no content", "204 No Content", "", 0},
        {"not modified", "304 Not Modified", "", 0},
        {"a part", "206 Partial Content\r\nContent-Range: bytes 500-1099/9", pdf, 1},
        {"an error with a PDF", "500 Internal Server Error", pdf, 1},
        {"100 Continue, twice", "100 Continue\r\n\r\nHTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK", pdf, 1},
        {"invalid chunks", "200 OK\r\nTransfer-Encoding: chunked", "zz\r\n" + page, 0},
        {"a chunk of 2^64 - 1 bytes", "200 OK\r\nTransfer-Encoding: chunked", "ffffffffffffffff\r\n" + page,
         0},
        {"chunks without an end", "200 OK\r\nTransfer-Encoding: chunked", "5\r\n<html\r\n", 0},
        {"not compressed as announced", "200 OK\r\nContent-Encoding: gzip", page, 0},
        {"compressed by an unknown method", "200 OK\r\nContent-Encoding: x-none, gzip, gzip", page, 0},
        {"a redirection to an empty URL", "302 Found\r\nLocation: ", page, 0},
        {"a redirection without a URL", "302 Found", page, 0},
        {"a redirection to a script", "302 Found\r\nLocation: javascript:alert(1)", page, 0},
        {"a redirection to a file", "302 Found\r\nLocation: file:///c:/windows/win.ini", page, 0},
        {"a redirection to a closed port", "302 Found\r\nLocation: http://127.0.0.1:1/x.pdf", page, 0},
        {"a file name with parent folders",
         "200 OK\r\nContent-Disposition: attachment; filename=\"..\\..\\x.exe\"", page, 0},
        {"line feeds only", "200 OK\nContent-Type: application/pdf\n\n\n", page, 0},
        {"an endless refresh", "200 OK\r\nRefresh: 0; url=/x.pdf", page, 0},
    };
}

TEST_P(HostilePeer, SendsUnusualResponses)
{
    for (const unusual_response& each : unusual_responses()) {
        SCOPED_TRACE(each.what);
        http_response answer;
        answer.raw_head = "HTTP/1.1 " + std::string(each.head) + "\r\n\r\n";
        answer.body = each.body;
        const std::size_t before = viewers.opened();
        EXPECT_LE(shown_soon_after(answer), before + each.most_shown);
        EXPECT_FALSE(fixture.server.requests().empty());
    }
}

// The system's own threads may wait for the server after document and module are gone, and continue then.
TEST(SilentPeer, RespondsAfterTheModuleIsUnloaded)
{
    http_response silent = http_response::ok(test::pdf_body(20'000));
    silent.hold_head = true;
    test::http_server server;
    server.route("/x.pdf", silent);
    const auto threads_before = test::process_resources::now().threads;
    {
        document_soak_fixture fixture;
        fixture.use(download_path::urlmon);
        viewer_store viewers;
        hosted_document document(fixture);
        document.load_url(server.url(L"/x.pdf"));
        EXPECT_EQ(document.do_verb(OLEIVERB_SHOW), S_OK);
        EXPECT_TRUE(test::wait_until([&] { return !server.requests().empty(); }));
        document.close_as_navigating_away();
    }
    EXPECT_GT(test::process_resources::now().threads, threads_before)
        << "no thread is waiting for the server";
    EXPECT_NE(GetModuleHandleW(L"wininet.dll"), nullptr) << "the waiting threads belong to it";
    EXPECT_NE(GetModuleHandleW(L"urlmon.dll"), nullptr);
    server.stop();
    EXPECT_TRUE(test::wait_until([&] { return test::process_resources::now().threads <= threads_before; }));
}

INSTANTIATE_TEST_SUITE_P(Download, HostilePeer,
                         testing::Values(download_path::urlmon, download_path::wininet),
                         [](const testing::TestParamInfo<download_path>& path) {
                             return path.param == download_path::urlmon ? "Urlmon" : "WinINet";
                         });

} // namespace
} // namespace quill::soak
