// The fixture of the download worker: a temporary folder, a server, the log, settings without a switch, and
// the worker on a thread of its own.
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

// The thread of the worker, joined at the end.
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
    // Runs the worker to its end with a window that follows the protocol.
    void download(fake_document_window& window) const;

    // Every line since the last call, without the error code after "Default - 1", and with "TEMP" for the
    // path of the scratch folder.
    std::vector<std::string> lines();
    // The lines of a download of url into TEMP\folder\name up to its end.
    std::vector<std::string> lines_up_to_download(const std::wstring& url, const std::string& file) const;
    // The contents of a file below the temporary folder.
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
