// The suite's libraries when the module is unloaded and when the process ends.
#include "tests/support/child_process.h"
#include "tests/support/scopes.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

struct SuiteLibrariesAtTheEnd : testing::Test
{
    SuiteLibrariesAtTheEnd()
    {
        for (const wchar_t* name : {L"module_end_host.exe", L"QuillPDF.IE.dll", L"crashguard14.dll",
                                    L"pdfcore.dll", L"as_compat.dll"})
            EXPECT_TRUE(CopyFileW(beside_this_program(name).c_str(), (folder / name).c_str(), TRUE));
    }

    std::string output_of(const wchar_t* end) const
    {
        const auto result = run_program(folder / L"module_end_host.exe", end);
        EXPECT_EQ(result.exit_code, 0u) << result.errors;
        return result.output;
    }

    scratch_directory folder;
};

TEST_F(SuiteLibrariesAtTheEnd, AreFreedWhenTheModuleIsUnloaded)
{
    EXPECT_EQ(output_of(L"unload"), "3 loaded\nFreeLibrary\nFreeLibrary\nFreeLibrary\nunloaded\n");
}

// They may have been detached before the module, and the loader's data must not be used then.
TEST_F(SuiteLibrariesAtTheEnd, AreNotFreedWhenTheProcessEnds)
{
    EXPECT_EQ(output_of(L"exit"), "3 loaded\n");
}

} // namespace
} // namespace quill::test
