// CUrl: parses a URL into its parts and composes it again.
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

// The default port of a scheme; ATL_URL_INVALID_PORT_NUMBER if it has none.
ATL_URL_PORT AtlGetDefaultUrlPort(ATL_URL_SCHEME scheme) noexcept;

// A new object, and one whose last CrackUrl failed, is an empty HTTP URL. Parts are stored verbatim: nothing
// is escaped, unescaped or lower-cased. Functions that return BOOL return FALSE for invalid arguments. Throws
// std::bad_alloc.
class CUrl
{
public:
    CUrl() { Clear(); }

    // Restores the state of a new object.
    void Clear();

    // Parses `url` into scheme, user and password, host, port, path, and the rest from "?" or "#" on (the
    // extra info). FALSE if the scheme is missing, the host is missing where the scheme requires one, or the
    // port is invalid. flags must be 0. An exception leaves the object unchanged.
    BOOL CrackUrl(LPCWSTR url, DWORD flags = 0);

    // Composes the URL; the port is written only if it differs from the scheme's default. *length: on entry
    // the capacity of `url` in characters, on return the URL's length without the terminator. If the capacity
    // is too small, *length is the required size including the terminator and the result FALSE. flags must
    // be 0.
    BOOL CreateUrl(LPWSTR url, DWORD* length, DWORD flags = 0) const;
    // The length of the composed URL in characters, without the terminator.
    DWORD GetUrlLength() const;

    // Both also set the port to the scheme's default, or ATL_URL_INVALID_PORT_NUMBER if there is none.
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
