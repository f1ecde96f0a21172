// The process's logger where there is no environment to ask: a placeholder that takes no line, until a test
// puts its own in its place.
#include "logging/global_logger.h"

#include <spdlog/logger.h>

namespace quill {

logger_holder& global_logger()
{
    static logger_holder holder{[] {
        auto logger = std::make_shared<spdlog::logger>("null");
        logger->set_level(spdlog::level::off);
        return logger;
    }()};
    return holder;
}

} // namespace quill
