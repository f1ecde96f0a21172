// The removal of a download folder while other programs act on it.
#include "diagnose/download_folders.h"
#include "tests/support/faults/replaced_import.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace quill::test {
namespace {

constexpr unsigned days = 30;

class DownloadRemoval : public testing::Test
{
protected:
    DownloadRemoval()
    {
        self_ = this;
        CreateDirectoryW(temp_.c_str(), nullptr);
        CreateDirectoryW(download_.c_str(), nullptr);
        EXPECT_TRUE(write_file(download_ + L"\\a.pdf", "12345"));
        for (const std::wstring& path : {download_ + L"\\a.pdf", download_})
            age(path);
    }

    static void age(const std::wstring& path)
    {
        const HANDLE entry = CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 7, nullptr, OPEN_EXISTING,
                                         FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        const FILETIME old{0, 0x01C00000}; // of the year 2000
        EXPECT_TRUE(SetFileTime(entry, &old, &old, &old));
        CloseHandle(entry);
    }

    diagnose::removal remove()
    {
        diagnose::removal total;
        diagnose::remove_downloads(
            temp_, days, [&](const std::wstring& line) { lines_.push_back(line); }, total);
        return total;
    }

    // Called when an entry has been examined and is about to be deleted.
    static BOOL WINAPI set_information(HANDLE file, FILE_INFO_BY_HANDLE_CLASS what, void* data, DWORD size)
    {
        const std::wstring elsewhere = self_->temp_ + L"\\elsewhere";
        self_->errors_.push_back(
            MoveFileExW(self_->download_.c_str(), elsewhere.c_str(), 0) ? ERROR_SUCCESS : GetLastError());
        return self_->replaced_.original()(file, what, data, size);
    }

    static DownloadRemoval* self_;
    scratch_directory folder_;
    std::wstring temp_ = folder_ / L"temp";
    std::wstring download_ = temp_ + L"\\qll0";
    std::vector<std::wstring> lines_;
    std::vector<DWORD> errors_;
    replaced_import<decltype(SetFileInformationByHandle)> replaced_{"SetFileInformationByHandle",
                                                                    set_information};
};

DownloadRemoval* DownloadRemoval::self_ = nullptr;

// Otherwise another folder, or a link, could take its place after the test.
TEST_F(DownloadRemoval, KeepsOthersFromMovingTheFolderMeanwhile)
{
    const diagnose::removal total = remove();
    EXPECT_EQ(errors_, std::vector<DWORD>(2, ERROR_SHARING_VIOLATION));
    EXPECT_EQ(total.folders, 1u);
    EXPECT_EQ(total.files, 1u);
    EXPECT_TRUE(lines_.empty());
    EXPECT_EQ(GetFileAttributesW(download_.c_str()), INVALID_FILE_ATTRIBUTES);
}

} // namespace
} // namespace quill::test
