// Opening an address with WinINet, with relaxed checks of the server's certificate.
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

// An answer that can be read. The request is closed before the connection that it belongs to.
struct internet_request
{
    internet_handle connection; // null when the address was opened in one call
    internet_handle request;
    DWORD error = ERROR_SUCCESS; // why there is no request
};

// Lets certificates of unknown issuers, of other names and out of their time pass on this handle. Whether
// a session handle takes the option is the system's matter; a request handle always does.
void relax_certificate_checks(const wininet_functions& wininet, HINTERNET handle) noexcept;

// Sends the request for url, which must not hold a fragment, and waits for the answer's headers. A
// certificate that the session did not let pass gets one more attempt with the relaxation on the request
// itself. Redirects are followed. Throws std::bad_alloc only.
internet_request open_address(const wininet_functions& wininet, HINTERNET session, const std::wstring& url);

} // namespace quill
