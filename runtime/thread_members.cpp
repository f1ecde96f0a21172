// Members of std::thread and std::condition_variable that the logging library references for its periodic
// flush thread, which the module never starts. Code that starts a thread or waits on a condition fails to
// link: it pulls in the C++ library's object files, which reference undefined functions.
#include <cerrno>
#include <condition_variable>
#include <system_error>
#include <thread>

// No thread can have been started.
void std::thread::join()
{
    throw std::system_error(EINVAL, std::generic_category());
}

// No thread can be waiting: the wait functions do not link.
void std::condition_variable::notify_one() noexcept {}

std::condition_variable::~condition_variable() noexcept {}
