// Guards for what a test changes outside itself: environment variables, files, registry keys. Each restores
// the former state at the end of its scope, also after a failed assertion.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace quill::test {

// Sets an environment variable (or removes it, without a value) and restores it at the end of the scope.
class environment_scope
{
public:
    environment_scope(std::wstring name, const std::optional<std::wstring>& value);
    ~environment_scope();
    environment_scope(const environment_scope&) = delete;
    environment_scope& operator=(const environment_scope&) = delete;

private:
    std::wstring name_;
    std::optional<std::wstring> before_;
};

// Excludes other test programs that use the same name, for state that all programs of the session share:
// ctest may run several at once. A thread may hold the lock several times.
class cross_process_lock
{
public:
    explicit cross_process_lock(const std::wstring& name);
    ~cross_process_lock();
    cross_process_lock(const cross_process_lock&) = delete;
    cross_process_lock& operator=(const cross_process_lock&) = delete;

private:
    HANDLE mutex_;
};

// A new empty folder, removed with everything in it.
class scratch_directory
{
public:
    scratch_directory();
    ~scratch_directory();
    scratch_directory(const scratch_directory&) = delete;
    scratch_directory& operator=(const scratch_directory&) = delete;

    // The folder's full path, without a backslash at its end.
    const std::wstring& path() const { return path_; }
    // The full path of an entry in it.
    std::wstring operator/(const std::wstring& name) const { return path_ + L"\\" + name; }

private:
    std::wstring path_;
};

// Removes a registry key with everything below it, at the beginning and at the end of the scope, and excludes
// other test programs that use the same path.
class registry_key_scope
{
public:
    // view is 0, KEY_WOW64_64KEY or KEY_WOW64_32KEY.
    registry_key_scope(HKEY root, std::wstring path, REGSAM view = 0);
    ~registry_key_scope();
    registry_key_scope(const registry_key_scope&) = delete;
    registry_key_scope& operator=(const registry_key_scope&) = delete;

    // Creates the key if needed. size is in bytes.
    void set(const wchar_t* name, DWORD type, const void* data, DWORD size) const;
    void set_string(const wchar_t* name, const std::wstring& text) const;
    void set_dword(const wchar_t* name, DWORD value) const;

private:
    void remove() const;

    cross_process_lock lock_;
    HKEY root_;
    std::wstring path_;
    REGSAM view_;
};

// Removes a file or a folder with everything in it; ignored if there is none.
void remove_path(const std::wstring& path);

// The contents of a file, which may be open for writing elsewhere; no value if it cannot be opened.
std::optional<std::string> read_file(const std::wstring& path);

// Creates or replaces a file. Returns whether that succeeded.
bool write_file(const std::wstring& path, const std::string& contents);

} // namespace quill::test
