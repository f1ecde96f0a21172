// One connection of the test server: non-blocking socket calls that a stop event interrupts.
#pragma once

#include "tests/support/http_server.h"

#include <windows.h>
#include <winsock2.h>

#include <optional>
#include <string>
#include <string_view>

namespace quill::test {

// Owns the socket. The connection is closed gracefully unless unread bytes are left or the response resets
// it.
class http_connection
{
public:
    // stop and release: manual-reset events that outlive the connection.
    http_connection(SOCKET socket, HANDLE stop, HANDLE release);
    ~http_connection();
    http_connection(const http_connection&) = delete;
    http_connection& operator=(const http_connection&) = delete;

    // No value if the client disconnected or the server stops.
    std::optional<http_request> read_request();
    void write_response(const http_response& response, bool with_body);

private:
    bool wait_for_socket();
    bool pause(std::uint32_t timeout_ms) const;
    bool wait_for_release() const;
    bool send_all(std::string_view bytes);
    bool send_body(const http_response& response);
    bool send_piece(std::string_view piece, http_response::framing framing);

    SOCKET socket_;
    WSAEVENT ready_;
    HANDLE stop_;
    HANDLE release_;
    bool resets_ = false;
};

} // namespace quill::test
