#include "acceptance/system_facts.h"

#include "acceptance/server_zone.h"
#include "acceptance/windows_text.h"
#include "platform/library_function.h"
#include "platform/text.h"

#include <windows.h>

#include <exdisp.h>
#include <ole2.h>
#include <urlmon.h>

#include <cstddef>
#include <optional>

namespace quill::acceptance {
namespace {

constexpr wchar_t version_key[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr wchar_t browser_key[] = L"SOFTWARE\\Microsoft\\Internet Explorer";

std::optional<std::wstring> machine_text(const std::wstring& key, const wchar_t* name)
{
    wchar_t text[1024]{};
    DWORD size = sizeof text;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size) !=
        ERROR_SUCCESS)
        return std::nullopt;
    return text;
}

std::string shown(const std::optional<std::wstring>& text)
{
    return text ? to_utf8(*text) : "not in the registry";
}

std::string windows_version()
{
    using get_version = LONG(WINAPI*)(OSVERSIONINFOEXW*);
    const auto get = library_function<get_version>(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion");
    OSVERSIONINFOEXW version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (get == nullptr || get(&version) != 0)
        return "RtlGetVersion failed";
    return std::to_string(version.dwMajorVersion) + "." + std::to_string(version.dwMinorVersion) + "." +
           std::to_string(version.dwBuildNumber) +
           (version.wProductType == VER_NT_WORKSTATION ? ", workstation" : ", server");
}

std::string product_name()
{
    DWORD revision = 0;
    DWORD size = sizeof revision;
    const bool has_revision = RegGetValueW(HKEY_LOCAL_MACHINE, version_key, L"UBR", RRF_RT_REG_DWORD, nullptr,
                                           &revision, &size) == ERROR_SUCCESS;
    const auto release = machine_text(version_key, L"DisplayVersion");
    return shown(machine_text(version_key, L"ProductName")) + (release ? " " + to_utf8(*release) : "") +
           ", build " + shown(machine_text(version_key, L"CurrentBuild")) +
           (has_revision ? "." + std::to_string(revision) : "");
}

std::string processor()
{
    SYSTEM_INFO system{};
    GetNativeSystemInfo(&system);
    const std::string count = std::to_string(system.dwNumberOfProcessors) + " logical processors";
    return (system.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64 ? "x64, " : "not x64, ") + count;
}

std::wstring system_file(const wchar_t* name)
{
    wchar_t folder[MAX_PATH]{};
    GetSystemDirectoryW(folder, MAX_PATH);
    return std::wstring(folder) + L"\\" + name;
}

std::wstring class_text(REFCLSID id)
{
    wchar_t text[64]{};
    StringFromGUID2(id, text, 64);
    return text;
}

// The class that shows HTML pages.
std::wstring html_class()
{
    return machine_text(L"SOFTWARE\\Classes\\MIME\\Database\\Content Type\\text/html", L"CLSID")
        .value_or(std::wstring());
}

bool file_exists(const std::wstring& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string part_is_missing(const std::string& what, const std::wstring& class_id)
{
    if (class_id.empty())
        return what + ": no class is registered";
    const std::wstring server = server_of_class(class_id);
    if (server.empty())
        return what + ": the class " + to_utf8(class_id) + " is not registered";
    return file_exists(server) ? "" : what + ": " + to_utf8(server) + " does not exist";
}

std::optional<std::uint32_t> policy_of(IInternetSecurityManager& security, const wchar_t* url, DWORD action)
{
    constexpr DWORD unwritten = 0xFFFFFFFF;
    DWORD policy = unwritten;
    // The result says whether the action is allowed; Wine fails if the user would have to be asked.
    security.ProcessUrlAction(url, action, reinterpret_cast<BYTE*>(&policy), sizeof policy, nullptr, 0,
                              PUAF_NOUI, 0);
    if (policy == unwritten)
        return std::nullopt;
    return policy;
}

server_zone zone_of_server()
{
    constexpr wchar_t server[] = L"http://127.0.0.1/";
    constexpr wchar_t enhanced_security[] =
        L"SOFTWARE\\Microsoft\\Active Setup\\Installed Components\\{A509B1A7-37EF-4b3f-8CFC-4F3A74704073}";
    server_zone found;
    DWORD value = 0;
    DWORD size = sizeof value;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, enhanced_security, L"IsInstalled", RRF_RT_REG_DWORD, nullptr, &value,
                     &size) == ERROR_SUCCESS)
        found.enhanced_security = value;
    // By its class, so that the program also starts where urlmon.dll is missing.
    const HRESULT initialized = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    IInternetSecurityManager* security = nullptr;
    if (SUCCEEDED(CoCreateInstance(CLSID_InternetSecurityManager, nullptr, CLSCTX_INPROC_SERVER,
                                   IID_IInternetSecurityManager, reinterpret_cast<void**>(&security)))) {
        DWORD zone = 0;
        if (SUCCEEDED(security->MapUrlToZone(server, &zone, 0)))
            found.zone = zone;
        found.controls = policy_of(*security, server, URLACTION_ACTIVEX_RUN);
        found.downloads = policy_of(*security, server, URLACTION_SHELL_FILE_DOWNLOAD);
        security->Release();
    }
    if (SUCCEEDED(initialized))
        CoUninitialize();
    return found;
}

} // namespace

