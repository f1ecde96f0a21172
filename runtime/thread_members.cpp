// The members of the C++ library's threads that the logging library refers to: its registry can have a thread
// that flushes the loggers now and then. The module never starts one. Code that does, or that waits on a
// condition, does not link: the library's own object files define these members too, and refer to functions
// that are not defined.
#include <cerrno>
#include <condition_variable>
#include <system_error>
#include <thread>

// No thread was started, hence none can be joined.
void std::thread::join()
{
    throw std::system_error(EINVAL, std::generic_category());
}

// No thread waits, since the functions that wait are not linked.
void std::condition_variable::notify_one() noexcept {}

std::condition_variable::~condition_variable() noexcept {}
