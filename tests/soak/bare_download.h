// A download through the same service without the module, to measure what the system itself allocates for
// each.
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
    // `completed` is incremented when the file is there, before the download ends.
    bare_download(download_path path, std::wstring url, std::wstring file,
                  std::atomic<std::size_t>* completed = nullptr);
    bare_download(const bare_download&) = delete;
    bare_download& operator=(const bare_download&) = delete;
    // Aborts the download if it is still running, and waits for the end of the thread without dispatching
    // messages.
    ~bare_download();

    bool is_done() const;

    // The number of downloads that have not ended.
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

// Fetches the URL into the file and waits for the end; dispatches messages of the calling thread meanwhile.
void run_bare_download(download_path path, const std::wstring& url, const std::wstring& file);

} // namespace quill::soak
