// Whether WinINet lets requests to a server pass whose certificate no authority has signed.
#include "tests/acceptance/installed/installed_fixture.h"
#include "tests/acceptance/installed/tls_server.h"

#include <wininet.h>

#include <memory>
#include <string>

namespace quill::test {
namespace {

struct internet_closer
{
    void operator()(HINTERNET handle) const noexcept { InternetCloseHandle(handle); }
};
using unique_internet = std::unique_ptr<void, internet_closer>;

enum class option_on
{
    nothing,
    session,
    request
};

void ignore_certificate_faults(HINTERNET handle)
{
    DWORD flags = SECURITY_FLAG_IGNORE_UNKNOWN_CA | SECURITY_FLAG_IGNORE_CERT_CN_INVALID |
                  SECURITY_FLAG_IGNORE_CERT_DATE_INVALID;
    InternetSetOptionW(handle, INTERNET_OPTION_SECURITY_FLAGS, &flags, sizeof flags);
}

// What a request to the server gives, in words.
std::string result_of_request(const tls_server& server, option_on place)
{
    const unique_internet session(InternetOpenW(L"Quill", INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0));
    if (place == option_on::session)
        ignore_certificate_faults(session.get());
    const unique_internet connection(InternetConnectW(session.get(), L"localhost", server.port(), nullptr,
                                                      nullptr, INTERNET_SERVICE_HTTP, 0, 0));
    const unique_internet request(HttpOpenRequestW(
        connection.get(), L"GET", L"/", nullptr, nullptr, nullptr,
        INTERNET_FLAG_SECURE | INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_NO_UI, 0));
    if (!request)
        return "could not be made (error " + std::to_string(GetLastError()) + ")";
    if (place == option_on::request)
        ignore_certificate_faults(request.get());
    if (!HttpSendRequestW(request.get(), nullptr, 0, nullptr, 0))
        return "fails with error " + std::to_string(GetLastError());
    DWORD status = 0;
    DWORD size = sizeof status;
    HttpQueryInfoW(request.get(), HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size, nullptr);
    return "passes with status " + std::to_string(status);
}

TEST(DownloadFromAnUntrustedServer, ReportsWhichOptionLetsARequestPass)
{
    const tls_server server;
    // In this order: WinINet may remember that a server's certificate was accepted.
    const std::string without = result_of_request(server, option_on::nothing);
    const std::string with_session = result_of_request(server, option_on::session);
    const std::string with_request = result_of_request(server, option_on::request);

    if (const std::string error = server.error(); !error.empty()) {
        print_answer("untrusted-server", "not measured: this system cannot be a TLS server, " + error);
        return;
    }
    print_answer("untrusted-server",
                 "a request to a server with a self-signed certificate " + without + " without the option, " +
                     with_session + " with it on the session, " + with_request +
                     " with it on the request; of " + std::to_string(server.handshakes()) + " handshakes " +
                     std::to_string(server.requests()) + " led to a request");
}

} // namespace
} // namespace quill::test
