// A host that uses the system's download libraries for nothing else. They are kept for the rest of the
// process, so this is the only test of its program.
#include "platform/library_function.h"
#include "platform/unique_handle.h"
#include "tests/retrieval/fake_document_window.h"
#include "tests/support/child_process.h"
#include "tests/support/download_setting.h"
#include "tests/support/http_server.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace quill::test {
namespace {

TEST(DownloadLibraries, StayLoadedAfterADownloadThroughWinInet)
{
    ASSERT_EQ(GetModuleHandleW(L"wininet.dll"), nullptr) << "this program must not need it";
    ASSERT_EQ(GetModuleHandleW(L"urlmon.dll"), nullptr);
    const scratch_directory temporary;
    const environment_scope folder(L"QUILL_TMP_FOLDER", temporary.path());
    const download_setting settings;
    settings.use_wininet();
    http_server server;
    server.route("/a.pdf", http_response::ok(pdf_body(100)));
    fake_document_window window({.url = server.url(L"/a.pdf")});
    {
        const unique_library library(LoadLibraryW(beside_this_program(L"download_library.dll").c_str()));
        const auto download = library_function<void (*)(HWND)>(library.get(), "download_for");
        ASSERT_NE(download, nullptr);
        download(window.handle());
    }
    EXPECT_EQ(GetModuleHandleW(L"download_library.dll"), nullptr);
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests().front().header("User-Agent"), "Quill5_IEactivedoc") << "not through WinINet";
    EXPECT_NE(GetModuleHandleW(L"wininet.dll"), nullptr);
    EXPECT_NE(GetModuleHandleW(L"urlmon.dll"), nullptr);
}

} // namespace
} // namespace quill::test
