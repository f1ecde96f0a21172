// One line of the diagnostic log, built piece by piece and written when the stream goes out of scope:
//     log_stream(log_level::debug) << "ACTIVEDOC " << static_cast<const void*>(this) << L" Load";
#pragma once

#include "logging/global_logger.h"

#include <fmt/format.h>

#include <atomic>
#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string_view>
#include <type_traits>

namespace quill {

enum class log_level : int
{
    trace,
    debug,
    info,
    warning,
    error,
    critical,
    off
};

// What integers are formatted with by every stream that is built from now on.
inline const char* default_integer_format = "{:d}";

template <typename T>
concept log_text =
    std::is_convertible_v<const T&, const char*> || std::is_convertible_v<const T&, const wchar_t*> ||
    std::is_convertible_v<const T&, std::wstring_view>;

namespace log_detail {

// Where a logger keeps its level. Reading it here, and not through the logger's own header, keeps that header
// out of every file that logs and a call out of every test.
extern std::atomic<int> spdlog::logger::* const level_of_logger;

// The global logger, made on the first call; null when that fails.
spdlog::logger* first_logger() noexcept;

inline spdlog::logger* current_logger() noexcept
{
    const logger_holder* const holder = known_holder.load(std::memory_order_acquire);
    return holder ? holder->logger.get() : first_logger();
}

} // namespace log_detail

// Belongs to the thread that builds it. Nothing of it throws: what cannot be formatted or written is lost,
// and a stream that could not get its logger is disabled. A disabled stream formats nothing. Most lines are
// disabled ones in a browser that nobody examines, so what such a line does stands in this header, and what
// an enabled one does stands apart.
class log_stream
{
public:
    // Takes its logger from holder, or from global_logger() when there is none.
    explicit log_stream(log_level level, const logger_holder* holder = nullptr) noexcept
        : logger_(holder ? holder->logger.get() : log_detail::current_logger()), level_(level),
          integer_format_(default_integer_format)
    {
    }
    // Writes the line and flushes the logger.
    ~log_stream()
    {
        if (enabled()) [[unlikely]]
            write();
    }
    log_stream(const log_stream&) = delete;
    log_stream& operator=(const log_stream&) = delete;

    // Whether the logger takes lines of this level at this moment.
    bool enabled() const noexcept
    {
        return logger_ && (logger_->*log_detail::level_of_logger).load(std::memory_order_relaxed) <=
                              static_cast<int>(level_);
    }

    // The fmt format of the integers that follow; the text must outlive the stream.
    log_stream& integer_format(const char* format) noexcept;

    // Null pointers and empty wide text add nothing.
    log_stream& operator<<(const char* text) noexcept { return append(text); }
    log_stream& operator<<(const wchar_t* text) noexcept { return append(text); }
    log_stream& operator<<(std::wstring_view text) noexcept { return append(text); }

    // bool and the character types count as integers.
    template <std::integral T>
    log_stream& operator<<(T value) noexcept
    {
        if constexpr (std::is_signed_v<T>)
            return append(static_cast<std::int64_t>(value));
        else
            return append(static_cast<std::uint64_t>(value));
    }

    // Whatever else fmt formats with "{}": const void*, floating point, std::string.
    template <typename T>
        requires(!std::integral<T> && !log_text<T>)
    log_stream& operator<<(const T& value) noexcept
    {
        return append(value);
    }

private:
    using text_buffer = fmt::basic_memory_buffer<char, 500>; // UTF-8

    template <typename T>
    log_stream& append(const T& piece) noexcept
    {
        if (enabled()) [[unlikely]]
            format(piece);
        return *this;
    }

    void format(const char* text) noexcept;
    void format(const wchar_t* text) noexcept;
    void format(std::wstring_view text) noexcept;
    void format(std::int64_t value) noexcept;
    void format(std::uint64_t value) noexcept;
    template <typename T>
    [[gnu::noinline]] void format(const T& value) noexcept
    {
        try {
            fmt::format_to(std::back_inserter(buffer()), "{}", value);
        } catch (...) {
            // Nobody is to be troubled by the log: the piece is lost, the line goes on.
            return;
        }
    }
    text_buffer& buffer() { return buffer_ ? *buffer_ : buffer_.emplace(); }
    void write() noexcept;

    spdlog::logger* logger_;
    std::optional<text_buffer> buffer_; // made for the first piece
    log_level level_;
    const char* integer_format_;
};

// Writes one line made of the pieces, in order; nothing when there is no logger to be had.
void log_pieces(log_level level, std::initializer_list<const char*> pieces) noexcept;

} // namespace quill
