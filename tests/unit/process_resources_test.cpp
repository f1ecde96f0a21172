#include "tests/support/process_resources.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

TEST(ProcessResources, SeesAHandleThatStaysOpen)
{
    const auto before = process_resources::now();
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_EQ(process_resources::now().kernel_handles, before.kernel_handles + 1);
    CloseHandle(event);
    EXPECT_EQ(process_resources::now(), before);
}

TEST(ProcessResources, SeesAWindowWithItsChild)
{
    const auto before = process_resources::now();
    const HWND parent = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 1, 1, parent, nullptr, nullptr, nullptr);
    EXPECT_EQ(process_resources::now().windows, before.windows + 2);
    DestroyWindow(parent);
    EXPECT_EQ(process_resources::now().windows, before.windows);
}

} // namespace
} // namespace quill::test
