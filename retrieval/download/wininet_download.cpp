#include "retrieval/download/wininet_download.h"

#include "logging/log_stream.h"
#include "retrieval/download/window_exchange.h"
#include "retrieval/download/wininet_request.h"

#include <urlmon.h>

#include <cstddef>
#include <cstdio>
#include <cwchar>
#include <memory>
#include <new>
#include <string>

namespace quill {
namespace {

constexpr std::uint32_t succeeded = 0;
constexpr std::uint32_t failed = 1;
constexpr std::uint32_t cancelled = static_cast<std::uint32_t>(E_ABORT);

struct file_closer
{
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using file_handle = std::unique_ptr<std::FILE, file_closer>;

std::wstring without_fragment(const wchar_t* url)
{
    return url ? std::wstring(url, std::wcscspn(url, L"#")) : std::wstring();
}

// 0 if the server sent no length.
std::uint32_t content_length(const wininet_functions& wininet, HINTERNET request) noexcept
{
    // One spare wchar_t: the result may not be null-terminated.
    wchar_t text[65] = {};
    DWORD size = sizeof text - sizeof *text;
    DWORD index = 0;
    if (!wininet.query_info(request, HTTP_QUERY_CONTENT_LENGTH, text, &size, &index))
        return 0;
    return static_cast<std::uint32_t>(_wcstoi64(text, nullptr, 10));
}

// Copies the response body to the file and reports the progress.
class body_copy
{
public:
    body_copy(const wininet_functions& wininet, const download_job& job, HINTERNET request, std::FILE* file,
              std::uint32_t expected) noexcept
        : wininet_(wininet), job_(job), request_(request), file_(file), expected_(expected)
    {
    }

    std::uint32_t run() noexcept
    {
        while (const DWORD available = query_available()) {
            if (is_cancelled(job_.cancel_event))
                return cancelled;
            if (!copy(available))
                return failed;
        }
        return succeeded;
    }

private:
    DWORD query_available() noexcept
    {
        DWORD available = 0;
        return wininet_.query_data_available(request_, &available, 0, 0) ? available : 0;
    }

    // Copies what is reported available; false if the download cannot continue.
    bool copy(DWORD available) noexcept
    {
        const std::unique_ptr<std::byte[]> buffer(new (std::nothrow) std::byte[available]);
        if (!buffer)
            return false;
        DWORD copied = 0;
        DWORD read = 0;
        do {
            read = 0;
            wininet_.read_file(request_, buffer.get(), available, &read);
            if (std::fwrite(buffer.get(), 1, read, file_) != read)
                return false;
            available -= read;
            copied += read;
            received_ += read;
            report();
        } while (read != 0 && available > copied);
        // Reported available but unreadable; retrying would loop.
        return copied != 0;
    }

    void report() const noexcept
    {
        send_progress(job_.window, {received_, expected_, BINDSTATUS_DOWNLOADINGDATA, nullptr});
    }

    const wininet_functions& wininet_;
    const download_job& job_;
    HINTERNET request_;
    std::FILE* file_;
    std::uint32_t expected_;
    std::uint32_t received_ = 0;
};

// Closes the file first, then the request, then the session.
std::uint32_t download_file(const wininet_functions& wininet, const download_job& job,
                            const std::wstring& url, const wchar_t* cache_path)
{
    const internet_handle session =
        own(wininet, wininet.open(L"Quill5_IEactivedoc", INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
    if (!session) {
        const DWORD error = GetLastError();
        QUILL_LOG(log_level::debug) << "ACTIVEDOC DownloadPDFFile MISSING FILE " << error;
        return failed;
    }
    relax_certificate_checks(wininet, session.get());

    const internet_request opened = open_internet_url(wininet, session.get(), url);
    if (!opened.request) {
        QUILL_LOG(log_level::debug) << "ACTIVEDOC DEBUG InternetOpenUrl FAILED " << opened.error;
        return failed;
    }

    const std::uint32_t expected = content_length(wininet, opened.request.get());

    const file_handle file(cache_path ? _wfopen(cache_path, L"wb") : nullptr);
    if (!file) {
        const DWORD error = GetLastError();
        QUILL_LOG(log_level::debug) << "ACTIVEDOC DEBUG FAILED TO CREATE CACHE FILE " << error;
        return failed;
    }

    const std::uint32_t result = body_copy(wininet, job, opened.request.get(), file.get(), expected).run();
    // The stream buffers the end of the body: a full disk may be reported only here.
    const bool is_written = std::fflush(file.get()) == 0;
    return result == succeeded && !is_written ? failed : result;
}

} // namespace

const wininet_functions system_wininet{
    InternetOpenW,    InternetQueryOptionW, InternetSetOptionW,
    InternetOpenUrlW, InternetConnectW,     HttpOpenRequestW,
    HttpSendRequestW, HttpQueryInfoW,       InternetQueryDataAvailable,
    InternetReadFile, InternetCloseHandle,
};

std::uint32_t DownloadWithWinINet(const download_job& job, const wchar_t* url, const wchar_t* cache_path,
                                  const wininet_functions& wininet) noexcept
{
    try {
        const std::uint32_t result = download_file(wininet, job, without_fragment(url), cache_path);
        if (result == succeeded)
            QUILL_LOG(log_level::debug) << "ACTIVEDOC DEBUG SUCCESS";
        return result;
    } catch (const std::bad_alloc&) {
        return failed;
    }
}

} // namespace quill
