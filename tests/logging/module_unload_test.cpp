// Loads the product's DLL, uses it with logging enabled, and unloads it.
#include "platform/library_function.h"
#include "platform/unique_handle.h"
#include "tests/support/balance.h"
#include "tests/support/child_process.h"
#include "tests/support/log_file.h"
#include "tests/support/process_resources.h"
#include "tests/support/scopes.h"
#include "tests/support/storage_indexes.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <ole2.h>

#include <array>
#include <string>

namespace quill {
namespace {

using test::environment_scope;
using test::log_folder_scope;
using test::process_resources;
using test::storage_indexes;

constexpr const wchar_t* module_name = L"QuillPDF.IE.dll";
constexpr CLSID active_document = {
    0x5E2C7A90, 0x1B3D, 0x4F6E, {0x8A, 0x21, 0xC4, 0xD9, 0xE0, 0x7B, 0x3F, 0x15}};

using get_class_object = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
using can_unload_now = HRESULT(WINAPI*)();

struct ModuleUnload : testing::Test
{
    log_folder_scope logs;
    environment_scope level{L"QUILL_LOG_LEVEL", L"trace"};
    environment_scope sinks{L"QUILL_LOG_SINKS", L"file"};

    ModuleUnload() { CoInitialize(nullptr); }
    ~ModuleUnload() override { CoUninitialize(); }

    // Loads the module, creates, queries and closes a document, and unloads the module.
    static void visit()
    {
        const unique_library library(LoadLibraryW(test::beside_this_program(module_name).c_str()));
        ASSERT_TRUE(library) << GetLastError();
        const auto class_object = library_function<get_class_object>(library.get(), "DllGetClassObject");
        const auto can_unload = library_function<can_unload_now>(library.get(), "DllCanUnloadNow");
        ASSERT_TRUE(class_object && can_unload);

        IClassFactory* factory = nullptr;
        ASSERT_EQ(class_object(active_document, IID_IClassFactory, reinterpret_cast<void**>(&factory)), S_OK);
        IOleObject* document = nullptr;
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_IOleObject, reinterpret_cast<void**>(&document)),
                  S_OK);
        factory->Release();
        ASSERT_NE(document, nullptr);
        CLSID id{};
        EXPECT_EQ(document->GetUserClassID(&id), S_OK);
        document->DoVerb(-7, nullptr, nullptr, 0, nullptr, nullptr);
        document->Close(OLECLOSE_NOSAVE);
        EXPECT_EQ(can_unload(), S_FALSE);
        document->Release();
        EXPECT_EQ(can_unload(), S_OK);
    }
};

TEST_F(ModuleUnload, LeaksNothingInTheBrowser)
{
    visit();
    EXPECT_FALSE(logs.lines().empty());
    const auto before = process_resources::now();
    const auto indexes = storage_indexes::free_now();
    for (int i = 0; i < 3; ++i) {
        visit();
        EXPECT_EQ(GetModuleHandleW(module_name), nullptr);
    }
    EXPECT_EQ(process_resources::now(), before);
    EXPECT_EQ(storage_indexes::free_now(), indexes);
}

// The set-up of the log throws for each line on each thread.
TEST_F(ModuleUnload, LeaksNothingAfterExceptionsOnRunningThreads)
{
    test::remove_path(test::profile_log_folder_path());
    wchar_t app_data[MAX_PATH] = {};
    GetEnvironmentVariableW(L"APPDATA", app_data, MAX_PATH);
    const std::wstring company = std::wstring(app_data) + L"\\Quill";
    test::remove_path(company);
    ASSERT_TRUE(test::write_file(company, "in the way of the log's folder"));

    struct visiting_thread
    {
        unique_handle used{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
        unique_handle finish{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
        unique_handle thread;
    };
    const auto use_and_wait = [](void* argument) -> DWORD {
        const auto& self = *static_cast<visiting_thread*>(argument);
        CoInitialize(nullptr);
        visit();
        CoUninitialize();
        SetEvent(self.used.get());
        return WaitForSingleObject(self.finish.get(), 10'000);
    };
    const auto run = [&] {
        std::array<visiting_thread, 3> visitors;
        unique_library kept(LoadLibraryW(test::beside_this_program(module_name).c_str()));
        for (auto& visitor : visitors) {
            visitor.thread.reset(CreateThread(nullptr, 0, use_and_wait, &visitor, 0, nullptr));
            EXPECT_EQ(WaitForSingleObject(visitor.used.get(), 10'000), WAIT_OBJECT_0);
        }
        kept.reset();
        EXPECT_EQ(GetModuleHandleW(module_name), nullptr);
        for (auto& visitor : visitors) {
            SetEvent(visitor.finish.get());
            EXPECT_EQ(WaitForSingleObject(visitor.thread.get(), 10'000), WAIT_OBJECT_0);
        }
    };
    run();
    const auto before = process_resources::now();
    const auto indexes = storage_indexes::free_now();
    run();
    run();
    EXPECT_EQ(process_resources::now(), before);
    EXPECT_EQ(storage_indexes::free_now(), indexes);
    EXPECT_TRUE(logs.lines().empty());
    test::remove_path(company);
}

TEST_F(ModuleUnload, LeaksNothingOnAnotherThreadThanTheOneThatUsedIt)
{
    struct shared
    {
        unique_handle used{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
        unique_handle finish{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    } state;
    const auto use_and_wait = [](void* argument) -> DWORD {
        const auto& s = *static_cast<shared*>(argument);
        CoInitialize(nullptr);
        visit();
        SetEvent(s.used.get());
        WaitForSingleObject(s.finish.get(), 10'000);
        CoUninitialize();
        return 0;
    };
    const auto run = [&] {
        unique_library kept(LoadLibraryW(test::beside_this_program(module_name).c_str()));
        const unique_handle thread(CreateThread(nullptr, 0, use_and_wait, &state, 0, nullptr));
        EXPECT_EQ(WaitForSingleObject(state.used.get(), 10'000), WAIT_OBJECT_0);
        kept.reset();
        EXPECT_EQ(GetModuleHandleW(module_name), nullptr);
        SetEvent(state.finish.get());
        EXPECT_EQ(WaitForSingleObject(thread.get(), 10'000), WAIT_OBJECT_0);
    };
    test::expect_balance(run);
}

} // namespace
} // namespace quill
