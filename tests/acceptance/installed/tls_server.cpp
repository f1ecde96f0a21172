#include "tests/acceptance/installed/tls_server.h"

#include <schannel.h>
#include <ws2tcpip.h>

#include <array>
#include <cstdio>
#include <string_view>

namespace quill::test {
namespace {

constexpr DWORD receive_limit_ms = 5'000;
constexpr std::string_view response = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\nConnection: close\r\n\r\nOK";

std::string failed(const char* function, unsigned long code)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08lx", code);
    return std::string(function) + " fails with " + text.data();
}

bool send_all(SOCKET socket, std::string_view bytes)
{
    while (!bytes.empty()) {
        const int sent = send(socket, bytes.data(), static_cast<int>(bytes.size()), 0);
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

bool receive_more(SOCKET socket, std::string& bytes)
{
    std::array<char, 16'384> part{};
    const int size = recv(socket, part.data(), static_cast<int>(part.size()), 0);
    if (size <= 0)
        return false;
    bytes.append(part.data(), static_cast<std::size_t>(size));
    return true;
}

SecBuffer buffer_of(unsigned long type, std::string& bytes)
{
    return {static_cast<unsigned long>(bytes.size()), type, bytes.data()};
}

// The server's side of one TLS connection.
class tls_connection
{
public:
    tls_connection(CredHandle& credentials, SOCKET socket) : credentials_(credentials), socket_(socket) {}
    ~tls_connection()
    {
        if (has_context_)
            DeleteSecurityContext(&context_);
    }
    tls_connection(const tls_connection&) = delete;
    tls_connection& operator=(const tls_connection&) = delete;

    // SEC_E_OK at the end of the handshake; SEC_E_INCOMPLETE_MESSAGE if the client ended the connection.
    SECURITY_STATUS shake_hands()
    {
        SECURITY_STATUS status = SEC_E_INCOMPLETE_MESSAGE;
        do {
            // An incomplete message, or a step that used all the bytes, needs more.
            if ((status == SEC_E_INCOMPLETE_MESSAGE || received_.empty()) &&
                !receive_more(socket_, received_))
                return SEC_E_INCOMPLETE_MESSAGE;
            status = accept_once();
        } while (status == SEC_E_INCOMPLETE_MESSAGE || status == SEC_I_CONTINUE_NEEDED);
        return status;
    }

    // Reads until a request's head is complete.
    bool read_request()
    {
        std::string request;
        while (request.find("\r\n\r\n") == std::string::npos) {
            if (received_.empty() && !receive_more(socket_, received_))
                return false;
            std::string record = received_;
            SecBuffer buffers[4] = {buffer_of(SECBUFFER_DATA, record)};
            SecBufferDesc message{SECBUFFER_VERSION, 4, buffers};
            const SECURITY_STATUS status = DecryptMessage(&context_, &message, 0, nullptr);
            if (status == SEC_E_INCOMPLETE_MESSAGE) {
                if (!receive_more(socket_, received_))
                    return false;
                continue;
            }
            if (status != SEC_E_OK)
                return false;
            received_.clear();
            for (const SecBuffer& each : buffers) {
                const auto* const bytes = static_cast<const char*>(each.pvBuffer);
                if (each.BufferType == SECBUFFER_DATA)
                    request.append(bytes, each.cbBuffer);
                else if (each.BufferType == SECBUFFER_EXTRA)
                    received_.assign(record, record.size() - each.cbBuffer);
            }
        }
        return true;
    }

    bool write(std::string_view text)
    {
        SecPkgContext_StreamSizes sizes{};
        if (QueryContextAttributesW(&context_, SECPKG_ATTR_STREAM_SIZES, &sizes) != SEC_E_OK)
            return false;
        std::string header(sizes.cbHeader, '\0');
        std::string data(text);
        std::string trailer(sizes.cbTrailer, '\0');
        SecBuffer buffers[4] = {buffer_of(SECBUFFER_STREAM_HEADER, header), buffer_of(SECBUFFER_DATA, data),
                                buffer_of(SECBUFFER_STREAM_TRAILER, trailer)};
        SecBufferDesc message{SECBUFFER_VERSION, 4, buffers};
        if (EncryptMessage(&context_, 0, &message, 0) != SEC_E_OK)
            return false;
        std::string record;
        for (const SecBuffer& each : buffers)
            record.append(static_cast<const char*>(each.pvBuffer), each.cbBuffer);
        return send_all(socket_, record);
    }

private:
    SECURITY_STATUS accept_once()
    {
        SecBuffer inputs[2] = {buffer_of(SECBUFFER_TOKEN, received_)};
        SecBufferDesc input{SECBUFFER_VERSION, 2, inputs};
        SecBuffer token{0, SECBUFFER_TOKEN, nullptr};
        SecBufferDesc output{SECBUFFER_VERSION, 1, &token};
        constexpr unsigned long wanted =
            ASC_REQ_CONFIDENTIALITY | ASC_REQ_SEQUENCE_DETECT | ASC_REQ_ALLOCATE_MEMORY | ASC_REQ_STREAM;
        unsigned long attributes = 0;
        const SECURITY_STATUS status =
            AcceptSecurityContext(&credentials_, has_context_ ? &context_ : nullptr, &input, wanted, 0,
                                  &context_, &output, &attributes, nullptr);
        has_context_ = has_context_ || status == SEC_E_OK || status == SEC_I_CONTINUE_NEEDED;
        if (token.pvBuffer) {
            send_all(socket_, {static_cast<const char*>(token.pvBuffer), token.cbBuffer});
            FreeContextBuffer(token.pvBuffer);
        }
        if (status == SEC_E_INCOMPLETE_MESSAGE)
            return status;
        const std::size_t unused = inputs[1].BufferType == SECBUFFER_EXTRA ? inputs[1].cbBuffer : 0;
        received_.erase(0, received_.size() - unused);
        return status;
    }

    CredHandle& credentials_;
    const SOCKET socket_;
    CtxtHandle context_{};
    bool has_context_ = false;
    std::string received_;
};

} // namespace

tls_server::tls_server() : error_(certificate_.error())
{
    WSADATA data{};
    WSAStartup(MAKEWORD(2, 2), &data);
    if (error_.empty() && acquire_credentials() && listen())
        thread_ = std::thread([this] { serve(); });
}

tls_server::~tls_server()
{
    ends_ = true;
    if (thread_.joinable())
        thread_.join();
    if (listener_ != INVALID_SOCKET)
        closesocket(listener_);
    if (has_credentials_)
        FreeCredentialsHandle(&credentials_);
    WSACleanup();
}

std::string tls_server::error() const
{
    if (!error_.empty())
        return error_;
    const SECURITY_STATUS status = unsupported_;
    return status == SEC_E_OK ? "" : failed("AcceptSecurityContext", static_cast<unsigned long>(status));
}

bool tls_server::acquire_credentials()
{
    PCCERT_CONTEXT certificate = certificate_.get();
    SCHANNEL_CRED wanted{};
    wanted.dwVersion = SCHANNEL_CRED_VERSION;
    wanted.cCreds = 1;
    wanted.paCred = &certificate;
    std::wstring package = UNISP_NAME_W;
    const SECURITY_STATUS status =
        AcquireCredentialsHandleW(nullptr, package.data(), SECPKG_CRED_INBOUND, nullptr, &wanted, nullptr,
                                  nullptr, &credentials_, nullptr);
    has_credentials_ = status == SEC_E_OK;
    if (!has_credentials_)
        error_ = failed("AcquireCredentialsHandle", static_cast<unsigned long>(status));
    return has_credentials_;
}

bool tls_server::listen()
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    listener_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener_, SOMAXCONN) != 0 ||
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        error_ = failed("bind", static_cast<unsigned long>(WSAGetLastError()));
        return false;
    }
    port_ = ntohs(address.sin_port);
    return true;
}

void tls_server::serve()
{
    while (!ends_) {
        fd_set waiting{};
        FD_SET(listener_, &waiting);
        timeval poll{0, 20'000}; // us
        if (select(0, &waiting, nullptr, nullptr, &poll) != 1)
            continue;
        const SOCKET client = accept(listener_, nullptr, nullptr);
        if (client == INVALID_SOCKET)
            continue;
        setsockopt(client, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&receive_limit_ms),
                   sizeof receive_limit_ms);
        serve(client);
        shutdown(client, SD_SEND);
        closesocket(client);
    }
}

void tls_server::serve(SOCKET client)
{
    ++handshakes_;
    tls_connection connection(credentials_, client);
    const SECURITY_STATUS status = connection.shake_hands();
    if (status == SEC_E_UNSUPPORTED_FUNCTION)
        unsupported_ = status;
    if (status == SEC_E_OK && connection.read_request()) {
        ++requests_;
        connection.write(response);
    }
}

} // namespace quill::test
