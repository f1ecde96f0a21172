// CHandle and CRegKey: own a kernel handle and an open registry key.
//
//     CHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
//     CRegKey key;
//     if (key.Open(HKEY_CURRENT_USER, L"Software\\Quill", KEY_READ) == ERROR_SUCCESS)
//         RegQueryValueExW(key, ...);                   // implicit conversion to a borrowed HKEY
#pragma once

#include "atl/atldef.h"

#include <string>
#include <utility>

namespace ATL {

// Owns a kernel handle whose invalid value is null.
class CHandle
{
public:
    CHandle() noexcept = default;
    CHandle(CHandle&& other) noexcept : m_h(other.Detach()) {}
    explicit CHandle(HANDLE h) noexcept : m_h(h) {}
    ~CHandle() { Close(); }
    CHandle& operator=(CHandle&& other) noexcept
    {
        if (this != &other) {
            Close();
            m_h = other.Detach();
        }
        return *this;
    }

    operator HANDLE() const noexcept { return m_h; }
    // The object must be empty.
    void Attach(HANDLE h) noexcept
    {
        ATLASSERT(!m_h);
        m_h = h;
    }
    [[nodiscard]] HANDLE Detach() noexcept { return std::exchange(m_h, nullptr); }
    void Close() noexcept
    {
        if (const HANDLE h = Detach())
            CloseHandle(h);
    }

    HANDLE m_h = nullptr;
};

// Owns an open registry key. Functions return a Win32 error code, ERROR_SUCCESS on success.
class CRegKey
{
public:
    CRegKey() noexcept = default;
    CRegKey(CRegKey&& other) noexcept : m_hKey(other.Detach()) {}
    explicit CRegKey(HKEY key) noexcept : m_hKey(key) {}
    ~CRegKey() { Close(); }

    operator HKEY() const noexcept { return m_hKey; }
    void Attach(HKEY key) noexcept
    {
        Close();
        m_hKey = key;
    }
    [[nodiscard]] HKEY Detach() noexcept { return std::exchange(m_hKey, nullptr); }
    LONG Close() noexcept
    {
        const HKEY key = Detach();
        return key ? RegCloseKey(key) : ERROR_SUCCESS;
    }

    LONG Create(HKEY parent, LPCWSTR name, REGSAM access = KEY_READ | KEY_WRITE) noexcept
    {
        HKEY key = nullptr;
        const LONG status = RegCreateKeyExW(parent, name, 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                                            nullptr, &key, nullptr);
        if (status == ERROR_SUCCESS)
            Attach(key);
        return status;
    }
    LONG Open(HKEY parent, LPCWSTR name, REGSAM access = KEY_READ | KEY_WRITE) noexcept
    {
        HKEY key = nullptr;
        const LONG status = RegOpenKeyExW(parent, name, 0, access, &key);
        if (status == ERROR_SUCCESS)
            Attach(key);
        return status;
    }

    LONG SetValue(LPCWSTR name, DWORD type, const void* data, ULONG bytes) noexcept
    {
        return RegSetValueExW(m_hKey, name, 0, type, static_cast<const BYTE*>(data), bytes);
    }
    LONG SetStringValue(LPCWSTR name, LPCWSTR text) noexcept
    {
        return SetValue(name, REG_SZ, text,
                        static_cast<ULONG>((std::char_traits<wchar_t>::length(text) + 1) * sizeof *text));
    }
    LONG SetDWORDValue(LPCWSTR name, DWORD value) noexcept
    {
        return SetValue(name, REG_DWORD, &value, sizeof value);
    }
    LONG DeleteValue(LPCWSTR name) noexcept { return RegDeleteValueW(m_hKey, name); }
    // The subkey must have no subkeys of its own.
    LONG DeleteSubKey(LPCWSTR name) noexcept { return RegDeleteKeyW(m_hKey, name); }
    // Deletes the subkey and its subtree. Subkeys are opened separately, so the access rights of this key do
    // not matter.
    LONG RecurseDeleteKey(LPCWSTR name) noexcept { return delete_tree(m_hKey, name); }

    static LONG delete_tree(HKEY parent, LPCWSTR name) noexcept
    {
        CRegKey key;
        LONG status = key.Open(parent, name, KEY_READ);
        while (status == ERROR_SUCCESS) {
            wchar_t subkey[256];
            DWORD length = ARRAYSIZE(subkey);
            status = RegEnumKeyExW(key, 0, subkey, &length, nullptr, nullptr, nullptr, nullptr);
            if (status == ERROR_SUCCESS)
                status = delete_tree(key, subkey);
        }
        key.Close();
        return status == ERROR_NO_MORE_ITEMS ? RegDeleteKeyW(parent, name) : status;
    }

    HKEY m_hKey = nullptr;
};

} // namespace ATL
