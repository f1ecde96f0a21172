// The members of the C++ library's threads that the logging library refers to: its registry can have a thread
// that flushes the loggers now and then. The module never starts one. Code that does, or that waits on a
// condition, does not link: the library's own object files define these members too, and refer to functions
// that are not defined.
#include <cerrno>
#include <condition_variable>
#include <system_error>
#include <thread>

namespace std {

// No thread was started, hence none can be joined.
void thread::join()
{
    __throw_system_error(EINVAL);
}

// No thread waits, since the functions that wait are not linked.
void condition_variable::notify_one() noexcept {}

condition_variable::~condition_variable() noexcept {}

} // namespace std
