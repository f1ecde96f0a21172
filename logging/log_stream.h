// One line of the diagnostic log, built piece by piece and written when the stream goes out of scope:
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

// A log stream of the level, made only when somebody reads lines of that level: then, and only then, the
// pieces are evaluated. An expression of type void.
#define QUILL_LOG(level)                                                                                     \
    !::quill::is_logged(level) ? static_cast<void>(0)                                                        \
                               : ::quill::log_detail::end_of_line() & ::quill::log_stream(level)

namespace quill {

// What integers are formatted with by every stream that is built from now on.
inline const char* default_integer_format = "{:d}";

template <typename T>
concept log_text =
    std::is_convertible_v<const T&, const char*> || std::is_convertible_v<const T&, const wchar_t*> ||
    std::is_convertible_v<const T&, std::wstring_view>;

// Belongs to the thread that builds it. Nothing of it throws: what cannot be formatted or written is lost,
// and a stream that could not get its logger is disabled. A disabled stream formats nothing.
class log_stream
{
public:
    // Takes its logger from holder, or from global_logger() when there is none.
    explicit log_stream(log_level level, const logger_holder* holder = nullptr) noexcept;
    // Writes the line and flushes the logger.
    ~log_stream();
    log_stream(const log_stream&) = delete;
    log_stream& operator=(const log_stream&) = delete;

    // Whether the logger takes lines of this level at this moment.
    bool enabled() const noexcept;

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

namespace log_detail {

// Binds weaker than "<<", and so turns a finished line into nothing.
struct end_of_line
{
    void operator&(const log_stream&) const noexcept {}
};

} // namespace log_detail

// Writes one line made of the pieces, in order; nothing when there is no logger to be had.
void log_pieces(log_level level, std::initializer_list<const char*> pieces) noexcept;

} // namespace quill
