// The set-up of the logger in separate processes, by environment variables and log files.
#include "logging/log_file_name.h"
#include "platform/file_system.h"
#include "tests/support/child_process.h"
#include "tests/support/log_file.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <shlobj.h>

#include <algorithm>
#include <set>

namespace quill {
namespace {

using test::child_result;
using test::environment_scope;
using test::log_folder_scope;
using test::log_line;
using test::parse_log;
using test::read_file;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::wstring app_data_log_folder()
{
    wchar_t folder[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, folder);
    return std::wstring(folder) + L"\\Quill\\DocStudio\\14";
}

struct GlobalLogger : testing::Test
{
    log_folder_scope logs;
    environment_scope level{L"QUILL_LOG_LEVEL", std::nullopt};
    environment_scope sinks{L"QUILL_LOG_SINKS", std::nullopt};

    static void set(const wchar_t* name, const wchar_t* value) { SetEnvironmentVariableW(name, value); }

    static child_result run(const std::wstring& arguments)
    {
        const child_result result =
            test::run_program(test::beside_this_program(L"log_program.exe"), arguments);
        EXPECT_TRUE(result.ended);
        EXPECT_EQ(result.exit_code, 0u);
        return result;
    }

    // The content of a run's log file; std::nullopt without one.
    std::optional<std::string> file_of(const child_result& run) const
    {
        return read_file(logs.file_of(L"log_program", run.process_id));
    }

    std::vector<log_line> lines_of(const child_result& run) const
    {
        return parse_log(file_of(run).value_or(""));
    }

