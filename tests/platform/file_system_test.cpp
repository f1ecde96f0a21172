#include "platform/file_system.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <stdexcept>

namespace quill {
namespace {

using test::scratch_directory;

// What a call throws, "nothing" if it returns.
template <typename Call>
std::string error_of(const Call& call)
{
    try {
        call();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "nothing";
}

std::string recursive_error_of(const std::wstring& path)
{
    return error_of([&] { DirectoryCreateRecursively(path); });
}

constexpr const char* cannot_create = "DirectoryCreateRecursively: cannot create directory";

class CurrentDirectory
{
public:
    explicit CurrentDirectory(const std::wstring& path)
    {
        GetCurrentDirectoryW(MAX_PATH, before_);
        SetCurrentDirectoryW(path.c_str());
    }
    ~CurrentDirectory() { SetCurrentDirectoryW(before_); }
    CurrentDirectory(const CurrentDirectory&) = delete;
    CurrentDirectory& operator=(const CurrentDirectory&) = delete;

private:
    wchar_t before_[MAX_PATH] = {};
};

TEST(DirectoryExists, DistinguishesFoldersFromEverythingElse)
{
    const scratch_directory scratch;
    test::write_file(scratch / L"file", "x");
    EXPECT_TRUE(DirectoryExists(scratch.path()));
    EXPECT_TRUE(DirectoryExists(scratch.path() + L"\\"));
    EXPECT_FALSE(DirectoryExists(scratch / L"file"));
    EXPECT_FALSE(DirectoryExists(scratch / L"none"));
    EXPECT_FALSE(DirectoryExists(scratch / L"no?name"));
    EXPECT_EQ(error_of([] { DirectoryExists(L""); }), "DirectoryExists: empty path");
}

TEST(DirectoryCreate, CreatesOneLevel)
{
    const scratch_directory scratch;
    DirectoryCreate(scratch / L"one");
    EXPECT_TRUE(DirectoryExists(scratch / L"one"));
    EXPECT_EQ(error_of([] { DirectoryCreate(L""); }), "DirectoryCreate: empty path");
}

TEST(DirectoryCreate, ThrowsTheSystemsError)
{
    const scratch_directory scratch;
    const auto code_of = [](const std::wstring& path) {
        try {
            DirectoryCreate(path);
        } catch (const std::system_error& error) {
            EXPECT_THAT(error.what(), testing::StartsWith("DirectoryCreate: "));
            return error.code().value();
        }
        return 0;
    };
    EXPECT_EQ(code_of(scratch.path()), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(code_of(scratch / L"two\\levels"), ERROR_PATH_NOT_FOUND);
    EXPECT_FALSE(DirectoryExists(scratch / L"two"));
}

TEST(DirectoryCreateRecursively, RefusesAnEmptyPath)
{
    EXPECT_EQ(recursive_error_of(L""), "DirectoryCreateRecursively: empty path");
}

TEST(DirectoryCreateRecursively, CreatesEveryMissingLevel)
{
    const scratch_directory scratch;
    ASSERT_EQ(scratch.path().substr(1, 2), L":\\");
    EXPECT_EQ(recursive_error_of(scratch / L"a\\b\\c"), "nothing");
    EXPECT_TRUE(DirectoryExists(scratch / L"a\\b\\c"));
    EXPECT_EQ(recursive_error_of(scratch / L"a\\b\\c"), "nothing");
    EXPECT_EQ(recursive_error_of(scratch / L"a\\b\\d\\e\\"), "nothing");
    EXPECT_TRUE(DirectoryExists(scratch / L"a\\b\\d\\e"));
}

TEST(DirectoryCreateRecursively, SkipsEmptyLevels)
{
    const scratch_directory scratch;
    EXPECT_EQ(recursive_error_of(scratch / L"\\a\\\\\\b\\\\"), "nothing");
    EXPECT_TRUE(DirectoryExists(scratch / L"a\\b"));
}

TEST(DirectoryCreateRecursively, CreatesBelowTheCurrentDirectoryAndItsRoot)
{
    const scratch_directory scratch;
    const CurrentDirectory current(scratch.path());
    EXPECT_EQ(recursive_error_of(L"a\\b"), "nothing");
    EXPECT_TRUE(DirectoryExists(scratch / L"a\\b"));
    // A leading backslash starts at the root of the drive.
    const std::wstring rooted = scratch.path().substr(2) + L"\\r\\s";
    EXPECT_EQ(recursive_error_of(rooted), "nothing");
    EXPECT_TRUE(DirectoryExists(scratch / L"r\\s"));
}

TEST(DirectoryCreateRecursively, NeverCreatesTheDriveItself)
{
    const DWORD drives = GetLogicalDrives();
    wchar_t free_drive[] = L"A:";
    while (drives & (1u << (free_drive[0] - L'A')))
        ++free_drive[0];
    // Only the level below the drive can fail, and does.
    EXPECT_EQ(recursive_error_of(std::wstring(free_drive) + L"\\a\\b"), cannot_create);
    EXPECT_EQ(recursive_error_of(free_drive), "nothing");
}

TEST(DirectoryCreateRecursively, AcceptsOnlyALetterWithAColonAsADrive)
{
    const scratch_directory scratch;
    const CurrentDirectory current(scratch.path());
    // Some file systems allow the name. Treated as a drive, it would not be created and the next level fail.
    const bool colons_allowed = CreateDirectoryW(L"xy:", nullptr) != FALSE;
    EXPECT_EQ(recursive_error_of(L"ab:\\a"), colons_allowed ? "nothing" : cannot_create);
    EXPECT_EQ(DirectoryExists(L"ab:"), colons_allowed);
}

TEST(DirectoryCreateRecursively, DoesNotSplitAtForwardSlashes)
{
    const scratch_directory scratch;
    EXPECT_EQ(recursive_error_of(scratch / L"x/y"), cannot_create);
    EXPECT_FALSE(DirectoryExists(scratch / L"x"));
    DirectoryCreate(scratch / L"x");
    EXPECT_EQ(recursive_error_of(scratch / L"x/y\\z"), "nothing");
    EXPECT_TRUE(DirectoryExists(scratch / L"x\\y\\z"));
}

TEST(DirectoryCreateRecursively, FailsBelowAFile)
{
    const scratch_directory scratch;
    test::write_file(scratch / L"file", "x");
    EXPECT_EQ(recursive_error_of(scratch / L"file\\below"), cannot_create);
    // "Already exists" is accepted for every level, the last one included.
    EXPECT_EQ(recursive_error_of(scratch / L"file"), "nothing");
    EXPECT_FALSE(DirectoryExists(scratch / L"file"));
}

TEST(DirectoryCreateRecursively, AcceptsPathsBeyondItsInlineBuffer)
{
    const scratch_directory scratch;
    std::wstring path = L"\\" + std::wstring(40, L'\\');
    for (int level = 0; level < 12; ++level)
        path += std::wstring(30, L'\\') + L"l";
    ASSERT_GT(path.size(), std::size_t{MAX_PATH});
    EXPECT_EQ(recursive_error_of(scratch.path() + path), "nothing");
    EXPECT_TRUE(DirectoryExists(scratch / L"l\\l\\l\\l\\l\\l\\l\\l\\l\\l\\l\\l"));
}

TEST(CreateMissingDirectories, CreatesWithEitherSeparator)
{
    const scratch_directory scratch;
    EXPECT_FALSE(create_missing_directories(scratch / L"a/b\\c//d\\\\e\\"));
    EXPECT_TRUE(DirectoryExists(scratch / L"a\\b\\c\\d\\e"));
    EXPECT_FALSE(create_missing_directories(scratch / L"a"));
}

TEST(CreateMissingDirectories, ReportsTheObstacle)
{
    const scratch_directory scratch;
    test::write_file(scratch / L"file", "x");
    EXPECT_EQ(create_missing_directories(scratch / L"file").value(), ERROR_DIRECTORY);
    EXPECT_TRUE(create_missing_directories(scratch / L"file\\below"));
    EXPECT_TRUE(create_missing_directories(scratch / L"bad?name\\below"));
    EXPECT_TRUE(create_missing_directories(L""));
    EXPECT_TRUE(create_missing_directories(L"\\\\"));
}

} // namespace
} // namespace quill
