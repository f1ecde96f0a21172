#include "tests/support/log_capture.h"

#include "logging/global_logger.h"

#include <windows.h>

#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>

#include <mutex>
#include <utility>

namespace quill::test {

struct log_capture::store : spdlog::sinks::base_sink<std::mutex>
{
    std::vector<std::string> copy()
    {
        const std::lock_guard lock(mutex_);
        return lines;
    }

    void clear()
    {
        const std::lock_guard lock(mutex_);
        lines.clear();
    }

    void sink_it_(const spdlog::details::log_msg& message) override
    {
        const auto level = spdlog::level::to_string_view(message.level);
        lines.push_back(std::string(level.data(), level.size()) + ": " +
                        std::string(message.payload.data(), message.payload.size()));
        if (on_line)
            on_line(lines.back());
    }

    void flush_() override {}

    std::vector<std::string> lines;
    std::function<void(const std::string&)> on_line;
};

log_capture::log_capture() : store_(std::make_shared<store>()), before_(global_logger().logger)
{
    auto logger = std::make_shared<spdlog::logger>("capture", store_);
    logger->set_level(spdlog::level::trace);
    use_logger(std::move(logger));
}

log_capture::~log_capture()
{
    use_logger(before_);
}

std::vector<std::string> log_capture::lines() const
{
    return store_->copy();
}

void log_capture::clear()
{
    store_->clear();
}

void log_capture::on_line(std::function<void(const std::string&)> action)
{
    store_->on_line = std::move(action);
}

} // namespace quill::test
