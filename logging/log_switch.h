// Whether lines of a level are logged. Logging is normally off; a disabled statement costs two atomic loads.
#pragma once

#include "logging/log_level.h"

#include <atomic>

namespace spdlog {
class logger;
}

namespace quill {

namespace log_detail {

// Before the first line has set up the logger every line counts as read, so that one of them sets it up.
inline constinit std::atomic<int> level_before_set_up{static_cast<int>(log_level::trace)};
// Where the process's logger keeps its level.
inline constinit std::atomic<const std::atomic<int>*> current_level{&level_before_set_up};

} // namespace log_detail

// Any thread may call.
inline bool is_logged(log_level level) noexcept
{
    const std::atomic<int>* const current = log_detail::current_level.load(std::memory_order_acquire);
    return current->load(std::memory_order_relaxed) <= static_cast<int>(level);
}

// From now on is_logged() asks this logger, which must live until another one is followed; with null nobody
// reads any line.
void follow_level_of(const spdlog::logger* logger) noexcept;

} // namespace quill
