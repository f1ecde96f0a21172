#include "platform/process_end.h"

#include "platform/library_function.h"

namespace quill {

bool process_is_ending() noexcept
{
    using shutdown_function = BOOLEAN(NTAPI*)();
    const auto is_in_progress =
        library_function<shutdown_function>(GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress");
    return is_in_progress && is_in_progress();
}

} // namespace quill
