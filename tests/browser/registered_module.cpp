#include "tests/browser/registered_module.h"

#include "tests/support/child_process.h"

#include <gtest/gtest.h>
#include <objbase.h>

namespace quill::test {
namespace {

using export_function = HRESULT(WINAPI*)();

export_function as_export(FARPROC function)
{
    return reinterpret_cast<export_function>(reinterpret_cast<void*>(function));
}

} // namespace

registered_library::registered_library(const std::wstring& name)
    : handle_(LoadLibraryW(beside_this_program(name).c_str()))
{
    EXPECT_NE(handle_, nullptr);
    const auto register_server = as_export(find("DllRegisterServer"));
    EXPECT_TRUE(register_server != nullptr && register_server() == S_OK);
}

registered_library::~registered_library()
{
    const auto unregister_server = as_export(find("DllUnregisterServer"));
    EXPECT_TRUE(unregister_server != nullptr && unregister_server() == S_OK);
    CoFreeUnusedLibraries();
    if (handle_ != nullptr)
        FreeLibrary(handle_);
}

FARPROC registered_library::find(const char* name) const
{
    return handle_ != nullptr ? GetProcAddress(handle_, name) : nullptr;
}

bool registered_library::can_unload() const
{
    const auto can_unload_now = as_export(find("DllCanUnloadNow"));
    return can_unload_now != nullptr && can_unload_now() == S_OK;
}

} // namespace quill::test
