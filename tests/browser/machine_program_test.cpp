#include "stand_ins/viewer/machine_program.h"
#include "tests/support/scopes.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

class MachineProgram : public testing::Test
{
protected:
    MachineProgram() { write_file(input, "what the program reads"); }

    std::optional<machine_program::result> run(const std::wstring& program,
                                               const std::vector<std::wstring>& arguments)
    {
        const auto started = machine_program::start(program, arguments, input);
        std::optional<machine_program::result> result;
        EXPECT_TRUE(started.has_value());
        if (started)
            wait_until([&] { return (result = started->poll()).has_value(); });
        return result;
    }

    scratch_directory folder;
    const std::wstring input = folder / L"input.txt";
};

TEST_F(MachineProgram, ReadsItsInputAndWritesItsOutput)
{
    const auto result = run(L"/bin/cat", {});
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->exit_code, 0);
    EXPECT_EQ(result->output, "what the program reads");
}

TEST_F(MachineProgram, ReadsAFileOfAnyName)
{
    for (const wchar_t* name :
         {L"two  words.txt", L"\u00FCber \u65E5\u672C.txt", L"it's $HOME `x`.txt", L"%41.txt"}) {
        const std::wstring path = folder / name;
        ASSERT_TRUE(write_file(path, "contents"));
        const auto started = machine_program::start(L"/bin/cat", {}, path);
        std::optional<machine_program::result> result;
        ASSERT_TRUE(started.has_value());
        ASSERT_TRUE(wait_until([&] { return (result = started->poll()).has_value(); }));
        EXPECT_EQ(result->output, "contents");
    }
}

TEST_F(MachineProgram, GetsItsArgumentsUnchanged)
{
    const auto result =
        run(L"/usr/bin/printf", {L"%s|", L"a b", L"", L"q\"q", L"back\\", L"\\\"", L"$HOME", L"*"});
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->output, "a b||q\"q|back\\|\\\"|$HOME|*|");
}

TEST_F(MachineProgram, MayFailWithoutOutput)
{
    const auto result = run(L"/bin/sh", {L"-c", L"exit 3"});
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->exit_code, 3);
    EXPECT_EQ(result->output, "");
}

TEST_F(MachineProgram, MayWriteWhatLooksLikeItsEnd)
{
    const auto result = run(L"/usr/bin/printf", {L"before\\nend 5\\nafter"});
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->exit_code, 0);
    EXPECT_EQ(result->output, "before\nend 5\nafter");
}

// As in iexplore.exe.
TEST_F(MachineProgram, IsStartedByAProgramWithoutAConsole)
{
    FreeConsole();
    const auto result = run(L"/bin/cat", {});
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->output, "what the program reads");
}

// Reading the output must not move the position where the program writes next.
TEST_F(MachineProgram, OutputIsCompleteWhilePolled)
{
    constexpr int lines = 20'000;
    const auto started = machine_program::start(
        L"/bin/sh", {L"-c", L"i=0; while [ $i -lt 20000 ]; do echo $i; i=$((i+1)); done"}, input);
    ASSERT_TRUE(started.has_value());
    std::optional<machine_program::result> result;
    const ULONGLONG end = GetTickCount64() + default_deadline_ms;
    while (!result && GetTickCount64() < end)
        result = started->poll();
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->exit_code, 0);
    std::string expected;
    for (int i = 0; i < lines; ++i)
        expected += std::to_string(i) + "\n";
    EXPECT_TRUE(result->output == expected) << result->output.size() << " of " << expected.size();
}

TEST_F(MachineProgram, ReportsAMissingProgram)
{
    const auto result = run(L"/usr/bin/no-such-program", {});
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->exit_code, 127);
}

TEST_F(MachineProgram, DoesNotStartWithoutItsInput)
{
    EXPECT_FALSE(machine_program::start(L"/bin/cat", {}, folder / L"missing.txt").has_value());
}

TEST(QuotedArgument, FollowsTheRulesOfACommandLine)
{
    EXPECT_EQ(quoted_argument(L""), L"\"\"");
    EXPECT_EQ(quoted_argument(L"a b"), L"\"a b\"");
    EXPECT_EQ(quoted_argument(L"a\\b"), L"\"a\\b\"");
    EXPECT_EQ(quoted_argument(L"a\\"), L"\"a\\\\\"");
    EXPECT_EQ(quoted_argument(L"a\""), L"\"a\\\"\"");
    EXPECT_EQ(quoted_argument(L"a\\\""), L"\"a\\\\\\\"\"");
}

} // namespace
} // namespace quill::test
