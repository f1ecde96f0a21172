#include "tests/support/process_resources.h"

#include <windows.h>

#include <tlhelp32.h>
#include <winternl.h>

#include <cstddef>
#include <cwchar>
#include <ostream>
#include <vector>

namespace quill::test {
namespace {

// The information class that lists every handle in the system; the headers do not name it.
constexpr ULONG extended_handle_information = 64;
using query_system_information = NTSTATUS(NTAPI*)(ULONG, void*, ULONG, ULONG*);
constexpr NTSTATUS length_mismatch = static_cast<NTSTATUS>(0xC0000004);

struct handle_entry
{
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT back_trace;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};

struct handle_list
{
    ULONG_PTR count;
    ULONG_PTR reserved;
    handle_entry entries[1];
};

// GetProcessHandleCount returns 0 where it is not implemented.
DWORD kernel_handle_count()
{
    DWORD count = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &count) && count > 0)
        return count;
    std::vector<std::byte> buffer(std::size_t{1} << 18);
    ULONG size = 0;
    NTSTATUS status = 0;
    const auto query = reinterpret_cast<query_system_information>(&NtQuerySystemInformation);
    while ((status = query(extended_handle_information, buffer.data(), static_cast<ULONG>(buffer.size()),
                           &size)) == length_mismatch)
        buffer.resize(buffer.size() * 2);
    if (status != 0)
        return 0;
    const auto* list = reinterpret_cast<const handle_list*>(buffer.data());
    count = 0;
    for (ULONG_PTR i = 0; i < list->count; ++i)
        count += list->entries[i].process == GetCurrentProcessId();
    return count;
}

// One entry of the table of GDI handles that the process block points to.
struct gdi_entry
{
    void* object;
    ULONG owner;
    USHORT unique;
    UCHAR type;
    UCHAR flags;
    void* user;
};

constexpr std::size_t gdi_table_offset = 0xF8;
constexpr std::size_t gdi_table_size = 0x4000;

// GetGuiResources returns 0 where it is not implemented; there the table belongs to this process alone.
DWORD gdi_object_count()
{
    if (const DWORD count = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS))
        return count;
    const auto* block = reinterpret_cast<const std::byte*>(NtCurrentTeb()->ProcessEnvironmentBlock);
    const auto* table = *reinterpret_cast<const gdi_entry* const*>(block + gdi_table_offset);
    DWORD count = 0;
    for (std::size_t i = 0; table && i < gdi_table_size; ++i)
        count += table[i].type != 0;
    return count;
}

// The low half of a menu handle identifies the menu too, so all possible values are tried.
DWORD menu_count()
{
    DWORD count = 0;
    for (UINT_PTR handle = 2; handle < 0x10000; handle += 2)
        count += IsMenu(reinterpret_cast<HMENU>(handle)) != FALSE;
    return count;
}

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

// The system creates these with the first window of a thread and keeps them until the thread ends.
bool is_input_method_window(HWND window)
{
    wchar_t name[32] = {};
    GetClassNameW(window, name, ARRAYSIZE(name));
    return std::wcscmp(name, L"IME") == 0 || std::wcscmp(name, L"MSCTFIME UI") == 0;
}

BOOL CALLBACK count_window(HWND window, LPARAM count)
{
    if (!is_input_method_window(window))
        ++*reinterpret_cast<DWORD*>(count);
    return TRUE;
}

BOOL CALLBACK count_window_tree(HWND window, LPARAM count)
{
    count_window(window, count);
    EnumChildWindows(window, count_window, count);
    return TRUE;
}

DWORD window_count()
{
    DWORD count = 0;
    EnumThreadWindows(GetCurrentThreadId(), count_window_tree, reinterpret_cast<LPARAM>(&count));
    return count;
}

void dispatch_messages()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageW(&message);
}

bool start_window_system()
{
    // The common controls of Wine 10 leak nine GDI objects each time they are unloaded.
    LoadLibraryW(L"comctl32.dll");
    for (const wchar_t* name : {L"STATIC", L"EDIT"}) {
        const HWND window = CreateWindowExW(0, name, L"x", WS_POPUP | WS_VISIBLE, 0, 0, 8, 8, nullptr,
                                            nullptr, nullptr, nullptr);
        UpdateWindow(window);
        dispatch_messages();
        DestroyWindow(window);
        dispatch_messages();
    }
    return true;
}

} // namespace

process_resources process_resources::now()
{
    [[maybe_unused]] static const bool started = start_window_system();
    process_resources counts;
    counts.kernel_handles = kernel_handle_count();
    counts.gdi_objects = gdi_object_count();
    counts.menus = menu_count();
    counts.threads = thread_count();
    counts.windows = window_count();
    return counts;
}

std::ostream& operator<<(std::ostream& out, const process_resources& counts)
{
    return out << "{handles " << counts.kernel_handles << ", GDI " << counts.gdi_objects << ", menus "
               << counts.menus << ", threads " << counts.threads << ", windows " << counts.windows << "}";
}

} // namespace quill::test
