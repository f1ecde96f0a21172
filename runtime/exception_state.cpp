// Which exceptions a thread has caught and has in flight, without the toolchain's thread library: that one
// opens two handles for each thread that asks, and closes none of them when the DLL is unloaded.
#include <cxxabi.h>

namespace __cxxabiv1 {

// Laid out by the C++ ABI.
struct __cxa_eh_globals
{
    void* caught_exceptions;
    unsigned int uncaught_exceptions;
};

namespace {

constinit thread_local __cxa_eh_globals exception_state{};

} // namespace

extern "C" {

__cxa_eh_globals* __cxa_get_globals() noexcept
{
    return &exception_state;
}

__cxa_eh_globals* __cxa_get_globals_fast() noexcept
{
    return &exception_state;
}

} // extern "C"

} // namespace __cxxabiv1
