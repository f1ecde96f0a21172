// The WinINet functions that the download calls, as a table: what a certificate option does and which
// call can fail depends on the system, and every path has to close what it opened.
#pragma once

#include "retrieval/download/download.h"

#include <windows.h>

#include <wininet.h>

#include <cstdint>

namespace quill {

struct wininet_functions
{
    decltype(&::InternetOpenW) open;
    decltype(&::InternetQueryOptionW) query_option;
    decltype(&::InternetSetOptionW) set_option;
    decltype(&::InternetOpenUrlW) open_url;
    decltype(&::InternetConnectW) connect;
    decltype(&::HttpOpenRequestW) open_request;
    decltype(&::HttpSendRequestW) send_request;
    decltype(&::HttpQueryInfoW) query_info;
    decltype(&::InternetQueryDataAvailable) query_data_available;
    decltype(&::InternetReadFile) read_file;
    decltype(&::InternetCloseHandle) close_handle;
};

// The system's own.
extern const wininet_functions system_wininet;

// DownloadWithWinINet through the given functions.
std::uint32_t download_with(const wininet_functions& wininet, const download_job& job, const wchar_t* url,
                            const wchar_t* cache_path) noexcept;

} // namespace quill
