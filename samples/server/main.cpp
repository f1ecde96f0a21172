// sample_server.exe FILE...: serves only the named files over HTTP on 127.0.0.1 until it is terminated.
// Prints "serving URL" for each file when it listens, then a line for every request.
#include "samples/server/http_text.h"

#include <windows.h>
#include <winsock2.h>

#include <cstdio>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr DWORD transfer_timeout_ms = 10'000; // for a client that stops in the middle of a transfer
constexpr std::size_t longest_head = 16 * 1024;

std::string to_utf8(const std::wstring& text)
{
    const int length = static_cast<int>(text.size());
    std::string bytes(text.size() * 3, '\0');
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(
        CP_UTF8, 0, text.data(), length, bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr)));
    return bytes;
}

// Maps the name in the URL to the file's path.
using served_files = std::map<std::string, std::wstring>;

class connection
{
public:
    explicit connection(SOCKET socket) : socket_(socket)
    {
        const auto* timeout = reinterpret_cast<const char*>(&transfer_timeout_ms);
        setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, timeout, sizeof(transfer_timeout_ms));
        setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, timeout, sizeof(transfer_timeout_ms));
    }
    connection(const connection&) = delete;
    connection& operator=(const connection&) = delete;
    ~connection()
    {
        // Closing a socket with unread bytes resets the connection, which may discard the end of the
        // response.
        shutdown(socket_, SD_SEND);
        char rest[512];
        while (recv(socket_, rest, sizeof(rest), 0) > 0) {
        }
        closesocket(socket_);
    }

    std::string read_head()
    {
        std::string head;
        while (head.find("\r\n\r\n") == std::string::npos && head.size() < longest_head) {
            char bytes[2048];
            const int count = recv(socket_, bytes, sizeof(bytes), 0);
            if (count <= 0)
                return {};
            head.append(bytes, static_cast<std::size_t>(count));
        }
        return head;
    }

    bool send_all(const char* bytes, std::size_t length)
    {
        constexpr std::size_t piece = 64 * 1024;
        while (length > 0) {
            const int count = send(socket_, bytes, static_cast<int>(length < piece ? length : piece), 0);
            if (count <= 0)
                return false;
            bytes += count;
            length -= static_cast<std::size_t>(count);
        }
        return true;
    }

private:
    SOCKET socket_;
};

bool read_file(const std::wstring& path, std::string& content)
{
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    LARGE_INTEGER size = {};
    constexpr LONGLONG largest = LONGLONG{1} << 30;
    bool read = GetFileSizeEx(file, &size) && size.QuadPart <= largest;
    if (read) {
        content.resize(static_cast<std::size_t>(size.QuadPart));
        DWORD count = 0;
        read = ReadFile(file, content.data(), static_cast<DWORD>(content.size()), &count, nullptr) != FALSE &&
               count == content.size();
    }
    CloseHandle(file);
    return read;
}

void report(const std::string& what, int status, std::size_t length)
{
    static std::mutex one_line;
    const std::lock_guard guard(one_line);
    std::printf("sample_server: %s: %d, %zu bytes\n", what.c_str(), status, length);
    std::fflush(stdout);
}

void respond(connection& client, const served_files& files)
{
    const std::string head = client.read_head();
    if (head.empty())
        return;
    const auto request = quill::parse_request(head);
    int status = 400;
    std::string body;
    std::string_view type = "text/plain";
    if (request) {
        const auto file = files.find(request->name);
        if (request->method != "GET" && request->method != "HEAD") {
            status = 405;
        } else if (file == files.end() || !read_file(file->second, body)) {
            status = 404;
            body.clear();
        } else {
            status = 200;
            type = quill::content_type_of(request->name);
        }
    }
    report(request ? request->method + " /" + request->name : "not a request", status, body.size());
    const std::string response = quill::response_head(status, type, body.size());
    if (client.send_all(response.data(), response.size()) && request && request->method != "HEAD")
        client.send_all(body.data(), body.size());
}

void serve(SOCKET listener, const served_files& files)
{
    for (;;) {
        const SOCKET socket = accept(listener, nullptr, nullptr);
        if (socket == INVALID_SOCKET)
            return;
        std::thread([socket, &files] {
            try {
                connection client(socket);
                respond(client, files);
            } catch (const std::exception& failure) {
                std::fprintf(stderr, "sample_server: %s\n", failure.what());
            }
        }).detach();
    }
}

// Listens on a free port of 127.0.0.1.
SOCKET listen_on_loopback(unsigned short& port)
{
    const SOCKET listener = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int length = sizeof(address);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (listener == INVALID_SOCKET || bind(listener, generic, length) != 0 ||
        listen(listener, SOMAXCONN) != 0 || getsockname(listener, generic, &length) != 0)
        return INVALID_SOCKET;
    port = ntohs(address.sin_port);
    return listener;
}

} // namespace

int wmain(int count, wchar_t** values)
{
    served_files files;
    std::vector<std::string> names;
    for (int i = 1; i < count; ++i) {
        const std::wstring path = values[i];
        const std::string name = to_utf8(path.substr(path.find_last_of(L"/\\") + 1));
        if (files.emplace(name, path).second)
            names.push_back(name);
    }
    if (files.empty()) {
        std::fputs("usage: sample_server FILE...\n", stderr);
        return 2;
    }
    WSADATA sockets = {};
    unsigned short port = 0;
    const int failure = WSAStartup(MAKEWORD(2, 2), &sockets);
    const SOCKET listener = failure == 0 ? listen_on_loopback(port) : INVALID_SOCKET;
    if (listener == INVALID_SOCKET) {
        std::fputs("sample_server: cannot listen on 127.0.0.1\n", stderr);
        return 1;
    }
    for (const std::string& name : names)
        std::printf("serving http://127.0.0.1:%u/%s\n", port, quill::encode_path(name).c_str());
    std::fflush(stdout);
    serve(listener, files);
    return 1;
}
