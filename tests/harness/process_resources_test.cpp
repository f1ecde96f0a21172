// The counts themselves: each kind of resource is counted while it exists and no longer.
#include "tests/support/process_resources.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace quill::test {
namespace {

TEST(ProcessResources, AreEqualWithoutAChange)
{
    const auto before = process_resources::now();
    EXPECT_GT(before.kernel_handles, 0u);
    EXPECT_GT(before.gdi_objects, 0u);
    EXPECT_GT(before.threads, 0u);
    EXPECT_EQ(process_resources::now(), before);
    EXPECT_EQ(process_resources::now(), before);
}

TEST(ProcessResources, CountsALeakedHandle)
{
    const auto before = process_resources::now();
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_EQ(process_resources::now().kernel_handles, before.kernel_handles + 1);
    CloseHandle(event);
    EXPECT_EQ(process_resources::now(), before);
}

TEST(ProcessResources, CountsAGdiObject)
{
    const auto before = process_resources::now();
    const HBRUSH brush = CreateSolidBrush(RGB(1, 2, 3));
    const HDC context = CreateCompatibleDC(nullptr);
    EXPECT_EQ(process_resources::now().gdi_objects, before.gdi_objects + 2);
    DeleteDC(context);
    DeleteObject(brush);
    EXPECT_EQ(process_resources::now(), before);
}

TEST(ProcessResources, CountsAMenu)
{
    const auto before = process_resources::now();
    const HMENU menu = CreateMenu();
    EXPECT_EQ(process_resources::now().menus, before.menus + 1);
    DestroyMenu(menu);
    EXPECT_EQ(process_resources::now(), before);
}

TEST(ProcessResources, CountsAThread)
{
    const auto before = process_resources::now();
    const HANDLE go = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE thread = CreateThread(
        nullptr, 0, [](void* event) -> DWORD { return WaitForSingleObject(event, INFINITE); }, go, 0,
        nullptr);
    EXPECT_EQ(process_resources::now().threads, before.threads + 1);
    SetEvent(go);
    EXPECT_EQ(WaitForSingleObject(thread, 10'000), WAIT_OBJECT_0);
    CloseHandle(thread);
    CloseHandle(go);
    EXPECT_EQ(process_resources::now(), before);
}

TEST(ProcessResources, CountsAWindowWithItsChild)
{
    const auto before = process_resources::now();
    const HWND parent =
        CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    const HWND child =
        CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 1, 1, parent, nullptr, nullptr, nullptr);
    CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 1, 1, child, nullptr, nullptr, nullptr);
    EXPECT_EQ(process_resources::now().windows, before.windows + 3);
    DestroyWindow(parent);
    EXPECT_EQ(process_resources::now(), before);
}

} // namespace
} // namespace quill::test
