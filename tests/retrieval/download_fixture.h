// What every test of the download worker needs: a temporary folder, a server, the log, the settings
// without a switch, and the worker on a thread of its own.
#pragma once

#include "retrieval/download/download.h"
#include "tests/retrieval/fake_document_window.h"
#include "tests/support/http_server.h"
#include "tests/support/log_capture.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quill::test {

inline constexpr wchar_t switch_key[] =
    L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Preferences\\kBrowserPlugin";
inline constexpr wchar_t switch_value[] = L"kIEBrowserPluginWinINet";

// The worker's thread, waited for at the end.
class download_thread
{
public:
    explicit download_thread(const download_job& job);
    ~download_thread();
    download_thread(const download_thread&) = delete;
    download_thread& operator=(const download_thread&) = delete;

    // Whether the worker has ended, with exit code 0.
    bool ended_within(DWORD timeout_ms) const;

private:
    static DWORD WINAPI run(void* self);

    download_job job_;
    HANDLE thread_;
};

class download_fixture : public testing::Test
{
protected:
    download_fixture();
    ~download_fixture() override;

    download_job job_for(const fake_document_window& window) const;
    // Runs the worker to its end against a window that answers properly.
    void download(fake_document_window& window) const;

    // Every line since the last call, the error code behind "Default - 1" taken off, the scratch folder's
    // path replaced by "TEMP".
    std::vector<std::string> lines();
    // The lines that a download of url into TEMP\folder\name writes up to its end.
    std::vector<std::string> lines_up_to_download(const std::wstring& url, const std::string& file) const;
    // The text of a file below the temporary folder.
    std::string contents(const std::wstring& file) const;

    scratch_directory temporary_;
    environment_scope override_;
    registry_key_scope user_settings_;
    registry_key_scope machine_settings_;
    registry_key_scope machine_settings_32_;
    log_capture log_;
    http_server server_;
    HANDLE cancel_event_;
};

} // namespace quill::test
