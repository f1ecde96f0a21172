#include "logging/global_logger.h"

#include "logging/log_file_name.h"
#include "logging/log_switch.h"
#include "logging/logger_choice.h"
#include "logging/procmon_sink.h"
#include "platform/environment.h"
#include "platform/mutex.h"

#include <windows.h>

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace quill {
namespace {

using platform::MutexImpl;
using file_sink = spdlog::sinks::rotating_file_sink<MutexImpl>;
using process_monitor_sink = spdlog_sinks::procmon_sink<MutexImpl>;

constexpr std::size_t maximum_log_size = std::size_t{10} * 1024 * 1024; // bytes
constexpr std::size_t maximum_rotated_files = 7;
constexpr const char* line_pattern = "%H:%M:%S:%f [t:%t] [%l] %v";
constexpr const char* line_end = "\r\n";

spdlog::sink_ptr make_sink(log_sink sink)
{
    switch (sink) {
    case log_sink::file: {
        const std::wstring pattern = log_file_name_pattern();
        const int process_id = static_cast<int>(GetCurrentProcessId());
        return std::make_shared<file_sink>(fmt::format(fmt::runtime(pattern), process_id), maximum_log_size,
                                           maximum_rotated_files);
    }
    case log_sink::standard_output:
        return std::make_shared<spdlog::sinks::stdout_sink_mt>();
    case log_sink::process_monitor:
        return std::make_shared<process_monitor_sink>();
    }
    return nullptr;
}

// A set-up that failed has left the placeholder in the registry.
std::shared_ptr<spdlog::logger> placeholder_logger()
{
    auto logger = spdlog::get("null");
    if (!logger) {
        logger = std::make_shared<spdlog::logger>("null", std::make_shared<spdlog::sinks::null_sink_st>());
        spdlog::register_logger(logger);
    }
    logger->set_level(spdlog::level::off);
    return logger;
}

std::shared_ptr<spdlog::logger> configured_logger()
{
    std::vector<spdlog::sink_ptr> sinks;
    for (const log_sink sink : sinks_from_text(environment_variable("QUILL_LOG_SINKS").value_or("")))
        sinks.push_back(make_sink(sink));

    auto logger = spdlog::get("quill");
    if (!logger) {
        logger = std::make_shared<spdlog::logger>("quill", sinks.begin(), sinks.end());
        spdlog::initialize_logger(logger);
    }
    logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        line_pattern, spdlog::pattern_time_type::local, line_end));
    return logger;
}

// The set-up asks the system for folders and files, which may bring libraries that call back into the module.
constinit thread_local bool is_setting_up_here = false;

struct set_up_scope
{
    set_up_scope() { is_setting_up_here = true; }
    ~set_up_scope() { is_setting_up_here = false; }
    set_up_scope(const set_up_scope&) = delete;
    set_up_scope& operator=(const set_up_scope&) = delete;
};

logger_holder make_holder()
{
    const set_up_scope scope;
    logger_holder holder{placeholder_logger()};
    try {
        const auto level = environment_variable("QUILL_LOG_LEVEL");
        if (!level)
            return holder;
        holder.logger = configured_logger();
        spdlog::set_level(static_cast<spdlog::level::level_enum>(level_from_name(*level)));
    } catch (const spdlog::spdlog_ex&) {
        // A log that cannot be opened is no reason to trouble the browser: the module stays silent.
        return holder;
    }
    return holder;
}

// Followed once it is there, and no longer once it is gone.
struct followed_holder
{
    logger_holder holder = make_holder();
    followed_holder() { follow_level_of(holder.logger.get()); }
    ~followed_holder() { follow_level_of(nullptr); }
    followed_holder(const followed_holder&) = delete;
    followed_holder& operator=(const followed_holder&) = delete;
};

logger_holder& module_holder()
{
    if (is_setting_up_here)
        throw std::logic_error("global_logger: called by its own set-up");
    static followed_holder followed;
    return followed.holder;
}

} // namespace

const logger_holder& global_logger()
{
    return module_holder();
}

void use_logger(std::shared_ptr<spdlog::logger> logger)
{
    logger.swap(module_holder().logger);
    follow_level_of(module_holder().logger.get());
}

} // namespace quill
