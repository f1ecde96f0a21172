// Formatting of each kind of piece, and failures, which must not throw.
#include "logging/global_logger.h"
#include "logging/log_stream.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <stdexcept>
#include <string>

namespace {

// A value that counts how often it is formatted, and one that cannot be formatted.
struct counted_value
{
    int* formatted;
};
struct throwing_value
{
};

} // namespace

template <>
struct fmt::formatter<counted_value>
{
    constexpr auto parse(format_parse_context& context) { return context.begin(); }
    auto format(const counted_value& value, format_context& context) const
    {
        ++*value.formatted;
        return fmt::format_to(context.out(), "counted");
    }
};

template <>
struct fmt::formatter<throwing_value>
{
    constexpr auto parse(format_parse_context& context) { return context.begin(); }
    auto format(const throwing_value&, format_context& context) const -> decltype(context.out())
    {
        throw std::runtime_error("not to be formatted");
    }
};

namespace quill {
namespace {

class recording_sink : public spdlog::sinks::base_sink<spdlog::details::null_mutex>
{
public:
    explicit recording_sink(std::string& text) : text_(text) {}
    int flushes = 0;

protected:
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        text_.append(line.data(), line.size());
    }
    void flush_() override { ++flushes; }

private:
    std::string& text_;
};

class throwing_sink : public spdlog::sinks::base_sink<spdlog::details::null_mutex>
{
protected:
    void sink_it_(const spdlog::details::log_msg&) override { throw 5; }
    void flush_() override { throw 5; }
};

class LogStream : public testing::Test
{
protected:
    LogStream()
    {
        holder.logger = std::make_shared<spdlog::logger>("test", sink);
        holder.logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
            "[%n %l] %v", spdlog::pattern_time_type::local, "\n"));
        holder.logger->set_level(spdlog::level::debug);
    }

    template <typename... Pieces>
    std::string line_of(const Pieces&... pieces)
    {
        text.clear();
        (log_stream(log_level::debug, &holder) << ... << pieces);
        return text;
    }

    std::string text;
    std::shared_ptr<recording_sink> sink = std::make_shared<recording_sink>(text);
    logger_holder holder;
};

TEST_F(LogStream, WritesThePiecesInOrderAsOneLine)
{
    EXPECT_EQ(line_of("ACTIVEDOC ", L"wide ", 7, " ", -3), "[test debug] ACTIVEDOC wide 7 -3\n");
}

TEST_F(LogStream, FormatsEachKindOfValue)
{
    const void* const address = reinterpret_cast<const void*>(std::uintptr_t{0xabc0});
    EXPECT_EQ(line_of(address), "[test debug] 0xabc0\n");
    EXPECT_EQ(line_of(true, false), "[test debug] 10\n");
    EXPECT_EQ(line_of(HRESULT{E_FAIL}), "[test debug] -2147467259\n");
    EXPECT_EQ(line_of(0xffffffffffffffffull), "[test debug] 18446744073709551615\n");
    EXPECT_EQ(line_of(std::int64_t{INT64_MIN}), "[test debug] -9223372036854775808\n");
    EXPECT_EQ(line_of(DWORD{0x80000000}), "[test debug] 2147483648\n");
    EXPECT_EQ(line_of('A', L'\x20ac'), "[test debug] 658364\n");
    EXPECT_EQ(line_of(1.5), "[test debug] 1.5\n");
    EXPECT_EQ(line_of(std::string("text")), "[test debug] text\n");
    EXPECT_EQ(line_of("{not a format} %s"), "[test debug] {not a format} %s\n");
}

TEST_F(LogStream, ConvertsWideTextToUtf8)
{
    EXPECT_EQ(line_of(L"\x00e4\x20ac\xd83d\xde00"), "[test debug] \xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80\n");
    EXPECT_EQ(line_of(L"plain\x7f"), "[test debug] plain\x7f\n");
    EXPECT_EQ(line_of(L"plain\x80"), "[test debug] plain\xc2\x80\n");
    EXPECT_EQ(line_of(std::wstring_view(L"a\0b", 3)), std::string("[test debug] a\0b\n", 17));
    EXPECT_EQ(line_of(std::wstring(L"string")), "[test debug] string\n");
}

TEST_F(LogStream, NullAndEmptyTextAppendNothing)
{
    const char* const narrow = nullptr;
    const wchar_t* const wide = nullptr;
    EXPECT_EQ(line_of("<", narrow, wide, L"", "", std::wstring_view(), ">"), "[test debug] <>\n");
}

