#include "logging/log_stream.h"

#include "logging/global_logger.h"
#include "platform/text.h"

#include <windows.h>

#include <spdlog/logger.h>

#include <string>
#include <type_traits>

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

// The member is protected, which leaves its address to derived classes.
struct level_member : spdlog::logger
{
    static constexpr auto address = &level_member::level_;
};
static_assert(std::is_same_v<std::atomic<int>, spdlog::level_t>);

// Appends what append() appends; a piece that cannot be formatted is lost.
template <typename Append>
void or_lose_it(const Append& append) noexcept
{
    try {
        append();
    } catch (...) {
        return;
    }
}

} // namespace

std::atomic<int> spdlog::logger::* const log_detail::level_of_logger = level_member::address;

spdlog::logger* log_detail::first_logger() noexcept
{
    try {
        return global_logger().logger.get();
    } catch (...) {
        // The caller asked for a line, not for the logger's troubles; the next stream tries again.
        return nullptr;
    }
}

void log_stream::write() noexcept
{
    or_lose_it([&] {
        const std::string line(buffer().data(), buffer().size());
        logger_->log(to_spdlog(level_), line);
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
        or_lose_it([&] { buffer().append(std::string_view(text)); });
}

void log_stream::format(const wchar_t* text) noexcept
{
    if (text && *text)
        format(std::wstring_view(text));
}

void log_stream::format(std::wstring_view text) noexcept
{
    or_lose_it([&] { buffer().append(to_utf8(text)); });
}

void log_stream::format(std::int64_t value) noexcept
{
    or_lose_it([&] { fmt::format_to(std::back_inserter(buffer()), fmt::runtime(integer_format_), value); });
}

void log_stream::format(std::uint64_t value) noexcept
{
    or_lose_it([&] { fmt::format_to(std::back_inserter(buffer()), fmt::runtime(integer_format_), value); });
}

void log_pieces(log_level level, std::initializer_list<const char*> pieces) noexcept
{
    log_stream line(level);
    for (const char* piece : pieces)
        line << piece;
}

} // namespace quill
