// The process's logger in the native build, which does not read the environment: a disabled placeholder until
// a test sets its own.
#include "logging/global_logger.h"
#include "logging/log_switch.h"

#include <spdlog/logger.h>

namespace quill {
namespace {

std::shared_ptr<spdlog::logger> silent_logger()
{
    auto logger = std::make_shared<spdlog::logger>("null");
    logger->set_level(spdlog::level::off);
    follow_level_of(logger.get());
    return logger;
}

logger_holder& holder()
{
    static logger_holder made{silent_logger()};
    return made;
}

} // namespace

const logger_holder& global_logger()
{
    return holder();
}

void use_logger(std::shared_ptr<spdlog::logger> logger)
{
    logger.swap(holder().logger);
    follow_level_of(holder().logger.get());
}

} // namespace quill
