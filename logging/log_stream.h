// One line of the diagnostic log, built piece by piece and written when the stream goes out of scope:
//     log_stream(log_level::debug) << "ACTIVEDOC " << static_cast<const void*>(this) << L" Load";
#pragma once

#include <fmt/format.h>

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <string_view>
#include <type_traits>

namespace spdlog {
class logger;
}

namespace quill {

struct logger_holder;

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
extern const char* default_integer_format;

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
    explicit log_stream(log_level level, logger_holder* holder = nullptr) noexcept;
    // Writes the line and flushes the logger.
    ~log_stream();
    log_stream(const log_stream&) = delete;
    log_stream& operator=(const log_stream&) = delete;

    // Whether the logger takes lines of this level at this moment.
    bool enabled() const noexcept;

    // The fmt format of the integers that follow; the text must outlive the stream.
    log_stream& integer_format(const char* format) noexcept;

    // Null pointers and empty wide text add nothing.
    log_stream& operator<<(const char* text) noexcept;
    log_stream& operator<<(const wchar_t* text) noexcept;
    log_stream& operator<<(std::wstring_view text) noexcept;

    // bool and the character types count as integers.
    template <std::integral T>
    log_stream& operator<<(T value) noexcept
    {
        if constexpr (std::is_signed_v<T>)
            return append_integer(static_cast<std::int64_t>(value));
        else
            return append_integer(static_cast<std::uint64_t>(value));
    }

    // Whatever else fmt formats with "{}": const void*, floating point, std::string.
    template <typename T>
        requires(!std::integral<T> && !log_text<T>)
    log_stream& operator<<(const T& value) noexcept
    {
        return append([&] { fmt::format_to(std::back_inserter(buffer_), "{}", value); });
    }

private:
    log_stream& append_integer(std::int64_t value) noexcept;
    log_stream& append_integer(std::uint64_t value) noexcept;
    template <typename Append>
    log_stream& append(const Append& piece) noexcept
    {
        if (enabled()) {
            try {
                piece();
            } catch (...) {
                // Nobody is to be troubled by the log: the piece is lost, the line goes on.
                return *this;
            }
        }
        return *this;
    }

    spdlog::logger* logger_ = nullptr;
    fmt::basic_memory_buffer<char, 500> buffer_; // UTF-8
    log_level level_;
    const char* integer_format_;
};

// Writes one line made of the pieces, in order; nothing when there is no logger to be had.
void log_pieces(log_level level, std::initializer_list<const char*> pieces) noexcept;

} // namespace quill
