// The process-wide logger that log streams write to.
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

// The holder of the module's logger. The first call decides, from the environment, whether and where the
// module logs; the decision stands until the module is unloaded. An error that is not the logger's own
// (a folder that cannot be made, a path that cannot be read) is thrown to the caller, and the next call
// tries again. Any thread may call, and none waits for another's set-up; from inside the set-up on the same
// thread, and after the end of the static objects, it throws std::logic_error.
const logger_holder& global_logger();

// Puts another logger, not null, in place of the module's, as those do who want to read the lines; the module
// itself does not call it. No other thread may log meanwhile.
void use_logger(std::shared_ptr<spdlog::logger> logger);

} // namespace quill
