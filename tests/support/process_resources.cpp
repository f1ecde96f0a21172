#include "tests/support/process_resources.h"

#include <windows.h>

#include <tlhelp32.h>

#include <ostream>

namespace quill::test {
namespace {

DWORD thread_count()
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE)
        return 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    DWORD count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId();
    CloseHandle(snapshot);
    return count;
}

BOOL CALLBACK count_window(HWND window, LPARAM count)
{
    ++*reinterpret_cast<DWORD*>(count);
    EnumChildWindows(
        window,
        [](HWND, LPARAM child_count) -> BOOL {
            ++*reinterpret_cast<DWORD*>(child_count);
            return TRUE;
        },
        count);
    return TRUE;
}

DWORD window_count()
{
    DWORD count = 0;
    EnumThreadWindows(GetCurrentThreadId(), count_window, reinterpret_cast<LPARAM>(&count));
    return count;
}

} // namespace

process_resources process_resources::now()
{
    process_resources counts;
    GetProcessHandleCount(GetCurrentProcess(), &counts.kernel_handles);
    counts.gdi_objects = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    counts.user_objects = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    counts.threads = thread_count();
    counts.windows = window_count();
    return counts;
}

std::ostream& operator<<(std::ostream& out, const process_resources& counts)
{
    return out << "{handles " << counts.kernel_handles << ", GDI " << counts.gdi_objects << ", USER "
               << counts.user_objects << ", threads " << counts.threads << ", windows " << counts.windows << "}";
}

} // namespace quill::test
