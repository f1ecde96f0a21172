// A library with the module's logging in it, as the module has it: for loading and unloading.
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

// Fails behind the barriers; the suite's libraries are loaded for that.
extern "C" __declspec(dllexport) int fail_behind_barrier(int fallback)
{
    return quill::CrashBorder([] { return read_through(nullptr); }, fallback, "fail_behind_barrier", 1);
}
