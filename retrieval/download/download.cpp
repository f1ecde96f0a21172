#include "retrieval/download/download.h"

#include "logging/log_stream.h"
#include "platform/temp_file_manager.h"
#include "retrieval/download/cache_folder.h"
#include "retrieval/download/cache_name.h"
#include "retrieval/download/cancel_event.h"
#include "retrieval/download/download_libraries.h"
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

// The system's temporary folder may be misconfigured, which is reported by an exception.
std::size_t temporary_path_length(std::array<wchar_t, MAX_PATH>& buffer)
{
    try {
        return temp_file_manager([](const char* line) { QUILL_LOG(log_level::error) << line; })
            .get_temp_folder(buffer.size(), buffer.data(), 0);
    } catch (const std::filesystem::filesystem_error&) {
        return 0;
    }
}

// A path for the fetched file in a folder made for it; empty when there is none, which is logged.
std::wstring make_cache_path(const std::wstring& url)
{
    const std::wstring file_name = CacheFileName(url.c_str());
    std::array<wchar_t, MAX_PATH> temporary_path{};
    if (temporary_path_length(temporary_path) == 0) {
        log_debug("ACTIVEDOC DownloadPDFFile FAILED TO GET TEMP PATH");
        return {};
    }
    const std::wstring folder = CreateCacheFolder(WithSeparator(temporary_path.data()));
    if (folder.empty()) {
        log_debug("ACTIVEDOC DownloadPDFFile FAILED TO CREATE TEMP DIRECTORY");
        return {};
    }
    std::wstring path = CacheFilePath(folder, file_name);
    if (path.empty())
        log_debug("ACTIVEDOC DownloadPDFFile FAILED TO GET CACHE FILE PATH");
    return path;
}

// Fetches a file the way that the settings choose. The callback's window, which takes time and needs no URL,
// is made at construction and destroyed with the object.
class transfer
{
public:
    explicit transfer(const download_job& job) : job_(job), callback_(job.window, job.cancel_event)
    {
        KeepDownloadLibraries();
    }

    // 0 on success, whatever else the chosen way of downloading answers on failure.
    HRESULT fetch(const std::wstring& url, const std::wstring& cache_path)
    {
        DWORD last_error = 0;
        const int answer = ReadWinINetSwitch(last_error);
        if (answer == wininet_switch_on) {
            log_debug("ACTIVEDOC KIEBrowserPlugin: WinINet");
            return static_cast<HRESULT>(DownloadWithWinINet(job_, url.c_str(), cache_path.c_str()));
        }
        log_debug("ACTIVEDOC KIEBrowserPlugin: Default - ", answer, " ", last_error);
        const HRESULT result =
            URLDownloadToFileW(job_.caller, url.c_str(), cache_path.c_str(), 0, &callback_);
        // The system may report success after a cancel, whose signal the callback has consumed.
        return callback_.is_ended() ? E_ABORT : result;
    }

private:
    const download_job& job_;
    interruptible_callback callback_;
};

std::uint32_t version_of_url(const download_job& job) noexcept
{
    return job.version ? job.version->current() : 0;
}

// version: of the URL that was received. Another one may have been loaded between the two requests.
bool request_whole_url(const download_job& job, std::wstring& url, std::uint32_t& version)
{
    for (;;) {
        version = version_of_url(job);
        if (!RequestUrl(job.window, url))
            return false;
        if (version_of_url(job) == version)
            return true;
        if (IsCancelled(job.cancel_event))
            return false;
    }
}

struct fetched_document
{
    std::wstring path;         // empty when there is none
    std::uint32_t version = 0; // of its URL
};

// The download's success does not prove a file, let alone a PDF.
void hand_over(const download_job& job, const fetched_document& document)
{
    if (IsCancelled(job.cancel_event))
        return;
    if (!isPDF(document.path.c_str())) {
        log_debug("ACTIVEDOC DownloadPDFFile MISSING FILE");
        return;
    }
    if (IsCancelled(job.cancel_event))
        return;
    if (!SendCacheFile(job.window, document.path))
        return;
    // A window that has another URL by now has refused the path.
    if (job.version)
        job.version->if_current(document.version, [&] { PostLoadFile(job.window); });
    else
        PostLoadFile(job.window);
}

fetched_document fetch_document(const download_job& job)
{
    // Made before the window is asked, which shows itself meanwhile and does not answer. Destroyed before the
    // file is handed over: Wine may lose a menu that another thread creates while a window is destroyed.
    transfer chosen(job);
    std::wstring url;
    std::uint32_t version = 0;
    if (!request_whole_url(job, url, version))
        return {};
    log_debug("ACTIVEDOC DownloadPDFFile URL: ", url);
    const std::wstring cache_path = make_cache_path(url);
    if (cache_path.empty())
        return {};
    log_debug("ACTIVEDOC DownloadPDFFile CACHE: ", cache_path);
    const HRESULT result = chosen.fetch(url, cache_path);
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
        hand_over(job, document);
}

} // namespace

DWORD DownloadPDFFile(const download_job& job) noexcept
{
    try {
        download(job);
    } catch (const std::exception&) {
        return 0; // out of memory: the window keeps what it shows, as after every failure here
    }
    return 0;
}

} // namespace quill
