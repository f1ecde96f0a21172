// The system's notice of libraries that come and go. Its own headers do not declare it.
#pragma once

#include <windows.h>

#include <winternl.h>

namespace quill::test {

struct library_notice
{
    ULONG flags;
    const UNICODE_STRING* full_name;
    const UNICODE_STRING* base_name;
    void* base;
    ULONG size;
};
inline constexpr ULONG library_came = 1; // the other reason: it goes
using notice_handler = void(CALLBACK*)(ULONG reason, const library_notice* notice, void* context);

// Of LdrRegisterDllNotification and LdrUnregisterDllNotification. A handler is called on the thread that
// loads, before the library's own entry point.
using register_function = NTSTATUS(NTAPI*)(ULONG flags, notice_handler handler, void* context, void** cookie);
using unregister_function = NTSTATUS(NTAPI*)(void* cookie);

// Null when the system does not have it.
template <class Function>
Function system_function(const char* name)
{
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

} // namespace quill::test
