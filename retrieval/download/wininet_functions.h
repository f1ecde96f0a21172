// The WinINet functions that the download calls, as a table, so that tests can inject faults and check that
// each path closes its handles.
#pragma once

#include <windows.h>

#include <wininet.h>

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

extern const wininet_functions system_wininet;

} // namespace quill
