#include "diagnose/download_folders.h"

#include "diagnose/registry_value.h"
#include "diagnose/report.h"
#include "platform/unique_handle.h"
#include "retrieval/download/cache_folder.h"
#include "retrieval/download/folder_numbers.h"

#include <windows.h>

#include <algorithm>
#include <string_view>

namespace quill::diagnose {
namespace {

std::uint64_t joined(DWORD high, DWORD low)
{
    return std::uint64_t{high} << 32 | low;
}

file_time time_of(const FILETIME& time)
{
    return joined(time.dwHighDateTime, time.dwLowDateTime);
}

file_time now()
{
    FILETIME time{};
    GetSystemTimeAsFileTime(&time);
    return time_of(time);
}

template <typename Data>
folder_entry entry_of(std::wstring name, const Data& data)
{
    folder_entry entry;
    entry.name = std::move(name);
    entry.is_folder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    entry.is_link = (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    entry.size = joined(data.nFileSizeHigh, data.nFileSizeLow);
    entry.newest = std::max(time_of(data.ftCreationTime), time_of(data.ftLastWriteTime));
    return entry;
}

DWORD list(const std::wstring& pattern, std::vector<folder_entry>& entries)
{
    WIN32_FIND_DATAW data{};
    const unique_find_handle search(FindFirstFileExW(
        pattern.c_str(), FindExInfoBasic, &data, FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH));
    if (!search) {
        // The second one if the only match is a link to nothing, on some file systems.
        const DWORD error = GetLastError();
        return error == ERROR_FILE_NOT_FOUND || error == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : error;
    }
    do {
        const std::wstring_view name = data.cFileName;
        if (name != L"." && name != L"..")
            entries.push_back(entry_of(std::wstring(name), data));
    } while (FindNextFileW(search.get(), &data));
    return GetLastError() == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : GetLastError();
}

// The entries that have the name of a download folder. A pattern without a match and a folder that does not
// exist are the same error, so the folder is tested first.
DWORD list_downloads(const std::wstring& temp_folder, std::vector<folder_entry>& entries)
{
    const DWORD attributes = GetFileAttributesW(temp_folder.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return GetLastError();
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        return ERROR_DIRECTORY;
    const DWORD error = list(temp_folder + L"\\" + std::wstring(cache_folder_prefix) + L"*", entries);
    std::erase_if(entries, [](const folder_entry& entry) { return !is_download_folder(entry); });
    return error;
}

// Opens the entry itself, never what it links to. sharing: what other programs may do meanwhile.
unique_handle open_entry(const std::wstring& path, DWORD access, DWORD sharing)
{
    return unique_handle(CreateFileW(path.c_str(), access | DELETE | FILE_READ_ATTRIBUTES, sharing, nullptr,
                                     OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                     nullptr));
}

// By the handle: a search by path would be refused as long as the folder is open for its removal.
DWORD list(HANDLE folder, std::vector<folder_entry>& entries)
{
    alignas(FILE_FULL_DIR_INFO) BYTE buffer[16 * 1024];
    while (GetFileInformationByHandleEx(folder, FileFullDirectoryInfo, buffer, sizeof buffer)) {
        for (const BYTE* position = buffer;;) {
            const auto* const data = reinterpret_cast<const FILE_FULL_DIR_INFO*>(position);
            folder_entry entry;
            entry.name.assign(data->FileName, data->FileNameLength / sizeof(wchar_t));
            entry.is_folder = (data->FileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            entry.is_link = (data->FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
            entry.size = static_cast<std::uint64_t>(data->EndOfFile.QuadPart);
            entry.newest =
                static_cast<file_time>(std::max(data->CreationTime.QuadPart, data->LastWriteTime.QuadPart));
            if (entry.name != L"." && entry.name != L"..")
                entries.push_back(entry);
            if (data->NextEntryOffset == 0)
                break;
            position += data->NextEntryOffset;
        }
    }
    return GetLastError() == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : GetLastError();
}

// Empty if it cannot be determined.
std::wstring final_path(HANDLE entry)
{
    std::wstring path(GetFinalPathNameByHandleW(entry, nullptr, 0, 0), L'\0');
    const DWORD length = GetFinalPathNameByHandleW(entry, path.data(), static_cast<DWORD>(path.size()), 0);
    path.resize(length < path.size() ? length : 0);
    return path;
}

// Whether an entry that was opened by its name in a folder is really there. A link that the system follows in
// spite of the flags, as some file systems' drivers do, leads elsewhere.
bool lies_in(HANDLE entry, HANDLE folder, std::wstring_view name)
{
    const std::wstring outer = final_path(folder);
    return !outer.empty() && equal_names(final_path(entry), with_separator(outer) + std::wstring(name));
}

bool read_entry(HANDLE handle, const std::wstring& name, folder_entry& entry)
{
    BY_HANDLE_FILE_INFORMATION data{};
    if (!GetFileInformationByHandle(handle, &data))
        return false;
    entry = entry_of(name, data);
    return true;
}

DWORD remove_by_handle(unique_handle& handle)
{
    FILE_DISPOSITION_INFO disposition{TRUE};
    if (!SetFileInformationByHandle(handle.get(), FileDispositionInfo, &disposition, sizeof disposition))
        return GetLastError();
    handle.reset();
    return ERROR_SUCCESS;
}

// Removes one folder. Keeps it open without FILE_SHARE_DELETE, so that it can be neither renamed nor replaced
// by a link between the test and the removal.
class folder_removal
{
public:
    folder_removal(const std::wstring& temp_path, HANDLE temp_folder, const std::wstring& name, unsigned days)
        : path_(temp_path + L"\\" + name), temp_folder_(temp_folder), name_(name), days_(days)
    {
    }

    // Empty if the folder was removed or is too new; otherwise why it is left.
    std::wstring run(removal& total)
    {
        unique_handle folder = open_entry(path_, FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE);
        folder_entry itself;
        if (!folder || !read_entry(folder.get(), name_, itself))
            return error_text(GetLastError());
        std::vector<folder_entry> contents;
        const bool is_real = lies_in(folder.get(), temp_folder_, name_);
        if (!is_real && !itself.is_link)
            return L"it leads to another place";
        if (itself.is_folder && !itself.is_link) {
            if (const DWORD error = list(folder.get(), contents); error != ERROR_SUCCESS)
                return L"it cannot be listed: " + error_text(error);
        }
        if (std::wstring reason; !is_removable(itself, contents, reason))
            return reason;
        for (const folder_entry& entry : contents) {
            if (std::wstring reason = remove_file(folder.get(), itself, entry, total); !reason.empty())
                return reason;
        }
        if (const DWORD error = remove_by_handle(folder); error != ERROR_SUCCESS)
            return error_text(error);
        ++total.folders;
        return {};
    }

private:
    bool is_removable(const folder_entry& itself, const std::vector<folder_entry>& contents,
                      std::wstring& reason) const
    {
        const judgement judged = judge(itself, contents, now(), days_);
        reason = judged.reason;
        return judged.what == verdict::remove;
    }

    // Opened without sharing: fails if any program has the file open.
    std::wstring remove_file(HANDLE folder, const folder_entry& itself, const folder_entry& listed,
                             removal& total) const
    {
        const std::wstring quoted_name = quoted(listed.name);
        unique_handle file = open_entry(path_ + L"\\" + listed.name, 0, 0);
        folder_entry entry;
        if (!file || !read_entry(file.get(), listed.name, entry))
            return quoted_name + L": " + error_text(GetLastError());
        if (!lies_in(file.get(), folder, listed.name))
            return quoted_name + L" leads to another place";
        if (std::wstring reason; !is_removable(itself, {entry}, reason))
            return quoted_name + L" has changed meanwhile";
        if (const DWORD error = remove_by_handle(file); error != ERROR_SUCCESS)
            return quoted_name + L": " + error_text(error);
        ++total.files;
        total.bytes += entry.size;
        return {};
    }

    std::wstring path_;
    HANDLE temp_folder_;
    std::wstring name_;
    unsigned days_;
};

} // namespace

download_count count_downloads(const std::wstring& temp_folder)
{
    download_count count;
    std::vector<folder_entry> folders;
    count.error = list_downloads(temp_folder, folders);
    const file_time today = now();
    for (const folder_entry& folder : folders) {
        if (!folder.is_folder || folder.is_link)
            continue;
        ++count.folders;
        std::vector<folder_entry> contents;
        if (list(temp_folder + L"\\" + folder.name + L"\\*", contents) != ERROR_SUCCESS)
            ++count.unreadable;
        for (const folder_entry& entry : contents)
            count.bytes += entry.is_folder || entry.is_link ? 0 : entry.size;
        const std::uint64_t age = folder.newest < today ? (today - folder.newest) / ticks_per_day : 0;
        count.oldest_days = std::max(count.oldest_days, age);
    }
    return count;
}

void remove_downloads(const std::wstring& temp_folder, unsigned days, const line_writer& write,
                      removal& total)
{
    std::vector<folder_entry> folders;
    const DWORD error = list_downloads(temp_folder, folders);
    if (error != ERROR_SUCCESS && !is_missing(error)) {
        write(quoted(temp_folder) + L" cannot be listed: " + error_text(error));
        total.is_complete = false;
    }
    const unique_handle opened(CreateFileW(temp_folder.c_str(), FILE_READ_ATTRIBUTES,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                           OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    for (const folder_entry& folder : folders) {
        // Its contents can only make it newer.
        const judgement judged = judge(folder, {}, now(), days);
        if (judged.what == verdict::too_new)
            continue;
        std::wstring reason = judged.reason;
        if (judged.what == verdict::remove)
            reason = folder_removal(temp_folder, opened.get(), folder.name, days).run(total);
        if (reason.empty())
            continue;
        ++total.left;
        std::wstring path = temp_folder;
        path.append(L"\\").append(folder.name);
        write(L"left: " + quoted(path) + L": " + reason);
    }
}

} // namespace quill::diagnose
