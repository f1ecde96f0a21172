#include "tests/support/http_server.h"

#include "tests/support/http_connection.h"

#include <windows.h>
#include <winsock2.h>

#include <array>
#include <list>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace quill::test {
namespace {

void require(bool condition, const char* what)
{
    if (!condition)
        throw std::runtime_error(std::string("http_server: ") + what + " failed, " +
                                 std::to_string(WSAGetLastError()));
}

// A socket bound to a free port of 127.0.0.1.
SOCKET bind_to_free_port(std::uint16_t& port)
{
    const SOCKET bound = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    require(bound != INVALID_SOCKET, "socket");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    require(bind(bound, reinterpret_cast<const sockaddr*>(&address), size) == 0, "bind");
    require(getsockname(bound, reinterpret_cast<sockaddr*>(&address), &size) == 0, "getsockname");
    port = ntohs(address.sin_port);
    return bound;
}

std::wstring url_of(std::uint16_t port, std::wstring_view target)
{
    return L"http://127.0.0.1:" + std::to_wstring(port) + std::wstring(target);
}

class winsock
{
public:
    winsock()
    {
        WSADATA data;
        require(WSAStartup(MAKEWORD(2, 2), &data) == 0, "WSAStartup");
    }
    ~winsock() { WSACleanup(); }
    winsock(const winsock&) = delete;
    winsock& operator=(const winsock&) = delete;
};

struct manual_event
{
    HANDLE handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    manual_event() = default;
    manual_event(const manual_event&) = delete;
    manual_event& operator=(const manual_event&) = delete;
    ~manual_event() { CloseHandle(handle); }
};

} // namespace

class http_server::implementation
{
public:
    implementation();
    ~implementation();

    void add_route(std::string path, handler answer);
    void stop();
    bool wait_idle(std::uint32_t timeout_ms) const;

    std::uint16_t port = 0;
    manual_event release;
    mutable std::mutex mutex;
    std::vector<http_request> requests; // guarded by mutex

private:
    struct client
    {
        std::thread thread;
        bool done = false;
    };

    void accept_clients();
    void start_client(SOCKET accepted);
    void serve(SOCKET accepted, client& self);
    void join_finished_clients();
    http_response answer(const http_request& request);

    winsock winsock_;
    manual_event stop_;
    manual_event client_done_;
    manual_event idle_;
    std::size_t open_clients_ = 0;          // guarded by mutex
    std::list<client> clients_;             // guarded by mutex
    std::map<std::string, handler> routes_; // guarded by mutex
    SOCKET listener_ = INVALID_SOCKET;
    std::thread acceptor_;
};

http_server::implementation::implementation()
{
    listener_ = bind_to_free_port(port);
    require(listen(listener_, SOMAXCONN) == 0, "listen");
    SetEvent(idle_.handle);
    acceptor_ = std::thread([this] { accept_clients(); });
}

http_server::implementation::~implementation()
{
    stop();
}

void http_server::implementation::stop()
{
    SetEvent(stop_.handle);
    if (acceptor_.joinable())
        acceptor_.join();
}

void http_server::implementation::accept_clients()
{
    const WSAEVENT knocking = WSACreateEvent();
    WSAEventSelect(listener_, knocking, FD_ACCEPT);
    const std::array<HANDLE, 3> handles{stop_.handle, client_done_.handle, knocking};
    // Under many simultaneous connections the event may be signalled for some only, so accept is also polled.
    constexpr DWORD look_again_ms = 20;
    while (WaitForMultipleObjects(handles.size(), handles.data(), FALSE, look_again_ms) != WAIT_OBJECT_0) {
        WSANETWORKEVENTS events{};
        WSAEnumNetworkEvents(listener_, knocking, &events);
        for (;;) {
            const SOCKET accepted = accept(listener_, nullptr, nullptr);
            if (accepted == INVALID_SOCKET)
                break;
            start_client(accepted);
        }
        ResetEvent(client_done_.handle);
        join_finished_clients();
    }
    closesocket(listener_);
    WSACloseEvent(knocking);
    // The stop event ends every client; no other thread accesses the list after accepting has ended.
    for (client& each : clients_)
        each.thread.join();
    clients_.clear();
}

