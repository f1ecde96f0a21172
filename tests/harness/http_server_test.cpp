#include "tests/support/balance.h"
#include "tests/support/http_server.h"
#include "tests/support/wait.h"

#include <windows.h>
#include <winsock2.h>

#include <gtest/gtest.h>

namespace quill::test {
namespace {

constexpr std::uint32_t deadline_ms = 10'000;

// The whole response to one request line, up to the end of the connection.
std::string ask(const http_server& server, const std::string& request_line)
{
    const SOCKET client = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(server.port());
    EXPECT_EQ(connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    const std::string request = request_line + " HTTP/1.1\r\nHost: here\r\nX-Mark:  seven\r\n\r\n";
    send(client, request.data(), static_cast<int>(request.size()), 0);
    std::string answer;
    char buffer[1000];
    for (int count; (count = recv(client, buffer, sizeof buffer, 0)) > 0;)
        answer.append(buffer, static_cast<std::size_t>(count));
    closesocket(client);
    return answer;
}

std::string body_of(const std::string& answer)
{
    return answer.substr(answer.find("\r\n\r\n") + 4);
}

TEST(HttpServer, ServesARouteAndRecordsTheRequest)
{
    http_server server;
    server.route("/a.pdf", http_response::ok("%PDF-1.4 x"));
    EXPECT_EQ(
        ask(server, "GET /a.pdf?x=1#p"),
        "HTTP/1.1 200 OK\r\nContent-Type: application/pdf\r\nContent-Length: 10\r\nConnection: close\r\n\r\n"
        "%PDF-1.4 x");
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_EQ(requests[0].target, "/a.pdf?x=1#p");
    EXPECT_EQ(requests[0].header("x-mark"), "seven");
    EXPECT_EQ(requests[0].header("missing"), "");
}

TEST(HttpServer, ServesAnUnknownPathWith404)
{
    http_server server;
    EXPECT_EQ(ask(server, "GET /nothing").substr(0, 22), "HTTP/1.1 404 Not Found");
}

TEST(HttpServer, SendsChunks)
{
    http_server server;
    auto response = http_response::ok("abcdefg");
    response.body_framing = http_response::framing::chunked;
    response.piece_size = 3;
    response.piece_delay_ms = 5;
    server.route("/c", response);
    EXPECT_EQ(body_of(ask(server, "GET /c")), "3\r\nabc\r\n3\r\ndef\r\n1\r\ng\r\n0\r\n\r\n");
}

TEST(HttpServer, CutsABodyShort)
{
    http_server server;
    auto response = http_response::ok("abcdefg");
    response.cut_after = 4;
    server.route("/cut", response);
    const auto answer = ask(server, "GET /cut");
    EXPECT_NE(answer.find("Content-Length: 7\r\n"), std::string::npos);
    EXPECT_EQ(body_of(answer), "abcd");
}

TEST(HttpServer, EndsABodyWithoutLengthByClosing)
{
    http_server server;
    auto response = http_response::ok("abc");
    response.body_framing = http_response::framing::until_close;
    server.route("/u", response);
    const auto answer = ask(server, "GET /u");
    EXPECT_EQ(answer.find("Content-Length"), std::string::npos);
    EXPECT_EQ(body_of(answer), "abc");
}

TEST(HttpServer, HoldsABodyUntilItIsReleased)
{
    http_server server;
    auto response = http_response::ok("abcdefg");
    response.hold_after = 3;
    server.route("/h", response);
    server.release();
    EXPECT_EQ(body_of(ask(server, "GET /h")), "abcdefg");
}

TEST(HttpServer, RefusesConnectionsAtTheRefusedUrlOnly)
{
    EXPECT_EQ(http_server::refused_url(L"/x").substr(0, 17), L"http://127.0.0.1:");
}

TEST(HttpServer, StopsWithABodyHeldBackAndLeaksNothing)
{
    // Contention on the lock of the thread library makes it open a handle once in a process.
    expect_balance([] {
        http_server server;
        auto response = http_response::ok("abcdefg");
        response.hold_after = 3;
        server.route("/h", response);
        const HANDLE asking = CreateThread(
            nullptr, 0,
            [](void* served) -> DWORD {
                return body_of(ask(*static_cast<http_server*>(served), "GET /h")) == "abc" ? 1 : 0;
            },
            &server, 0, nullptr);
        EXPECT_TRUE(wait_until([&] { return !server.requests().empty(); }, deadline_ms));
        EXPECT_FALSE(server.wait_idle(0));
        server.stop();
        server.stop();
        EXPECT_EQ(WaitForSingleObject(asking, deadline_ms), WAIT_OBJECT_0);
        DWORD saw_the_first_piece_only = 0;
        GetExitCodeThread(asking, &saw_the_first_piece_only);
        EXPECT_EQ(saw_the_first_piece_only, 1u);
        CloseHandle(asking);
    });
}

TEST(HttpServer, IsIdleAfterTheLastResponse)
{
    http_server server;
    ask(server, "GET /");
    EXPECT_TRUE(server.wait_idle(deadline_ms));
}

TEST(PdfBody, HasTheSizeAskedFor)
{
    EXPECT_EQ(pdf_body(100'000).size(), 100'000u);
    EXPECT_EQ(pdf_body(100).substr(0, 8), "%PDF-1.4");
}

} // namespace
} // namespace quill::test
