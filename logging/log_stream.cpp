#include "logging/log_stream.h"

#include "logging/global_logger.h"
#include "platform/text.h"

#include <windows.h>

#include <spdlog/logger.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace quill {
namespace {

constexpr spdlog::level::level_enum to_spdlog(log_level level)
{
    return static_cast<spdlog::level::level_enum>(level);
}

static_assert(to_spdlog(log_level::trace) == spdlog::level::trace);
static_assert(to_spdlog(log_level::warning) == spdlog::level::warn);
static_assert(to_spdlog(log_level::error) == spdlog::level::err);
static_assert(to_spdlog(log_level::off) == spdlog::level::off);

// Logging never throws: what fails is dropped.
template <typename Callable>
void ignore_errors(const Callable& callable) noexcept
{
    try {
        callable();
    } catch (...) {
        return;
    }
}

// nullptr if the logger is unavailable.
spdlog::logger* module_logger() noexcept
{
    try {
        return global_logger().logger.get();
    } catch (...) {
        return nullptr; // the next stream tries again
    }
}

} // namespace

log_stream::log_stream(log_level level, const logger_holder* holder) noexcept
    : logger_(holder ? holder->logger.get() : module_logger()), level_(level),
      integer_format_(default_integer_format)
{
}

log_stream::~log_stream()
{
    if (enabled())
        write();
}

bool log_stream::enabled() const noexcept
{
    return logger_ && logger_->should_log(to_spdlog(level_));
}

void log_stream::write() noexcept
{
    ignore_errors([&] {
        logger_->log(to_spdlog(level_), spdlog::string_view_t(buffer().data(), buffer().size()));
        logger_->flush();
    });
}

log_stream& log_stream::integer_format(const char* format) noexcept
{
    integer_format_ = format;
    return *this;
}

void log_stream::format(const char* text) noexcept
{
    if (text)
        ignore_errors([&] { buffer().append(std::string_view(text)); });
}

void log_stream::format(const wchar_t* text) noexcept
{
    if (text && *text)
        format(std::wstring_view(text));
}

void log_stream::format(std::wstring_view text) noexcept
{
    ignore_errors([&] {
        // Nearly all text is ASCII, which needs no system call. Out of memory drops the whole piece.
        buffer().reserve(buffer().size() + text.size());
        if (std::all_of(text.begin(), text.end(), [](wchar_t unit) { return unit < 0x80; }))
            std::transform(text.begin(), text.end(), std::back_inserter(buffer()),
                           [](wchar_t unit) { return static_cast<char>(unit); });
        else
            buffer().append(to_utf8(text));
    });
}

void log_stream::format(std::int64_t value) noexcept
{
    ignore_errors(
        [&] { fmt::format_to(std::back_inserter(buffer()), fmt::runtime(integer_format_), value); });
}

void log_stream::format(std::uint64_t value) noexcept
{
    ignore_errors(
        [&] { fmt::format_to(std::back_inserter(buffer()), fmt::runtime(integer_format_), value); });
}

void log_pieces(log_level level, std::initializer_list<const char*> pieces) noexcept
{
    if (!is_logged(level))
        return;
    log_stream line(level);
    for (const char* piece : pieces)
        line << piece;
}

} // namespace quill
