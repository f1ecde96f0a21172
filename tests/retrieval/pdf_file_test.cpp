// The PDF check on real files.
#include "retrieval/file/pdf_check.h"
#include "tests/support/faults/replaced_import.h"
#include "tests/support/is_wine.h"
#include "tests/support/listening_pipe.h"
#include "tests/support/log_capture.h"
#include "tests/support/process_resources.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <vector>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PdfFile : public testing::Test
{
protected:
    int check(const std::string& content)
    {
        EXPECT_TRUE(write_file(path_, content));
        return isPDF(path_.c_str());
    }

    scratch_directory folder_;
    std::wstring path_ = folder_ / L"a.pdf";
    log_capture log_;
};

TEST_F(PdfFile, IsAccepted)
{
    EXPECT_EQ(check("%PDF-1.7\n"), 1);
    EXPECT_EQ(check(std::string(500, 'j') + "%PDF-1.4"), 1);
    EXPECT_EQ(check(std::string(1017, 'j') + "%PDF-1.4 and much more" + std::string(100'000, 'x')), 1);
    EXPECT_THAT(log_.lines(), ElementsAre("debug: ACTIVEDOC isPDF [TRUE]", "debug: ACTIVEDOC isPDF [TRUE]",
                                          "debug: ACTIVEDOC isPDF [TRUE]"));
}

TEST_F(PdfFile, MayBeProtected)
{
    EXPECT_EQ(check("xyz.pfile and no header"), 1);
    EXPECT_THAT(log_.lines(), ElementsAre("debug: ACTIVEDOC isPDF [TRUE] - ppdf file"));
}

TEST_F(PdfFile, IsRefused)
{
    EXPECT_EQ(check("<html><body>An error</body></html>"), 0);
    EXPECT_EQ(check(""), 0);
    EXPECT_EQ(check("%PDF-1.7"), 0);
    EXPECT_EQ(check(std::string(1024, 'j') + "%PDF-1.4"), 0);
    EXPECT_EQ(check(std::string(1018, 'j') + "%PDF-1.4"), 0);
    EXPECT_EQ(log_.lines(), std::vector<std::string>(5, "debug: ACTIVEDOC isPDF [FALSE]"));
}

// The browser may rely on the system's dialogs; the check must not show any.
TEST_F(PdfFile, RestoresTheErrorModeOfTheThread)
{
    for (const DWORD mode : {DWORD{0}, DWORD{SEM_NOOPENFILEERRORBOX}}) {
        DWORD before = 0;
        ASSERT_TRUE(SetThreadErrorMode(mode, &before));
        EXPECT_EQ(check("%PDF-1.7\n"), 1);
        EXPECT_EQ(isPDF(L"C:\\missing\\a.pdf"), 0);
        EXPECT_EQ(GetThreadErrorMode(), mode);
        SetThreadErrorMode(before, nullptr);
    }
}

TEST_F(PdfFile, MayBeMissing)
{
    EXPECT_EQ(isPDF(path_.c_str()), 0);
    EXPECT_EQ(isPDF(L""), 0);
    EXPECT_EQ(isPDF(nullptr), 0);
    EXPECT_EQ(log_.lines(), std::vector<std::string>(3, "debug: ACTIVEDOC isPDF [FALSE] MISSING FILE"));
}

int opened_files = 0;

HANDLE WINAPI counted_opening(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE)
{
    ++opened_files;
    SetLastError(ERROR_FILE_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
}

// A page chooses the path; opening or reading a device may block forever.
TEST_F(PdfFile, IsMissingWhenItIsADevice)
{
    const wchar_t* const devices[] = {L"NUL",      L"\\\\.\\NUL",     L"C:\\nul.pdf", L"CON",
                                      L"CONIN$",   L"\\\\.\\CON",     L"COM1",        L"\\\\.\\COM1",
                                      L"//./COM1", L"\\\\.\\C:",      L"\\\\?\\COM1", L"\\??\\NUL",
                                      L"LPT1.pdf", L"\\\\.\\mailslot"};
    opened_files = 0;
    const replaced_import openings("CreateFileW", counted_opening);
    for (const wchar_t* device : devices) {
        log_.clear();
        EXPECT_EQ(isPDF(device), 0);
        EXPECT_THAT(log_.lines(), ElementsAre("debug: ACTIVEDOC isPDF [FALSE] MISSING FILE"))
            << testing::PrintToString(device);
        EXPECT_EQ(opened_files, 0) << testing::PrintToString(device);
    }
    isPDF(path_.c_str());
    EXPECT_EQ(opened_files, 1) << "the opening of a file is counted";
}

TEST_F(PdfFile, IsMissingWhenItIsAPipeWhichIsNotConnected)
{
    const listening_pipe pipe;
    for (const wchar_t* start :
         {L"\\\\.\\pipe\\", L"//./PIPE/", L"\\\\?\\pipe\\", L"\\\\.\\C:\\..\\pipe\\",
          L"\\\\localhost\\pipe\\", L"\\\\127.0.0.1\\PIPE\\", L"\\\\?\\UNC\\localhost\\pipe\\"}) {
        log_.clear();
        EXPECT_EQ(isPDF((start + pipe.name()).c_str()), 0);
        EXPECT_THAT(log_.lines(), ElementsAre("debug: ACTIVEDOC isPDF [FALSE] MISSING FILE"))
            << testing::PrintToString(start);
        EXPECT_FALSE(pipe.was_opened()) << testing::PrintToString(start);
    }
}

// A device whose path looks like that of a file.
TEST_F(PdfFile, IsMissingWhenWhatWasOpenedIsNoDiskFile)
{
    const std::vector<const wchar_t*> unix_devices = {L"Z:\\dev\\zero", L"Z:\\dev\\null", L"Z:\\dev\\full"};
    const std::vector<const wchar_t*> windows_devices = {L"\\\\?\\GLOBALROOT\\Device\\Null"};
    for (const wchar_t* path : is_wine() ? unix_devices : windows_devices) {
        log_.clear();
        EXPECT_EQ(isPDF(path), 0);
        EXPECT_THAT(log_.lines(), ElementsAre("debug: ACTIVEDOC isPDF [FALSE] MISSING FILE"));
    }
}

TEST_F(PdfFile, MayBeNamedWithThePrefixForLongPaths)
{
    ASSERT_TRUE(write_file(path_, "%PDF-1.7\n"));
    EXPECT_EQ(isPDF((L"\\\\?\\" + path_).c_str()), 1);
    EXPECT_EQ(isPDF((L"\\\\.\\" + path_).c_str()), 1);
}

TEST_F(PdfFile, IsRefusedSilentlyWhenItCannotBeOpened)
{
    ASSERT_TRUE(write_file(path_, "%PDF-1.7\n"));
    const HANDLE writer =
        CreateFileW(path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(isPDF(path_.c_str()), 0);
    CloseHandle(writer);
    const HANDLE hog = CreateFileW(path_.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(isPDF(path_.c_str()), 0);
    CloseHandle(hog);
    EXPECT_EQ(isPDF(folder_.path().c_str()), 0); // also for a folder
    EXPECT_THAT(log_.lines(), IsEmpty());
    const HANDLE reader =
        CreateFileW(path_.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(isPDF(path_.c_str()), 1);
    CloseHandle(reader);
}

TEST_F(PdfFile, IsNotModified)
{
    check("%PDF-1.7\n");
    EXPECT_EQ(read_file(path_), "%PDF-1.7\n");
    const auto before = process_resources::now();
    for (int i = 0; i < 10; ++i)
        isPDF(path_.c_str());
    EXPECT_EQ(process_resources::now(), before);
}

} // namespace
} // namespace quill::test
