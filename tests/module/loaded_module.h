// Loads the DLL under test during its lifetime and calls it through its exports.
#pragma once

#include <windows.h>

#include <objbase.h>

#include <string>

namespace quill::test {

inline constexpr CLSID active_doc_class = {
    0x5E2C7A90, 0x1B3D, 0x4F6E, {0x8A, 0x21, 0xC4, 0xD9, 0xE0, 0x7B, 0x3F, 0x15}};
inline constexpr CLSID helper_class = {
    0x8D41F0B2, 0x6C7A, 0x4E93, {0xB5, 0xD8, 0x2A, 0x0F, 0x19, 0xC6, 0xE4, 0xD7}};
inline constexpr GUID library_id = {
    0xC2A95E14, 0x7F38, 0x4B60, {0x9D, 0x1A, 0xE5, 0xB7, 0x08, 0x4F, 0x2C, 0x63}};
inline constexpr IID document_interface = {
    0xA4E19C37, 0x5D82, 0x4B0F, {0x96, 0xE3, 0x7C, 0x21, 0xD8, 0xF0, 0x5B, 0x6A}};

// Loads the system libraries that the DLL needs and keeps them. They write to the registry when they are
// loaded, which must not happen in a test's temporary registry.
void keep_system_libraries_loaded();

class loaded_module
{
public:
    loaded_module();
    // Fails the test if an object keeps the DLL loaded, or if it stays loaded.
    ~loaded_module();
    loaded_module(const loaded_module&) = delete;
    loaded_module& operator=(const loaded_module&) = delete;

    HMODULE handle() const { return handle_; }
    static std::wstring path();
    static std::wstring folder(); // with a trailing backslash

    HRESULT DllCanUnloadNow() const { return can_unload_now_(); }
    HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void** out) const
    {
        return get_class_object_(clsid, iid, out);
    }
    HRESULT DllRegisterServer() const { return register_server_(); }
    HRESULT DllUnregisterServer() const { return unregister_server_(); }
    HRESULT DllInstall(BOOL install, const wchar_t* command_line) const
    {
        return install_(install, command_line);
    }

private:
    HMODULE handle_;
    HRESULT(WINAPI* can_unload_now_)() = nullptr;
    HRESULT(WINAPI* get_class_object_)(REFCLSID, REFIID, void**) = nullptr;
    HRESULT(WINAPI* register_server_)() = nullptr;
    HRESULT(WINAPI* unregister_server_)() = nullptr;
    HRESULT(WINAPI* install_)(BOOL, LPCWSTR) = nullptr;
};

} // namespace quill::test
