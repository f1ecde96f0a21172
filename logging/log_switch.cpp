#include "logging/log_switch.h"

#include <spdlog/logger.h>

#include <type_traits>

namespace quill {
namespace {

constinit std::atomic<int> level_without_logger{static_cast<int>(log_level::off) + 1};

// A derived class may take the address of the protected member. is_logged() reads the level through it, so
// that files that log need not include spdlog's header.
struct level_member : spdlog::logger
{
    static constexpr auto address = &level_member::level_;
};
static_assert(std::is_same_v<std::atomic<int>, spdlog::level_t>);

} // namespace

void follow_level_of(const spdlog::logger* logger) noexcept
{
    const std::atomic<int>& level = logger ? logger->*level_member::address : level_without_logger;
    log_detail::current_level.store(&level, std::memory_order_release);
}

} // namespace quill
