#include "tests/module/loaded_module.h"

#include "tests/support/child_process.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace quill::test {
namespace {

constexpr wchar_t file_name[] = L"QuillPDF.IE.dll";

template <class Function>
void find_export(HMODULE handle, const char* name, Function*& function)
{
    function = reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(handle, name)));
    if (!function)
        throw std::runtime_error(std::string("no export named ") + name);
}

} // namespace

void keep_system_libraries_loaded()
{
    const loaded_module module;
    const auto* const image = reinterpret_cast<const BYTE*>(module.handle());
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(
        image + reinterpret_cast<const IMAGE_DOS_HEADER*>(image)->e_lfanew);
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(image + imports); import->Name;
         ++import) {
        HMODULE pinned = nullptr;
        GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN, reinterpret_cast<const char*>(image + import->Name),
                           &pinned);
    }
}

loaded_module::loaded_module() : handle_(LoadLibraryW(path().c_str()))
{
    if (!handle_)
        throw std::runtime_error("QuillPDF.IE.dll does not load");
    find_export(handle_, "DllCanUnloadNow", can_unload_now_);
    find_export(handle_, "DllGetClassObject", get_class_object_);
    find_export(handle_, "DllRegisterServer", register_server_);
    find_export(handle_, "DllUnregisterServer", unregister_server_);
    find_export(handle_, "DllInstall", install_);
}

loaded_module::~loaded_module()
{
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
    FreeLibrary(handle_);
    EXPECT_EQ(GetModuleHandleW(file_name), nullptr);
}

std::wstring loaded_module::path()
{
    return beside_this_program(file_name);
}

std::wstring loaded_module::folder()
{
    const std::wstring full = path();
    return full.substr(0, full.rfind(L'\\') + 1);
}

} // namespace quill::test
