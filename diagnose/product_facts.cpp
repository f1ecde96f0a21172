#include "diagnose/product_facts.h"

#include "active_doc/identifiers.h"
#include "diagnose/path_place.h"
#include "diagnose/registered_values.h"
#include "diagnose/report.h"
#include "diagnose/resources.h"
#include "logging/log_file_name.h"
#include "logging/logger_choice.h"
#include "platform/com_categories.h"
#include "platform/environment.h"
#include "platform/library_function.h"
#include "platform/settings.h"
#include "platform/temp_file_manager.h"
#include "platform/text.h"
#include "platform/unique_com_memory.h"
#include "retrieval/download/download_switch.h"
#include "sharepoint/identifiers.h"

#include <windows.h>

#include <lmcons.h>
#include <quill_version.h>
#include <shlobj.h>

#include <algorithm>
#include <stdexcept>

namespace quill::diagnose {
namespace {

std::wstring text_of_guid(const GUID& guid)
{
    constexpr int length = 39;
    wchar_t text[length] = {};
    StringFromGUID2(guid, text, length);
    return text;
}

// The scripts are ASCII.
std::vector<registered_value> read_script(WORD id)
{
    const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(id), L"REGISTRY");
    const HGLOBAL loaded = found ? LoadResource(nullptr, found) : nullptr;
    const auto* const text = static_cast<const char*>(loaded ? LockResource(loaded) : nullptr);
    auto rows = registered_values(text ? widened({text, SizeofResource(nullptr, found)}) : std::wstring());
    if (rows.empty())
        throw std::runtime_error("the program's own resources are damaged");
    return rows;
}

switch_source source_of(wininet_switch_source source)
{
    switch (source) {
    case wininet_switch_source::user:
        return switch_source::user;
    case wininet_switch_source::machine:
        return switch_source::machine;
    case wininet_switch_source::machine_32_bit:
        return switch_source::machine_32_bit;
    case wininet_switch_source::none:
        break;
    }
    return switch_source::none;
}

void read_folders(product_settings& settings)
{
    settings.temp_variable = temp_folder_variable;
    settings.is_temp_folder_set = !environment_variable(temp_folder_variable).value_or(L"").empty();
    settings.low_temp_folder = local_low_temp_directory();
    std::wstring variable;
    std::wstring value;
    for (const wchar_t* name : {L"TMP", L"TEMP"}) {
        variable = name;
        value = environment_variable(name).value_or(L"");
        if (!value.empty())
            break;
    }
    try {
        // The system completes a relative path with the program's current folder.
        if (value.empty() || is_absolute(value))
            settings.system_temp_folder = system_temp_directory();
    } catch (const std::exception&) {
        settings.system_temp_folder.clear();
    }
    if (settings.system_temp_folder.empty()) {
        settings.system_temp_variable = variable;
        settings.system_temp_value = value;
    }
    try {
        temp_file_manager([](const char*) {}, [](HANDLE) { return false; })
            .temp_directory(settings.temp_folder);
    } catch (const std::exception&) {
        settings.temp_folder.clear(); // the system has none
    }
    if (!settings.is_temp_folder_set && settings.system_temp_folder.empty())
        settings.temp_folder.clear();
    for (std::wstring* folder :
         {&settings.temp_folder, &settings.system_temp_folder, &settings.low_temp_folder}) {
        while (folder->size() > 3 && (folder->back() == L'\\' || folder->back() == L'/'))
            folder->pop_back();
    }
}

constexpr const wchar_t* level_variable = L"QUILL_LOG_LEVEL";
constexpr const wchar_t* sinks_variable = L"QUILL_LOG_SINKS";

// The module finds its names anywhere in the text.
std::vector<std::wstring> unknown_sinks()
{
    std::vector<std::wstring> unknown;
    std::wstring text = environment_variable(sinks_variable).value_or(L"") + L" ";
    std::wstring word;
    for (const wchar_t c : text) {
        if (std::wstring_view(L" \t,;|+").find(c) == std::wstring_view::npos) {
            word += c;
            continue;
        }
        if (!word.empty() && sinks_from_text(to_utf8(word)).empty())
            unknown.push_back(word);
        word.clear();
    }
    return unknown;
}

void read_log(product_settings& settings)
{
    settings.variables = {temp_folder_variable, level_variable, sinks_variable};
    const auto level = environment_variable("QUILL_LOG_LEVEL");
    settings.is_log_set = level.has_value();
    if (!level)
        return;
    settings.log_level = environment_variable(level_variable).value_or(L"");
    settings.is_log_on = level_from_name(*level) != log_level::off;
    const auto sinks = sinks_from_text(environment_variable("QUILL_LOG_SINKS").value_or(""));
    settings.is_log_to_file = std::ranges::count(sinks, log_sink::file) > 0;
    if (settings.is_log_on)
        settings.unknown_sinks = unknown_sinks();
    if (!settings.is_log_on || !settings.is_log_to_file)
        return;
    try {
        // Creates the folder, as the module does when the log is on.
        const std::wstring pattern = log_file_name_pattern();
        settings.log_folder = pattern.substr(0, pattern.find_last_of(L'/'));
    } catch (const std::exception&) {
        settings.log_folder.clear();
    }
}

std::wstring folder_of(REFKNOWNFOLDERID id)
{
    unique_com_string path;
    return SUCCEEDED(SHGetKnownFolderPath(id, 0, nullptr, path.put())) && path ? path.get() : L"";
}

void read_windows_version(system_facts& system)
{
    using get_version = LONG(WINAPI*)(OSVERSIONINFOEXW*);
    const auto read = library_function<get_version>(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion");
    OSVERSIONINFOEXW version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (!read || read(&version) != 0) {
        system.windows_version = L"Windows, version not known";
        return;
    }
    system.windows_major = version.dwMajorVersion;
    system.windows_minor = version.dwMinorVersion;
    system.windows_version = L"Windows " + number_text(version.dwMajorVersion) + L"." +
                             number_text(version.dwMinorVersion) + L"." + number_text(version.dwBuildNumber) +
                             L", 64-bit";
}

bool is_elevated()
{
    unique_handle token;
    TOKEN_ELEVATION elevation{};
    DWORD size = 0;
    return OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.put()) &&
           GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof elevation, &size) &&
           elevation.TokenIsElevated != 0;
}

} // namespace

