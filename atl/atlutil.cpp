#include "atl/atlutil.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <utility>

namespace ATL {
namespace {

struct known_scheme
{
    std::wstring_view name;
    ATL_URL_PORT port;
    bool has_authority;
};

// In the order of ATL_URL_SCHEME.
constexpr known_scheme known_schemes[] = {
    {L"ftp", ATL_URL_DEFAULT_FTP_PORT, true},        {L"gopher", ATL_URL_DEFAULT_GOPHER_PORT, true},
    {L"http", ATL_URL_DEFAULT_HTTP_PORT, true},      {L"https", ATL_URL_DEFAULT_HTTPS_PORT, true},
    {L"file", ATL_URL_INVALID_PORT_NUMBER, true},    {L"news", ATL_URL_INVALID_PORT_NUMBER, false},
    {L"mailto", ATL_URL_INVALID_PORT_NUMBER, false}, {L"socks", ATL_URL_DEFAULT_SOCKS_PORT, true},
};

bool equal_ignoring_case(std::wstring_view left, std::wstring_view right)
{
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

ATL_URL_SCHEME scheme_named(std::wstring_view name)
{
    const auto* const found =
        std::find_if(std::begin(known_schemes), std::end(known_schemes),
                     [&](const auto& known) { return equal_ignoring_case(known.name, name); });
    return found == std::end(known_schemes) ? ATL_URL_SCHEME_UNKNOWN
                                            : static_cast<ATL_URL_SCHEME>(found - std::begin(known_schemes));
}

bool is_scheme_name(std::wstring_view name)
{
    const auto is_letter = [](wchar_t c) { return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z'); };
    return !name.empty() && is_letter(name.front()) && std::all_of(name.begin(), name.end(), [&](wchar_t c) {
        return is_letter(c) || (c >= L'0' && c <= L'9') || c == L'+' || c == L'-' || c == L'.';
    });
}

} // namespace

ATL_URL_PORT AtlGetDefaultUrlPort(ATL_URL_SCHEME scheme) noexcept
{
    const auto index = static_cast<std::size_t>(scheme);
    return index < std::size(known_schemes) ? known_schemes[index].port : ATL_URL_INVALID_PORT_NUMBER;
}

void CUrl::Clear()
{
    for (std::wstring* const member : {&m_userName, &m_password, &m_hostName, &m_path, &m_extraInfo})
        member->clear();
    m_hasAuthority = true;
    SetScheme(ATL_URL_SCHEME_HTTP);
}

BOOL CUrl::SetScheme(ATL_URL_SCHEME scheme)
{
    const auto index = static_cast<std::size_t>(scheme);
    if (index >= std::size(known_schemes))
        return FALSE;
    return SetSchemeName(std::wstring(known_schemes[index].name).c_str());
}

BOOL CUrl::SetSchemeName(LPCWSTR name)
{
    if (!name || !is_scheme_name(name) || !set(m_schemeName, name))
        return FALSE;
    m_scheme = scheme_named(name);
    m_port = AtlGetDefaultUrlPort(m_scheme);
    if (m_scheme != ATL_URL_SCHEME_UNKNOWN)
        m_hasAuthority = known_schemes[static_cast<std::size_t>(m_scheme)].has_authority;
    return TRUE;
}

BOOL CUrl::SetPortNumber(ATL_URL_PORT port)
{
    m_port = port;
    return TRUE;
}

BOOL CUrl::set(std::wstring& member, LPCWSTR text)
{
    if (!text)
        return FALSE;
    member = text;
    return TRUE;
}

BOOL CUrl::CrackUrl(LPCWSTR url, DWORD flags)
{
    if (!url || flags != 0)
        return FALSE;
    CUrl cracked; // an exception leaves this object unchanged
    const bool is_url = cracked.crack(url);
    if (!is_url)
        cracked.Clear();
    *this = std::move(cracked);
    return is_url;
}

bool CUrl::crack(std::wstring_view url)
{
    Clear();
    const auto colon = url.find(L':');
    if (colon == std::wstring_view::npos || !SetSchemeName(std::wstring(url.substr(0, colon)).c_str()))
        return false;
    url.remove_prefix(colon + 1);

    const bool given_authority = url.substr(0, 2) == L"//";
    if (m_scheme == ATL_URL_SCHEME_UNKNOWN)
        m_hasAuthority = given_authority;
    else if (m_hasAuthority && !given_authority)
        return false;
    if (m_hasAuthority) {
        url.remove_prefix(2);
        const auto end = std::min(url.find_first_of(L"/\\?#"), url.size());
        if (!crack_authority(url.substr(0, end)))
            return false;
        url.remove_prefix(end);
    }
    const auto path_end = std::min(url.find_first_of(L"?#"), url.size());
    m_path = url.substr(0, path_end);
    m_extraInfo = url.substr(path_end);
    return true;
}

bool CUrl::crack_authority(std::wstring_view authority)
{
    // A password may contain an unescaped "@": the last one ends the user information.
    const auto at = authority.rfind(L'@');
    if (at != std::wstring_view::npos) {
        const std::wstring_view user = authority.substr(0, at);
        const auto colon = user.find(L':');
        m_userName = user.substr(0, colon);
        if (colon != std::wstring_view::npos)
            m_password = user.substr(colon + 1);
        authority.remove_prefix(at + 1);
    }
    // The colons inside the brackets belong to the IPv6 address.
    const auto bracket = authority.starts_with(L'[') ? authority.find(L']') : 0;
    if (bracket == std::wstring_view::npos)
        return false;
    const auto colon = authority.find(L':', bracket);
    m_hostName = authority.substr(0, colon);
    if (m_hostName.empty() && m_scheme != ATL_URL_SCHEME_FILE)
        return false;
    return colon == std::wstring_view::npos || crack_port(authority.substr(colon + 1));
}

bool CUrl::crack_port(std::wstring_view digits)
{
    unsigned number = 0;
    for (const wchar_t c : digits) {
        if (c < L'0' || c > L'9')
            return false;
        number = number * 10 + static_cast<unsigned>(c - L'0');
        if (number > MAXWORD)
            return false;
    }
    // "host:" without digits means the scheme's default port.
    if (!digits.empty())
        m_port = static_cast<ATL_URL_PORT>(number);
    return digits.empty() || number != 0;
}

std::wstring CUrl::text() const
{
    std::wstring result = m_schemeName + L':';
    if (m_hasAuthority) {
        result += L"//";
        if (!m_userName.empty()) {
            result += m_userName;
            if (!m_password.empty())
                result += L':' + m_password;
            result += L'@';
        }
        result += m_hostName;
        if (m_port != AtlGetDefaultUrlPort(m_scheme) && m_port != ATL_URL_INVALID_PORT_NUMBER)
            result += L':' + std::to_wstring(m_port);
    }
    return result + m_path + m_extraInfo;
}

BOOL CUrl::CreateUrl(LPWSTR url, DWORD* length, DWORD flags) const
{
    if (!url || !length || flags != 0)
        return FALSE;
    const std::wstring result = text();
    const bool fits = result.size() < *length;
    *length = static_cast<DWORD>(result.size() + (fits ? 0 : 1));
    if (!fits)
        return FALSE;
    std::wmemcpy(url, result.c_str(), result.size() + 1);
    return TRUE;
}

DWORD CUrl::GetUrlLength() const
{
    return static_cast<DWORD>(text().size());
}

} // namespace ATL
