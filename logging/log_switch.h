// Tests whether a level is logged. Logging is normally off; a disabled statement costs two atomic loads. Used
// by QUILL_LOG.
#pragma once

#include "logging/log_level.h"

#include <atomic>

namespace spdlog {
class logger;
}

namespace quill {

namespace log_detail {

// Until the logger is set up, every level is logged, so that the first statement sets it up.
inline constinit std::atomic<int> level_before_set_up{static_cast<int>(log_level::trace)};
// The level of the module's logger.
inline constinit std::atomic<const std::atomic<int>*> current_level{&level_before_set_up};

} // namespace log_detail

// Any thread may call.
inline bool is_logged(log_level level) noexcept
{
    const std::atomic<int>* const current = log_detail::current_level.load(std::memory_order_acquire);
    return current->load(std::memory_order_relaxed) <= static_cast<int>(level);
}

// Makes is_logged() read the level of this logger, which must outlive the next call. With nullptr nothing is
// logged.
void follow_level_of(const spdlog::logger* logger) noexcept;

} // namespace quill
