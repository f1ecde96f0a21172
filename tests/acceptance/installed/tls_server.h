// A TLS server on 127.0.0.1 with an untrusted certificate. It uses SChannel, because the kit runs on machines
// that have no other TLS library.
#pragma once

#include "tests/acceptance/installed/untrusted_certificate.h"

#include <winsock2.h>

#define SECURITY_WIN32
#include <security.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

namespace quill::test {

// Serves one connection after the other on a thread of its own: a handshake, one request, a small response.
class tls_server
{
public:
    tls_server();
    ~tls_server();
    tls_server(const tls_server&) = delete;
    tls_server& operator=(const tls_server&) = delete;

    // Why the server cannot serve; empty if nothing is known to be wrong. A handshake may show more.
    std::string error() const;
    std::uint16_t port() const { return port_; }
    // Connections of clients, and how many of them sent a request after the handshake.
    int handshakes() const { return handshakes_; }
    int requests() const { return requests_; }

private:
    bool listen();
    bool acquire_credentials();
    void serve();
    void serve(SOCKET client);

    untrusted_certificate certificate_;
    CredHandle credentials_{};
    bool has_credentials_ = false;
    SOCKET listener_ = INVALID_SOCKET;
    std::uint16_t port_ = 0;
    std::string error_;
    std::atomic<SECURITY_STATUS> unsupported_ = SEC_E_OK;
    std::atomic<int> handshakes_ = 0;
    std::atomic<int> requests_ = 0;
    std::atomic<bool> ends_ = false;
    std::thread thread_;
};

} // namespace quill::test
