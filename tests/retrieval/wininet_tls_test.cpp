// Certificates: which errors the administrator's path ignores, and that the default path does not.
#include "retrieval/download/wininet_download.h"
#include "tests/retrieval/fake_document_window.h"
#include "tests/retrieval/tls_servers.h"
#include "tests/support/http_server.h"
#include "tests/support/log_capture.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <urlmon.h>

#include <memory>

namespace quill::test {
namespace {

using testing::ElementsAre;

const std::string bad_certificates[] = {"self_signed", "expired", "wrong_name", "all_faults"};

// Created once for all cases: keys take time, and a process caches the roots that it has seen.
struct tls_fixture
{
    http_server server;
    tls_servers secure{server.port()};
    trusted_root root{secure.root()};
};

struct WinInetTls : testing::Test
{
    static inline std::unique_ptr<tls_fixture> shared_;
    static void SetUpTestSuite() { shared_ = std::make_unique<tls_fixture>(); }
    static void TearDownTestSuite() { shared_.reset(); }

    http_server& server = shared_->server;
    const tls_servers& secure = shared_->secure;
    log_capture log;
    scratch_directory folder;
    std::wstring path = folder / L"a.pdf";

    WinInetTls() { server.route("/a.pdf", http_response::ok("over TLS")); }

    std::uint32_t download(const std::wstring& url) const
    {
        fake_document_window window({});
        return DownloadWithWinINet({window.handle(), nullptr, nullptr}, url.c_str(), path.c_str());
    }
    // The download of the default path alone.
    HRESULT download_by_default(const std::wstring& url) const
    {
        return URLDownloadToFileW(nullptr, url.c_str(), path.c_str(), 0, nullptr);
    }
};

TEST_F(WinInetTls, AcceptsCertificateFaultsAloneAndTogether)
{
    for (const std::string& kind : bad_certificates) {
        SCOPED_TRACE(kind);
        log.clear();
        DeleteFileW(path.c_str());
        const std::size_t before = server.requests().size();
        EXPECT_EQ(download(secure.url(kind, L"/a.pdf?q=1#page=2")), 0u);
        EXPECT_EQ(read_file(path), "over TLS");
        EXPECT_THAT(log.lines(), ElementsAre("debug: ACTIVEDOC DEBUG SUCCESS"));
        ASSERT_EQ(server.requests().size(), before + 1) << "the refused attempt sends no request";
        EXPECT_EQ(server.requests().back().target, "/a.pdf?q=1");
        EXPECT_EQ(server.requests().back().header("User-Agent"), "Quill5_IEactivedoc");
        EXPECT_EQ(server.requests().back().header("Connection"), "Keep-Alive");
    }
}

TEST_F(WinInetTls, AcceptsATrustedServer)
{
    EXPECT_EQ(download(secure.url("trusted", L"/a.pdf")), 0u);
    EXPECT_EQ(read_file(path), "over TLS");
}

TEST_F(WinInetTls, FollowsRedirectsToAndFromBadCertificates)
{
    const auto narrow = [](const std::wstring& text) { return std::string(text.begin(), text.end()); };
    server.route("/plain", http_response::redirect(narrow(secure.url("self_signed", L"/a.pdf"))));
    EXPECT_EQ(download(server.url(L"/plain")), 0u);
    EXPECT_EQ(read_file(path), "over TLS");

    server.route("/secure", http_response::redirect(narrow(secure.url("expired", L"/next"))));
    server.route("/next", http_response::redirect(narrow(secure.url("wrong_name", L"/a.pdf"))));
    DeleteFileW(path.c_str());
    EXPECT_EQ(download(secure.url("self_signed", L"/secure")), 0u) << log.lines().back();
    EXPECT_EQ(read_file(path), "over TLS");
}

TEST_F(WinInetTls, RefusesAServerWithoutTls)
{
    EXPECT_EQ(download(secure.url("not_tls", L"/a.pdf")), 1u);
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_TRUE(log.lines().front().starts_with("debug: ACTIVEDOC DEBUG InternetOpenUrl FAILED 12"));
    EXPECT_EQ(read_file(path), std::nullopt);
}

TEST_F(WinInetTls, StaysStrictOnTheDefaultPath)
{
    EXPECT_EQ(download_by_default(secure.url("trusted", L"/a.pdf")), S_OK);
    EXPECT_EQ(read_file(path), "over TLS");
    DeleteFileW(path.c_str());
    const std::size_t before = server.requests().size();
    for (const std::string& kind : bad_certificates) {
        SCOPED_TRACE(kind);
        EXPECT_TRUE(FAILED(download_by_default(secure.url(kind, L"/a.pdf"))));
        EXPECT_EQ(read_file(path), std::nullopt);
    }
    EXPECT_EQ(server.requests().size(), before) << "nothing is sent to a server that is not trusted";
}

// Ignoring a certificate error once must not affect other requests of the process.
TEST_F(WinInetTls, DoesNotMakeTheDefaultPathLenient)
{
    EXPECT_EQ(download(secure.url("self_signed", L"/a.pdf")), 0u);
    DeleteFileW(path.c_str());
    EXPECT_TRUE(FAILED(download_by_default(secure.url("self_signed", L"/a.pdf"))));
    EXPECT_EQ(read_file(path), std::nullopt);
}

} // namespace
} // namespace quill::test