TEST_F(LogStream, AnEmptyLineIsStillALine)
{
    EXPECT_EQ(line_of(""), "[test debug] \n");
}

TEST_F(LogStream, ALineBeyondTheInlineBufferIsWrittenCompletely)
{
    const std::string piece(499, 'x');
    EXPECT_EQ(line_of(piece, "y", "z", std::wstring(100'000, L'w')),
              "[test debug] " + piece + "yz" + std::string(100'000, 'w') + "\n");
}

TEST_F(LogStream, UsesItsIntegerFormat)
{
    text.clear();
    (log_stream(log_level::info, &holder) << 255 << " ").integer_format("{:x}") << 255 << " " << -255;
    EXPECT_EQ(text, "[test info] 255 ff -ff\n");
}

TEST_F(LogStream, ReadsTheDefaultIntegerFormatInItsConstructor)
{
    const char* const before = default_integer_format;
    EXPECT_STREQ(before, "{:d}");
    default_integer_format = "<{:d}>";
    const std::string changed = line_of(5);
    default_integer_format = before;
    EXPECT_EQ(changed, "[test debug] <5>\n");
    EXPECT_EQ(line_of(5), "[test debug] 5\n");
}

TEST_F(LogStream, AnInvalidIntegerFormatDropsThePieceOnly)
{
    text.clear();
    log_stream(log_level::debug, &holder).integer_format("{:q}") << "a" << 1 << "b";
    EXPECT_EQ(text, "[test debug] ab\n");
}

TEST_F(LogStream, APieceThatThrowsIsDroppedAlone)
{
    EXPECT_EQ(line_of("a", throwing_value(), "b"), "[test debug] ab\n");
}

TEST_F(LogStream, FlushesAfterEachLine)
{
    line_of("one");
    EXPECT_EQ(sink->flushes, 1);
    line_of("two");
    EXPECT_EQ(sink->flushes, 2);
}

TEST_F(LogStream, ADisabledStreamNeitherFormatsNorWritesNorFlushes)
{
    int formatted = 0;
    text.clear();
    log_stream(log_level::trace, &holder) << "a" << 1 << counted_value{&formatted} << L"w";
    EXPECT_EQ(text, "");
    EXPECT_EQ(formatted, 0);
    EXPECT_EQ(sink->flushes, 0);

    EXPECT_EQ(line_of(counted_value{&formatted}), "[test debug] counted\n");
    EXPECT_EQ(formatted, 1);
}

TEST_F(LogStream, TestsTheLevelAtEachPieceAndAtTheEnd)
{
    text.clear();
    {
        log_stream line(log_level::debug, &holder);
        line << "seen";
        holder.logger->set_level(spdlog::level::info);
        EXPECT_FALSE(line.enabled());
        line << "unseen";
        holder.logger->set_level(spdlog::level::debug);
        EXPECT_TRUE(line.enabled());
    }
    EXPECT_EQ(text, "[test debug] seen\n");
    {
        log_stream line(log_level::debug, &holder);
        line << "lost";
        holder.logger->set_level(spdlog::level::off);
    }
    EXPECT_EQ(text, "[test debug] seen\n");
}

TEST_F(LogStream, WritesAtEveryLevel)
{
    holder.logger->set_level(spdlog::level::trace);
    text.clear();
    for (const log_level level : {log_level::trace, log_level::debug, log_level::info, log_level::warning,
                                  log_level::error, log_level::critical})
        log_stream(level, &holder) << "x";
    EXPECT_EQ(text, "[test trace] x\n[test debug] x\n[test info] x\n[test warning] x\n[test error] x\n"
                    "[test critical] x\n");
}

TEST_F(LogStream, FeedsTheLoggersBacktrace)
{
    holder.logger->enable_backtrace(4);
    line_of("kept");
    text.clear();
    holder.logger->dump_backtrace();
    EXPECT_NE(text.find("[test debug] kept\n"), std::string::npos) << text;
}

TEST_F(LogStream, CatchesWhatASinkThrows)
{
    holder.logger->sinks().assign(1, std::make_shared<throwing_sink>());
    EXPECT_NO_THROW(line_of("a"));
}

TEST_F(LogStream, WithoutALoggerItIsDisabled)
{
    logger_holder empty;
    log_stream line(log_level::critical, &empty);
    EXPECT_FALSE(line.enabled());
    line << "nothing";
}

} // namespace
} // namespace quill
