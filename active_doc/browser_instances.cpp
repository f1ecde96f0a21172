#include "active_doc/browser_instances.h"

#include <map>
#include <mutex>

namespace quill {
namespace {

// One process may run several tabs, each on a thread of its own.
struct instance_counts
{
    std::mutex mutex;
    std::map<HWND, std::uint32_t> by_browser;
};

instance_counts& counts()
{
    static instance_counts instance;
    return instance;
}

} // namespace

std::uint32_t add_browser_instance(HWND browser)
{
    auto& [mutex, by_browser] = counts();
    const std::lock_guard lock(mutex);
    const auto [entry, inserted] = by_browser.try_emplace(browser, 0);
    if (!inserted)
        ++entry->second;
    return entry->second;
}

void remove_browser_instances(HWND browser)
{
    auto& [mutex, by_browser] = counts();
    const std::lock_guard lock(mutex);
    by_browser.erase(browser);
}

} // namespace quill
