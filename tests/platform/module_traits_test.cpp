#include "platform/impl/windows/module_traits.h"
#include "platform/unique_handle.h"
#include "tests/support/child_process.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <cstring>
#include <stdexcept>
#include <system_error>

namespace quill {
namespace {

TEST(FileStem, EndsBeforeTheFirstDotOfTheName)
{
    EXPECT_EQ(file_stem(L"C:\\dir.x\\iexplore.exe"), L"iexplore");
    EXPECT_EQ(file_stem(L"C:\\x\\a.b.dll"), L"a");
    EXPECT_EQ(file_stem(L"a.b.dll"), L"a");
    EXPECT_EQ(file_stem(L"C:/x/y.dll"), L"y");
    EXPECT_EQ(file_stem(L"C:\\x\\.hidden"), L"");
    EXPECT_EQ(file_stem(L"C:\\x.y\\nodot"), L"");
    EXPECT_EQ(file_stem(L""), L"");
    EXPECT_EQ(file_stem(L"C:\\"), L"");
}

TEST(CopyStem, CopiesWhatFitsAndRefusesMore)
{
    wchar_t buffer[MAX_PATH];
    std::fill(std::begin(buffer), std::end(buffer), L'#');
    copy_stem(L"abc", buffer);
    EXPECT_STREQ(buffer, L"abc");
    copy_stem(L"", buffer);
    EXPECT_STREQ(buffer, L"");
    copy_stem(std::wstring(259, L's'), buffer);
    EXPECT_EQ(std::wstring(buffer), std::wstring(259, L's'));
    try {
        copy_stem(std::wstring(260, L's'), buffer);
        ADD_FAILURE();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "The module name is too long");
    }
}

TEST(ModulePath, NamesTheProgramForTheNullHandle)
{
    EXPECT_EQ(module_path(nullptr), test::beside_this_program(L"test_platform.exe"));
    wchar_t stem[MAX_PATH] = {};
    module_stem(nullptr, stem);
    EXPECT_STREQ(stem, L"test_platform");
}

TEST(ModulePath, NamesALoadedLibrary)
{
    const test::scratch_directory scratch;
    const std::wstring path = scratch / L"a.b.dll";
    ASSERT_TRUE(CopyFileW(test::beside_this_program(L"logging_library.dll").c_str(), path.c_str(), TRUE));
    const unique_library library(LoadLibraryW(path.c_str()));
    ASSERT_TRUE(library);
    EXPECT_EQ(module_path(library.get()), path);
    wchar_t stem[MAX_PATH] = {};
    module_stem(library.get(), stem);
    EXPECT_STREQ(stem, L"a");
}

TEST(ModulePath, GrowsItsBufferForALongPath)
{
    const test::scratch_directory scratch;
    std::wstring folder = L"\\\\?\\" + scratch.path();
    for (int level = 0; level < 3; ++level) {
        folder += L"\\" + std::wstring(200, static_cast<wchar_t>(L'a' + level));
        ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
    }
    const std::wstring path = folder + L"\\long.dll";
    ASSERT_TRUE(CopyFileW(test::beside_this_program(L"logging_library.dll").c_str(), path.c_str(), TRUE));
    {
        const unique_library library(LoadLibraryW(path.c_str()));
        ASSERT_TRUE(library) << GetLastError();
        const std::wstring found = module_path(library.get());
        EXPECT_GT(found.size(), 600u);
        EXPECT_THAT(found, testing::EndsWith(path.substr(4)));
    }
    test::remove_path(L"\\\\?\\" + scratch.path());
}

TEST(ModulePath, ThrowsForAHandleThatIsNoModule)
{
    int not_a_module = 0;
    try {
        module_path(reinterpret_cast<HMODULE>(&not_a_module));
        ADD_FAILURE();
    } catch (const std::system_error& error) {
        EXPECT_NE(error.code().value(), 0);
        EXPECT_EQ(error.code().category(), std::system_category());
        EXPECT_THAT(error.what(), testing::AllOf(testing::HasSubstr("module_traits"),
                                                 testing::HasSubstr("78"), testing::HasSubstr("length > 0")));
    }
}

} // namespace
} // namespace quill
