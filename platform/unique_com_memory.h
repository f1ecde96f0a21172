// Owner of memory from the COM task allocator, such as strings that COM methods return.
//
//     unique_com_string name;
//     if (SUCCEEDED(moniker->GetDisplayName(context, nullptr, name.put())) && name)
//         use(name.get());                      // borrowed; freed with CoTaskMemFree
#pragma once

#include "platform/unique_handle.h"

#include <windows.h>

#include <objbase.h>

namespace quill {

template <typename Pointer>
struct com_memory_traits : null_is_empty<Pointer>
{
    static void close(Pointer value) noexcept { CoTaskMemFree(value); }
};
template <typename Pointer>
using unique_com_memory = unique_resource<com_memory_traits<Pointer>>;

using unique_com_string = unique_com_memory<wchar_t*>;

} // namespace quill
