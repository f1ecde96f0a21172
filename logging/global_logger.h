// The module's logger, which log streams write to.
#pragma once

#include <memory>

namespace spdlog {
class logger;
}

namespace quill {

struct logger_holder
{
    std::shared_ptr<spdlog::logger> logger; // never null
};

// The first call sets up the logger that the environment selects; it is kept until the module is unloaded. If
// logging itself fails, the module does not log. Other failures (a folder that cannot be created, a path that
// cannot be read) are thrown, and the next call tries again. Any thread may call; none waits for the set-up
// of another. Throws std::logic_error inside the set-up of the same thread and after static destruction.
const logger_holder& global_logger();

// Replaces the module's logger by another one, not null. For tests that read log lines; no other thread may
// log meanwhile.
void use_logger(std::shared_ptr<spdlog::logger> logger);

} // namespace quill
