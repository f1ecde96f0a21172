// CUrl: a URL taken apart and put together again.
#pragma once

#include "atl/atldef.h"

#include <string>
#include <string_view>

namespace ATL {

enum ATL_URL_SCHEME
{
    ATL_URL_SCHEME_UNKNOWN = -1,
    ATL_URL_SCHEME_FTP,
    ATL_URL_SCHEME_GOPHER,
    ATL_URL_SCHEME_HTTP,
    ATL_URL_SCHEME_HTTPS,
    ATL_URL_SCHEME_FILE,
    ATL_URL_SCHEME_NEWS,
    ATL_URL_SCHEME_MAILTO,
    ATL_URL_SCHEME_SOCKS,
};

using ATL_URL_PORT = WORD;
inline constexpr ATL_URL_PORT ATL_URL_INVALID_PORT_NUMBER = 0;
inline constexpr ATL_URL_PORT ATL_URL_DEFAULT_FTP_PORT = 21;
inline constexpr ATL_URL_PORT ATL_URL_DEFAULT_GOPHER_PORT = 70;
inline constexpr ATL_URL_PORT ATL_URL_DEFAULT_HTTP_PORT = 80;
inline constexpr ATL_URL_PORT ATL_URL_DEFAULT_HTTPS_PORT = 443;
inline constexpr ATL_URL_PORT ATL_URL_DEFAULT_SOCKS_PORT = 1080;

// The port that a scheme uses when a URL names none.
ATL_URL_PORT AtlGetDefaultUrlPort(ATL_URL_SCHEME scheme) noexcept;

// A new object, and one whose text could not be taken apart, is an empty HTTP URL. Texts are kept as they are
// given: nothing is escaped or unescaped, whatever the case of letters. Functions that return BOOL return
// FALSE for bad arguments; std::bad_alloc is thrown when memory runs out.
class CUrl
{
public:
    CUrl() { Clear(); }

    // Back to the state of a new object.
    void Clear();

    // Takes `url` apart: scheme, user and password, host, port, path, and what begins with "?" or "#".
    // FALSE when it has no scheme, no host where its scheme needs one, or a port that is no port. flags: 0.
    // An exception leaves the object unchanged.
    BOOL CrackUrl(LPCWSTR url, DWORD flags = 0);

    // Puts the URL together; a port is written only when it is not the scheme's own. *length: the capacity of
    // `url` in characters on entry, the URL's length without the terminator afterwards; when the capacity is
    // too small, what is needed with the terminator, and FALSE. flags: 0.
    BOOL CreateUrl(LPWSTR url, DWORD* length, DWORD flags = 0) const;
    // The length of what CreateUrl writes, in characters without the terminator.
    DWORD GetUrlLength() const;

    // Both set the scheme's own port as well; a scheme without one leaves ATL_URL_INVALID_PORT_NUMBER.
    BOOL SetScheme(ATL_URL_SCHEME scheme);
    BOOL SetSchemeName(LPCWSTR name);
    BOOL SetHostName(LPCWSTR name) { return set(m_hostName, name); }
    BOOL SetPortNumber(ATL_URL_PORT port);
    BOOL SetUserName(LPCWSTR name) { return set(m_userName, name); }
    BOOL SetPassword(LPCWSTR password) { return set(m_password, password); }
    BOOL SetUrlPath(LPCWSTR path) { return set(m_path, path); }
    BOOL SetExtraInfo(LPCWSTR info) { return set(m_extraInfo, info); }

    ATL_URL_SCHEME GetScheme() const noexcept { return m_scheme; }
    LPCWSTR GetSchemeName() const noexcept { return m_schemeName.c_str(); }
    LPCWSTR GetHostName() const noexcept { return m_hostName.c_str(); }
    ATL_URL_PORT GetPortNumber() const noexcept { return m_port; }
    LPCWSTR GetUserName() const noexcept { return m_userName.c_str(); }
    LPCWSTR GetPassword() const noexcept { return m_password.c_str(); }
    LPCWSTR GetUrlPath() const noexcept { return m_path.c_str(); }
    LPCWSTR GetExtraInfo() const noexcept { return m_extraInfo.c_str(); }

    DWORD GetSchemeNameLength() const noexcept { return static_cast<DWORD>(m_schemeName.size()); }
    DWORD GetHostNameLength() const noexcept { return static_cast<DWORD>(m_hostName.size()); }
    DWORD GetUserNameLength() const noexcept { return static_cast<DWORD>(m_userName.size()); }
    DWORD GetPasswordLength() const noexcept { return static_cast<DWORD>(m_password.size()); }
    DWORD GetUrlPathLength() const noexcept { return static_cast<DWORD>(m_path.size()); }
    DWORD GetExtraInfoLength() const noexcept { return static_cast<DWORD>(m_extraInfo.size()); }

private:
    static BOOL set(std::wstring& member, LPCWSTR text);
    bool crack(std::wstring_view url);
    bool crack_authority(std::wstring_view authority);
    bool crack_port(std::wstring_view digits);
    std::wstring text() const;

    ATL_URL_SCHEME m_scheme = ATL_URL_SCHEME_HTTP;
    ATL_URL_PORT m_port = ATL_URL_DEFAULT_HTTP_PORT;
    bool m_hasAuthority = true; // "//" follows the scheme
    std::wstring m_schemeName;
    std::wstring m_userName;
    std::wstring m_password;
    std::wstring m_hostName;
    std::wstring m_path;
    std::wstring m_extraInfo;
};

} // namespace ATL

#ifndef _ATL_NO_AUTOMATIC_NAMESPACE
using namespace ATL;
#endif
