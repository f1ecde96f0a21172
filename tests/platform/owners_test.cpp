// Owner types, the mutex and reading the environment.
#include "platform/environment.h"
#include "platform/library_function.h"
#include "platform/mutex.h"
#include "platform/unique_com_memory.h"
#include "platform/unique_handle.h"
#include "tests/support/process_resources.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <mutex>
#include <type_traits>

namespace quill {
namespace {

using test::environment_scope;
using test::process_resources;

bool is_open(HANDLE handle)
{
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != FALSE;
}

HANDLE new_event()
{
    return CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

TEST(UniqueHandle, ClosesOnceAtDestruction)
{
    const auto before = process_resources::now();
    {
        unique_handle first(new_event());
        unique_handle second(std::move(first));
        EXPECT_FALSE(first);
        EXPECT_TRUE(second);
        unique_handle third(new_event());
        const HANDLE replaced = third.get();
        third = std::move(second);
        EXPECT_FALSE(is_open(replaced));
        EXPECT_TRUE(is_open(third.get()));
        unique_handle& same = third;
        third = std::move(same);
        EXPECT_TRUE(is_open(third.get()));
    }
    EXPECT_EQ(process_resources::now(), before);
}

TEST(UniqueHandle, NullAndInvalidHandleAreEmpty)
{
    EXPECT_FALSE(unique_handle());
    EXPECT_FALSE(unique_handle(nullptr));
    EXPECT_FALSE(unique_handle(INVALID_HANDLE_VALUE));
    static_assert(!std::is_copy_constructible_v<unique_handle>);
}

TEST(UniqueHandle, ReleasesAndAcquiresOwnership)
{
    unique_handle owner(new_event());
    const HANDLE event = owner.release();
    EXPECT_FALSE(owner);
    EXPECT_TRUE(is_open(event));
    owner.reset(event);
    *owner.put() = new_event();
    EXPECT_FALSE(is_open(event) && owner.get() != event);
    owner.reset();
    EXPECT_FALSE(owner);
}

TEST(UniqueOwners, FreeEachKind)
{
    const auto before = process_resources::now();
    {
        unique_registry_key key;
        EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, key.put()), ERROR_SUCCESS);
        const unique_menu menu(CreatePopupMenu());
        const unique_gdi_object<HBRUSH> brush(CreateSolidBrush(1));
        WIN32_FIND_DATAW found{};
        const unique_find_handle search(FindFirstFileW(L"C:\\*", &found));
        EXPECT_TRUE(search);
        const unique_local_memory<void*> local(LocalAlloc(LPTR, 8));
        const unique_com_string text(static_cast<wchar_t*>(CoTaskMemAlloc(8)));
        EXPECT_NE(process_resources::now(), before);
    }
    EXPECT_EQ(process_resources::now(), before);
}

TEST(LibraryFunction, IsFoundOrNull)
{
    using tick_count = ULONGLONG(WINAPI*)();
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    const auto found = library_function<tick_count>(kernel, "GetTickCount64");
    ASSERT_NE(found, nullptr);
    EXPECT_GT(found(), 0u);
    EXPECT_EQ(library_function<tick_count>(kernel, "NoSuchFunction"), nullptr);
    EXPECT_EQ(library_function<tick_count>(nullptr, "GetTickCount64"), nullptr);
}

TEST(Mutex, IsRecursiveAndExcludesOtherThreads)
{
    struct shared
    {
        platform::MutexImpl mutex;
        int counter = 0;
    } state;
    const auto count = [](void* argument) -> DWORD {
        auto& s = *static_cast<shared*>(argument);
        for (int i = 0; i < 20'000; ++i) {
            const std::lock_guard outer(s.mutex);
            const std::lock_guard inner(s.mutex);
            const int value = s.counter;
            if (i % 1000 == 0)
                SwitchToThread();
            s.counter = value + 1;
        }
        return 0;
    };
    const unique_handle other(CreateThread(nullptr, 0, count, &state, 0, nullptr));
    count(&state);
    EXPECT_EQ(WaitForSingleObject(other.get(), 20'000), WAIT_OBJECT_0);
    EXPECT_EQ(state.counter, 40'000);
}

TEST(EnvironmentVariable, DistinguishesAbsentFromEmpty)
{
    const environment_scope scope(L"QUILL_TEST_VARIABLE", std::nullopt);
    EXPECT_EQ(environment_variable(L"QUILL_TEST_VARIABLE"), std::nullopt);
    EXPECT_EQ(environment_variable("QUILL_TEST_VARIABLE"), std::nullopt);
    SetEnvironmentVariableW(L"QUILL_TEST_VARIABLE", L"");
    EXPECT_EQ(environment_variable(L"QUILL_TEST_VARIABLE"), L"");
    EXPECT_EQ(environment_variable("QUILL_TEST_VARIABLE"), "");
}

TEST(EnvironmentVariable, ReadsValuesOfEveryLength)
{
    for (const std::size_t length : {1u, 15u, 16u, 259u, 260u, 5000u}) {
        const std::wstring value(length, L'v');
        const environment_scope scope(L"QUILL_TEST_VARIABLE", value);
        EXPECT_EQ(environment_variable(L"QUILL_TEST_VARIABLE"), value);
        EXPECT_EQ(environment_variable("QUILL_TEST_VARIABLE"), std::string(length, 'v'));
    }
}

} // namespace
} // namespace quill
