#include "logging/log_file_name.h"

#include "platform/environment.h"
#include "platform/file_system.h"
#include "platform/impl/windows/module_traits.h"

#include <windows.h>

#include <shlobj.h>
#include <shlwapi.h>

namespace quill {
namespace {

constexpr std::size_t profile_buffer_size = 516;

std::optional<std::wstring> profile_folder()
{
    wchar_t buffer[profile_buffer_size] = {};
    if (SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_PROFILE, nullptr, SHGFP_TYPE_CURRENT, buffer)))
        return buffer;
    auto value = environment_variable(L"USERPROFILE");
    if (value && value->size() >= profile_buffer_size)
        value.reset();
    return value;
}

std::wstring with_doubled_braces(std::wstring_view text)
{
    std::wstring doubled;
    doubled.reserve(text.size());
    for (const wchar_t c : text) {
        doubled += c;
        if (c == L'{' || c == L'}')
            doubled += c;
    }
    return doubled;
}

} // namespace

std::wstring profile_log_folder(const std::optional<std::wstring>& profile)
{
    if (!profile)
        return {};
    const std::wstring folder = *profile + L"\\.quill\\test";
    return DirectoryExists(folder) ? folder : std::wstring();
}

std::wstring app_data_folder()
{
    wchar_t folder[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder)))
        return {};
    for (const wchar_t* level : {L"Quill", L"DocStudio", L"14"})
        PathAppendW(folder, level);
    DirectoryCreateRecursively(folder);

    wchar_t short_form[MAX_PATH] = {};
    const DWORD length = GetShortPathNameW(folder, short_form, MAX_PATH);
    return length >= 1 && length < MAX_PATH ? short_form : folder;
}

std::wstring log_file_name_pattern(std::wstring_view folder, std::wstring_view stem)
{
    return with_doubled_braces(folder) + L"/" + with_doubled_braces(stem) + L"-{:d}.log";
}

std::wstring log_file_name_pattern()
{
    std::wstring folder = profile_log_folder(profile_folder());
    if (folder.empty())
        folder = app_data_folder();
    wchar_t stem[MAX_PATH] = {};
    module_stem(nullptr, stem);
    return log_file_name_pattern(folder, stem);
}

} // namespace quill