void http_server::implementation::start_client(SOCKET accepted)
{
    const std::lock_guard lock(mutex);
    ++open_clients_;
    ResetEvent(idle_.handle);
    client& added = clients_.emplace_back();
    added.thread = std::thread([this, accepted, &added] { serve(accepted, added); });
}

void http_server::implementation::serve(SOCKET accepted, client& self)
{
    {
        http_connection connection(accepted, stop_.handle, release.handle);
        if (const auto request = connection.read_request())
            connection.write_response(answer(*request), request->method != "HEAD");
    }
    const std::lock_guard lock(mutex);
    self.done = true;
    SetEvent(client_done_.handle);
}

void http_server::implementation::join_finished_clients()
{
    const std::lock_guard lock(mutex);
    clients_.remove_if([this](client& each) {
        if (!each.done)
            return false;
        each.thread.join();
        --open_clients_;
        return true;
    });
    if (open_clients_ == 0)
        SetEvent(idle_.handle);
}

http_response http_server::implementation::answer(const http_request& request)
{
    handler found;
    {
        const std::lock_guard lock(mutex);
        requests.push_back(request);
        const auto route = routes_.find(request.target.substr(0, request.target.find_first_of("?#")));
        if (route != routes_.end())
            found = route->second;
    }
    return found ? found(request) : http_response::not_found();
}

void http_server::implementation::add_route(std::string path, handler answer)
{
    const std::lock_guard lock(mutex);
    routes_[std::move(path)] = std::move(answer);
}

bool http_server::implementation::wait_idle(std::uint32_t timeout_ms) const
{
    return WaitForSingleObject(idle_.handle, timeout_ms) == WAIT_OBJECT_0;
}

std::string http_request::header(std::string_view name) const
{
    for (const auto& [each, value] : headers)
        if (each.size() == name.size() && _strnicmp(each.data(), name.data(), name.size()) == 0)
            return value;
    return {};
}

http_response http_response::ok(std::string body, std::string content_type)
{
    http_response response;
    response.headers = {{"Content-Type", std::move(content_type)}};
    response.body = std::move(body);
    return response;
}

http_response http_response::slow(std::string body, std::size_t piece_size, std::uint32_t piece_delay_ms)
{
    http_response response = ok(std::move(body));
    response.piece_size = piece_size;
    response.piece_delay_ms = piece_delay_ms;
    return response;
}

http_response http_response::redirect(std::string location, int status)
{
    http_response response;
    response.status = status;
    response.headers = {{"Location", std::move(location)}};
    return response;
}

http_response http_response::not_found(std::string body)
{
    auto response = ok(std::move(body), "text/html");
    response.status = 404;
    return response;
}

http_server::http_server() : implementation_(std::make_unique<implementation>()) {}

http_server::~http_server() = default;

void http_server::route(std::string path, http_response response)
{
    implementation_->add_route(std::move(path),
                               [response = std::move(response)](const http_request&) { return response; });
}

void http_server::route(std::string path, handler answer)
{
    implementation_->add_route(std::move(path), std::move(answer));
}

std::uint16_t http_server::port() const
{
    return implementation_->port;
}

std::wstring http_server::url(std::wstring_view target) const
{
    return url_of(port(), target);
}

std::vector<http_request> http_server::requests() const
{
    const std::lock_guard lock(implementation_->mutex);
    return implementation_->requests;
}

void http_server::forget_requests()
{
    const std::lock_guard lock(implementation_->mutex);
    implementation_->requests.clear();
}

void http_server::release()
{
    SetEvent(implementation_->release.handle);
}

bool http_server::wait_idle(std::uint32_t timeout_ms) const
{
    return implementation_->wait_idle(timeout_ms);
}

void http_server::stop()
{
    implementation_->stop();
}

std::wstring http_server::refused_url(std::wstring_view target)
{
    const winsock started;
    std::uint16_t port = 0;
    closesocket(bind_to_free_port(port));
    return url_of(port, target);
}

std::string pdf_body(std::size_t size)
{
    std::string body = "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n";
    constexpr std::string_view filling = "% filling filling filling filling filling filling filling fil\n";
    while (body.size() < size)
        body += filling.substr(0, size - body.size());
    return body;
}

} // namespace quill::test
