#include "logging/global_logger.h"

#include "logging/log_file_name.h"
#include "logging/log_switch.h"
#include "logging/logger_choice.h"
#include "logging/procmon_sink.h"
#include "logging/system_exceptions.h"
#include "platform/environment.h"
#include "platform/mutex.h"

#include <windows.h>

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <atomic>
#include <memory>
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

// Registers the logger, or returns the one that is registered under its name.
template <typename Register>
std::shared_ptr<spdlog::logger> register_or_find(std::shared_ptr<spdlog::logger> logger,
                                                 const Register& register_logger)
{
    const std::string name = logger->name();
    try {
        register_logger(logger);
        return logger;
    } catch (const spdlog::spdlog_ex&) {
        // Registered by another thread meanwhile, or by an earlier set-up that failed afterwards.
        if (auto registered = spdlog::get(name))
            return registered;
        throw;
    }
}

std::shared_ptr<spdlog::logger> placeholder_logger()
{
    auto logger = spdlog::get("null");
    if (!logger)
        logger = register_or_find(
            std::make_shared<spdlog::logger>("null", std::make_shared<spdlog::sinks::null_sink_st>()),
            [](const auto& made) { spdlog::register_logger(made); });
    logger->set_level(spdlog::level::off);
    return logger;
}

std::shared_ptr<spdlog::logger> configured_logger()
{
    std::vector<spdlog::sink_ptr> sinks;
    for (const log_sink sink : sinks_from_text(environment_variable("QUILL_LOG_SINKS").value_or("")))
        sinks.push_back(make_sink(sink));

    auto logger = spdlog::get("quill");
    if (!logger)
        logger = register_or_find(std::make_shared<spdlog::logger>("quill", sinks.begin(), sinks.end()),
                                  [](const auto& made) { spdlog::initialize_logger(made); });
    logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        line_pattern, spdlog::pattern_time_type::local, line_end));
    return logger;
}

logger_holder make_holder()
{
    logger_holder holder{placeholder_logger()};
    try {
        const auto level = environment_variable("QUILL_LOG_LEVEL");
        if (!level)
            return holder;
        holder.logger = configured_logger();
        spdlog::set_level(static_cast<spdlog::level::level_enum>(level_from_name(*level)));
    } catch (const spdlog::spdlog_ex&) {
        // The module runs without a log if the log cannot be opened.
        return holder;
    }
    return holder;
}

// The set-up runs without a lock: it calls system functions that may take the loader lock, so a thread that
// logs inside a DllMain would deadlock. Concurrent threads each set up a logger, and the first one is kept.
constinit std::atomic<logger_holder*> kept{nullptr};
constinit std::atomic<bool> has_ended{false};

// Ends the logging when the static objects are destroyed.
struct log_end
{
    ~log_end()
    {
        has_ended.store(true, std::memory_order_release);
        follow_level_of(nullptr);
        delete kept.exchange(nullptr, std::memory_order_acq_rel);
    }
};

logger_holder& keep(std::unique_ptr<logger_holder> made)
{
    logger_holder* first = nullptr;
    if (!kept.compare_exchange_strong(first, made.get(), std::memory_order_acq_rel))
        return *first;
    first = made.release();
    follow_level_of(first->logger.get());
    // Constructed after spdlog's registry, and therefore destroyed before it.
    static const log_end end;
    return *first;
}

// System functions that the set-up calls may load libraries that call back into the module.
constinit thread_local bool is_setting_up_here = false;

logger_holder& set_up()
{
    logger_holder* holder = nullptr;
    is_setting_up_here = true;
    // A system exception skips destructors, but not the second function.
    barrier::call_and_end(
        [](void* out) {
            *static_cast<logger_holder**>(out) = &keep(std::make_unique<logger_holder>(make_holder()));
        },
        [](void*) { is_setting_up_here = false; }, &holder);
    return *holder;
}

logger_holder& module_holder()
{
    if (logger_holder* const holder = kept.load(std::memory_order_acquire))
        return *holder;
    if (is_setting_up_here)
        throw std::logic_error("global_logger: called by its own set-up");
    if (has_ended.load(std::memory_order_acquire))
        throw std::logic_error("global_logger: called after its end");
    return set_up();
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
