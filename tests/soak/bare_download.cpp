#include "tests/soak/bare_download.h"

#include "tests/support/empty_callback.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <urlmon.h>
#include <wininet.h>

#include <utility>
#include <vector>

namespace quill::soak {
namespace {

// Continues until the download is cancelled.
class breakable_callback final : public test::empty_callback
{
public:
    explicit breakable_callback(const std::atomic<bool>& is_unwanted) : is_unwanted_(is_unwanted) {}

    STDMETHODIMP OnProgress(ULONG, ULONG, ULONG, LPCWSTR) override { return is_unwanted_ ? E_ABORT : S_OK; }

private:
    const std::atomic<bool>& is_unwanted_;
};

} // namespace

bare_download::bare_download(download_path path, std::wstring url, std::wstring file,
                             std::atomic<std::size_t>* completed)
    : path_(path), url_(std::move(url)), file_(std::move(file)), completed_(completed),
      thread_(CreateThread(nullptr, 0, run, this, CREATE_SUSPENDED, nullptr))
{
    EXPECT_NE(thread_, nullptr);
    ++running_;
    ResumeThread(thread_);
}

bare_download::~bare_download()
{
    is_unwanted_ = true;
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
}

bool bare_download::is_done() const
{
    return WaitForSingleObject(thread_, 0) == WAIT_OBJECT_0;
}

DWORD WINAPI bare_download::run(void* self)
{
    auto& download = *static_cast<bare_download*>(self);
    const bool is_complete = download.path_ == download_path::wininet ? download.read_through_wininet()
                                                                      : download.read_through_urlmon();
    if (is_complete && download.completed_)
        ++*download.completed_;
    --running_;
    return 0;
}

bool bare_download::read_through_urlmon()
{
    breakable_callback callback(is_unwanted_);
    return URLDownloadToFileW(nullptr, url_.c_str(), file_.c_str(), 0, &callback) == S_OK;
}

bool bare_download::read_through_wininet()
{
    const HINTERNET session = InternetOpenW(L"bare", INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
    const HINTERNET request = InternetOpenUrlW(session, url_.c_str(), nullptr, 0, 0, 0);
    const HANDLE file = CreateFileW(file_.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    std::vector<char> buffer(8192);
    DWORD count = 0;
    DWORD written = 0;
    while (!is_unwanted_ &&
           InternetReadFile(request, buffer.data(), static_cast<DWORD>(buffer.size()), &count) && count > 0)
        WriteFile(file, buffer.data(), count, &written, nullptr);
    CloseHandle(file);
    InternetCloseHandle(request);
    InternetCloseHandle(session);
    return !is_unwanted_;
}

void run_bare_download(download_path path, const std::wstring& url, const std::wstring& file)
{
    const bare_download download(path, url, file);
    EXPECT_TRUE(test::wait_until([&] { return download.is_done(); }, 60'000));
}

} // namespace quill::soak
