// Allocates an exception of an impossible size, which ends the process.
#include <cxxabi.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

constexpr int exit_code_of_terminate = 3;

[[noreturn]] void say_and_exit()
{
    std::puts("terminated");
    std::fflush(stdout);
    std::_Exit(exit_code_of_terminate);
}

} // namespace

// The argument is subtracted from the size of the address space.
int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    std::set_terminate(say_and_exit);
    const std::size_t size = SIZE_MAX - static_cast<std::size_t>(std::atoi(argv[1]));
    const void* const memory = abi::__cxa_allocate_exception(size);
    std::puts(memory ? "memory" : "null");
    return 0;
}
