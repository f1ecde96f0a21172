#include "retrieval/download/cache_folder.h"

#include "platform/unique_handle.h"
#include "retrieval/download/cache_name.h"
#include "retrieval/download/folder_numbers.h"

#include <windows.h>

#include <shlwapi.h>

#include <array>

namespace quill {
namespace {

constexpr wchar_t extension[] = L".pdf";
constexpr std::size_t extension_units = 4;

// How many folders may appear between the reading and the creation. More are tabs that all start at once; the
// limit is for a file system that reports every name as existing.
constexpr int most_lost_races = 10'000;

// Puts the folder's numbers into the decision. False when the reading is incomplete: the folder cannot be
// listed, though it may be possible to create folders in it, or a part of it was not returned.
bool read_numbers(const std::wstring& temp_path, folder_numbers& numbers)
{
    const std::wstring pattern = temp_path + std::wstring(cache_folder_prefix) + L"*";
    WIN32_FIND_DATAW entry{};
    const unique_find_handle search(FindFirstFileExW(
        pattern.c_str(), FindExInfoBasic, &entry, FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH));
    if (!search)
        return GetLastError() == ERROR_FILE_NOT_FOUND;
    do
        numbers.add(entry.cFileName);
    while (FindNextFileW(search.get(), &entry));
    return GetLastError() == ERROR_NO_MORE_FILES;
}

// Asked without the backslash at the end: with it the question fails for a file, which is in the way
// just as a folder is.
bool is_taken(const std::wstring& folder)
{
    return GetFileAttributesW(folder.substr(0, folder.size() - 1).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring full_path_or_empty(const std::wstring& path)
{
    const DWORD units = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(units, L'\0');
    full.resize(units == 0 ? 0 : GetFullPathNameW(path.c_str(), units, full.data(), nullptr));
    return full;
}

// A server chooses the name: "..\" in it, or a device's name, must not lead out of the folder.
bool lies_inside(const std::wstring& path, const std::wstring& folder)
{
    const std::wstring full_folder = full_path_or_empty(folder);
    return !full_folder.empty() && full_path_or_empty(path).compare(0, full_folder.size(), full_folder) == 0;
}

// The name without its extension, as the shell tells extensions. name: below MAX_PATH units.
std::wstring base_name_of(const std::wstring& name)
{
    std::array<wchar_t, MAX_PATH> buffer{};
    name.copy(buffer.data(), buffer.size() - 1);
    PathRemoveExtensionW(buffer.data());
    return buffer.data();
}

} // namespace

std::wstring CreateCacheFolder(const std::wstring& temp_path)
{
    folder_numbers numbers;
    const bool is_complete = read_numbers(temp_path, numbers);
    int lost_races = 0;
    for (std::uint32_t number = numbers.next_free(); number != folder_numbers::end;
         number = numbers.next_free()) {
        const std::wstring folder =
            temp_path + std::wstring(cache_folder_prefix) + std::to_wstring(number) + L"\\";
        if (folder.size() >= MAX_PATH)
            break;
        if (!is_complete && is_taken(folder))
            continue;
        if (CreateDirectoryW(folder.c_str(), nullptr))
            return folder;
        // Another tab was faster, or the name is the short one of another entry, which is not listed.
        if (GetLastError() != ERROR_ALREADY_EXISTS || ++lost_races > most_lost_races)
            break;
    }
    return {};
}

std::wstring CacheFilePath(const std::wstring& folder, const std::wstring& file_name)
{
    const std::wstring base_name = base_name_of(file_name);
    if (base_name.size() + folder.size() + extension_units >= MAX_PATH)
        return {};
    std::wstring path = folder + base_name + extension;
    if (lies_inside(path, folder))
        return path;
    return file_name == untitled_name ? std::wstring() : CacheFilePath(folder, untitled_name);
}

} // namespace quill
