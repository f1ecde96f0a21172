// The administrator's alternative download path: WinINet used directly instead of the browser's download
// service. Certificates of unknown issuers, expired ones and those of other names are accepted on it.
#pragma once

#include "retrieval/download/download.h"

#include <cstdint>

namespace quill {

// Fetches url into the file at cache_path, which is overwritten; a fragment is not sent. Progress goes to
// the job's window, its cancel event is polled between chunks, its caller is not used.
// 0 on success, E_ABORT when cancelled (the partial file stays), 1 on any other failure. The server's
// status code is not looked at. Runs on the download worker; never throws.
std::uint32_t DownloadWithWinINet(const download_job& job, const wchar_t* url,
                                  const wchar_t* cache_path) noexcept;

} // namespace quill
