// Fault injection: between loading and unloading of the DLL, including the set-up of every log sink and of
// the suite's libraries, each system call fails once in each way, and so does each allocation. A failure in
// the log or in the libraries must not affect anything else.
#include "tests/module/loaded_module.h"
#include "tests/support/child_process.h"
#include "tests/support/faults/fault_loop.h"
#include "tests/support/log_file.h"
#include "tests/support/silent_output.h"

#include <gtest/gtest.h>
#include <ocidl.h>
#include <wrl/client.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <iterator>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

template <class Function>
code_address address_of(Function* function)
{
    return reinterpret_cast<code_address>(function);
}

// A log device that accepts every call.
HANDLE WINAPI create_file_or_device(const wchar_t* path, DWORD access, DWORD sharing,
                                    SECURITY_ATTRIBUTES* security, DWORD creation, DWORD flags,
                                    HANDLE pattern)
{
    const bool is_device = std::wcscmp(path, L"\\\\.\\Global\\ProcmonDebugLogger") == 0;
    return CreateFileW(is_device ? L"NUL" : path, access, sharing, security, creation, flags, pattern);
}

BOOL WINAPI take_line(HANDLE, DWORD, void*, DWORD, void*, DWORD, DWORD* returned, OVERLAPPED*)
{
    *returned = 0;
    return TRUE;
}

// Called before the module's own code runs.
bool may_keep_from_loading(const fault_place& place)
{
    return place.group == memory_group;
}

class ModuleImportFaults : public testing::TestWithParam<fault_kind>
{
protected:
    ModuleImportFaults()
    {
        keep_system_libraries_loaded();
        faults_.stand_in("CreateFileW", address_of(&create_file_or_device));
        faults_.stand_in("DeviceIoControl", address_of(&take_line));
    }

    std::vector<fault_place> places_of_a_life()
    {
        for (int run = 1; run <= 2; ++run) { // the first run includes what happens once for each process
            faults_.count();
            EXPECT_TRUE(load_use_and_unload());
            faults_.stop();
        }
        EXPECT_GT(import_faults::calls("DeviceIoControl"), 0);
        EXPECT_GE(import_faults::calls("LoadLibraryExW"), 3);
        return faults_.places();
    }

    bool run_with(const fault_place& place)
    {
        faults_.fail(place);
        const bool has_worked = load_use_and_unload();
        const bool has_failed = faults_.has_failed();
        faults_.stop();
        EXPECT_TRUE(has_worked || may_keep_from_loading(place))
            << "a failure of the log must not affect the module";
        EXPECT_TRUE(load_use_and_unload()) << "the next load fails";
        EXPECT_TRUE(has_logged()) << "the next load does not log";
        return has_failed;
    }

private:
    // Loads, uses and unloads the module; false if it did not load or an object was not created.
    bool load_use_and_unload()
    {
        logged_before_ = logs_.lines().size();
        const silent_output quiet;
        const HMODULE module = LoadLibraryW(loaded_module::path().c_str());
        if (!module)
            return false;
        const bool has_worked = use_objects(module);
        EXPECT_EQ(function<HRESULT WINAPI()>(module, "DllCanUnloadNow")(), S_OK);
        FreeLibrary(module);
        EXPECT_EQ(GetModuleHandleW(L"QuillPDF.IE.dll"), nullptr);
        return has_worked;
    }

    static bool use_objects(HMODULE module)
    {
        auto* const get = function<HRESULT WINAPI(REFCLSID, REFIID, void**)>(module, "DllGetClassObject");
        const auto helper = create<IObjectWithSite>(get, helper_class);
        if (helper)
            EXPECT_EQ(helper->SetSite(nullptr), S_OK); // uses a barrier, which loads the libraries
        return helper && create<IUnknown>(get, active_doc_class);
    }

    template <class Interface, class Get>
    static ComPtr<Interface> create(Get* get_class_object, const CLSID& class_id)
    {
        ComPtr<IClassFactory> factory;
        ComPtr<Interface> object;
        HRESULT result = get_class_object(class_id, IID_IClassFactory, &factory);
        if (factory)
            result = factory->CreateInstance(nullptr, IID_PPV_ARGS(&object));
        EXPECT_EQ(result, object ? S_OK : E_OUTOFMEMORY);
        return object;
    }

    template <class Function>
    static Function* function(HMODULE module, const char* name)
    {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    }

    bool has_logged() const { return logs_.lines().size() > logged_before_; }

    log_folder_scope logs_;
    environment_scope level_{L"QUILL_LOG_LEVEL", L"debug"};
    environment_scope sinks_{L"QUILL_LOG_SINKS", L"file,stdout,procmon"};
    import_faults faults_;
    std::size_t logged_before_ = 0;
};

TEST_P(ModuleImportFaults, AffectOnlyWhatFailed)
{
    const auto places = places_of_a_life();
    ASSERT_GT(places.size(), 50u);
    constexpr int usual_step = 15;
    fail_each(GetParam() == fault_kind::calls
                  ? "the system's part in loading, the log and the suite's libraries"
                  : "memory for loading, the log and the suite's libraries",
              GetParam(), places, usual_step, [this](const fault_place& place) { return run_with(place); });
}

INSTANTIATE_TEST_SUITE_P(Module, ModuleImportFaults, testing::Values(fault_kind::calls, fault_kind::memory),
                         [](const testing::TestParamInfo<fault_kind>& kind) {
                             return kind.param == fault_kind::calls ? "Calls" : "Memory";
                         });

// Each imported function must be listed with its failures, or with the reason why it is excluded.
TEST(ModuleImports, AreEachInjectedOrExcludedWithAReason)
{
    const loaded_module module;
    const std::vector<std::string> imported = imported_names(module.handle());
    const auto& fallible = fallible_functions();
    for (const std::string& name : imported) {
        const bool can_fail = std::any_of(fallible.begin(), fallible.end(),
                                          [&](const auto& each) { return each.name == name; });
        EXPECT_NE(can_fail, reason_to_leave_alone(name) != nullptr) << name;
    }
    const auto is_imported = [&](const std::string& name) {
        return std::find(imported.begin(), imported.end(), name) != imported.end();
    };
    for (const fallible_function& each : fallible)
        EXPECT_TRUE(is_imported(each.name) || depends_on_toolchain(each.name))
            << each.name << " is listed but not imported";
    const auto left_alone = names_left_alone();
    for (const std::string& name : left_alone)
        EXPECT_TRUE(is_imported(name) || depends_on_toolchain(name)) << name << " is listed but not imported";
    std::printf("%zu imports, %zu fail, %zu are left alone\n", imported.size(), fallible.size(),
                left_alone.size());
}

} // namespace
} // namespace quill::test
