#include "logging/log_switch.h"

#include <spdlog/logger.h>

#include <type_traits>

namespace quill {
namespace {

constinit std::atomic<int> level_of_nobody{static_cast<int>(log_level::off) + 1};

// The member is protected, which leaves its address to derived classes. Reading the level where it is, and
// not through the logger's own header, keeps that header out of every file that logs.
struct level_member : spdlog::logger
{
    static constexpr auto address = &level_member::level_;
};
static_assert(std::is_same_v<std::atomic<int>, spdlog::level_t>);

} // namespace

void follow_level_of(const spdlog::logger* logger) noexcept
{
    const std::atomic<int>& level = logger ? logger->*level_member::address : level_of_nobody;
    log_detail::current_level.store(&level, std::memory_order_release);
}

} // namespace quill
