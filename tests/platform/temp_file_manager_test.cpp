// The temporary folder, with real folders. Only the integrity level is set by the test.
#include "platform/file_system.h"
#include "platform/temp_file_manager.h"
#include "platform/text.h"
#include "platform/unique_com_memory.h"
#include "tests/support/process_resources.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <shlobj.h>

#include <filesystem>
#include <vector>

namespace quill {
namespace {

using test::environment_scope;
using test::process_resources;
using test::scratch_directory;
using testing::ElementsAre;
using testing::IsEmpty;

bool low_integrity(HANDLE process)
{
    EXPECT_EQ(process, GetCurrentProcess());
    return true;
}

bool medium_integrity(HANDLE)
{
    return false;
}

struct TempFileManager : testing::Test
{
    std::vector<std::string> reports;
    temp_file_manager::error_report report = [this](const char* line) { reports.push_back(line); };
    temp_file_manager manager{report, medium_integrity};
    temp_file_manager low_manager{report, low_integrity};
    scratch_directory scratch;
    environment_scope variable{L"QUILL_TMP_FOLDER", std::nullopt};

    static void set_variable(const std::wstring& value)
    {
        SetEnvironmentVariableW(L"QUILL_TMP_FOLDER", value.c_str());
    }

    std::string failure_line(const std::wstring& path, DWORD error) const
    {
        return "temp_file_manager: create_directories of " + to_utf8(path) + " failed (" +
               std::system_category().message(static_cast<int>(error)) + ")";
    }
};

TEST_F(TempFileManager, UsesTheFolderOfTheVariable)
{
    set_variable(scratch.path());
    std::wstring path = L"before";
    EXPECT_TRUE(manager.temp_directory(path));
    EXPECT_EQ(path, scratch.path());
    EXPECT_THAT(reports, IsEmpty());
}

TEST_F(TempFileManager, UsesTheVariableUnchanged)
{
    for (const std::wstring& value :
         {scratch.path() + L"\\", scratch.path() + L"\\.", L"relative" + scratch.path()}) {
        set_variable(value);
        wchar_t buffer[MAX_PATH] = {};
        EXPECT_EQ(manager.get_temp_folder(MAX_PATH, buffer, 0), value.size());
        EXPECT_EQ(buffer, value);
    }
}

TEST_F(TempFileManager, ReturnsAMissingFolderOfTheVariable)
{
    const std::wstring missing = scratch / L"a\\b";
    set_variable(missing);
    std::wstring path;
    EXPECT_FALSE(manager.temp_directory(path));
    EXPECT_EQ(path, missing);
    for (const int create : {0, 2, -1}) {
        wchar_t buffer[MAX_PATH] = {};
        EXPECT_EQ(manager.get_temp_folder(MAX_PATH, buffer, create), missing.size());
        EXPECT_EQ(buffer, missing);
        EXPECT_FALSE(DirectoryExists(scratch / L"a"));
    }
    EXPECT_THAT(reports, IsEmpty());
}

TEST_F(TempFileManager, CreatesAMissingFolderWhenAskedTo)
{
    const std::wstring missing = scratch / L"a\\b";
    set_variable(missing);
    wchar_t buffer[MAX_PATH] = {};
    EXPECT_EQ(manager.get_temp_folder(MAX_PATH, buffer, 1), missing.size());
    EXPECT_EQ(buffer, missing);
    EXPECT_TRUE(DirectoryExists(missing));
    EXPECT_THAT(reports, IsEmpty());
}

TEST_F(TempFileManager, ReportsAFolderThatCannotBeCreated)
{
    const std::wstring file = scratch / L"file";
    test::write_file(file, "x");
    set_variable(file);
    wchar_t buffer[MAX_PATH] = L"before";
    EXPECT_EQ(manager.get_temp_folder(MAX_PATH, buffer, 1), 0u);
    EXPECT_STREQ(buffer, L"before");
    EXPECT_THAT(reports, ElementsAre(failure_line(file, ERROR_DIRECTORY)));
    // The path is returned even if the folder is not to be created.
    EXPECT_EQ(manager.get_temp_folder(MAX_PATH, buffer, 0), file.size());
}

TEST_F(TempFileManager, TruncatesThePathToTheBufferAndReturnsItsFullLength)
{
    set_variable(scratch.path());
    wchar_t buffer[8];
    std::fill(std::begin(buffer), std::end(buffer), L'#');
    EXPECT_EQ(manager.get_temp_folder(5, buffer, 0), scratch.path().size());
    EXPECT_EQ(std::wstring(buffer), scratch.path().substr(0, 4));
    EXPECT_EQ(buffer[5], L'#');

    buffer[0] = L'#';
    EXPECT_EQ(manager.get_temp_folder(1, buffer, 0), scratch.path().size());
    EXPECT_EQ(buffer[0], L'\0');

    buffer[0] = L'#';
    EXPECT_EQ(manager.get_temp_folder(0, buffer, 0), scratch.path().size());
    EXPECT_EQ(buffer[0], L'#');
    EXPECT_EQ(manager.get_temp_folder(260, nullptr, 0), scratch.path().size());

    std::wstring exact(scratch.path().size() + 1, L'#');
    EXPECT_EQ(manager.get_temp_folder(exact.size(), exact.data(), 0), scratch.path().size());
    EXPECT_EQ(exact.c_str(), scratch.path());
}

TEST_F(TempFileManager, UsesTheSystemFolderWithoutTheVariable)
{
    wchar_t system_folder[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH + 1, system_folder);
    std::wstring path;
    EXPECT_TRUE(manager.temp_directory(path));
    EXPECT_EQ(path, system_folder);
    set_variable(L"");
    path.clear();
    EXPECT_TRUE(manager.temp_directory(path));
    EXPECT_EQ(path, system_folder);
}

TEST_F(TempFileManager, ThrowsWhenTheSystemsFolderIsMissing)
{
    const environment_scope temp(L"TMP", scratch / L"none");
    std::wstring path;
    try {
        manager.temp_directory(path);
        ADD_FAILURE() << path.size();
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("temp_directory_path"));
    }
    EXPECT_THROW(manager.get_temp_folder(0, nullptr, 1), std::filesystem::filesystem_error);
    EXPECT_FALSE(DirectoryExists(scratch / L"none"));
}

TEST_F(TempFileManager, CachesNothing)
{
    set_variable(scratch.path());
    std::wstring path;
    low_manager.temp_directory(path);
    const auto before = process_resources::now();
    temp_file_manager real(report);
    real.temp_directory(path);
    low_manager.temp_directory(path);
    EXPECT_EQ(process_resources::now(), before);
}

// All processes share the LocalLow folder: it is renamed for the test and restored afterwards.
struct LowIntegrity : TempFileManager
{
    test::cross_process_lock lock{L"local-low"};
    std::wstring local_low = [] {
        unique_com_string folder;
        SHGetKnownFolderPath(FOLDERID_LocalAppDataLow, KF_FLAG_CREATE, nullptr, folder.put());
        return std::wstring(folder ? folder.get() : L"");
    }();
    std::wstring aside = local_low + L".aside";
    std::wstring temp = local_low + L"\\Temp";

