#include "active_doc/browser_instances.h"

#include "platform/mutex.h"

#include <map>
#include <mutex>

namespace quill {
namespace {

// A process may contain several tabs, each with its own UI thread.
platform::MutexImpl counts_mutex;
std::map<HWND, std::uint32_t> counts;

} // namespace

std::uint32_t add_browser_instance(HWND browser)
{
    const std::lock_guard lock(counts_mutex);
    const auto [entry, inserted] = counts.try_emplace(browser, 0);
    if (!inserted)
        ++entry->second;
    return entry->second;
}

void remove_browser_instances(HWND browser)
{
    const std::lock_guard lock(counts_mutex);
    counts.erase(browser);
}

} // namespace quill
