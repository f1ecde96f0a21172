// The test support itself: guards restore state, waits end, a hanging program is ended with stacks.
#include "tests/support/child_process.h"
#include "tests/support/listening_pipe.h"
#include "tests/support/log_file.h"
#include "tests/support/scopes.h"
#include "tests/support/wait.h"
#include "tests/support/watchdog.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace quill::test {
namespace {

TEST(EnvironmentScope, RestoresTheFormerValue)
{
    SetEnvironmentVariableW(L"QUILL_TEST_VARIABLE", nullptr);
    wchar_t value[16] = {};
    {
        const environment_scope outer(L"QUILL_TEST_VARIABLE", L"outer");
        {
            const environment_scope inner(L"QUILL_TEST_VARIABLE", std::nullopt);
            EXPECT_EQ(GetEnvironmentVariableW(L"QUILL_TEST_VARIABLE", value, 16), 0u);
        }
        EXPECT_EQ(GetEnvironmentVariableW(L"QUILL_TEST_VARIABLE", value, 16), 5u);
        EXPECT_STREQ(value, L"outer");
    }
    EXPECT_EQ(GetEnvironmentVariableW(L"QUILL_TEST_VARIABLE", value, 16), 0u);
}

TEST(ListeningPipe, KnowsWhetherAClientOpenedIt)
{
    const listening_pipe pipe;
    EXPECT_FALSE(pipe.was_opened());
    const HANDLE client = CreateFileW((L"\\\\.\\pipe\\" + pipe.name()).c_str(), GENERIC_READ, 0, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    EXPECT_TRUE(pipe.was_opened());
    if (client != INVALID_HANDLE_VALUE)
        CloseHandle(client);
}

TEST(ScratchDirectory, IsEmptyAndIsRemovedWithItsContents)
{
    std::wstring path;
    {
        const scratch_directory scratch;
        const scratch_directory other;
        EXPECT_NE(scratch.path(), other.path());
        path = scratch.path();
        EXPECT_TRUE(CreateDirectoryW((scratch / L"sub").c_str(), nullptr));
        EXPECT_TRUE(write_file(scratch / L"sub\\file", std::string("a\0b", 3)));
        EXPECT_EQ(read_file(scratch / L"sub\\file"), std::string("a\0b", 3));
        EXPECT_EQ(read_file(scratch / L"none"), std::nullopt);
        SetFileAttributesW((scratch / L"sub\\file").c_str(), FILE_ATTRIBUTE_READONLY);
    }
    EXPECT_EQ(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST(RegistryKeyScope, RemovesTheKeyWithItsSubkeys)
{
    constexpr const wchar_t* path = L"Software\\QuillTest\\Scope";
    HKEY key = nullptr;
    {
        const registry_key_scope scope(HKEY_CURRENT_USER, path);
        EXPECT_NE(RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, &key), ERROR_SUCCESS);
        scope.set_dword(L"number", 7);
        const registry_key_scope below(HKEY_CURRENT_USER, std::wstring(path) + L"\\Below");
        below.set_string(L"text", L"x");
        DWORD number = 0;
        DWORD size = sizeof number;
        EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, path, L"number", RRF_RT_REG_DWORD, nullptr, &number, &size),
                  ERROR_SUCCESS);
        EXPECT_EQ(number, 7u);
    }
    EXPECT_NE(RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, &key), ERROR_SUCCESS);
    RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\QuillTest");
}

TEST(WaitUntil, DeliversMessagesAndEndsAtItsDeadline)
{
    PostThreadMessageW(GetCurrentThreadId(), WM_APP, 0, 0);
    int calls = 0;
    EXPECT_TRUE(wait_until([&] { return ++calls == 3; }));
    MSG message;
    EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_APP, WM_APP, PM_REMOVE));
    EXPECT_FALSE(wait_until([] { return false; }, 50));
}

TEST(ParseLog, SplitsLines)
{
    const auto lines =
        parse_log("01:02:03:000004 [t:42] [debug] a [b] c\r\n01:02:03:000004 [t:42] [info] \r\nodd\r\n"
                  "01:02:03:000004 [t:1] [info] no end");
    ASSERT_EQ(lines.size(), 4u);
    for (const char* odd :
         {"x\r\n", "\r\n", "01:02:03:00004 [t:42] [info] a\r\n", "01:02:03:000004 [t:] [info] a\r\n",
          "01:02:03:000004 [t:1] [Info] a\r\n", "01:02:03:000004 [t:1] [info]a\r\n"})
        EXPECT_EQ(parse_log(odd)[0].level, "malformed") << odd;
    EXPECT_EQ(lines[0], (log_line{"debug", "a [b] c"}));
    EXPECT_EQ(lines[0].thread, "42");
    EXPECT_EQ(lines[1], (log_line{"info", ""}));
    EXPECT_EQ(lines[2].level, "malformed");
    EXPECT_EQ(lines[3].level, "malformed");
}

TEST(Watchdog, EndsAHangingProgramAndShowsWhereItHangs)
{
    const environment_scope limit(L"QUILL_TEST_LIMIT_MS", L"300");
    const child_result result = run_program(beside_this_program(L"hanging_program.exe"), L"");
    ASSERT_TRUE(result.started);
    EXPECT_TRUE(result.ended);
    EXPECT_EQ(result.exit_code, watchdog_exit_code);
    EXPECT_NE(result.errors.find("Hanging.NeverEnds runs for more than 300 ms"), std::string::npos)
        << result.errors;
    EXPECT_NE(result.errors.find("wait_for_ever_in_here"), std::string::npos) << result.errors;
}

} // namespace
} // namespace quill::test
