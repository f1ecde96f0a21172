#include "tests/support/scopes.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace quill::test {
namespace {

std::optional<std::wstring> variable(const std::wstring& name)
{
    SetLastError(ERROR_SUCCESS);
    const DWORD size = GetEnvironmentVariableW(name.c_str(), nullptr, 0);
    if (size == 0)
        return GetLastError() == ERROR_ENVVAR_NOT_FOUND ? std::nullopt : std::optional<std::wstring>(L"");
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(name.c_str(), value.data(), size));
    return value;
}

} // namespace

environment_scope::environment_scope(std::wstring name, const std::optional<std::wstring>& value)
    : name_(std::move(name)), before_(variable(name_))
{
    SetEnvironmentVariableW(name_.c_str(), value ? value->c_str() : nullptr);
}

environment_scope::~environment_scope()
{
    SetEnvironmentVariableW(name_.c_str(), before_ ? before_->c_str() : nullptr);
}

cross_process_lock::cross_process_lock(const std::wstring& name)
{
    std::wstring object_name = L"quill-test-" + name;
    std::replace(object_name.begin(), object_name.end(), L'\\', L'/');
    mutex_ = CreateMutexW(nullptr, FALSE, object_name.c_str());
    WaitForSingleObject(mutex_, INFINITE);
}

cross_process_lock::~cross_process_lock()
{
    ReleaseMutex(mutex_);
    CloseHandle(mutex_);
}

scratch_directory::scratch_directory()
{
    static LONG number = 0;
    wchar_t temp[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temp);
    do {
        path_ = std::wstring(temp) + L"quill-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                std::to_wstring(InterlockedIncrement(&number));
    } while (!CreateDirectoryW(path_.c_str(), nullptr) && GetLastError() == ERROR_ALREADY_EXISTS);
}

scratch_directory::~scratch_directory()
{
    remove_path(path_);
}

registry_key_scope::registry_key_scope(HKEY root, std::wstring path, REGSAM view)
    : lock_(path), root_(root), path_(std::move(path)), view_(view)
{
    remove();
}

registry_key_scope::~registry_key_scope()
{
    remove();
}

void registry_key_scope::remove() const
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(root_, path_.c_str(), 0, KEY_ALL_ACCESS | view_, &key) == ERROR_SUCCESS) {
        RegDeleteTreeW(key, nullptr);
        RegCloseKey(key);
        RegDeleteKeyExW(root_, path_.c_str(), view_, 0);
    }
}

void registry_key_scope::set(const wchar_t* name, DWORD type, const void* data, DWORD size) const
{
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(root_, path_.c_str(), 0, nullptr, 0, KEY_WRITE | view_, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), size), ERROR_SUCCESS);
    RegCloseKey(key);
}

void registry_key_scope::set_string(const wchar_t* name, const std::wstring& text) const
{
    set(name, REG_SZ, text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

void registry_key_scope::set_dword(const wchar_t* name, DWORD value) const
{
    set(name, REG_DWORD, &value, sizeof value);
}

void remove_path(const std::wstring& path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return;
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        DeleteFileW(path.c_str());
        return;
    }
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((path + L"\\*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring name = found.cFileName;
            if (name != L"." && name != L"..")
                remove_path(path + L"\\" + name);
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    RemoveDirectoryW(path.c_str());
}

std::optional<std::string> read_file(const std::wstring& path)
{
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return std::nullopt;
    std::string contents;
    char block[65536];
    DWORD read = 0;
    while (ReadFile(file, block, sizeof block, &read, nullptr) && read > 0)
        contents.append(block, read);
    CloseHandle(file);
    return contents;
}

bool write_file(const std::wstring& path, const std::string& contents)
{
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    DWORD written = 0;
    WriteFile(file, contents.data(), static_cast<DWORD>(contents.size()), &written, nullptr);
    CloseHandle(file);
    return written == contents.size();
}

} // namespace quill::test
