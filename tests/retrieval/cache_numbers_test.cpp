// How a cache folder gets its number: the system calls for it, races, and folders that cannot be listed.
#include "platform/library_function.h"
#include "retrieval/download/cache_folder.h"
#include "tests/support/faults/replaced_import.h"
#include "tests/support/scopes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace quill::test {
namespace {

template <class Function>
Function* system_function(const char* name)
{
    return library_function<Function*>(GetModuleHandleW(L"kernel32.dll"), name);
}

struct system_script
{
    int questions = 0;
    int listings = 0;
    int creations = 0;
    int rivals = 0;                // creations before which another tab creates the folder
    int entries_until_failure = 0; // of the reading
};
system_script script;

DWORD WINAPI counted_question(LPCWSTR path)
{
    ++script.questions;
    return system_function<decltype(GetFileAttributesW)>("GetFileAttributesW")(path);
}

HANDLE WINAPI counted_listing(LPCWSTR pattern, FINDEX_INFO_LEVELS level, LPVOID found,
                              FINDEX_SEARCH_OPS search, LPVOID filter, DWORD flags)
{
    ++script.listings;
    return system_function<decltype(FindFirstFileExW)>("FindFirstFileExW")(pattern, level, found, search,
                                                                           filter, flags);
}

BOOL WINAPI counted_creation(LPCWSTR path, LPSECURITY_ATTRIBUTES security)
{
    ++script.creations;
    auto* const create = system_function<decltype(CreateDirectoryW)>("CreateDirectoryW");
    if (script.rivals > 0) {
        --script.rivals;
        EXPECT_TRUE(create(path, nullptr));
    }
    return create(path, security);
}

BOOL WINAPI creation_where_everything_exists(LPCWSTR, LPSECURITY_ATTRIBUTES)
{
    SetLastError(ERROR_ALREADY_EXISTS);
    return FALSE;
}

HANDLE WINAPI refused_listing(LPCWSTR, FINDEX_INFO_LEVELS, LPVOID, FINDEX_SEARCH_OPS, LPVOID, DWORD)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI interrupted_listing(HANDLE search, LPWIN32_FIND_DATAW entry)
{
    if (script.entries_until_failure-- > 0)
        return system_function<decltype(FindNextFileW)>("FindNextFileW")(search, entry);
    SetLastError(ERROR_UNEXP_NET_ERR);
    return FALSE;
}

class CacheFolderNumber : public testing::Test
{
protected:
    CacheFolderNumber() { script = {}; }

    void make_folders(int count) const
    {
        for (int number = 0; number < count; ++number)
            make_folder(L"qll" + std::to_wstring(number));
    }
    void make_folder(const std::wstring& name) const
    {
        EXPECT_TRUE(CreateDirectoryW((temporary_ / name).c_str(), nullptr));
    }
    // The name of the next cache folder; empty without one.
    std::wstring next() const
    {
        const std::wstring folder = create_cache_folder(temporary_.path() + L"\\");
        return folder.empty() ? folder : folder.substr(temporary_.path().size() + 1);
    }

    scratch_directory temporary_;
};

TEST_F(CacheFolderNumber, IsFoundWithoutProbingEachFolder)
{
    make_folders(100);
    const replaced_import questions("GetFileAttributesW", counted_question);
    const replaced_import listings("FindFirstFileExW", counted_listing);
    const replaced_import creations("CreateDirectoryW", counted_creation);
    EXPECT_EQ(next(), L"qll100\\");
    EXPECT_EQ(script.questions, 0);
    EXPECT_EQ(script.listings, 1);
    EXPECT_EQ(script.creations, 1);
}

TEST_F(CacheFolderNumber, FillsTheFirstGapAmongFoldersAndFiles)
{
    for (const wchar_t* const name : {L"qll0", L"QLL2", L"qll4"})
        make_folder(name);
    ASSERT_TRUE(write_file(temporary_ / L"qll1", "a file"));
    ASSERT_TRUE(write_file(temporary_ / L"QLL5", "a file"));
    EXPECT_EQ(next(), L"qll3\\");
    EXPECT_EQ(next(), L"qll6\\");
}

TEST_F(CacheFolderNumber, IgnoresOtherNames)
{
    for (const wchar_t* const name :
         {L"qll", L"qll007", L"qll1x", L"qll2.pdf", L"qll99999999999", L"qll4294967296", L"quill0", L"0"})
        make_folder(name);
    EXPECT_EQ(next(), L"qll0\\");
    EXPECT_EQ(next(), L"qll1\\");
    EXPECT_EQ(next(), L"qll2\\");
}

TEST_F(CacheFolderNumber, IsTheNextFreeOneAfterALostRace)
{
    make_folder(L"qll0");
    make_folder(L"qll2");
    const replaced_import creations("CreateDirectoryW", counted_creation);
    script.rivals = 1;
    EXPECT_EQ(next(), L"qll3\\");
    EXPECT_EQ(script.creations, 2);
}

TEST_F(CacheFolderNumber, IsFoundAmongHundredsOfTabsThatStartAtOnce)
{
    const replaced_import creations("CreateDirectoryW", counted_creation);
    script.rivals = 300;
    EXPECT_EQ(next(), L"qll300\\");
}

TEST_F(CacheFolderNumber, FailsWhenEveryNameIsReportedAsTaken)
{
    const replaced_import creations("CreateDirectoryW", creation_where_everything_exists);
    EXPECT_EQ(next(), L"");
}

TEST_F(CacheFolderNumber, IsProbedWhenTheFolderCannotBeListed)
{
    make_folder(L"qll0");
    ASSERT_TRUE(write_file(temporary_ / L"qll1", "a file"));
    const replaced_import listing("FindFirstFileExW", refused_listing);
    EXPECT_EQ(next(), L"qll2\\");
    EXPECT_EQ(read_file(temporary_ / L"qll1"), "a file");
}

TEST_F(CacheFolderNumber, IsProbedAfterAnInterruptedListing)
{
    make_folders(20);
    const replaced_import listing("FindNextFileW", interrupted_listing);
    const replaced_import creations("CreateDirectoryW", counted_creation);
    script.entries_until_failure = 5;
    EXPECT_EQ(next(), L"qll20\\");
    EXPECT_EQ(script.creations, 1);
}

TEST_F(CacheFolderNumber, IsADifferentOneForEachThread)
{
    constexpr std::size_t threads = 8;
    constexpr std::size_t folders = 25; // of each thread
    std::vector<std::vector<std::wstring>> made(threads);
    {
        std::vector<std::jthread> running;
        for (auto& each : made) {
            running.emplace_back([this, &each] {
                for (std::size_t i = 0; i < folders; ++i)
                    each.push_back(next());
            });
        }
    }
    std::vector<std::wstring> all;
    for (const auto& each : made)
        all.insert(all.end(), each.begin(), each.end());
    std::vector<std::wstring> expected;
    for (std::size_t number = 0; number < threads * folders; ++number)
        expected.push_back(L"qll" + std::to_wstring(number) + L"\\");
    std::sort(all.begin(), all.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(all, expected);
}

} // namespace
} // namespace quill::test
