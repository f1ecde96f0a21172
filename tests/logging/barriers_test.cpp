// Result and log line of each kind of exception inside a barrier.
#include "logging/exception_barriers.h"
#include "logging/pdfcore_exception.h"
#include "tests/support/child_process.h"
#include "tests/support/log_capture.h"
#include "tests/support/log_file.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <wtypes.h>

#include <filesystem>
#include <ios>
#include <new>
#include <regex>
#include <stdexcept>
#include <system_error>

namespace quill {
namespace {

using test::child_result;
using test::environment_scope;
using test::log_capture;
using test::log_line;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* click = "quill::html_events_sink::on_click";

template <typename Exception>
auto throwing(const Exception& exception)
{
    return [exception]() -> HRESULT { throw exception; };
}

struct Barriers : testing::Test
{
    log_capture log;

    // The line that NoThrow logs for an exception.
    template <typename Callable>
    std::string line_for(const Callable& callable)
    {
        log.clear();
        EXPECT_EQ(NoThrow(callable, E_FAIL, "name", 7), E_FAIL);
        const auto lines = log.lines();
        EXPECT_EQ(lines.size(), 1u);
        return lines.empty() ? "" : lines[0];
    }
};

TEST_F(Barriers, ReturnTheResult)
{
    EXPECT_EQ(NoThrow([] { return S_FALSE; }, E_FAIL, "name", 7), S_FALSE);
    EXPECT_EQ(CrashBorder([] { return S_FALSE; }, E_FAIL, "name", 7), S_FALSE);
    EXPECT_EQ(CrashBorder([]() -> VARIANT_BOOL { return VARIANT_FALSE; }, VARIANT_TRUE, "name", 7),
              VARIANT_FALSE);
    int seen = 0;
    CrashBorder(
        [&] {
            seen = 5;
            return S_OK;
        },
        E_FAIL);
    EXPECT_EQ(seen, 5);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Barriers, NameEachKindOfException)
{
    EXPECT_EQ(line_for(throwing(std::system_error(5, std::generic_category(), "x"))).substr(0, 32),
              "error: name:7 system error(5): x");
    EXPECT_EQ(line_for(throwing(std::invalid_argument("x"))), "error: name:7 invalid argument: x");
    EXPECT_EQ(line_for(throwing(std::runtime_error("x"))), "error: name:7 runtime error: x");
    EXPECT_EQ(line_for(throwing(std::logic_error("x"))), "error: name:7 logic error: x");
    EXPECT_EQ(line_for(throwing(std::bad_alloc())), "error: name:7 bad_alloc: std::bad_alloc");
    EXPECT_EQ(line_for(throwing(std::exception())), "error: name:7 std exception: std::exception");
    EXPECT_EQ(line_for(throwing(5)), "error: name:7 unknown exception");
    EXPECT_EQ(line_for(throwing("text")), "error: name:7 unknown exception");
}

TEST_F(Barriers, LogADerivedExceptionAsItsNearestKind)
{
    EXPECT_THAT(line_for(throwing(std::ios_base::failure("x"))), HasSubstr(" system error(1): x"));
    const std::filesystem::filesystem_error file_error("x", std::make_error_code(std::errc::io_error));
    EXPECT_THAT(line_for(throwing(file_error)), HasSubstr(" system error(5): "));
    EXPECT_EQ(line_for(throwing(std::range_error("x"))), "error: name:7 runtime error: x");
    EXPECT_EQ(line_for(throwing(std::out_of_range("x"))), "error: name:7 logic error: x");
    EXPECT_THAT(line_for(throwing(std::bad_array_new_length())), HasSubstr(" bad_alloc: "));
    EXPECT_THAT(line_for(throwing(std::bad_cast())), HasSubstr(" std exception: "));
    EXPECT_THAT(line_for(throwing(std::regex_error(std::regex_constants::error_paren))),
                HasSubstr(" runtime error: "));
}

TEST_F(Barriers, LogTheNameAndTheLineOfTheEntry)
{
    EXPECT_EQ(CrashBorder([]() -> VARIANT_BOOL { throw std::runtime_error("x"); }, VARIANT_TRUE, click, 37),
              VARIANT_TRUE);
    EXPECT_THAT(log.lines(), ElementsAre("error: quill::html_events_sink::on_click:37 runtime error: x"));
}

TEST_F(Barriers, NoThrowReplacesAMissingName)
{
    const auto thrower = throwing(std::runtime_error("x"));
    EXPECT_EQ(NoThrow(thrower, E_FAIL, nullptr, 99), E_FAIL);
    EXPECT_EQ(NoThrow(thrower, E_FAIL, "", 99), E_FAIL);
    EXPECT_EQ(NoThrow(thrower, E_FAIL), E_FAIL);
    EXPECT_EQ(CrashBorder(thrower, E_FAIL, nullptr, 99), E_FAIL);
    EXPECT_EQ(CrashBorder(thrower, E_FAIL, "", 99), E_FAIL);
    const char* line = "error: quill::NoThrow:38 runtime error: x";
    EXPECT_THAT(log.lines(), ElementsAre(line, line, line, line, line));
}

TEST_F(Barriers, CrashBorderHasItsOwnDefaultName)
{
    EXPECT_EQ(CrashBorder(throwing(std::runtime_error("x")), E_FAIL), E_FAIL);
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_THAT(log.lines()[0], testing::StartsWith("error: quill::CrashBorder:"));
}

TEST_F(Barriers, LogNothingWithoutAnException)
{
    log_current_exception("name", 7);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Barriers, KeepTheExceptionThatIsBeingHandled)
{
    try {
        throw std::runtime_error("outer");
    } catch (const std::runtime_error& outer) {
        EXPECT_EQ(line_for(throwing(std::logic_error("inner"))), "error: name:7 logic error: inner");
        log.clear();
        log_current_exception("name", 8);
        EXPECT_THAT(log.lines(), ElementsAre("error: name:8 runtime error: outer"));
        EXPECT_STREQ(outer.what(), "outer");
    }
}

struct counted
{
    static int alive;
    counted() { ++alive; }
    counted(const counted&) { ++alive; }
    ~counted() { --alive; }
};
int counted::alive = 0;

TEST_F(Barriers, FreeTheException)
{
    EXPECT_EQ(CrashBorder(throwing(counted()), E_FAIL, "name", 7), E_FAIL);
    EXPECT_EQ(counted::alive, 0);
}

__declspec(noinline) __attribute__((no_sanitize("undefined"))) int read_through(const volatile int* address)
{
    return *address;
}

HRESULT read_null()
{
    return read_through(nullptr);
}

TEST_F(Barriers, ASystemExceptionIsLoggedWithTheNameAlone)
{
    constexpr const char* before_navigate = "quill::browser_events_sink::on_before_navigate";
    EXPECT_EQ(CrashBorder(read_null, E_FAIL, before_navigate, 70), E_FAIL);
    EXPECT_EQ(CrashBorder(read_null, E_ABORT, nullptr, 70), E_ABORT);
    EXPECT_EQ(CrashBorder(read_null, E_FAIL, "", 70), E_FAIL);
    EXPECT_EQ(CrashBorder(read_null, E_FAIL), E_FAIL);
    EXPECT_THAT(log.lines(),
                ElementsAre("info: System exception in quill::browser_events_sink::on_before_navigate",
                            "info: System exception in quill::CrashBorder", "info: System exception in ",
                            "info: System exception in quill::CrashBorder"));
}

TEST_F(Barriers, NoThrowPassesASystemException)
{
    EXPECT_EQ(CrashBorder([] { return NoThrow(read_null, S_FALSE, "inner", 1); }, E_FAIL, "outer", 2),
              E_FAIL);
    EXPECT_THAT(log.lines(), ElementsAre("info: System exception in outer"));
}

TEST_F(Barriers, MayBeNested)
{
    const auto inner = [] { return CrashBorder(read_null, S_FALSE, "inner", 1); };
    EXPECT_EQ(CrashBorder(inner, E_FAIL, "outer", 2), S_FALSE);
    EXPECT_THAT(log.lines(), ElementsAre("info: System exception in inner"));
}

TEST(BarriersWithoutLog, CatchAndLogNothing)
{
    // Logging is off in this process, so the placeholder logger gets the lines.
    const environment_scope level(L"QUILL_LOG_LEVEL", std::nullopt);
    testing::internal::CaptureStdout();
    EXPECT_EQ(CrashBorder(throwing(std::runtime_error("x")), E_FAIL, "name", 7), E_FAIL);
    EXPECT_EQ(CrashBorder(read_null, E_FAIL, "name", 7), E_FAIL);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// Fixture: a folder with the program and the suite's libraries that a test selects.
struct SuiteLibraries : testing::Test
{
    test::scratch_directory folder;
    environment_scope level{L"QUILL_LOG_LEVEL", L"debug"};
    environment_scope sinks{L"QUILL_LOG_SINKS", L"file"};
    environment_scope verdict{L"QUILL_CRASHGUARD", std::nullopt};
    environment_scope code{L"QUILL_PDFCORE_ERROR", std::nullopt};
    environment_scope text{L"QUILL_PDFCORE_TEXT", std::nullopt};
    test::log_folder_scope logs;

    SuiteLibraries() { add(L"barrier_program.exe"); }

    void add(const wchar_t* name) const { add_as(name, name); }
    void add_as(const wchar_t* name, const wchar_t* other_name) const
    {
        EXPECT_TRUE(CopyFileW(test::beside_this_program(name).c_str(), (folder / other_name).c_str(), TRUE));
    }

    child_result run(const std::wstring& events) const
    {
        const auto result = test::run_program(folder / L"barrier_program.exe", events);
        EXPECT_EQ(result.exit_code, 0u) << result.errors;
        return result;
    }

    std::vector<log_line> lines_of(const child_result& run) const
    {
        return test::parse_log(
            test::read_file(logs.file_of(L"barrier_program", run.process_id)).value_or(""));
    }
};

constexpr const char* system_exception = "System exception in quill::browser_events_sink::on_before_navigate";
constexpr const char* entry = "quill::browser_events_sink::on_before_navigate:70";

TEST_F(SuiteLibraries, TheHandlerRunsWithoutThem)
{
    const auto result = run(L"nothing read-null divide foreign throw pdfcore nothing");
    EXPECT_EQ(result.output,
              "nothing: 00000000\r\nread-null: 80004005\r\ndivide: 80004005\r\nforeign: 80004005\r\n"
              "throw: 80004005\r\npdfcore: 80004005\r\nnothing: 00000000\r\n");
    EXPECT_THAT(lines_of(result),
                ElementsAre(log_line{"info", system_exception}, log_line{"info", system_exception},
                            log_line{"info", system_exception},
                            log_line{"error", std::string(entry) + " runtime error: thrown"},
                            log_line{"debug", std::string(entry) + " pdfcore exception: 0 "}));
}

TEST_F(SuiteLibraries, ASecondStackOverflowIsHandled)
{
    const auto result = run(L"overflow overflow nothing");
    EXPECT_EQ(result.output, "overflow: 80004005\r\noverflow: 80004005\r\nnothing: 00000000\r\n");
}

// release() runs after the overflowed stack was unwound.
TEST_F(SuiteLibraries, AReleaseAfterAStackOverflowHasTheWholeStack)
{
    const auto deep = run(L"release-deep overflow overflow nothing");
    EXPECT_EQ(deep.output, "overflow: 80004005\r\noverflow: 80004005\r\nnothing: 00000000\r\n");
    const auto again = run(L"release-overflow overflow overflow nothing");
    EXPECT_EQ(again.output, "overflow: 80004005\r\noverflow: 80004005\r\nnothing: 80004005\r\n");
}

// No handler may run on a corrupted stack, not even the barrier's.
TEST_F(SuiteLibraries, AnOverrunBufferEndsTheProcess)
{
    constexpr DWORD stack_buffer_overrun = 0xC0000409;
    const auto result = test::run_program(folder / L"barrier_program.exe", L"fill overrun nothing");
    EXPECT_EQ(result.output, "fill: 00000000\r\n");
    EXPECT_EQ(result.exit_code, stack_buffer_overrun);
}

TEST_F(SuiteLibraries, TheCrashLibraryMayRunTheHandler)
{
    add(L"crashguard14.dll");
    const auto result = run(L"read-null throw divide");
    EXPECT_EQ(result.output, "read-null: 80004005\r\nthrow: 80004005\r\ndivide: 80004005\r\n");
    // It gets system exceptions only.
    EXPECT_EQ(result.errors, "crashguard: exception c0000005\r\ncrashguard: exception c0000094\r\n");
    EXPECT_THAT(lines_of(result),
                ElementsAre(log_line{"info", system_exception},
                            log_line{"error", std::string(entry) + " runtime error: thrown"},
                            log_line{"info", system_exception}));
}

TEST_F(SuiteLibraries, TheCrashLibraryMayContinueTheSearch)
{
    add(L"crashguard14.dll");
    SetEnvironmentVariableW(L"QUILL_CRASHGUARD", L"search");
    const auto result = run(L"read-null nothing");
    EXPECT_EQ(result.output, "passed the barrier: c0000005\r\nnothing: 00000000\r\n");
    EXPECT_THAT(lines_of(result), IsEmpty());
}

// Reported once: the barrier does not report a fault in a call into the host again.
TEST_F(SuiteLibraries, TheCrashLibraryMayContinueTheSearchFromACallIntoTheHost)
{
    add(L"crashguard14.dll");
    SetEnvironmentVariableW(L"QUILL_CRASHGUARD", L"search");
    const auto result = run(L"host-read-null read-null nothing");
    EXPECT_EQ(result.output,
              "passed the barrier: c0000005\r\npassed the barrier: c0000005\r\nnothing: 00000000\r\n");
    EXPECT_EQ(result.errors, "crashguard: exception c0000005\r\ncrashguard: exception c0000005\r\n");
    EXPECT_THAT(lines_of(result), IsEmpty());
}

TEST_F(SuiteLibraries, TheCrashLibraryMayResumeExecution)
{
    add(L"crashguard14.dll");
    SetEnvironmentVariableW(L"QUILL_CRASHGUARD", L"continue");
    const auto result = run(L"read-page");
    EXPECT_EQ(result.output, "read-page: 00000000\r\n");
    EXPECT_EQ(result.errors, "crashguard: exception c0000005\r\n");
    EXPECT_THAT(lines_of(result), IsEmpty());
}

// A DllMain or a hook of the loader may call the module before the libraries are usable.
TEST_F(SuiteLibraries, AreNotUsedByACallFromInsideTheirLoading)
{
    add_as(L"calling_library.dll", L"crashguard14.dll");
    const auto result = run(L"reenter read-null nothing");
    EXPECT_EQ(result.output, "inside: 80004005\r\nread-null: 80004005\r\nnothing: 00000000\r\n");
    EXPECT_EQ(result.errors, "crashguard: exception c0000005\r\n"); // the outer exception
    EXPECT_THAT(lines_of(result),
                ElementsAre(log_line{"info", system_exception}, log_line{"info", system_exception}));
}

TEST_F(SuiteLibraries, AreUsedByAThreadWhileAnotherLoadsThem)
{
    add_as(L"calling_library.dll", L"crashguard14.dll");
    const auto result = run(L"join read-null nothing");
    EXPECT_EQ(result.output, "read-null: 80004005\r\nnothing: 00000000\r\njoined: 80004005\r\n");
    EXPECT_EQ(result.errors, "crashguard: exception c0000005\r\ncrashguard: exception c0000005\r\n");
}

TEST_F(SuiteLibraries, ThePdfCoreReturnsCodeAndText)
{
    add(L"pdfcore.dll");
    add(L"as_compat.dll");
    SetEnvironmentVariableW(L"QUILL_PDFCORE_ERROR", L"-1073");
    SetEnvironmentVariableW(L"QUILL_PDFCORE_TEXT", L"Ung\x00fcltig");
    EXPECT_THAT(lines_of(run(L"pdfcore")),
                ElementsAre(log_line{"debug", std::string(entry) +
                                                  " pdfcore exception: -1073 Ung\xc3\xbcltig (-1073)"}));
}

// Once for the text and once for the line.
TEST_F(SuiteLibraries, ThePdfCoresCodeIsReadTwice)
{
    add(L"pdfcore.dll");
    add(L"as_compat.dll");
    SetEnvironmentVariableW(L"QUILL_PDFCORE_ERROR", L"count");
    SetEnvironmentVariableW(L"QUILL_PDFCORE_TEXT", L"x");
    EXPECT_THAT(lines_of(run(L"pdfcore")),
                ElementsAre(log_line{"debug", std::string(entry) + " pdfcore exception: 2 x (1)"}));
}

// The line is written without the result of the function that threw.
TEST_F(SuiteLibraries, MayThrowWhileAnErrorIsLogged)
{
    add(L"pdfcore.dll");
    add(L"as_compat.dll");
    SetEnvironmentVariableW(L"QUILL_PDFCORE_ERROR", L"-1073");
    SetEnvironmentVariableW(L"QUILL_PDFCORE_TEXT", L"throw");
    const std::string line = std::string(entry) + " pdfcore exception: ";
    const auto without_text = run(L"pdfcore pdfcore nothing");
    EXPECT_EQ(without_text.output, "pdfcore: 80004005\r\npdfcore: 80004005\r\nnothing: 00000000\r\n");
    EXPECT_THAT(lines_of(without_text),
                ElementsAre(log_line{"debug", line + "-1073 "}, log_line{"debug", line + "-1073 "}));

    SetEnvironmentVariableW(L"QUILL_PDFCORE_ERROR", L"throw");
    SetEnvironmentVariableW(L"QUILL_PDFCORE_TEXT", L"x");
    const auto without_code = run(L"pdfcore nothing");
    EXPECT_EQ(without_code.output, "pdfcore: 80004005\r\nnothing: 00000000\r\n");
    EXPECT_THAT(lines_of(without_code), ElementsAre(log_line{"debug", line + "0 x (0)"}));
}

TEST_F(SuiteLibraries, MayFaultWhileAnErrorIsLogged)
{
    for (const wchar_t* name : {L"crashguard14.dll", L"pdfcore.dll", L"as_compat.dll"})
        add(name);
    SetEnvironmentVariableW(L"QUILL_PDFCORE_TEXT", L"crash");
    const auto result = run(L"pdfcore pdfcore nothing");
    EXPECT_EQ(result.output, "pdfcore: 80004005\r\npdfcore: 80004005\r\nnothing: 00000000\r\n");
    EXPECT_EQ(result.errors, "crashguard: exception c0000005\r\ncrashguard: exception c0000005\r\n");
    EXPECT_THAT(lines_of(result),
                ElementsAre(log_line{"info", system_exception}, log_line{"info", system_exception}));
}

TEST_F(SuiteLibraries, ThePdfCoreAloneReturnsTheCode)
{
    add(L"pdfcore.dll");
    SetEnvironmentVariableW(L"QUILL_PDFCORE_ERROR", L"12");
    EXPECT_THAT(lines_of(run(L"pdfcore")),
                ElementsAre(log_line{"debug", std::string(entry) + " pdfcore exception: 12 "}));
}

TEST_F(SuiteLibraries, AnErrorTextMayHaveTheSizeThatIsPassed)
{
    add(L"pdfcore.dll");
    add(L"as_compat.dll");
    SetEnvironmentVariableW(L"QUILL_PDFCORE_TEXT", std::wstring(3000, L't').c_str());
    const auto result = run(L"pdfcore nothing");
    EXPECT_EQ(result.output, "pdfcore: 80004005\r\nnothing: 00000000\r\n");
    EXPECT_THAT(lines_of(result),
                ElementsAre(log_line{"debug", std::string(entry) + " pdfcore exception: 0 " +
                                                  std::string(2046, 't')}));
}

TEST_F(SuiteLibraries, AreNotLoadedFromTheCurrentDirectory)
{
    const test::scratch_directory elsewhere;
    ASSERT_TRUE(CopyFileW(test::beside_this_program(L"crashguard14.dll").c_str(),
                          (elsewhere / L"crashguard14.dll").c_str(), TRUE));
    wchar_t before[MAX_PATH] = {};
    GetCurrentDirectoryW(MAX_PATH, before);
    SetCurrentDirectoryW(elsewhere.path().c_str());
    const auto result = run(L"read-null");
    SetCurrentDirectoryW(before);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "read-null: 80004005\r\n");
}

} // namespace
} // namespace quill
