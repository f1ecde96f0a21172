// The loader's notifications of libraries that are loaded and unloaded. The system headers do not declare
// them.
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
inline constexpr ULONG library_loaded = 1; // the other reason is the unloading
using notice_handler = void(CALLBACK*)(ULONG reason, const library_notice* notice, void* context);

// LdrRegisterDllNotification and LdrUnregisterDllNotification. A handler is called on the loading thread,
// before the entry point of the library.
using register_function = NTSTATUS(NTAPI*)(ULONG flags, notice_handler handler, void* context, void** cookie);
using unregister_function = NTSTATUS(NTAPI*)(void* cookie);

// nullptr if the system does not have it.
template <class Function>
Function system_function(const char* name)
{
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

} // namespace quill::test
