#include "tests/fuzz/caught_line.h"

#include "logging/global_logger.h"

#include <spdlog/details/null_mutex.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>

#include <utility>

namespace quill::fuzz {
namespace {

struct line_sink : spdlog::sinks::base_sink<spdlog::details::null_mutex>
{
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        line.assign(message.payload.data(), message.payload.size());
    }
    void flush_() override {}

    std::string line;
};

std::shared_ptr<line_sink> install()
{
    auto sink = std::make_shared<line_sink>();
    auto logger = std::make_shared<spdlog::logger>("caught", sink);
    logger->set_level(spdlog::level::trace);
    use_logger(std::move(logger));
    return sink;
}

} // namespace

std::string caught_line()
{
    static const std::shared_ptr<line_sink> sink = install();
    return std::exchange(sink->line, {});
}

} // namespace quill::fuzz
