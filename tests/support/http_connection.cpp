#include "tests/support/http_connection.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace quill::test {
namespace {

constexpr std::size_t largest_request = 1 << 20;

const char* reason_of(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 301:
        return "Moved Permanently";
    case 302:
        return "Found";
    case 404:
        return "Not Found";
    case 500:
        return "Internal Server Error";
    default:
        return "Status";
    }
}

std::string head_of(const http_response& response)
{
    if (!response.raw_head.empty())
        return response.raw_head;
    std::string head =
        "HTTP/1.1 " + std::to_string(response.status) + " " + reason_of(response.status) + "\r\n";
    for (const auto& [name, value] : response.headers)
        head += name + ": " + value + "\r\n";
    if (response.body_framing == http_response::framing::content_length)
        head += "Content-Length: " + std::to_string(response.body.size() * response.body_repeats) + "\r\n";
    if (response.body_framing == http_response::framing::chunked)
        head += "Transfer-Encoding: chunked\r\n";
    return head + "Connection: close\r\n\r\n";
}

http_request parse_request(std::string_view head)
{
    http_request request;
    const auto take_line = [&head] {
        const auto line = head.substr(0, head.find("\r\n"));
        head.remove_prefix(std::min(head.size(), line.size() + 2));
        return line;
    };
    const auto first = take_line();
    const auto blank = first.find(' ');
    const auto last_blank = first.rfind(' ');
    if (blank != std::string_view::npos && last_blank > blank) {
        request.method = first.substr(0, blank);
        request.target = first.substr(blank + 1, last_blank - blank - 1);
    }
    for (auto line = take_line(); !line.empty(); line = take_line()) {
        const auto colon = line.find(':');
        if (colon == std::string_view::npos)
            continue;
        auto value = line.substr(colon + 1);
        value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
        request.headers.emplace_back(line.substr(0, colon), value);
    }
    return request;
}

} // namespace

http_connection::http_connection(SOCKET socket, HANDLE stop, HANDLE release)
    : socket_(socket), ready_(WSACreateEvent()), stop_(stop), release_(release)
{
    WSAEventSelect(socket_, ready_, FD_READ | FD_WRITE | FD_CLOSE);
}

http_connection::~http_connection()
{
    if (resets_) {
        const linger abort{1, 0};
        setsockopt(socket_, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&abort), sizeof abort);
    } else {
        shutdown(socket_, SD_SEND);
    }
    closesocket(socket_);
    WSACloseEvent(ready_);
}

bool http_connection::wait_for_socket()
{
    const std::array<HANDLE, 2> handles{stop_, ready_};
    if (WaitForMultipleObjects(handles.size(), handles.data(), FALSE, INFINITE) != WAIT_OBJECT_0 + 1)
        return false;
    WSANETWORKEVENTS events{};
    return WSAEnumNetworkEvents(socket_, ready_, &events) == 0;
}

bool http_connection::pause(std::uint32_t timeout_ms) const
{
    return WaitForSingleObject(stop_, timeout_ms) == WAIT_TIMEOUT;
}

bool http_connection::wait_for_release() const
{
    const std::array<HANDLE, 2> handles{stop_, release_};
    return WaitForMultipleObjects(handles.size(), handles.data(), FALSE, INFINITE) == WAIT_OBJECT_0 + 1;
}

std::optional<http_request> http_connection::read_request()
{
    std::string received;
    std::array<char, 4096> buffer;
    while (received.find("\r\n\r\n") == std::string::npos) {
        const int count = recv(socket_, buffer.data(), static_cast<int>(buffer.size()), 0);
        if (count > 0)
            received.append(buffer.data(), static_cast<std::size_t>(count));
        else if (count == 0 || WSAGetLastError() != WSAEWOULDBLOCK || !wait_for_socket())
            return std::nullopt;
        if (received.size() > largest_request)
            return std::nullopt;
    }
    return parse_request(received);
}

void http_connection::write_response(const http_response& response, bool with_body)
{
    if (response.hold_head && !wait_for_release())
        return;
    if (!send_all(head_of(response)) || !with_body)
        return;
    for (std::size_t time = 0; time < response.body_repeats && send_body(response); ++time) {
    }
    resets_ = response.reset;
}

bool http_connection::send_all(std::string_view bytes)
{
    constexpr std::size_t largest_send = 1 << 16;
    while (!bytes.empty()) {
        const int count =
            send(socket_, bytes.data(), static_cast<int>(std::min(bytes.size(), largest_send)), 0);
        if (count >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (WSAGetLastError() != WSAEWOULDBLOCK || !wait_for_socket())
            return false;
    }
    return true;
}

bool http_connection::send_piece(std::string_view piece, http_response::framing framing)
{
    if (framing != http_response::framing::chunked)
        return send_all(piece);
    if (piece.empty())
        return true;
    std::array<char, 32> size_line;
    std::snprintf(size_line.data(), size_line.size(), "%zx\r\n", piece.size());
    return send_all(size_line.data()) && send_all(piece) && send_all("\r\n");
}

bool http_connection::send_body(const http_response& response)
{
    const std::string_view body = response.body;
    const std::size_t end = std::min(response.cut_after, body.size());
    std::size_t position = 0;
    while (position < end || (position == response.hold_after && position == end)) {
        if (position == response.hold_after && !wait_for_release())
            return false;
        if (position == end)
            break;
        if (position > 0 && response.piece_delay_ms > 0 && !pause(response.piece_delay_ms))
            return false;
        std::size_t size = end - position;
        if (response.piece_size > 0)
            size = std::min(size, response.piece_size);
        if (position < response.hold_after)
            size = std::min(size, response.hold_after - position);
        if (!send_piece(body.substr(position, size), response.body_framing))
            return false;
        position += size;
    }
    if (end < body.size() || response.body_framing != http_response::framing::chunked)
        return true;
    return send_all("0\r\n\r\n");
}

} // namespace quill::test
