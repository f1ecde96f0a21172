// An HTTP server on 127.0.0.1 inside the test program: routes with scripted answers, a record of what
// was asked for, and every way of answering badly that a client has to survive.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quill::test {

using http_headers = std::vector<std::pair<std::string, std::string>>;

struct http_request
{
    std::string method;
    std::string target; // as it stood in the request line, query and fragment included
    http_headers headers;

    // The value of the first header of that name (any case); empty without one.
    std::string header(std::string_view name) const;
};

struct http_response
{
    enum class framing
    {
        content_length,
        chunked,
        until_close
    };

    int status = 200;
    http_headers headers; // besides those that the framing needs
    std::string body;
    framing body_framing = framing::content_length;

    // The body goes out in pieces of this many bytes (0: all at once), the server waiting this long
    // before each piece but the first.
    std::size_t piece_size = 0;
    std::uint32_t piece_delay_ms = 0;
    // Sends no more than this many bytes of the body, then closes the connection in good order (FIN)
    // although more was announced.
    std::size_t cut_after = static_cast<std::size_t>(-1);
    // Sends this many bytes of the body, then holds the rest back until http_server::release().
    std::size_t hold_after = static_cast<std::size_t>(-1);

    // The body goes out this many times in a row; its length is announced for all of them. Without pieces,
    // cutting and holding.
    std::size_t body_repeats = 1;
    // Sent as it stands in place of status line and headers: for servers that lie.
    std::string raw_head;
    // Says nothing at all until http_server::release().
    bool hold_head = false;

    static http_response ok(std::string body, std::string content_type = "application/pdf");
    static http_response redirect(std::string location, int status = 302);
    static http_response not_found(std::string body = "<html><body>Not found</body></html>");
};

// Listens from construction to stop(). Handlers run on the server's threads, one connection each; every
// connection serves one request. All methods may be called from any thread.
class http_server
{
public:
    using handler = std::function<http_response(const http_request&)>;

    http_server();
    ~http_server(); // stops
    http_server(const http_server&) = delete;
    http_server& operator=(const http_server&) = delete;

    // path: the part of the target before "?" and "#", with its leading slash. A path without a route
    // is answered with 404 and a small page.
    void route(std::string path, http_response response);
    void route(std::string path, handler answer);

    std::uint16_t port() const;
    // "http://127.0.0.1:PORT" followed by target.
    std::wstring url(std::wstring_view target) const;
    // Every request so far, in order of arrival.
    std::vector<http_request> requests() const;
    // Empties that record, which otherwise grows with every request.
    void forget_requests();

    // Lets answers with hold_after go on, now and from now on.
    void release();
    // Waits until no connection is open; false after timeout_ms.
    bool wait_idle(std::uint32_t timeout_ms) const;
    // Ends listening, breaks off every connection, and waits for the server's threads. Harmless twice.
    void stop();

    // A URL at a port where nobody listens.
    static std::wstring refused_url(std::wstring_view target);

private:
    class implementation;
    std::unique_ptr<implementation> implementation_;
};

// A body that passes for a PDF: a header line, then filling up to size bytes (at least 16).
std::string pdf_body(std::size_t size);

} // namespace quill::test
