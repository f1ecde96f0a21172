// A download without the module, through the same service: what the system itself keeps of each.
#pragma once

#include "tests/soak/download_setup.h"

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <string>

namespace quill::soak {

// Fetches on a thread of its own, as the module's worker does.
class bare_download
{
public:
    // What `completed` points to is counted up when the file is there, before the download is done.
    bare_download(download_path path, std::wstring url, std::wstring file,
                  std::atomic<std::size_t>* completed = nullptr);
    bare_download(const bare_download&) = delete;
    bare_download& operator=(const bare_download&) = delete;
    // Breaks the download off when it still runs, and waits for the thread's end without pumping messages.
    ~bare_download();

    bool is_done() const;

    // How many there are that have not ended.
    static std::size_t running() { return running_; }

private:
    static DWORD WINAPI run(void* self);
    bool read_through_urlmon();
    bool read_through_wininet();

    const download_path path_;
    const std::wstring url_;
    const std::wstring file_;
    std::atomic<std::size_t>* const completed_;
    std::atomic<bool> is_unwanted_ = false;
    static inline std::atomic<std::size_t> running_ = 0;
    HANDLE thread_ = nullptr;
};

// Fetches the URL into the file and waits for the end; the calling thread's messages are delivered meanwhile.
void run_bare_download(download_path path, const std::wstring& url, const std::wstring& file);

} // namespace quill::soak
