// The alternative download path, selected by the administrator: calls WinINet directly instead of urlmon.
// Accepts certificates that are expired, of unknown issuers or issued to other names.
#pragma once

#include "retrieval/download/download.h"
#include "retrieval/download/wininet_functions.h"

#include <cstdint>

namespace quill {

// Fetches url, without its fragment, into the file at cache_path, which is overwritten. Sends progress to the
// job's window and checks its stop event between reads; job.caller is not used. Runs on the worker thread.
// Returns 0 on success, E_ABORT if cancelled (the partial file is kept), 1 on any other failure. The HTTP
// status code is ignored.
std::uint32_t DownloadWithWinINet(const download_job& job, const wchar_t* url, const wchar_t* cache_path,
                                  const wininet_functions& wininet = system_wininet) noexcept;

} // namespace quill
