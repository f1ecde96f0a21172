// The exception state of each thread, without the toolchain's thread library, which opens two handles for
// each thread that uses exceptions and leaks them when the DLL is unloaded.
#include <cxxabi.h>

namespace __cxxabiv1 {

// The layout is defined by the C++ ABI.
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
