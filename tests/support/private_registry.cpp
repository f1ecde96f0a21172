#include "tests/support/private_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace quill::test {
namespace {

class key_handle
{
public:
    key_handle(HKEY parent, const std::wstring& path, bool create)
    {
        const LSTATUS status = create ? RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                                                        nullptr, &key_, nullptr)
                                      : RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ, &key_);
        if (status != ERROR_SUCCESS)
            throw std::runtime_error("private_registry: a key cannot be opened");
    }
    ~key_handle() { RegCloseKey(key_); }
    key_handle(const key_handle&) = delete;
    key_handle& operator=(const key_handle&) = delete;
    operator HKEY() const { return key_; }

private:
    HKEY key_ = nullptr;
};

std::string narrow(const std::wstring& text)
{
    std::string result(text.size() * 3, '\0');
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                           result.data(), static_cast<int>(result.size()), nullptr, nullptr);
    result.resize(static_cast<std::size_t>(length));
    return result;
}

bool less_ignoring_case(const std::wstring& left, const std::wstring& right)
{
    return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_LESS_THAN;
}

std::string data_text(DWORD type, const std::vector<BYTE>& data)
{
    if (type == REG_SZ) {
        std::wstring text(data.size() / sizeof(wchar_t), L'\0');
        std::memcpy(text.data(), data.data(), text.size() * sizeof(wchar_t));
        // The data includes exactly one terminator; any other number is shown.
        if (!text.empty() && text.back() == L'\0')
            text.pop_back();
        else
            text += L"<no terminator>";
        return "s " + narrow(text);
    }
    if (type == REG_DWORD && data.size() == sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, data.data(), sizeof number);
        return "d " + std::to_string(number);
    }
    std::string text = type == REG_BINARY ? "b " : "type " + std::to_string(type) + " ";
    for (const BYTE byte : data) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

void list_values(HKEY key, std::string& out)
{
    std::vector<std::pair<std::wstring, std::string>> values;
    for (DWORD index = 0;; ++index) {
        wchar_t name[256];
        DWORD name_length = 256;
        std::vector<BYTE> data(64 * 1024);
        auto size = static_cast<DWORD>(data.size());
        DWORD type = 0;
        if (RegEnumValueW(key, index, name, &name_length, nullptr, &type, data.data(), &size) !=
            ERROR_SUCCESS)
            break;
        data.resize(size);
        values.emplace_back(name_length ? name : L"@", data_text(type, data));
    }
    std::sort(values.begin(), values.end(), [](const auto& left, const auto& right) {
        return less_ignoring_case(left.first, right.first);
    });
    for (const auto& [name, text] : values)
        out += "    " + narrow(name) + " = " + text + "\n";
}

void list_key(HKEY key, const std::wstring& path, std::string& out)
{
    out += narrow(path) + "\n";
    list_values(key, out);
    std::vector<std::wstring> names;
    for (DWORD index = 0;; ++index) {
        wchar_t name[256];
        DWORD length = 256;
        if (RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
            break;
        names.emplace_back(name);
    }
    std::sort(names.begin(), names.end(), less_ignoring_case);
    for (const auto& name : names)
        list_key(key_handle(key, name, false), path + L"\\" + name, out);
}

} // namespace

private_registry::private_registry()
    : path_(std::wstring(private_registry_parent) + L"\\" + std::to_wstring(GetCurrentProcessId()))
{
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
    const key_handle machine(HKEY_CURRENT_USER, path_ + L"\\machine", true);
    const key_handle user(HKEY_CURRENT_USER, path_ + L"\\user", true);
    const key_handle classes(machine, L"SOFTWARE\\Classes", true);
    RegOverridePredefKey(HKEY_CLASSES_ROOT, classes);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, machine);
    RegOverridePredefKey(HKEY_CURRENT_USER, user);
}

private_registry::~private_registry()
{
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_CLASSES_ROOT})
        RegOverridePredefKey(root, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
    // Windows also deletes keys that have values, which this key never has; one with keys below it stays.
    RegDeleteKeyW(HKEY_CURRENT_USER, private_registry_parent);
}

void make_unusable(HKEY root, const std::wstring& path)
{
    const auto last = path.rfind(L'\\');
    HKEY parent = nullptr;
    ASSERT_EQ(RegCreateKeyExW(root, path.substr(0, last).c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &parent, nullptr),
              ERROR_SUCCESS);
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExW(parent, path.substr(last + 1).c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                              KEY_ALL_ACCESS, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
    RegCloseKey(parent);
}

std::string registry_listing()
{
    std::string out;
    list_key(key_handle(HKEY_LOCAL_MACHINE, L"", false), L"HKLM", out);
    list_key(key_handle(HKEY_CURRENT_USER, L"", false), L"HKCU", out);
    return out;
}

} // namespace quill::test
