#include "retrieval/download/download.h"

#include "logging/log_stream.h"
#include "platform/temp_file_manager.h"
#include "retrieval/download/cache_folder.h"
#include "retrieval/download/download_switch.h"
#include "retrieval/download/interruptible_callback.h"
#include "retrieval/download/url_version.h"
#include "retrieval/download/window_exchange.h"
#include "retrieval/download/wininet_download.h"
#include "retrieval/file/pdf_check.h"

#include <windows.h>

#include <array>
#include <filesystem>
#include <string>

namespace quill {
namespace {

template <typename... Pieces>
void log_debug(const Pieces&... pieces) noexcept
{
    if (!is_logged(log_level::debug))
        return;
    log_stream line(log_level::debug);
    (line << ... << pieces);
}

// 0 if the system's temporary folder is misconfigured.
std::size_t temporary_path_length(std::array<wchar_t, MAX_PATH>& buffer)
{
    try {
        return temp_file_manager([](const char* line) { QUILL_LOG(log_level::error) << line; })
            .get_temp_folder(buffer.size(), buffer.data(), 0);
    } catch (const std::filesystem::filesystem_error&) {
        return 0;
    }
}

// Creates a cache folder and returns the path of the file in it; empty after a failure, which is logged.
std::wstring make_cache_path(const std::wstring& url)
{
    const std::wstring file_name = cache_file_name(url.c_str());
    std::array<wchar_t, MAX_PATH> temporary_path{};
    if (temporary_path_length(temporary_path) == 0) {
        log_debug("ACTIVEDOC DownloadPDFFile FAILED TO GET TEMP PATH");
        return {};
    }
    const std::wstring folder = create_cache_folder(with_separator(temporary_path.data()));
    if (folder.empty()) {
        log_debug("ACTIVEDOC DownloadPDFFile FAILED TO CREATE TEMP DIRECTORY");
        return {};
    }
    std::wstring path = cache_file_path(folder, file_name);
    if (path.empty())
        log_debug("ACTIVEDOC DownloadPDFFile FAILED TO GET CACHE FILE PATH");
    return path;
}

// Fetches url by the path that the administrator selected. Returns 0 on success; the failure codes are those
// of the selected path.
HRESULT fetch_file(const download_job& job, interruptible_callback& callback, const std::wstring& url,
                   const std::wstring& cache_path)
{
    DWORD last_error = 0;
    const int wininet = ReadWinINetSwitch(last_error);
    if (wininet == wininet_switch_on) {
        log_debug("ACTIVEDOC KIEBrowserPlugin: WinINet");
        return static_cast<HRESULT>(DownloadWithWinINet(job, url.c_str(), cache_path.c_str()));
    }
    log_debug("ACTIVEDOC KIEBrowserPlugin: Default - ", wininet, " ", last_error);
    const HRESULT result = URLDownloadToFileW(job.caller, url.c_str(), cache_path.c_str(), 0, &callback);
    // urlmon may return S_OK for a cancelled download.
    return callback.is_cancelled() ? E_ABORT : result;
}

std::uint32_t version_of_url(const download_job& job) noexcept
{
    return job.version ? job.version->current() : 0;
}

// version receives that of the URL. If the URL is replaced between the two messages of request_url, both are
// sent again.
bool request_consistent_url(const download_job& job, std::wstring& url, std::uint32_t& version)
{
    for (;;) {
        version = version_of_url(job);
        if (!request_url(job.window, url))
            return false;
        if (version_of_url(job) == version)
            return true;
        if (is_cancelled(job.cancel_event))
            return false;
    }
}

struct fetched_document
{
    std::wstring path;         // empty after a failure
    std::uint32_t version = 0; // of its URL
};

// A successful download does not imply that there is a file, nor that it is a PDF.
void send_to_window(const download_job& job, const fetched_document& document)
{
    if (is_cancelled(job.cancel_event))
        return;
    if (!isPDF(document.path.c_str())) {
        log_debug("ACTIVEDOC DownloadPDFFile MISSING FILE");
        return;
    }
    if (is_cancelled(job.cancel_event))
        return;
    if (!send_cache_file(job.window, document.path))
        return;
    // If the URL has been replaced, the window has ignored the path.
    if (job.version)
        job.version->if_current(document.version, [&] { post_load_file(job.window); });
    else
        post_load_file(job.window);
}

fetched_document fetch_document(const download_job& job)
{
    // Created before the first send, while the UI thread is still busy showing its window. Destroyed before
    // the path is sent: on Wine, destroying a window can break a menu that another thread creates.
    interruptible_callback callback(job.window, job.cancel_event);
    pin_download_libraries();
    std::wstring url;
    std::uint32_t version = 0;
    if (!request_consistent_url(job, url, version))
        return {};
    log_debug("ACTIVEDOC DownloadPDFFile URL: ", url);
    const std::wstring cache_path = make_cache_path(url);
    if (cache_path.empty())
        return {};
    log_debug("ACTIVEDOC DownloadPDFFile CACHE: ", cache_path);
    const HRESULT result = fetch_file(job, callback, url, cache_path);
    if (result != 0) {
        log_debug("ACTIVEDOC DownloadPDFFile FAILED ", result);
        return {};
    }
    log_debug("ACTIVEDOC DownloadPDFFile CACHE:", cache_path);
    return {cache_path, version};
}

void download(const download_job& job)
{
    if (const fetched_document document = fetch_document(job); !document.path.empty())
        send_to_window(job, document);
}

} // namespace

DWORD DownloadPDFFile(const download_job& job) noexcept
{
    try {
        download(job);
    } catch (const std::exception&) {
        return 0; // out of memory; ends like every other failure
    }
    return 0;
}

} // namespace quill
