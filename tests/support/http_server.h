// An HTTP server on 127.0.0.1 inside the test program: routes with scripted responses, a record of the
// requests, and every kind of bad response that a client must handle.
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
    std::string target; // as in the request line, query and fragment included
    http_headers headers;

    // The value of the first header with that name (in any case); empty without one.
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
    http_headers headers; // besides those of the framing
    std::string body;
    framing body_framing = framing::content_length;

    // The body is sent in pieces of this size (0: at once), with this delay before each piece but the first.
    std::size_t piece_size = 0;
    std::uint32_t piece_delay_ms = 0;
    // Sends at most this many bytes of the body, then closes the connection gracefully (FIN) although more
    // was announced.
    std::size_t cut_after = static_cast<std::size_t>(-1);
    // Sends this many bytes of the body; the rest follows after http_server::release().
    std::size_t hold_after = static_cast<std::size_t>(-1);

    // The body is sent this many times in a row; its announced length covers all of them. Not with pieces,
    // cutting or holding.
    std::size_t body_repeats = 1;
    // Sent unchanged instead of status line and headers, for malformed responses.
    std::string raw_head;
    // Sends nothing until http_server::release().
    bool hold_head = false;

    // Ends the connection with a reset (RST) after the headers and the body, instead of closing it
    // gracefully.
    bool reset = false;

    static http_response ok(std::string body, std::string content_type = "application/pdf");
    // ok, with the body in pieces.
    static http_response slow(std::string body, std::size_t piece_size, std::uint32_t piece_delay_ms);
    static http_response redirect(std::string location, int status = 302);
    static http_response not_found(std::string body = "<html><body>Not found</body></html>");
};

// Listens from construction to stop(). Handlers run on threads of the server, one per connection; each
// connection serves one request. All methods may be called on any thread.
class http_server
{
public:
    using handler = std::function<http_response(const http_request&)>;

    http_server();
    ~http_server(); // calls stop
    http_server(const http_server&) = delete;
    http_server& operator=(const http_server&) = delete;

    // path: the part of the target before "?" and "#", with its leading slash. A path without a route gets
    // 404 and a small page.
    void route(std::string path, http_response response);
    void route(std::string path, handler answer);

    std::uint16_t port() const;
    // "http://127.0.0.1:PORT" followed by target.
    std::wstring url(std::wstring_view target) const;
    // Every request so far, in order of arrival.
    std::vector<http_request> requests() const;
    // Clears that record, which grows with every request.
    void forget_requests();

    // Continues all held responses, now and from now on.
    void release();
    // Waits until no connection is open; false after timeout_ms.
    bool wait_idle(std::uint32_t timeout_ms) const;
    // Stops listening, aborts every connection, and waits for the server's threads. May be called twice.
    void stop();

    // A URL at a port that nothing listens on.
    static std::wstring refused_url(std::wstring_view target);

private:
    class implementation;
    std::unique_ptr<implementation> implementation_;
};

// A body that is accepted as a PDF: a header line, then filling up to size bytes (at least 16).
std::string pdf_body(std::size_t size);

} // namespace quill::test