    // The log file's path for verbs of the program, which append the process id.
    std::wstring path_before_process_id() const
    {
        const std::wstring path = logs.file_of(L"log_program", 0);
        return path.substr(0, path.rfind(L'-'));
    }
};

TEST_F(GlobalLogger, ALineAfterTheLoggersDestructionIsDropped)
{
    set(L"QUILL_LOG_LEVEL", L"info");
    EXPECT_THAT(lines_of(run(L"info=x late")), ElementsAre(log_line{"info", "x"}));
}

TEST_F(GlobalLogger, WithoutALevelNothingIsLogged)
{
    const auto result = run(L"critical=x logger");
    EXPECT_EQ(file_of(result), std::nullopt);
    EXPECT_EQ(result.output, "null 6 other, null registered, global 2\r\n");
    set(L"QUILL_LOG_SINKS", L"file,stdout");
    const auto with_sinks = run(L"critical=x");
    EXPECT_EQ(file_of(with_sinks), std::nullopt);
    EXPECT_EQ(with_sinks.output, "");
}

TEST_F(GlobalLogger, ALevelAloneLogsToTheFile)
{
    set(L"QUILL_LOG_LEVEL", L"debug");
    const auto result = run(L"trace=t debug=d \"info=i i\" warning=w error=e critical=c logger");
    EXPECT_THAT(lines_of(result),
                ElementsAre(log_line{"debug", "d"}, log_line{"info", "i i"}, log_line{"warning", "w"},
                            log_line{"error", "e"}, log_line{"critical", "c"}));
    EXPECT_EQ(result.output, "quill 1 file, null registered, global 1\r\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(GlobalLogger, AnEmptySinkListLogsToTheFile)
{
    set(L"QUILL_LOG_LEVEL", L"info");
    set(L"QUILL_LOG_SINKS", L"");
    const auto result = run(L"info=x logger");
    EXPECT_THAT(lines_of(result), ElementsAre(log_line{"info", "x"}));
    EXPECT_EQ(result.output, "quill 2 file, null registered, global 2\r\n");
}

TEST_F(GlobalLogger, LinesCarryTimeThreadLevelAndText)
{
    set(L"QUILL_LOG_LEVEL", L"info");
    const auto result = run(L"info=x");
    ASSERT_THAT(lines_of(result), ElementsAre(log_line{"info", "x"}));
    SYSTEMTIME now{};
    GetLocalTime(&now);
    const auto line = lines_of(result)[0];
    const int hour = std::stoi(line.time.substr(0, 2));
    EXPECT_TRUE(hour == now.wHour || hour == (now.wHour + 23) % 24) << line.time;
    EXPECT_NE(line.thread, "0");
}

TEST_F(GlobalLogger, StdoutAloneWritesNoFile)
{
    set(L"QUILL_LOG_LEVEL", L"info");
    set(L"QUILL_LOG_SINKS", L"stdout");
    const auto result = run(L"debug=no info=yes error=too");
    EXPECT_EQ(file_of(result), std::nullopt);
    EXPECT_THAT(parse_log(result.output), ElementsAre(log_line{"info", "yes"}, log_line{"error", "too"}));
}

TEST_F(GlobalLogger, SinksHaveAFixedOrder)
{
    const test::cross_process_lock device(L"procmon");
    set(L"QUILL_LOG_LEVEL", L"err");
    set(L"QUILL_LOG_SINKS", L"procmon,stdout");
    EXPECT_EQ(run(L"logger").output, "quill 4 stdout procmon, null registered, global 4\r\n");
    set(L"QUILL_LOG_SINKS", L"procmon,stdout,file");
    EXPECT_EQ(run(L"logger").output, "quill 4 file stdout procmon, null registered, global 4\r\n");
}

TEST_F(GlobalLogger, UnknownSinksCreateALoggerWithoutSinks)
{
    set(L"QUILL_LOG_LEVEL", L"debug");
    set(L"QUILL_LOG_SINKS", L"FILE");
    const auto result = run(L"critical=x logger");
    EXPECT_EQ(file_of(result), std::nullopt);
    EXPECT_EQ(result.output, "quill 1, null registered, global 1\r\n");
}

TEST_F(GlobalLogger, AnUnknownLevelOpensTheFileAndLogsNothing)
{
    for (const wchar_t* name : {L"2", L"Debug", L""}) {
        set(L"QUILL_LOG_LEVEL", name);
        const auto result = run(L"critical=x logger");
        EXPECT_EQ(file_of(result), "");
        EXPECT_EQ(result.output, "quill 6 file, null registered, global 6\r\n");
    }
}

TEST_F(GlobalLogger, BothNamesOfWarningAreLevel3)
{
    for (const wchar_t* name : {L"warn", L"warning"}) {
        set(L"QUILL_LOG_LEVEL", name);
        EXPECT_THAT(lines_of(run(L"info=i warning=w")), ElementsAre(log_line{"warning", "w"}));
    }
}

TEST_F(GlobalLogger, LaterChangesOfTheEnvironmentAreIgnored)
{
    const auto off = run(L"info=a env=QUILL_LOG_LEVEL=info info=b");
    EXPECT_EQ(file_of(off), std::nullopt);
    const auto on = run(L"env=QUILL_LOG_LEVEL=info info=a env=QUILL_LOG_LEVEL=off info=b");
    EXPECT_THAT(lines_of(on), ElementsAre(log_line{"info", "a"}, log_line{"info", "b"}));
}

TEST_F(GlobalLogger, PiecesMakeOneLine)
{
    set(L"QUILL_LOG_LEVEL", L"info");
    EXPECT_THAT(lines_of(run(L"pieces=a pieces=b")),
                ElementsAre(log_line{"info", "<a>"}, log_line{"info", "<b>"}));
}

TEST_F(GlobalLogger, ALoggerOfTheSameNameIsUsedWithItsSinks)
{
    const test::scratch_directory scratch;
    set(L"QUILL_LOG_LEVEL", L"info");
    const auto result = run(L"\"own-logger=" + scratch.path() + L"\\own.log\" debug=no info=yes");
    // The sinks that were created for it are destroyed and their file stays empty.
    EXPECT_EQ(file_of(result), "");
    EXPECT_THAT(parse_log(read_file(scratch / L"own.log").value_or("")),
                ElementsAre(log_line{"info", "yes"}));
}

TEST_F(GlobalLogger, ThreadsDoNotMixTheirLines)
{
    set(L"QUILL_LOG_LEVEL", L"info");
    const auto lines = lines_of(run(L"threads=4"));
    ASSERT_EQ(lines.size(), 400u);
    std::set<std::string> threads;
    std::set<std::string> texts;
    for (const auto& line : lines) {
        EXPECT_EQ(line.level, "info");
        EXPECT_THAT(line.text, StartsWith("thread " + line.thread + " line "));
        threads.insert(line.thread);
        texts.insert(line.text);
    }
    EXPECT_EQ(threads.size(), 4u);
    EXPECT_EQ(texts.size(), 400u);
}

TEST_F(GlobalLogger, AnExistingFileIsContinued)
{
    set(L"QUILL_LOG_LEVEL", L"info");
    const auto result = run(L"\"seed=" + path_before_process_id() + L"\" info=x");
    EXPECT_THAT(file_of(result).value_or(""),
                testing::AllOf(StartsWith("seeded\r\n"), EndsWith("[info] x\r\n")));
}

TEST_F(GlobalLogger, TheFileRotatesAt10MiBAndSevenAreKept)
{
    set(L"QUILL_LOG_LEVEL", L"info");
    const auto result = run(L"fill=80");
    const std::wstring base = logs.file_of(L"log_program", result.process_id);
    const auto rotated = [&](int number) {
        return number == 0 ? base
                           : base.substr(0, base.size() - 4) + L"." + std::to_wstring(number) + L".log";
    };
    // Nine lines of a little more than 1 MiB fit into a file: 80 make nine files, of which eight stay.
    for (int number = 0; number <= 7; ++number) {
        const std::string text = read_file(rotated(number)).value_or("");
        const int first = 73 - 9 * number;
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), number == 0 ? 8 : 9) << number;
        EXPECT_LE(text.size(), 10'485'760u) << number;
        EXPECT_THAT(text.substr(0, 100), HasSubstr("[info] " + std::to_string(first) + " mmm")) << number;
    }
    EXPECT_EQ(read_file(rotated(8)), std::nullopt);
}

TEST_F(GlobalLogger, AFileHolds10MiBToTheByte)
{
    set(L"QUILL_LOG_LEVEL", L"info");
    const auto files_of = [&](const std::wstring& arguments) {
        const auto result = run(L"info=x \"top-up=" + path_before_process_id() + arguments);
        const std::wstring base = logs.file_of(L"log_program", result.process_id);
        return std::pair(read_file(base).value_or(""),
                         read_file(base.substr(0, base.size() - 4) + L".1.log"));
    };
    const auto [full, none] = files_of(L"|10485760\"");
    EXPECT_EQ(full.size(), 10'485'760u);
    EXPECT_EQ(none, std::nullopt);

    const auto [next, before] = files_of(L"|10485760\" info=y");
    EXPECT_EQ(before.value_or("").size(), 10'485'760u);
    EXPECT_THAT(parse_log(next), ElementsAre(log_line{"info", "y"}));

    const auto [too_long, first] = files_of(L"|10485761\"");
    EXPECT_THAT(parse_log(first.value_or("")), ElementsAre(log_line{"info", "x"}));
    EXPECT_EQ(too_long.size() + first.value_or("").size(), 10'485'761u);
}

TEST_F(GlobalLogger, TheProgramsNameUpToItsFirstDotNamesTheFile)
{
    const test::scratch_directory scratch;
    set(L"QUILL_LOG_LEVEL", L"info");
    const std::pair<const wchar_t*, const wchar_t*> names[] = {
        {L"a.b.exe", L"a"}, {L"nodot", L""}, {L"with {braces}.exe", L"with {braces}"}, {L".exe", L""}};
    for (const auto& [name, stem] : names) {
        const std::wstring program = scratch / name;
        ASSERT_TRUE(CopyFileW(test::beside_this_program(L"log_program.exe").c_str(), program.c_str(), TRUE));
        const auto result = test::run_program(program, L"info=x");
        EXPECT_EQ(result.exit_code, 0u);
        EXPECT_THAT(parse_log(read_file(logs.file_of(stem, result.process_id)).value_or("")),
                    ElementsAre(log_line{"info", "x"}))
            << testing::PrintToString(std::wstring(name));
    }
}

TEST_F(GlobalLogger, AFileThatCannotBeOpenedLeavesLoggingOff)
{
    set(L"QUILL_LOG_LEVEL", L"info");
    for (const wchar_t* sinks_text : {L"", L"file,stdout"}) {
        set(L"QUILL_LOG_SINKS", sinks_text);
        // A folder has the name of the log file. There is no error message and no second attempt.
        const auto result = run(L"\"block=" + path_before_process_id() + L"\" set-up logger info=x set-up");
        EXPECT_EQ(result.output, "set up: \r\nnull 6 other, null registered, global 2\r\nset up: \r\n");
        EXPECT_EQ(result.errors, "");
    }
}

// Without the folder in the profile, logs go to the application data folder, which is created.
struct AppDataLog : testing::Test
{
    log_folder_scope no_profile_folder{log_folder_scope::folder::absent};
    environment_scope level{L"QUILL_LOG_LEVEL", L"info"};
    environment_scope sinks{L"QUILL_LOG_SINKS", std::nullopt};
    std::wstring folder = app_data_log_folder();
    std::wstring company_folder = folder.substr(0, folder.size() - std::wcslen(L"\\DocStudio\\14"));

