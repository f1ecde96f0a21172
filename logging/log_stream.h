// A line of the diagnostic log, which the destructor writes:
//     QUILL_LOG(log_level::debug) << "ACTIVEDOC " << static_cast<const void*>(this) << L" Load";
#pragma once

#include "logging/global_logger.h"
#include "logging/log_level.h"
#include "logging/log_switch.h"

#include <fmt/format.h>

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string_view>
#include <type_traits>

// Creates a log stream if the level is logged; otherwise the operands of << are not evaluated. An expression
// of type void.
#define QUILL_LOG(level)                                                                                     \
    !::quill::is_logged(level) ? static_cast<void>(0)                                                        \
                               : ::quill::log_detail::end_of_line() & ::quill::log_stream(level)

namespace quill {

// The fmt format of integers in streams that are created afterwards.
inline const char* default_integer_format = "{:d}";

template <typename T>
concept log_text =
    std::is_convertible_v<const T&, const char*> || std::is_convertible_v<const T&, const wchar_t*> ||
    std::is_convertible_v<const T&, std::wstring_view>;

// For one thread. Never throws: what cannot be formatted or written is dropped, and a stream without a logger
// is disabled. A disabled stream formats nothing.
class log_stream
{
public:
    // Uses the logger of holder, or that of global_logger() for nullptr.
    explicit log_stream(log_level level, const logger_holder* holder = nullptr) noexcept;
    // Writes the line and flushes the logger.
    ~log_stream();
    log_stream(const log_stream&) = delete;
    log_stream& operator=(const log_stream&) = delete;

    // Whether the logger currently logs this level.
    bool enabled() const noexcept;

    // Sets the fmt format of the integers that follow. Borrowed until the stream is destroyed.
    log_stream& integer_format(const char* format) noexcept;

    // A null pointer appends nothing.
    log_stream& operator<<(const char* text) noexcept { return append(text); }
    log_stream& operator<<(const wchar_t* text) noexcept { return append(text); }
    log_stream& operator<<(std::wstring_view text) noexcept { return append(text); }

    // Formats bool and character types as integers.
    template <std::integral T>
    log_stream& operator<<(T value) noexcept
    {
        if constexpr (std::is_signed_v<T>)
            return append(static_cast<std::int64_t>(value));
        else
            return append(static_cast<std::uint64_t>(value));
    }

    // Other types, formatted with "{}": const void*, floating point, std::string.
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
        if (enabled())
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
            return; // logging never throws
        }
    }
    text_buffer& buffer() { return buffer_ ? *buffer_ : buffer_.emplace(); }
    void write() noexcept;

    spdlog::logger* logger_;
    std::optional<text_buffer> buffer_; // created by the first piece
    log_level level_;
    const char* integer_format_;
};

namespace log_detail {

// operator& has lower precedence than <<, so it takes the complete line and makes it void.
struct end_of_line
{
    void operator&(const log_stream&) const noexcept {}
};

} // namespace log_detail

// Writes one line of the pieces; nothing if the logger is unavailable.
void log_pieces(log_level level, std::initializer_list<const char*> pieces) noexcept;

} // namespace quill
