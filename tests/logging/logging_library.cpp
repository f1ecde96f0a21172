// A library that contains the logging as the module does, for loading and unloading.
#include "logging/exception_barriers.h"
#include "logging/log_stream.h"

#include <windows.h>

extern "C" __declspec(dllexport) void write_line(int level, const char* text)
{
    quill::log_stream(static_cast<quill::log_level>(level)) << text;
}

namespace {

__declspec(noinline) __attribute__((no_sanitize("undefined"))) int read_through(const volatile int* address)
{
    return *address;
}

} // namespace

// Throws inside a barrier, which loads the suite's libraries.
extern "C" __declspec(dllexport) int fail_behind_barrier(int fallback)
{
    return quill::CrashBorder([] { return read_through(nullptr); }, fallback, "fail_behind_barrier", 1);
}
