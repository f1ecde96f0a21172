// Sinks, levels and file names of the logger's set-up.
#include "logging/log_file_name.h"
#include "logging/logger_choice.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gmock/gmock.h>

namespace quill {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
constexpr auto file = log_sink::file;
constexpr auto standard_output = log_sink::standard_output;
constexpr auto process_monitor = log_sink::process_monitor;

TEST(SinksFromText, AnEmptyTextSelectsTheFile)
{
    EXPECT_THAT(sinks_from_text(""), ElementsAre(file));
}

TEST(SinksFromText, SelectsEveryCombination)
{
    EXPECT_THAT(sinks_from_text("file"), ElementsAre(file));
    EXPECT_THAT(sinks_from_text("stdout"), ElementsAre(standard_output));
    EXPECT_THAT(sinks_from_text("procmon"), ElementsAre(process_monitor));
    EXPECT_THAT(sinks_from_text("file,stdout"), ElementsAre(file, standard_output));
    EXPECT_THAT(sinks_from_text("procmon file"), ElementsAre(file, process_monitor));
    EXPECT_THAT(sinks_from_text("stdout,procmon"), ElementsAre(standard_output, process_monitor));
    EXPECT_THAT(sinks_from_text("procmonstdoutfile"), ElementsAre(file, standard_output, process_monitor));
}

TEST(SinksFromText, FindsNamesAnywhereInTheText)
{
    EXPECT_THAT(sinks_from_text("stdout;stdout|xstdoutx"), ElementsAre(standard_output));
    EXPECT_THAT(sinks_from_text("profile"), ElementsAre(file));
}

TEST(SinksFromText, IgnoresUnknownNamesAndOtherCase)
{
    EXPECT_THAT(sinks_from_text("FILE"), IsEmpty());
    EXPECT_THAT(sinks_from_text("StdOut,PROCMON"), IsEmpty());
    EXPECT_THAT(sinks_from_text("console"), IsEmpty());
    EXPECT_THAT(sinks_from_text(" "), IsEmpty());
    EXPECT_THAT(sinks_from_text("console stdout"), ElementsAre(standard_output));
}

TEST(LevelFromName, RecognisesTheNames)
{
    const std::pair<const char*, log_level> names[] = {
        {"trace", log_level::trace},     {"debug", log_level::debug},       {"info", log_level::info},
        {"warning", log_level::warning}, {"warn", log_level::warning},      {"error", log_level::error},
        {"err", log_level::error},       {"critical", log_level::critical}, {"off", log_level::off},
    };
    for (const auto& [name, level] : names)
        EXPECT_EQ(level_from_name(name), level) << name;
}

TEST(LevelFromName, IsOffForOtherText)
{
    for (const char* name : {"", "2", "Debug", "DEBUG", "debug ", " debug", "deb", "debugx", "fatal", "crit"})
        EXPECT_EQ(level_from_name(name), log_level::off) << name;
}

TEST(LogFileNamePattern, JoinsWithAForwardSlash)
{
    EXPECT_EQ(log_file_name_pattern(L"C:\\logs", L"iexplore"), L"C:\\logs/iexplore-{:d}.log");
    EXPECT_EQ(log_file_name_pattern(L"C:\\logs", L""), L"C:\\logs/-{:d}.log");
    EXPECT_EQ(log_file_name_pattern(L"", L"x"), L"/x-{:d}.log");
}

TEST(LogFileNamePattern, DoublesBraces)
{
    EXPECT_EQ(log_file_name_pattern(L"C:\\{0}\\}{", L"a{b}"), L"C:\\{{0}}\\}}{{/a{{b}}-{:d}.log");
}

TEST(ProfileLogFolder, IsEmptyUnlessTheFolderExists)
{
    const test::scratch_directory profile;
    EXPECT_EQ(profile_log_folder(std::nullopt), L"");
    EXPECT_EQ(profile_log_folder(profile.path()), L"");
    CreateDirectoryW((profile / L".quill").c_str(), nullptr);
    test::write_file(profile / L".quill\\test", "a file");
    EXPECT_EQ(profile_log_folder(profile.path()), L"");
    test::remove_path(profile / L".quill\\test");
    EXPECT_EQ(profile_log_folder(profile.path()), L"");
    CreateDirectoryW((profile / L".quill\\test").c_str(), nullptr);
    EXPECT_EQ(profile_log_folder(profile.path()), profile / L".quill\\test");
}

} // namespace
} // namespace quill
