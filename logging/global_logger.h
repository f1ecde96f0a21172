// The process-wide logger that log streams write to.
#pragma once

#include <atomic>
#include <memory>

namespace spdlog {
class logger;
}

namespace quill {

struct logger_holder
{
    std::shared_ptr<spdlog::logger> logger; // never null
};

// The holder of the module's logger. The first call decides, from the environment, whether and where the
// module logs; the decision stands until the module is unloaded. An error that is not the logger's own
// (a folder that cannot be made, a path that cannot be read) is thrown to the caller, and the next call
// tries again. Any thread may call.
logger_holder& global_logger();

// What global_logger() returns, null until it has returned for the first time: log streams look here first,
// because most have nothing to write and shall not pay for a call.
inline constinit std::atomic<logger_holder*> known_holder{nullptr};

} // namespace quill
