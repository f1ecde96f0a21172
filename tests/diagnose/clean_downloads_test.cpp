// --clean-downloads: what it removes, and everything that it leaves.
#include "platform/temp_file_manager.h"
#include "tests/diagnose/diagnosed_computer.h"

namespace quill::test {
namespace {

constexpr int limit = 30;

bool exists(const std::wstring& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// In a temporary folder of its own, so that other downloads of the session stay.
class CleanDownloads : public testing::Test
{
protected:
    CleanDownloads() { CreateDirectoryW(temp_.c_str(), nullptr); }

    std::wstring path(const std::wstring& name) const { return temp_ + L"\\" + name; }

    static void age(const std::wstring& path, int days)
    {
        const HANDLE entry =
            CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                        OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
        ASSERT_NE(entry, INVALID_HANDLE_VALUE);
        FILETIME now{};
        GetSystemTimeAsFileTime(&now);
        ULARGE_INTEGER time{{now.dwLowDateTime, now.dwHighDateTime}};
        time.QuadPart -= static_cast<ULONGLONG>(days) * 24 * 60 * 60 * 10'000'000;
        const FILETIME old{time.LowPart, time.HighPart};
        EXPECT_TRUE(SetFileTime(entry, &old, &old, &old));
        CloseHandle(entry);
    }

    // A folder as the module leaves it.
    void download(const std::wstring& name, int days, const std::wstring& file = L"document.pdf") const
    {
        CreateDirectoryW(path(name).c_str(), nullptr);
        if (!file.empty()) {
            ASSERT_TRUE(write_file(path(name) + L"\\" + file, "1234567"));
            age(path(name) + L"\\" + file, days);
        }
        age(path(name), days);
    }

    diagnosis clean() const { return run_diagnosis(L"--clean-downloads " + std::to_wstring(limit)); }

    void expect_left(const std::wstring& name, const char* reason) const
    {
        const diagnosis result = clean();
        EXPECT_TRUE(exists(path(name))) << result.output;
        EXPECT_EQ(result.exit_code, 1u) << result.output;
        EXPECT_NE(result.output.find(reason), std::string::npos) << result.output;
        EXPECT_NE(result.output.find("0 folders removed, with 0 files and 0 bytes; 1 older folder left"),
                  std::string::npos)
            << result.output;
    }

    // All have the temporary folder of low integrity in common.
    cross_process_lock lock_{L"downloads"};
    scratch_directory folder_;
    std::wstring temp_ = folder_ / L"temp";
    environment_scope tmp_{L"TMP", temp_};
    environment_scope temp_scope_{L"TEMP", temp_};
    environment_scope variable_{L"QUILL_TMP_FOLDER", std::nullopt};
};

TEST_F(CleanDownloads, RemovesWhatIsOlder)
{
    download(L"qll0", limit + 1);
    download(L"qll17", limit + 300);
    download(L"qll3", limit + 1, L""); // a download that failed
    download(L"qll4", limit - 1);
    const diagnosis result = clean();
    EXPECT_EQ(result.exit_code, 0u) << result.output;
    EXPECT_NE(result.output.find("3 folders removed, with 2 files and 14 bytes; 0 older folders left"),
              std::string::npos)
        << result.output;
    EXPECT_FALSE(exists(path(L"qll0")));
    EXPECT_FALSE(exists(path(L"qll17")));
    EXPECT_FALSE(exists(path(L"qll3")));
    EXPECT_TRUE(exists(path(L"qll4\\document.pdf")));
}

TEST_F(CleanDownloads, JudgesTheAgeByTheNewestWrite)
{
    download(L"qll0", limit + 10);
    age(path(L"qll0\\document.pdf"), limit - 1);
    download(L"qll1", limit + 10);
    age(path(L"qll1"), limit - 1);
    EXPECT_EQ(clean().exit_code, 0u);
    EXPECT_TRUE(exists(path(L"qll0\\document.pdf")));
    EXPECT_TRUE(exists(path(L"qll1\\document.pdf")));
}

TEST_F(CleanDownloads, LeavesOtherNames)
{
    const std::vector<std::wstring> names = {
        L"qll",      L"qll01",    L"qll-1", L"qllx",          L"qll1x",
        L"qll 1",    L"xqll1",    L"QLL1",  L"qll2147483647", L"qll99999999999999999999",
        L"qll1.pdf", L"qll\u0661"};
    for (const std::wstring& name : names)
        download(name, limit + 1);
    ASSERT_TRUE(write_file(path(L"qll7"), "a file"));
    age(path(L"qll7"), limit + 1);
    const diagnosis result = clean();
    for (const std::wstring& name : names)
        EXPECT_TRUE(exists(path(name) + L"\\document.pdf")) << name;
    EXPECT_TRUE(exists(path(L"qll7")));
    EXPECT_EQ(result.exit_code, 0u);
    EXPECT_NE(result.output.find("0 folders removed, with 0 files and 0 bytes; 0 older folders left"),
              std::string::npos)
        << result.output;
}

TEST_F(CleanDownloads, LeavesAFolderWithOtherContents)
{
    download(L"qll0", limit + 1);
    ASSERT_TRUE(write_file(path(L"qll0\\notes.txt"), "mine"));
    age(path(L"qll0\\notes.txt"), limit + 1);
    age(path(L"qll0"), limit + 1);
    expect_left(L"qll0\\notes.txt", "it holds 2 files and folders");
    EXPECT_TRUE(exists(path(L"qll0\\document.pdf")));
}

TEST_F(CleanDownloads, LeavesAFolderWithAFileOfAnotherKind)
{
    download(L"qll0", limit + 1, L"document.docx");
    expect_left(L"qll0\\document.docx", "which is no download");
}

TEST_F(CleanDownloads, LeavesAFolderWithAFolder)
{
    CreateDirectoryW(path(L"qll0").c_str(), nullptr);
    CreateDirectoryW(path(L"qll0\\sub.pdf").c_str(), nullptr);
    age(path(L"qll0\\sub.pdf"), limit + 1);
    age(path(L"qll0"), limit + 1);
    expect_left(L"qll0\\sub.pdf", "it holds a folder");
}

TEST_F(CleanDownloads, LeavesAFileThatIsOpen)
{
    download(L"qll0", limit + 1);
    for (const DWORD sharing : {DWORD{0}, DWORD{FILE_SHARE_READ}, DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE},
                                DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE}}) {
        const HANDLE open = CreateFileW(path(L"qll0\\document.pdf").c_str(), GENERIC_READ, sharing, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(open, INVALID_HANDLE_VALUE);
        expect_left(L"qll0\\document.pdf", "in use by another program");
        CloseHandle(open);
    }
    EXPECT_EQ(clean().exit_code, 0u);
    EXPECT_FALSE(exists(path(L"qll0")));
}

TEST_F(CleanDownloads, LeavesAFolderThatCannotBeListed)
{
    download(L"qll0", limit + 1);
    const HANDLE open = CreateFileW(path(L"qll0").c_str(), FILE_LIST_DIRECTORY, 0, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    ASSERT_NE(open, INVALID_HANDLE_VALUE);
    expect_left(L"qll0\\document.pdf", "in use by another program");
    CloseHandle(open);
}

TEST_F(CleanDownloads, FollowsNoLinkInPlaceOfAFolder)
{
    download(L"target", limit + 1);
    make_link(path(L"target"), path(L"qll0"));
    expect_left(L"qll0", "a link");
    EXPECT_TRUE(exists(path(L"target\\document.pdf")));
}

TEST_F(CleanDownloads, FollowsNoLinkInPlaceOfAFile)
{
    download(L"target", limit + 1);
    download(L"qll0", limit + 1, L"");
    make_link(path(L"target\\document.pdf"), path(L"qll0\\link.pdf"));
    age(path(L"qll0"), limit + 1);
    expect_left(L"qll0\\link.pdf", "link.pdf");
    EXPECT_TRUE(exists(path(L"target\\document.pdf")));
}

TEST_F(CleanDownloads, LeavesALinkToNothing)
{
    download(L"target", limit + 1, L"");
    make_link(path(L"target"), path(L"qll0"));
    download(L"qll1", limit + 1);
    ASSERT_TRUE(RemoveDirectoryW(path(L"target").c_str()));
    EXPECT_NE(clean().output.find("1 folder removed, with 1 file and 7 bytes"), std::string::npos);
}

TEST_F(CleanDownloads, CleansTheFolderOfTheVariableToo)
{
    const std::wstring other = folder_ / L"other";
    CreateDirectoryW(other.c_str(), nullptr);
    const environment_scope variable(L"QUILL_TMP_FOLDER", other);
    CreateDirectoryW((other + L"\\qll5").c_str(), nullptr);
    age(other + L"\\qll5", limit + 1);
    download(L"qll0", limit + 1);
    const diagnosis result = clean();
    EXPECT_EQ(result.exit_code, 0u) << result.output;
    EXPECT_FALSE(exists(other + L"\\qll5"));
    EXPECT_FALSE(exists(path(L"qll0")));
    EXPECT_TRUE(exists(other));
}

TEST_F(CleanDownloads, CleansTheFolderOfLowIntegrityToo)
{
    const std::wstring low = local_low_temp_directory();
    const std::wstring old = low + L"\\qll2147483646";
    CreateDirectoryW(low.c_str(), nullptr);
    ASSERT_TRUE(CreateDirectoryW(old.c_str(), nullptr));
    age(old, limit + 1);
    const diagnosis result = clean();
    EXPECT_EQ(result.exit_code, 0u) << result.output;
    EXPECT_FALSE(exists(old));
    remove_path(old);
}

TEST_F(CleanDownloads, SkipsARelativeFolder)
{
    // The current folder of this program and the one of QuillDiagnose.exe are the same.
    const std::wstring old = folder_ / L"relative\\qll0";
    CreateDirectoryW((folder_ / L"relative").c_str(), nullptr);
    ASSERT_TRUE(CreateDirectoryW(old.c_str(), nullptr));
    age(old, limit + 1);
    wchar_t before[MAX_PATH] = {};
    GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_TRUE(SetCurrentDirectoryW(folder_.path().c_str()));
    const environment_scope variable(L"QUILL_TMP_FOLDER", L"relative");
    const diagnosis result = clean();
    EXPECT_TRUE(SetCurrentDirectoryW(before));
    EXPECT_EQ(result.exit_code, 1u);
    EXPECT_NE(result.output.find("\"relative\", which is no full path"), std::string::npos) << result.output;
    EXPECT_TRUE(exists(old));
}

// The system completes TMP with the program's current folder, which is not the one of a tab.
TEST_F(CleanDownloads, SkipsARelativeFolderOfTheSystem)
{
    download(L"qll0", limit + 1);
    wchar_t before[MAX_PATH] = {};
    GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_TRUE(SetCurrentDirectoryW(folder_.path().c_str()));
    const environment_scope tmp(L"TMP", L"temp");
    const diagnosis result = clean();
    EXPECT_TRUE(SetCurrentDirectoryW(before));
    EXPECT_EQ(result.exit_code, 1u);
    EXPECT_NE(result.output.find("skipped: the system has no temporary folder: TMP is \"temp\""),
              std::string::npos)
        << result.output;
    EXPECT_TRUE(exists(path(L"qll0")));
}

TEST_F(CleanDownloads, ReportsThatTheSystemHasNoTemporaryFolder)
{
    for (const wchar_t* name : {L"missing", L"file"}) {
        ASSERT_TRUE(write_file(folder_ / L"file", "x"));
        const environment_scope tmp(L"TMP", folder_ / name);
        const diagnosis result = clean();
        EXPECT_EQ(result.exit_code, 1u) << result.output;
        EXPECT_NE(result.output.find("skipped: the system has no temporary folder: TMP is"),
                  std::string::npos)
            << result.output;
    }
}

TEST_F(CleanDownloads, ReportsATemporaryFolderThatIsAFile)
{
    const std::wstring file = folder_ / L"file";
    ASSERT_TRUE(write_file(file, "x"));
    const environment_scope variable(L"QUILL_TMP_FOLDER", file);
    const diagnosis result = clean();
    EXPECT_EQ(result.exit_code, 1u);
    EXPECT_NE(result.output.find("cannot be listed"), std::string::npos) << result.output;
    EXPECT_EQ(read_file(file).value_or(""), "x");
}

TEST_F(CleanDownloads, RemovesNothingForWrongArguments)
{
    download(L"qll0", 5000);
    for (const wchar_t* days : {L"", L"0", L"-1", L"+5", L" 5", L"5 ", L"007", L"3651", L"1e1", L"0x10",
                                L"99999999999", L"4294967297", L"\u0665"}) {
        EXPECT_EQ(run_diagnosis(L"--clean-downloads \"" + std::wstring(days) + L"\"").exit_code, 2u) << days;
        EXPECT_TRUE(exists(path(L"qll0\\document.pdf"))) << days;
    }
}

} // namespace
} // namespace quill::test
