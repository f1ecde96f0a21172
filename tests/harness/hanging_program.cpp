// A test program whose only test never ends, for the test of the watchdog.
#include <windows.h>

#include <gtest/gtest.h>

namespace {

__declspec(noinline) void wait_for_ever_in_here()
{
    const HANDLE never = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    WaitForSingleObject(never, INFINITE);
    CloseHandle(never);
}

TEST(Hanging, NeverEnds)
{
    wait_for_ever_in_here();
    ADD_FAILURE();
}

} // namespace
