#include "samples/server/http_text.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

TEST(SampleRequest, IsParsedFromTheFirstLine)
{
    const auto request = parse_request("GET /a%20b%23%C3%BC.pdf?x=1#page=2 HTTP/1.1\r\nHost: h\r\n\r\n");
    ASSERT_TRUE(request.has_value());
    EXPECT_EQ(request->method, "GET");
    EXPECT_EQ(request->name, "a b#\xC3\xBC.pdf");
}

TEST(SampleRequest, KeepsSignsThatAreNoEncoding)
{
    EXPECT_EQ(parse_request("HEAD /100%.pdf HTTP/1.0\r\n\r\n")->name, "100%.pdf");
    EXPECT_EQ(parse_request("GET /a%2 HTTP/1.0\r\n\r\n")->name, "a%2");
    EXPECT_EQ(parse_request("GET /a%zz HTTP/1.0\r\n\r\n")->name, "a%zz");
    EXPECT_EQ(parse_request("GET / HTTP/1.1\r\n\r\n")->name, "");
    EXPECT_EQ(parse_request("GET /#x HTTP/1.1\r\n\r\n")->name, "");
}

TEST(SampleRequest, IsEmptyForAnInvalidRequest)
{
    for (const char* head : {"", "\r\n\r\n", "GET", "GET /x", "GET x HTTP/1.1\r\n\r\n",
                             "GET http://h/ HTTP/1.1\r\n", "GET  HTTP/1.1\r\n\r\n", "GET /x FTP/1.1\r\n\r\n"})
        EXPECT_FALSE(parse_request(head).has_value()) << head;
}

TEST(SamplePath, RoundTripsThroughItsEncoding)
{
    EXPECT_EQ(encode_path("plan-1_(a).pdf"), "plan-1_(a).pdf");
    const std::string odd = "a b#?%&+\xC3\xBC.pdf";
    EXPECT_EQ(encode_path(odd), "a%20b%23%3F%25%26%2B%C3%BC.pdf");
    EXPECT_EQ(parse_request("GET /" + encode_path(odd) + " HTTP/1.1\r\n\r\n")->name, odd);
}

TEST(SampleAnswer, DescribesTheBody)
{
    EXPECT_EQ(response_head(200, "application/pdf", 17),
              "HTTP/1.1 200 OK\r\nContent-Type: application/pdf\r\nContent-Length: 17\r\n"
              "Cache-Control: no-cache\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(response_head(404, "text/plain", 0).substr(0, 24), "HTTP/1.1 404 Not Found\r\n");
}

TEST(SampleType, FollowsTheExtension)
{
    EXPECT_EQ(content_type_of("a.pdf"), "application/pdf");
    EXPECT_EQ(content_type_of("a.b.PDF"), "application/pdf");
    EXPECT_EQ(content_type_of("page.html"), "text/html");
    EXPECT_EQ(content_type_of("pdf"), "application/octet-stream");
    EXPECT_EQ(content_type_of(""), "application/octet-stream");
}

} // namespace
} // namespace quill::test
