#include "tests/support/module_threads.h"

#include <tlhelp32.h>
#include <winternl.h>

#include <cstdint>

namespace quill::test {
namespace {

constexpr auto start_address_information = static_cast<THREADINFOCLASS>(9);

std::uintptr_t start_of_thread(DWORD id)
{
    std::uintptr_t address = 0;
    if (const HANDLE thread = OpenThread(THREAD_QUERY_INFORMATION, FALSE, id)) {
        NtQueryInformationThread(thread, start_address_information, &address, sizeof address, nullptr);
        CloseHandle(thread);
    }
    return address;
}

} // namespace

unsigned threads_of(HMODULE module)
{
    const auto base = reinterpret_cast<std::uintptr_t>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers =
        reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + static_cast<DWORD>(dos->e_lfanew));
    const std::uintptr_t end = base + headers->OptionalHeader.SizeOfImage;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    unsigned count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID != GetCurrentProcessId())
            continue;
        const std::uintptr_t start = start_of_thread(entry.th32ThreadID);
        count += start >= base && start < end;
    }
    CloseHandle(snapshot);
    return count;
}

} // namespace quill::test