    void SetUp() override
    {
        ASSERT_NE(local_low, L"");
        ASSERT_TRUE(MoveFileW(local_low.c_str(), aside.c_str()));
    }

    void TearDown() override
    {
        test::remove_path(local_low);
        EXPECT_TRUE(MoveFileW(aside.c_str(), local_low.c_str()));
    }
};

TEST_F(LowIntegrity, UsesLocalLowAndCreatesItsTempOnFirstUse)
{
    CreateDirectoryW(local_low.c_str(), nullptr);
    set_variable(scratch.path());
    std::wstring path;
    EXPECT_TRUE(low_manager.temp_directory(path));
    EXPECT_EQ(path, temp);
    EXPECT_TRUE(DirectoryExists(temp));
    wchar_t buffer[MAX_PATH] = {};
    EXPECT_EQ(low_manager.get_temp_folder(MAX_PATH, buffer, 0), temp.size());
    EXPECT_EQ(buffer, temp);
    EXPECT_THAT(reports, IsEmpty());
}

TEST_F(LowIntegrity, DoesNotAcceptAFileNamedTemp)
{
    CreateDirectoryW(local_low.c_str(), nullptr);
    test::write_file(temp, "x");
    std::wstring path;
    EXPECT_FALSE(low_manager.temp_directory(path));
    EXPECT_EQ(path, temp);
    EXPECT_THAT(reports, IsEmpty());
    EXPECT_EQ(low_manager.get_temp_folder(0, nullptr, 1), 0u);
    EXPECT_THAT(reports, ElementsAre(failure_line(temp, ERROR_DIRECTORY)));
}

TEST_F(LowIntegrity, ReportsATempThatCannotBeCreated)
{
    test::write_file(local_low, "x");
    std::wstring path = L"before";
    EXPECT_FALSE(low_manager.temp_directory(path));
    EXPECT_EQ(path, temp);
    EXPECT_THAT(reports, ElementsAre(failure_line(temp, ERROR_DIRECTORY)));
    // If it is to be created, the manager tries a second time.
    EXPECT_EQ(low_manager.get_temp_folder(0, nullptr, 0), temp.size());
    reports.clear();
    EXPECT_EQ(low_manager.get_temp_folder(0, nullptr, 1), 0u);
    EXPECT_THAT(reports,
                ElementsAre(failure_line(temp, ERROR_DIRECTORY), failure_line(temp, ERROR_DIRECTORY)));
}

TEST_F(LowIntegrity, ReportsAMissingLocalLow)
{
    std::wstring path = L"before";
    EXPECT_FALSE(low_manager.temp_directory(path));
    EXPECT_EQ(path, L"before");
    EXPECT_THAT(reports, ElementsAre("temp_file_manager: local_low temp_path failed"));
    EXPECT_EQ(low_manager.get_temp_folder(0, nullptr, 1), 0u);
    EXPECT_FALSE(DirectoryExists(local_low));
}

TEST(IntegrityLevel, LowAndBelowAreLow)
{
    EXPECT_TRUE(is_low_integrity_level(0));
    EXPECT_TRUE(is_low_integrity_level(0x0fff));
    EXPECT_TRUE(is_low_integrity_level(0x1000));
    EXPECT_FALSE(is_low_integrity_level(0x1001));
    EXPECT_FALSE(is_low_integrity_level(0x2000));
    EXPECT_FALSE(is_low_integrity_level(0x4000));
}

TEST(IntegrityLevel, AnOrdinaryProcessIsNotLow)
{
    const auto before = process_resources::now();
    EXPECT_FALSE(is_low_integrity_process(GetCurrentProcess()));
    EXPECT_EQ(process_resources::now(), before);
}

TEST(IntegrityLevel, IsLowWhenItCannotBeRead)
{
    const auto before = process_resources::now();
    EXPECT_TRUE(is_low_integrity_process(nullptr));
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_TRUE(is_low_integrity_process(event));
    CloseHandle(event);
    EXPECT_EQ(process_resources::now(), before);
}

} // namespace
} // namespace quill
