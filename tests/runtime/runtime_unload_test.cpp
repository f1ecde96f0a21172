// Unloads a library that has used the C++ runtime on several threads while these keep running.
#include "platform/library_function.h"
#include "platform/unique_handle.h"
#include "tests/runtime/runtime_library.h"
#include "tests/support/child_process.h"
#include "tests/support/process_resources.h"
#include "tests/support/storage_indexes.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <array>

namespace quill {
namespace {

using test::process_resources;
using test::storage_indexes;

constexpr DWORD deadline_ms = 10'000;

struct visiting_thread
{
    bool (*use_runtime)() = nullptr;
    bool has_worked = false;
    unique_handle used{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    unique_handle finish{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    unique_handle thread;

    static DWORD WINAPI run(void* argument)
    {
        auto& self = *static_cast<visiting_thread*>(argument);
        self.has_worked = self.use_runtime();
        SetEvent(self.used.get());
        return WaitForSingleObject(self.finish.get(), deadline_ms);
    }
};

void visit_on_threads_and_unload()
{
    std::array<visiting_thread, 4> visitors;
    {
        const unique_library library(
            LoadLibraryW(test::beside_this_program(test::runtime_library_name).c_str()));
        const auto calls = library_function<test::runtime_calls_function*>(library.get(), "calls");
        ASSERT_NE(calls, nullptr);
        EXPECT_TRUE(calls()->use_runtime());
        for (auto& visitor : visitors) {
            visitor.use_runtime = calls()->use_runtime;
            visitor.thread.reset(CreateThread(nullptr, 0, visiting_thread::run, &visitor, 0, nullptr));
        }
        for (auto& visitor : visitors) {
            EXPECT_EQ(WaitForSingleObject(visitor.used.get(), deadline_ms), WAIT_OBJECT_0);
            EXPECT_TRUE(visitor.has_worked);
        }
    }
    EXPECT_EQ(GetModuleHandleW(test::runtime_library_name), nullptr);
    for (auto& visitor : visitors)
        SetEvent(visitor.finish.get());
    for (auto& visitor : visitors)
        EXPECT_EQ(WaitForSingleObject(visitor.thread.get(), deadline_ms), WAIT_OBJECT_0);
}

TEST(RuntimeUnload, LeaksNoHandleAndNoStorageIndex)
{
    visit_on_threads_and_unload();
    const auto resources = process_resources::now();
    const auto indexes = storage_indexes::free_now();
    for (int i = 0; i < 3; ++i)
        visit_on_threads_and_unload();
    EXPECT_EQ(process_resources::now(), resources);
    EXPECT_EQ(storage_indexes::free_now(), indexes);
}

} // namespace
} // namespace quill