std::string wine_version()
{
    using get_version = const char*(CDECL*)();
    const auto get = library_function<get_version>(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
    return get != nullptr ? get() : "";
}

std::string file_version(const std::wstring& path)
{
    if (path.empty())
        return "not registered";
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &ignored);
    const std::string where = " (" + to_utf8(path) + ")";
    if (size == 0)
        return (file_exists(path) ? "no version in the file" : "the file is missing") + where;
    std::vector<std::byte> data(size);
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (!GetFileVersionInfoW(path.c_str(), 0, size, data.data()) ||
        !VerQueryValueW(data.data(), L"\\", reinterpret_cast<void**>(&info), &length) || info == nullptr)
        return "no version in the file" + where;
    return std::to_string(HIWORD(info->dwFileVersionMS)) + "." +
           std::to_string(LOWORD(info->dwFileVersionMS)) + "." +
           std::to_string(HIWORD(info->dwFileVersionLS)) + "." +
           std::to_string(LOWORD(info->dwFileVersionLS)) + where;
}

std::wstring server_of_class(const std::wstring& class_id)
{
    const std::wstring path =
        machine_text(L"SOFTWARE\\Classes\\CLSID\\" + class_id + L"\\InprocServer32", nullptr)
            .value_or(std::wstring());
    wchar_t expanded[MAX_PATH]{};
    ExpandEnvironmentStringsW(path.c_str(), expanded, MAX_PATH);
    std::wstring server = expanded;
    if (!server.empty() && server.find_first_of(L"\\/") == std::wstring::npos)
        server = system_file(server.c_str());
    return server;
}

std::string missing_engine_part()
{
    const std::string control = part_is_missing("the WebBrowser control", class_text(CLSID_WebBrowser));
    return control.empty() ? part_is_missing("the engine for HTML pages", html_class()) : control;
}

std::vector<std::pair<std::string, std::string>> system_facts()
{
    const std::string wine = wine_version();
    std::vector<std::pair<std::string, std::string>> facts = {
        {"system", wine.empty() ? "Windows"
                                : "Wine " + wine + ", NOT Windows: nothing below shows how Windows behaves"},
        {"version (RtlGetVersion)", windows_version()},
        {"version (registry)", product_name()},
        {"processor", processor()},
        {"Internet Explorer (registry)", "Version " + shown(machine_text(browser_key, L"Version")) +
                                             ", svcVersion " +
                                             shown(machine_text(browser_key, L"svcVersion"))},
        {"WebBrowser control", file_version(server_of_class(class_text(CLSID_WebBrowser)))},
        {"HTML engine", file_version(server_of_class(html_class()))},
    };
    for (const wchar_t* library :
         {L"urlmon.dll", L"wininet.dll", L"msi.dll", L"ole32.dll", L"msvcrt.dll", L"ucrtbase.dll"})
        facts.emplace_back(to_utf8(library), file_version(system_file(library)));
    for (auto& fact : server_zone_facts(zone_of_server()))
        facts.push_back(std::move(fact));
    return facts;
}

bool has_administrator_rights()
{
    BYTE administrators[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof administrators;
    BOOL is_member = FALSE;
    return CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &size) &&
           CheckTokenMembership(nullptr, administrators, &is_member) && is_member;
}

} // namespace quill::acceptance
