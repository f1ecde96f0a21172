// The browser may load and unload the DLL at any time, which must not leak resources of its process.
#include "tests/module/loaded_module.h"
#include "tests/support/private_registry.h"
#include "tests/support/process_resources.h"

#include <gtest/gtest.h>
#include <oleauto.h>

#include <algorithm>
#include <array>
#include <string>

namespace quill::test {
namespace {

void create_both_classes(const loaded_module& module)
{
    for (const CLSID& clsid : {active_doc_class, helper_class}) {
        IClassFactory* factory = nullptr;
        ASSERT_EQ(module.DllGetClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
                  S_OK);
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

process_resources difference(const process_resources& after, const process_resources& before)
{
    process_resources result;
    result.kernel_handles = after.kernel_handles - before.kernel_handles;
    result.gdi_objects = after.gdi_objects - before.gdi_objects;
    result.menus = after.menus - before.menus;
    result.threads = after.threads - before.threads;
    result.windows = after.windows - before.windows;
    return result;
}

// The growth of the process's resources in five runs. The system occasionally opens or closes a handle, so
// the median of three counts is used.
template <class Scenario>
process_resources left_by(const Scenario& scenario)
{
    keep_system_libraries_loaded();
    EXPECT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
    scenario(); // includes what the system allocates once for each process
    std::array<process_resources, 3> counts;
    for (auto& count : counts) {
        const auto before = process_resources::now();
        for (int i = 0; i < 5; ++i)
            scenario();
        count = difference(process_resources::now(), before);
    }
    CoUninitialize();
    std::sort(counts.begin(), counts.end(), [](const auto& left, const auto& right) {
        return static_cast<int>(left.kernel_handles) < static_cast<int>(right.kernel_handles);
    });
    return counts[1];
}

TEST(Leftovers, AreNoneAfterUsingClassesAndObjects)
{
    const auto left = left_by([] {
        const loaded_module module;
        create_both_classes(module);
    });
    EXPECT_EQ(left, process_resources{});
}

TEST(Leftovers, AreNoneAfterRegistration)
{
    const auto left = left_by([] {
        const private_registry registry;
        const loaded_module module;
        EXPECT_EQ(module.DllInstall(TRUE, nullptr), S_OK);
        EXPECT_EQ(module.DllInstall(FALSE, nullptr), S_OK);
    });
    // Wine's functions for type libraries leak registry keys in each call.
    const auto left_by_system = left_by([] {
        const private_registry registry;
        const loaded_module module;
        ITypeLib* library = nullptr;
        ASSERT_EQ(LoadTypeLibEx(loaded_module::path().c_str(), REGKIND_NONE, &library), S_OK);
        std::wstring path = loaded_module::path();
        EXPECT_EQ(RegisterTypeLib(library, path.data(), nullptr), S_OK);
        library->Release();
        EXPECT_EQ(UnRegisterTypeLib(library_id, 14, 0, LOCALE_NEUTRAL, SYS_WIN64), S_OK);
    });
    EXPECT_EQ(left, left_by_system);
}

TEST(Leftovers, AreNoneAfterFailedRegistration)
{
    const auto left = left_by([] {
        const private_registry registry;
        HKEY key = nullptr;
        ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft", 0, nullptr, REG_OPTION_VOLATILE,
                                  KEY_ALL_ACCESS, nullptr, &key, nullptr),
                  ERROR_SUCCESS);
        RegCloseKey(key);
        const loaded_module module;
        EXPECT_TRUE(FAILED(module.DllInstall(TRUE, L"user")));
    });
    EXPECT_EQ(left, process_resources{});
}

} // namespace
} // namespace quill::test
