// Owner of memory from COM's task allocator: strings and arrays that COM calls hand out.
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
