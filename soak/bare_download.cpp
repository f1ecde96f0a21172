#include "soak/bare_download.h"

#include "tests/support/empty_callback.h"
#include "tests/support/wait.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <urlmon.h>
#include <wininet.h>

#include <vector>

namespace quill::soak {
namespace {

struct bare_job
{
    download_path path;
    const std::wstring& url;
    const std::wstring& file;
};

void read_through_wininet(const bare_job& job)
{
    const HINTERNET session = InternetOpenW(L"bare", INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
    const HINTERNET request = InternetOpenUrlW(session, job.url.c_str(), nullptr, 0, 0, 0);
    const HANDLE file = CreateFileW(job.file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    std::vector<char> buffer(8192);
    DWORD count = 0;
    DWORD written = 0;
    while (InternetReadFile(request, buffer.data(), static_cast<DWORD>(buffer.size()), &count) && count > 0)
        WriteFile(file, buffer.data(), count, &written, nullptr);
    CloseHandle(file);
    InternetCloseHandle(request);
    InternetCloseHandle(session);
}

void read_through_urlmon(const bare_job& job)
{
    test::empty_callback callback;
    URLDownloadToFileW(nullptr, job.url.c_str(), job.file.c_str(), 0, &callback);
}

DWORD WINAPI run(void* parameter)
{
    const auto& job = *static_cast<const bare_job*>(parameter);
    if (job.path == download_path::wininet)
        read_through_wininet(job);
    else
        read_through_urlmon(job);
    return 0;
}

} // namespace

void download_barely(download_path path, const std::wstring& url, const std::wstring& file)
{
    bare_job job{path, url, file};
    const HANDLE thread = CreateThread(nullptr, 0, run, &job, 0, nullptr);
    EXPECT_TRUE(test::wait_until([&] { return WaitForSingleObject(thread, 0) == WAIT_OBJECT_0; }, 60'000));
    CloseHandle(thread);
}

} // namespace quill::soak
