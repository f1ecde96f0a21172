#include "tests/retrieval/tls_servers.h"

#include "tests/support/scopes.h"
#include "tests/support/wait.h"

#include <windows.h>
#include <winsock2.h>

#include <gtest/gtest.h>
#include <wincrypt.h>

#include <optional>
#include <sstream>

namespace quill::test {
namespace {

constexpr DWORD start_deadline_ms = 30'000; // keys and certificates are created

// A native program cannot be waited for, and its output must be a file.
bool start_script(std::uint16_t http_port, HANDLE output)
{
    // The program looks a bare name up in PATH itself, to find its own library.
    std::wstring command = L"/usr/bin/python3 -I " QUILL_TLS_SERVERS_SCRIPT " " + std::to_wstring(http_port);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = INVALID_HANDLE_VALUE;
    startup.hStdOutput = output;
    startup.hStdError = output;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(L"Z:\\usr\\bin\\python3", command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                        &startup, &process))
        return false;
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return true;
}

std::vector<std::uint8_t> from_base64(const std::string& text)
{
    DWORD size = 0;
    CryptStringToBinaryA(text.c_str(), 0, CRYPT_STRING_BASE64, nullptr, &size, nullptr, nullptr);
    std::vector<std::uint8_t> bytes(size);
    CryptStringToBinaryA(text.c_str(), 0, CRYPT_STRING_BASE64, bytes.data(), &size, nullptr, nullptr);
    return bytes;
}

SOCKET connect_to(std::uint16_t port)
{
    const SOCKET connection = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return connection;
}

} // namespace

tls_servers::tls_servers(std::uint16_t http_port) : control_(INVALID_SOCKET)
{
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    const scratch_directory folder;
    const std::wstring path = folder / L"servers.txt";
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const HANDLE output =
        CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    &inherited, CREATE_ALWAYS, 0, nullptr);
    EXPECT_TRUE(start_script(http_port, output)) << "python3 is missing: run tools/install-packages";
    CloseHandle(output);
    std::string text;
    const bool ready = wait_until(
        [&] {
            text = read_file(path).value_or("");
            return text.find("ready\n") != std::string::npos;
        },
        start_deadline_ms);
    EXPECT_TRUE(ready) << text;
    if (ready)
        read_announcement(text);
}

// The script ends when its connection is closed, also if this program crashes.
tls_servers::~tls_servers()
{
    closesocket(control_);
    WSACleanup();
}

void tls_servers::read_announcement(const std::string& text)
{
    std::istringstream words(text);
    std::string key;
    std::string value;
    while (words >> key && key != "ready" && words >> value) {
        if (key == "root")
            root_ = from_base64(value);
        else
            ports_[key] = static_cast<std::uint16_t>(std::stoi(value));
    }
    control_ = connect_to(ports_["control"]);
}

std::wstring tls_servers::url(const std::string& kind, const std::wstring& target) const
{
    const auto port = ports_.find(kind);
    EXPECT_NE(port, ports_.end()) << kind;
    return L"https://localhost:" + std::to_wstring(port == ports_.end() ? 0 : port->second) + target;
}

// The store is written when it is closed, which an open certificate of it would delay.
trusted_root::trusted_root(const std::vector<std::uint8_t>& certificate) : certificate_(certificate)
{
    const HCERTSTORE store = CertOpenSystemStoreW(0, L"Root");
    EXPECT_TRUE(CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, certificate_.data(),
                                                 static_cast<DWORD>(certificate_.size()),
                                                 CERT_STORE_ADD_ALWAYS, nullptr));
    EXPECT_TRUE(CertCloseStore(store, 0));
}

trusted_root::~trusted_root()
{
    if (certificate_.empty())
        return;
    const HCERTSTORE store = CertOpenSystemStoreW(0, L"Root");
    const PCCERT_CONTEXT wanted = CertCreateCertificateContext(X509_ASN_ENCODING, certificate_.data(),
                                                               static_cast<DWORD>(certificate_.size()));
    const PCCERT_CONTEXT found =
        CertFindCertificateInStore(store, X509_ASN_ENCODING, 0, CERT_FIND_EXISTING, wanted, nullptr);
    EXPECT_TRUE(found);
    if (found)
        EXPECT_TRUE(CertDeleteCertificateFromStore(found)); // frees found
    CertFreeCertificateContext(wanted);
    EXPECT_TRUE(CertCloseStore(store, 0));
}

} // namespace quill::test
