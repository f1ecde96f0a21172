#include "platform/temp_file_manager.h"

#include "platform/environment.h"
#include "platform/file_system.h"
#include "platform/library_function.h"
#include "platform/text.h"
#include "platform/unique_com_memory.h"

#include <shlobj.h>

#include <cwchar>
#include <filesystem>
#include <system_error>
#include <utility>

namespace quill {
namespace {

constexpr const char* query_name = "temp_directory_path";

// GetTempPath2W, which separates the temporary files of system processes, does not exist on older systems.
DWORD system_temp_path(DWORD size, wchar_t* buffer)
{
    using get_temp_path = DWORD(WINAPI*)(DWORD, wchar_t*);
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    const auto newer = library_function<get_temp_path>(kernel, "GetTempPath2W");
    return newer ? newer(size, buffer) : GetTempPathW(size, buffer);
}

std::wstring joined(const std::wstring& folder, const wchar_t* name)
{
    const bool separated = !folder.empty() && (folder.back() == L'\\' || folder.back() == L'/');
    return folder + (separated ? L"" : L"\\") + name;
}

bool exists(const std::wstring& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

} // namespace

std::wstring system_temp_directory()
{
    wchar_t path[MAX_PATH + 2] = {};
    const DWORD length = system_temp_path(MAX_PATH + 1, path);
    if (length == 0 || length > MAX_PATH) {
        const int error = static_cast<int>(length == 0 ? GetLastError() : ERROR_BUFFER_OVERFLOW);
        throw std::filesystem::filesystem_error(query_name, std::error_code(error, std::system_category()));
    }
    if (!DirectoryExists(path))
        throw std::filesystem::filesystem_error(query_name, path,
                                                std::make_error_code(std::errc::not_a_directory));
    return path;
}

std::wstring local_low_temp_directory()
{
    unique_com_string folder;
    if (FAILED(SHGetKnownFolderPath(FOLDERID_LocalAppDataLow, 0, nullptr, folder.put())) || !folder)
        return {};
    return joined(folder.get(), L"Temp");
}

temp_file_manager::temp_file_manager(error_report report, integrity_query is_low_integrity)
    : report_(std::move(report)), is_low_integrity_(is_low_integrity)
{
}

bool temp_file_manager::create_directories(const std::wstring& path) const
{
    const std::error_code error = create_missing_directories(path);
    if (!error)
        return true;
    const std::string line =
        "temp_file_manager: create_directories of " + to_utf8(path) + " failed (" + error.message() + ")";
    report_(line.c_str());
    return false;
}

bool temp_file_manager::local_low_directory(std::wstring& path) const
{
    std::wstring folder = local_low_temp_directory();
    if (folder.empty()) {
        report_("temp_file_manager: local_low temp_path failed");
        return false;
    }
    path = std::move(folder);
    return exists(path) || create_directories(path);
}

bool temp_file_manager::temp_directory(std::wstring& path) const
{
    if (is_low_integrity_(GetCurrentProcess())) {
        if (!local_low_directory(path))
            return false;
    } else {
        path = environment_variable(temp_folder_variable).value_or(L"");
        if (path.empty())
            path = system_temp_directory();
    }
    if (path.empty()) {
        report_("temp_file_manager: temp_directory_path empty");
        return false;
    }
    return DirectoryExists(path);
}

std::size_t temp_file_manager::get_temp_folder(std::size_t buffer_size, wchar_t* buffer, int create) const
{
    std::wstring path;
    if (!temp_directory(path)) {
        if (path.empty())
            return 0;
        if (create == 1 && !create_directories(path))
            return 0;
    }
    if (buffer && buffer_size > 0) {
        std::wcsncpy(buffer, path.c_str(), buffer_size - 1);
        buffer[buffer_size - 1] = L'\0';
    }
    return path.size();
}

} // namespace quill
