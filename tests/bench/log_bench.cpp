// The log: a disabled and an enabled statement.
#include "logging/global_logger.h"
#include "logging/log_stream.h"
#include "platform/mutex.h"
#include "tests/bench/plain_benchmarks.h"
#include "tests/bench/support/allocations.h"
#include "tests/bench/support/report.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <memory>
#include <stdexcept>

namespace quill::bench {
namespace {

const void* const some_object = &some_object;

// The best that a caller could write without the log stream: a logger in a variable, its level, and a branch.
spdlog::logger* known_logger;

[[gnu::noinline, gnu::cold]] void write_to_known_logger()
{
    known_logger->log(spdlog::level::debug, "a line");
}

void test_level(std::size_t times)
{
    keep(&known_logger); // any code may set it, so it is read each time
    for (std::size_t i = 0; i < times; ++i) {
        if (known_logger->should_log(spdlog::level::debug)) [[unlikely]]
            write_to_known_logger();
        keep(i);
    }
}

// The usual line of the module: narrow text, an address, wide text and a number.
void write_usual_line(std::size_t times)
{
    for (std::size_t i = 0; i < times; ++i) {
        QUILL_LOG(log_level::debug) << "ACTIVEDOC " << some_object << L" Load IPersistMoniker " << 1;
        keep(i);
    }
}

void write_plain_line(std::size_t times)
{
    for (std::size_t i = 0; i < times; ++i) {
        QUILL_LOG(log_level::debug) << "ACTIVEDOC isPDF [TRUE]";
        keep(i);
    }
}

void switched_off()
{
    known_logger = global_logger().logger.get();
    report("log line of one piece, switched off : a bare level test",
           compare_shortest(write_plain_line, test_level), 1.5);
    report("log line of four pieces, switched off : a bare level test",
           compare_shortest(write_usual_line, test_level), 1.5);
    const std::size_t before = allocations();
    write_usual_line(1000);
    const std::size_t taken = allocations() - before;
    report_value("allocations of 1000 lines, switched off", static_cast<double>(taken), "", 0.0);
}

// Two loggers of one kind, each with a file of its own.
std::shared_ptr<spdlog::logger> file_logger(const std::wstring& path)
{
    using file_sink = spdlog::sinks::rotating_file_sink<platform::MutexImpl>;
    auto logger = std::make_shared<spdlog::logger>("bench", std::make_shared<file_sink>(path, 10 << 20, 7));
    logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        "%H:%M:%S:%f [t:%t] [%l] %v", spdlog::pattern_time_type::local, "\r\n"));
    logger->set_level(spdlog::level::debug);
    return logger;
}

void switched_on()
{
    const test::scratch_directory folder;
    const auto before = global_logger().logger;
    const auto other = file_logger(folder / L"spdlog.log");
    use_logger(file_logger(folder / L"ours.log"));
    const auto call_spdlog = [&](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i) {
            other->log(spdlog::level::debug, "ACTIVEDOC {} Load IPersistMoniker {:d}", some_object, 1);
            other->flush();
        }
    };
    report("log line of four pieces, written : spdlog's call and a flush",
           compare_shortest(write_usual_line, call_spdlog), 1.1);
    use_logger(before);
}

} // namespace

void log_benchmarks()
{
    switched_off();
    switched_on();
}

} // namespace quill::bench
