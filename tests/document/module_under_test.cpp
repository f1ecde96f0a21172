#include "tests/document/module_under_test.h"

#include "tests/support/child_process.h"
#include "tests/support/faults/import_table.h"
#include "tests/support/is_wine.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace quill::test {
namespace {

constexpr wchar_t module_name[] = L"QuillPDF.IE.dll";

template <class Function>
Function export_of(HMODULE module, const char* name)
{
    const FARPROC address = GetProcAddress(module, name);
    if (!address)
        throw std::runtime_error(std::string{"the module does not export "} + name);
    Function function;
    static_assert(sizeof function == sizeof address);
    std::memcpy(&function, &address, sizeof function);
    return function;
}

// The original target of the module's calls of CreateMenu.
code_address module_create_menu = nullptr;
// Holds the handle that was freed last. Destroyed with the next one, so there is always one and counts of
// menus stay as they are.
HMENU spare_menu = nullptr;

// In Wine a menu may be lost if it gets the handle of a window that another thread destroys (urlmon's, when
// the worker ends): the server frees the handle before the process forgets it. The handle that was freed last
// is reused first, so a spare menu takes it.
HMENU WINAPI create_menu_beside_a_spare()
{
    const HMENU former_spare = std::exchange(spare_menu, CreateMenu());
    const HMENU menu = std::bit_cast<decltype(&CreateMenu)>(module_create_menu)();
    DestroyMenu(former_spare);
    return menu;
}

} // namespace

module_under_test::module_under_test()
{
    handle_ = LoadLibraryW(beside_this_program(module_name).c_str());
    if (!handle_)
        throw std::runtime_error("QuillPDF.IE.dll does not load: error " + std::to_string(GetLastError()));
    get_class_object_ = export_of<get_class_object_function>(handle_, "DllGetClassObject");
    can_unload_ = export_of<can_unload_function>(handle_, "DllCanUnloadNow");
    if (!is_wine())
        return;
    module_create_menu =
        redirect_import(handle_, "CreateMenu", reinterpret_cast<code_address>(&create_menu_beside_a_spare));
    EXPECT_NE(module_create_menu, nullptr);
    spare_menu = CreateMenu();
}

module_under_test::~module_under_test()
{
    DestroyMenu(std::exchange(spare_menu, nullptr));
    const HRESULT can_unload = can_unload_now();
    EXPECT_EQ(can_unload, S_OK) << "the module still counts objects or locks";
    if (can_unload != S_OK)
        return; // unloading it while an object exists would hide the failure behind a crash
    FreeLibrary(handle_);
    EXPECT_EQ(GetModuleHandleW(module_name), nullptr) << "the module stays loaded";
}

HRESULT module_under_test::get_class_object(REFCLSID class_id, REFIID iid, void** out) const
{
    return get_class_object_(class_id, iid, out);
}

HRESULT module_under_test::can_unload_now() const
{
    return can_unload_();
}

} // namespace quill::test
