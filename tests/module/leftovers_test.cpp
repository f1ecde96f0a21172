// A browser loads and unloads the DLL as it likes: nothing may be left in its process.
#include "tests/module/loaded_module.h"
#include "tests/support/private_registry.h"
#include "tests/support/process_resources.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

void create_both_classes(const loaded_module& module)
{
    for (const CLSID& clsid : {active_doc_class, helper_class}) {
        IClassFactory* factory = nullptr;
        ASSERT_EQ(module.DllGetClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory)), S_OK);
        IUnknown* object = nullptr;
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&object)), S_OK);
        object->Release();
        IDispatch* dispatch = nullptr;
        if (SUCCEEDED(factory->CreateInstance(nullptr, IID_IDispatch, reinterpret_cast<void**>(&dispatch)))) {
            ITypeInfo* info = nullptr;
            EXPECT_EQ(dispatch->GetTypeInfo(0, LOCALE_NEUTRAL, &info), S_OK);
            info->Release();
            dispatch->Release();
        }
        factory->Release();
    }
}

template <class Scenario>
void expect_nothing_left(const Scenario& scenario)
{
    keep_system_libraries_loaded();
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    scenario(); // what the system makes once for the process
    const auto before = process_resources::now();
    for (int i = 0; i < 5; ++i)
        scenario();
    EXPECT_EQ(process_resources::now(), before);
    CoUninitialize();
}

TEST(Leftovers, NoneOfClassObjectsAndObjects)
{
    expect_nothing_left([] {
        const loaded_module module;
        create_both_classes(module);
    });
}

TEST(Leftovers, NoneOfRegistration)
{
    expect_nothing_left([] {
        const private_registry registry;
        const loaded_module module;
        EXPECT_EQ(module.DllInstall(TRUE, nullptr), S_OK);
        EXPECT_EQ(module.DllInstall(FALSE, nullptr), S_OK);
    });
}

TEST(Leftovers, NoneOfFailedRegistration)
{
    expect_nothing_left([] {
        const private_registry registry;
        HKEY key = nullptr;
        ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft", 0, nullptr, REG_OPTION_VOLATILE,
                                  KEY_ALL_ACCESS, nullptr, &key, nullptr),
                  ERROR_SUCCESS);
        RegCloseKey(key);
        const loaded_module module;
        EXPECT_TRUE(FAILED(module.DllInstall(TRUE, L"user")));
    });
}

} // namespace
} // namespace quill::test