    void SetUp() override { test::remove_path(company_folder); }
    void TearDown() override { test::remove_path(company_folder); }

    static child_result run(const std::wstring& arguments)
    {
        return test::run_program(test::beside_this_program(L"log_program.exe"), arguments);
    }

    std::vector<log_line> lines_of(const child_result& run) const
    {
        const std::wstring file = folder + L"\\log_program-" + std::to_wstring(run.process_id) + L".log";
        return parse_log(read_file(file).value_or(""));
    }
};

TEST_F(AppDataLog, FolderIsCreatedAndUsed)
{
    EXPECT_FALSE(DirectoryExists(company_folder));
    EXPECT_THAT(lines_of(run(L"info=x")), ElementsAre(log_line{"info", "x"}));
    EXPECT_FALSE(DirectoryExists(test::profile_log_folder_path()));
    EXPECT_THAT(lines_of(run(L"info=again")), ElementsAre(log_line{"info", "again"}));
}

TEST_F(AppDataLog, FolderIsNamedByItsShortForm)
{
    const std::wstring used = app_data_folder();
    wchar_t short_form[MAX_PATH] = {};
    ASSERT_NE(GetShortPathNameW(folder.c_str(), short_form, MAX_PATH), 0u);
    EXPECT_EQ(used, short_form);
    wchar_t long_form[MAX_PATH] = {};
    ASSERT_NE(GetLongPathNameW(used.c_str(), long_form, MAX_PATH), 0u);
    EXPECT_EQ(_wcsicmp(long_form, folder.c_str()), 0);
    EXPECT_EQ(log_file_name_pattern().substr(0, used.size() + 1), used + L"/");
}

TEST_F(AppDataLog, FolderIsNotCreatedWhileLoggingIsOff)
{
    SetEnvironmentVariableW(L"QUILL_LOG_LEVEL", nullptr);
    run(L"info=x");
    EXPECT_FALSE(DirectoryExists(company_folder));
    SetEnvironmentVariableW(L"QUILL_LOG_LEVEL", L"info");
    SetEnvironmentVariableW(L"QUILL_LOG_SINKS", L"stdout");
    run(L"info=x");
    EXPECT_FALSE(DirectoryExists(company_folder));
}

TEST_F(AppDataLog, AFailedSetUpThrowsAndIsRepeated)
{
    test::write_file(company_folder, "in the way");
    const auto result = run(L"info=lost set-up info=lost set-up \"remove=" + company_folder +
                            L"\" info=written set-up logger");
    EXPECT_EQ(result.exit_code, 0u);
    EXPECT_EQ(result.output, "runtime error: DirectoryCreateRecursively: cannot create directory\r\n"
                             "runtime error: DirectoryCreateRecursively: cannot create directory\r\n"
                             "set up: \r\n"
                             "quill 2 file, null registered, global 2\r\n");
    EXPECT_THAT(lines_of(result), ElementsAre(log_line{"info", "written"}));
}

} // namespace
} // namespace quill
