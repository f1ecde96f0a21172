#include "tests/bench/document/bare_downloads.h"

#include "retrieval/download/window_messages.h"
#include "tests/support/empty_callback.h"

#include <windows.h>

#include <urlmon.h>
#include <wininet.h>

#include <cstdio>
#include <stdexcept>
#include <vector>

namespace quill::bench {
namespace {

void require(bool condition)
{
    if (!condition)
        throw std::runtime_error("a bare download failed");
}

DWORD content_length(HINTERNET request)
{
    DWORD length = 0;
    DWORD size = sizeof length;
    HttpQueryInfoW(request, HTTP_QUERY_CONTENT_LENGTH | HTTP_QUERY_FLAG_NUMBER, &length, &size, nullptr);
    return length;
}

} // namespace

void download_with_urlmon(const std::wstring& url, const std::wstring& path)
{
    test::empty_callback callback;
    require(URLDownloadToFileW(nullptr, url.c_str(), path.c_str(), 0, &callback) == S_OK);
}

void download_with_wininet(const std::wstring& url, const std::wstring& path, HWND report_to)
{
    const HINTERNET session =
        InternetOpenW(L"Quill5_IEactivedoc", INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
    const HINTERNET request = InternetOpenUrlW(session, url.c_str(), nullptr, 0, 0, 0);
    std::FILE* const file = _wfopen(path.c_str(), L"wb");
    require(request && file);
    std::vector<char> buffer;
    progress_record progress{0, content_length(request), BINDSTATUS_DOWNLOADINGDATA, nullptr};
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DWORD available = 0;
    while (InternetQueryDataAvailable(request, &available, 0, 0) && available) {
        if (report_to && WaitForSingleObject(event, 0) == WAIT_OBJECT_0)
            break;
        buffer.resize(available);
        DWORD read = 0;
        InternetReadFile(request, buffer.data(), available, &read);
        std::fwrite(buffer.data(), 1, read, file);
        progress.progress += read;
        DWORD_PTR unused = 0;
        if (report_to)
            SendMessageTimeoutW(report_to, WM_USER_PROGRESS, 0, reinterpret_cast<LPARAM>(&progress),
                                window_message_flags, window_message_timeout_ms, &unused);
    }
    CloseHandle(event);
    std::fclose(file);
    InternetCloseHandle(request);
    InternetCloseHandle(session);
}

} // namespace quill::bench
