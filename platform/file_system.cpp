#include "platform/file_system.h"

#include <windows.h>

#include <algorithm>
#include <boost/container/small_vector.hpp>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace quill {
namespace {

bool is_drive(std::wstring_view component)
{
    if (component.size() != 2 || component[1] != L':')
        return false;
    const wchar_t letter = component[0];
    return (letter >= L'A' && letter <= L'Z') || (letter >= L'a' && letter <= L'z');
}

std::wstring parent_of(const std::wstring& path)
{
    constexpr const wchar_t* separators = L"\\/";
    const std::size_t name_end = path.find_last_not_of(separators);
    const std::size_t separator = path.find_last_of(separators, name_end);
    if (name_end == std::wstring::npos || separator == std::wstring::npos)
        return {};
    return path.substr(0, path.find_last_not_of(separators, separator) + 1);
}

// Creates one level. Returns a Win32 error code, ERROR_SUCCESS also if the directory already exists.
DWORD make_directory(const std::wstring& path)
{
    if (CreateDirectoryW(path.c_str(), nullptr))
        return ERROR_SUCCESS;
    const DWORD error = GetLastError();
    if (DirectoryExists(path))
        return ERROR_SUCCESS;
    return error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS ? ERROR_DIRECTORY : error;
}

DWORD make_directories(const std::wstring& path)
{
    DWORD error = make_directory(path);
    const std::wstring parent = error == ERROR_PATH_NOT_FOUND ? parent_of(path) : std::wstring();
    if (parent.empty())
        return error;
    error = make_directories(parent);
    return error == ERROR_SUCCESS ? make_directory(path) : error;
}

// Another process may create the same level concurrently, so "already exists" is success. If it is a file,
// creating the next level fails.
void create_unless_present(const std::wstring& path)
{
    if (DirectoryExists(path))
        return;
    try {
        DirectoryCreate(path);
    } catch (const std::system_error& error) {
        const int code = error.code().value();
        if (code != ERROR_ALREADY_EXISTS && code != ERROR_FILE_EXISTS)
            throw std::runtime_error("DirectoryCreateRecursively: cannot create directory");
    }
}

} // namespace

bool DirectoryExists(const std::wstring& path)
{
    if (path.empty())
        throw std::runtime_error("DirectoryExists: empty path");
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

void DirectoryCreate(const std::wstring& path)
{
    if (path.empty())
        throw std::runtime_error("DirectoryCreate: empty path");
    if (!CreateDirectoryW(path.c_str(), nullptr)) {
        const int code = static_cast<int>(GetLastError());
        throw std::system_error(code, std::system_category(), "DirectoryCreate: cannot create directory");
    }
}

void DirectoryCreateRecursively(const std::wstring& path)
{
    if (path.empty())
        throw std::runtime_error("DirectoryCreateRecursively: empty path");
    if (DirectoryExists(path))
        return;

    boost::container::small_vector<wchar_t, MAX_PATH> buffer(path.begin(), path.end());
    buffer.push_back(L'\0');
    const auto end = buffer.end() - 1;
    bool first = true;
    for (auto start = buffer.begin(); start != end;) {
        const auto stop = std::find(start, end, L'\\');
        if (stop != start) {
            const std::wstring_view component(&*start, static_cast<std::size_t>(stop - start));
            if (!first || !is_drive(component)) {
                const wchar_t separator = *stop;
                *stop = L'\0';
                create_unless_present(buffer.data());
                *stop = separator;
            }
            first = false;
        }
        start = stop == end ? end : stop + 1;
    }
}

std::error_code create_missing_directories(const std::wstring& path)
{
    const DWORD error = path.empty() ? DWORD{ERROR_PATH_NOT_FOUND} : make_directories(path);
    return {static_cast<int>(error), std::system_category()};
}

} // namespace quill
