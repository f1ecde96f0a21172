// The load gate: the decision as a table, and host programs with the name of the shell.
#include "module/load_gate.h"
#include "tests/module/loaded_module.h"
#include "tests/support/child_process.h"
#include "tests/support/scopes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace quill::test {
namespace {

bool refuses(const std::wstring& path)
{
    wchar_t buffer[MAX_PATH] = {};
    std::copy_n(path.begin(), std::min<std::size_t>(path.size(), MAX_PATH), buffer);
    return refuses_host(buffer);
}

TEST(LoadGate, RefusesTheShellAnywhereInThePathInAnyCase)
{
    EXPECT_TRUE(refuses(L"C:\\Windows\\explorer.exe"));
    EXPECT_TRUE(refuses(L"C:\\Windows\\EXPLORER.EXE"));
    EXPECT_TRUE(refuses(L"C:\\Windows\\Explorer.Exe"));
    EXPECT_TRUE(refuses(L"explorer.exe"));
    EXPECT_TRUE(refuses(L"C:\\explorer.exe\\host.exe"));
    EXPECT_TRUE(refuses(L"C:\\myexplorer.exe.old\\host.exe"));
    EXPECT_TRUE(refuses(L"C:\\Windows\\explorer.exe.mui"));
}

TEST(LoadGate, AcceptsOtherHosts)
{
    EXPECT_FALSE(refuses(L""));
    EXPECT_FALSE(refuses(L"C:\\Program Files\\Internet Explorer\\iexplore.exe"));
    EXPECT_FALSE(refuses(L"C:\\Windows\\explorer\\host.exe"));
    EXPECT_FALSE(refuses(L"C:\\Windows\\explorer .exe"));
    EXPECT_FALSE(refuses(L"C:\\Windows\\explorer_exe"));
    EXPECT_FALSE(refuses(L"C:\\Windows\\regsvr32.exe"));
}

TEST(LoadGate, ExaminesAsMuchAsFitsTheBuffer)
{
    constexpr std::size_t name_length = 12;
    const std::wstring just_fits = std::wstring(MAX_PATH - 1 - name_length, L'a') + L"explorer.exe";
    EXPECT_TRUE(refuses(just_fits));
    // The terminator replaces the last character.
    EXPECT_FALSE(refuses(L"a" + just_fits));
}

struct HostNamed : testing::TestWithParam<std::pair<const wchar_t*, bool>>
{
};

TEST_P(HostNamed, LoadsTheModuleUnlessItIsTheShell)
{
    const auto [name, refused] = GetParam();
    const scratch_directory scratch;
    const std::wstring program = scratch / name;
    const auto last = program.rfind(L'\\');
    CreateDirectoryW(program.substr(0, last).c_str(), nullptr);
    ASSERT_TRUE(CopyFileW(beside_this_program(L"module_gate_host.exe").c_str(), program.c_str(), TRUE));

    const child_result result = run_program(program, L"\"" + loaded_module::path() + L"\"");
    ASSERT_TRUE(result.ended);
    EXPECT_EQ(result.exit_code, refused ? ERROR_DLL_INIT_FAILED : 0);
}

INSTANTIATE_TEST_SUITE_P(Programs, HostNamed,
                         testing::Values(std::pair{L"explorer.exe", true}, std::pair{L"EXPLORER.EXE", true},
                                         std::pair{L"explorer.exe\\host.exe", true},
                                         std::pair{L"Explorer.EXE folder\\host.exe", true},
                                         std::pair{L"iexplore.exe", false}, std::pair{L"host.exe", false}));

} // namespace
} // namespace quill::test
