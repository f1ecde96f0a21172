// Opens a URL with WinINet and relaxed certificate checks, for the alternative download path.
#pragma once

#include "retrieval/download/wininet_functions.h"

#include <memory>
#include <string>

namespace quill {

struct internet_handle_closer
{
    decltype(&::InternetCloseHandle) close;
    void operator()(HINTERNET handle) const noexcept { close(handle); }
};
using internet_handle = std::unique_ptr<void, internet_handle_closer>;

internet_handle own(const wininet_functions& wininet, HINTERNET handle) noexcept;

// A request whose response can be read. Closed before its connection.
struct internet_request
{
    internet_handle connection; // null if the URL was opened in one call
    internet_handle request;    // null if the URL could not be opened
    DWORD error = ERROR_SUCCESS;
};

// Accepts certificates that are expired, of unknown issuers or issued to other names. Every system accepts
// the option on a request handle, but not every one on a session handle.
void relax_certificate_checks(const wininet_functions& wininet, HINTERNET handle) noexcept;

// Sends a request for url, which must not contain a fragment, and receives the response headers. After a
// certificate error, tries once more with relaxed checks on the request itself. Follows redirects. Throws
// std::bad_alloc only.
internet_request open_internet_url(const wininet_functions& wininet, HINTERNET session,
                                   const std::wstring& url);

} // namespace quill
