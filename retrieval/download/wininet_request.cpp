#include "retrieval/download/wininet_request.h"

#include <utility>

namespace quill {
namespace {

// Exactly these three are ignored; revocation is still checked.
constexpr DWORD relaxed_checks = SECURITY_FLAG_IGNORE_UNKNOWN_CA | SECURITY_FLAG_IGNORE_CERT_CN_INVALID |
                                 SECURITY_FLAG_IGNORE_CERT_DATE_INVALID;
static_assert(relaxed_checks == 0x3100);

// Reported for a certificate error without a code of its own, also together with an ignored one. The headers
// do not define it.
constexpr DWORD error_invalid_certificate = INTERNET_ERROR_BASE + 169;

bool is_certificate_error(DWORD error) noexcept
{
    switch (error) {
    case ERROR_INTERNET_INVALID_CA:
    case ERROR_INTERNET_SEC_CERT_CN_INVALID:
    case ERROR_INTERNET_SEC_CERT_DATE_INVALID:
    case ERROR_INTERNET_SEC_CERT_ERRORS: // several at once
    case error_invalid_certificate:
        return true;
    default:
        return false;
    }
}

struct url_parts
{
    std::wstring host;
    std::wstring user;
    std::wstring password;
    std::wstring object; // path and query
    INTERNET_PORT port = 0;
    bool is_secure = false;
};

// Returns false with the last error set, also for a URL without a host.
bool split_url(const std::wstring& url, url_parts& parts)
{
    URL_COMPONENTSW found{};
    found.dwStructSize = sizeof found;
    // A null pointer with a non-zero length requests a pointer into the URL itself.
    found.dwHostNameLength = 1;
    found.dwUserNameLength = 1;
    found.dwPasswordLength = 1;
    found.dwUrlPathLength = 1;
    found.dwExtraInfoLength = 1;
    if (!InternetCrackUrlW(url.c_str(), static_cast<DWORD>(url.size()), 0, &found))
        return false;
    // Succeeds without a host and leaves the last error stale.
    if (!found.lpszHostName || found.dwHostNameLength == 0) {
        SetLastError(ERROR_INTERNET_INVALID_URL);
        return false;
    }
    parts.host.assign(found.lpszHostName, found.dwHostNameLength);
    if (found.lpszUserName)
        parts.user.assign(found.lpszUserName, found.dwUserNameLength);
    if (found.lpszPassword)
        parts.password.assign(found.lpszPassword, found.dwPasswordLength);
    if (found.lpszUrlPath)
        parts.object.assign(found.lpszUrlPath, found.dwUrlPathLength);
    if (!parts.object.starts_with(L'/'))
        parts.object.insert(0, 1, L'/');
    if (found.lpszExtraInfo)
        parts.object.append(found.lpszExtraInfo, found.dwExtraInfoLength);
    parts.port = found.nPort;
    parts.is_secure = found.nScheme == INTERNET_SCHEME_HTTPS;
    return true;
}

const wchar_t* text_or_null(const std::wstring& text) noexcept
{
    return text.empty() ? nullptr : text.c_str();
}

// The option must be set between creating and sending the request, so InternetOpenUrlW cannot be used.
internet_request open_relaxed(const wininet_functions& wininet, HINTERNET session, const std::wstring& url)
{
    internet_request opened{own(wininet, nullptr), own(wininet, nullptr), ERROR_SUCCESS};
    url_parts parts;
    if (!split_url(url, parts)) {
        opened.error = GetLastError();
        return opened;
    }
    opened.connection =
        own(wininet, wininet.connect(session, parts.host.c_str(), parts.port, text_or_null(parts.user),
                                     text_or_null(parts.password), INTERNET_SERVICE_HTTP, 0, 0));
    if (!opened.connection) {
        opened.error = GetLastError();
        return opened;
    }
    // NTLM authenticates the connection and needs several requests on it.
    const DWORD flags = INTERNET_FLAG_KEEP_CONNECTION | (parts.is_secure ? INTERNET_FLAG_SECURE : 0);
    opened.request = own(wininet, wininet.open_request(opened.connection.get(), L"GET", parts.object.c_str(),
                                                       nullptr, nullptr, nullptr, flags, 0));
    if (!opened.request) {
        opened.error = GetLastError();
        return opened;
    }
    relax_certificate_checks(wininet, opened.request.get());
    if (!wininet.send_request(opened.request.get(), nullptr, 0, nullptr, 0)) {
        opened.error = GetLastError();
        opened.request.reset();
    }
    return opened;
}

} // namespace

internet_handle own(const wininet_functions& wininet, HINTERNET handle) noexcept
{
    return internet_handle(handle, internet_handle_closer{wininet.close_handle});
}

void relax_certificate_checks(const wininet_functions& wininet, HINTERNET handle) noexcept
{
    DWORD flags = 0;
    DWORD size = sizeof flags;
    wininet.query_option(handle, INTERNET_OPTION_SECURITY_FLAGS, &flags, &size);
    flags |= relaxed_checks;
    wininet.set_option(handle, INTERNET_OPTION_SECURITY_FLAGS, &flags, sizeof flags);
}

internet_request open_internet_url(const wininet_functions& wininet, HINTERNET session,
                                   const std::wstring& url)
{
    internet_request opened{own(wininet, nullptr),
                            own(wininet, wininet.open_url(session, url.c_str(), nullptr, 0, 0, 0)),
                            ERROR_SUCCESS};
    if (opened.request)
        return opened;
    opened.error = GetLastError();
    if (is_certificate_error(opened.error))
        opened = open_relaxed(wininet, session, url);
    return opened;
}

} // namespace quill
