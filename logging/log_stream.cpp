#include "logging/log_stream.h"

#include "logging/global_logger.h"
#include "platform/text.h"

#include <windows.h>

#include <spdlog/logger.h>

#include <string>

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

} // namespace

const char* default_integer_format = "{:d}";

log_stream::log_stream(log_level level, logger_holder* holder) noexcept
    : level_(level), integer_format_(default_integer_format)
{
    try {
        logger_ = (holder ? *holder : global_logger()).logger.get();
    } catch (...) {
        // The caller asked for a line, not for the logger's troubles; the next stream tries again.
        logger_ = nullptr;
    }
}

log_stream::~log_stream()
{
    if (!enabled())
        return;
    try {
        const std::string line(buffer_.data(), buffer_.size());
        logger_->log(to_spdlog(level_), line);
        logger_->flush();
        buffer_.clear();
    } catch (...) {
        buffer_.clear(); // the line is lost
    }
}

bool log_stream::enabled() const noexcept
{
    return logger_ && logger_->level() <= to_spdlog(level_);
}

log_stream& log_stream::integer_format(const char* format) noexcept
{
    integer_format_ = format;
    return *this;
}

log_stream& log_stream::operator<<(const char* text) noexcept
{
    if (!text)
        return *this;
    return append([&] { fmt::format_to(std::back_inserter(buffer_), "{}", text); });
}

log_stream& log_stream::operator<<(const wchar_t* text) noexcept
{
    if (!text || !*text)
        return *this;
    return *this << std::wstring_view(text);
}

log_stream& log_stream::operator<<(std::wstring_view text) noexcept
{
    return append([&] { fmt::format_to(std::back_inserter(buffer_), "{}", to_utf8(text)); });
}

log_stream& log_stream::append_integer(std::int64_t value) noexcept
{
    return append([&] { fmt::format_to(std::back_inserter(buffer_), fmt::runtime(integer_format_), value); });
}

log_stream& log_stream::append_integer(std::uint64_t value) noexcept
{
    return append([&] { fmt::format_to(std::back_inserter(buffer_), fmt::runtime(integer_format_), value); });
}

void log_pieces(log_level level, std::initializer_list<const char*> pieces) noexcept
{
    log_stream line(level);
    for (const char* piece : pieces)
        line << piece;
}

} // namespace quill
