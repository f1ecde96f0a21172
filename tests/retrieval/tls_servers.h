// HTTPS in front of the HTTP server of a test: tls_servers.py, run as a native program.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace quill::test {

// Runs from construction to destruction. One connection for each request.
class tls_servers
{
public:
    // http_port: the server that requests are forwarded to.
    explicit tls_servers(std::uint16_t http_port);
    ~tls_servers();
    tls_servers(const tls_servers&) = delete;
    tls_servers& operator=(const tls_servers&) = delete;

    // "https://localhost:PORT" followed by target. kind, issued by the root: "trusted", "expired",
    // "wrong_name"; self-signed: "self_signed", "all_faults"; and "not_tls" for a server without TLS.
    std::wstring url(const std::string& kind, const std::wstring& target) const;

    // The issuer's certificate.
    const std::vector<std::uint8_t>& root() const { return root_; }

private:
    void read_announcement(const std::string& text);

    std::map<std::string, std::uint16_t> ports_;
    std::vector<std::uint8_t> root_;
    std::uintptr_t control_;
};

// Makes the system trust an issuer in its scope.
class trusted_root
{
public:
    explicit trusted_root(const std::vector<std::uint8_t>& certificate);
    ~trusted_root();
    trusted_root(const trusted_root&) = delete;
    trusted_root& operator=(const trusted_root&) = delete;

private:
    std::vector<std::uint8_t> certificate_;
};

} // namespace quill::test