product_constants read_constants()
{
    product_constants product;
    product.document_class = text_of_guid(CLSID_ActiveDocCtrl);
    product.helper_class = text_of_guid(CLSID_SharepointBrowserHelperObject);
    product.type_library = text_of_guid(LIBID_QuillPDF_IE_ActiveDocLib);
    product.app_container_category = text_of_guid(CATID_AppContainerCompatible);
    product.viewer_progid = inner_viewer_progid;
    product.module_file = widened(QUILL_MODULE_FILE);
    product.version = widened(QUILL_VERSION_TEXT);
    product.document_values = read_script(QUILL_DOCUMENT_SCRIPT);
    product.helper_values = read_script(QUILL_HELPER_SCRIPT);
    return product;
}

product_settings read_settings()
{
    product_settings settings;
    wininet_switch_source source{};
    settings.uses_wininet = read_wininet_switch(source) == wininet_switch_on;
    settings.wininet_source = source_of(source);
    settings.wininet_key = wininet_switch_key;
    settings.wininet_value = wininet_switch_value;
    settings.editor_path = read_exepath();
    settings.editor_key = settings_key_paths[static_cast<std::size_t>(settings_key::settings)];
    read_folders(settings);
    read_log(settings);
    return settings;
}

system_facts read_system()
{
    system_facts system;
    wchar_t user[UNLEN + 1] = {};
    DWORD size = ARRAYSIZE(user);
    system.user = GetUserNameW(user, &size) ? user : L"not known";
    system.is_elevated = is_elevated();
    read_windows_version(system);
    system.program_files = folder_of(FOLDERID_ProgramFiles);
    system.system_folder = folder_of(FOLDERID_System);
    return system;
}

} // namespace quill::diagnose
