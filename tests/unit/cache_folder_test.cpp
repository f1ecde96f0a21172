#include "retrieval/cache_folder.h"

#include <gtest/gtest.h>

namespace quill {
namespace {

TEST(CacheFileName, IsTheUrlsName)
{
    EXPECT_EQ(CacheFileName(L"http://h/docs/My%20File.pdf#page=3"), L"My File.pdf");
    EXPECT_EQ(CacheFileName(L"http://h/get.aspx?id=7&file=c:\\x\\report.PDF"), L"report.PDF");
    EXPECT_EQ(CacheFileName(L"http://h/%C3%A9t%C3%A9.pdf"), L"\u00e9t\u00e9.pdf");
    // Unescaped first, taken apart then.
    EXPECT_EQ(CacheFileName(L"http://h/a%2Fb.pdf"), L"b.pdf");
}

TEST(CacheFileName, IsUntitledWithoutAName)
{
    EXPECT_EQ(CacheFileName(L"http://h/"), L"Untitled.pdf");
    EXPECT_EQ(CacheFileName(L"http://h/get.aspx?id=7"), L"Untitled.pdf");
    EXPECT_EQ(CacheFileName(L"http://h/x?y=/z.pdf"), L"Untitled.pdf");
    EXPECT_EQ(CacheFileName(nullptr), L"Untitled.pdf");
}

TEST(CacheFileName, IsUntitledFromTwoHundredAndSixtyUnits)
{
    const std::wstring fits = std::wstring(255, L'n') + L".pdf";
    EXPECT_EQ(CacheFileName((L"http://h/" + fits).c_str()), fits);
    EXPECT_EQ(CacheFileName((L"http://h/n" + fits).c_str()), L"Untitled.pdf");
    EXPECT_EQ(CacheFileName((L"http://h/nn" + fits).c_str()), L"Untitled.pdf");
}

TEST(WithSeparator, AddsOneWhereItIsMissing)
{
    EXPECT_EQ(WithSeparator(L"C:\\temp"), L"C:\\temp\\");
    EXPECT_EQ(WithSeparator(L"C:\\temp\\"), L"C:\\temp\\");
    EXPECT_EQ(WithSeparator(L"C:/temp/"), L"C:/temp/");
    EXPECT_EQ(WithSeparator(L""), L"");
}

TEST(CacheFilePath, AlwaysEndsInPdf)
{
    EXPECT_EQ(CacheFilePath(L"C:\\t\\qll0\\", L"a.pdf"), L"C:\\t\\qll0\\a.pdf");
    EXPECT_EQ(CacheFilePath(L"C:\\t\\qll0\\", L"a.ppdf"), L"C:\\t\\qll0\\a.pdf");
    EXPECT_EQ(CacheFilePath(L"C:\\t\\qll0\\", L"a.b.aspx"), L"C:\\t\\qll0\\a.b.pdf");
    EXPECT_EQ(CacheFilePath(L"C:\\t\\qll0\\", L"a"), L"C:\\t\\qll0\\a.pdf");
    EXPECT_EQ(CacheFilePath(L"C:\\t\\qll0\\", L".pdf"), L"C:\\t\\qll0\\.pdf");
    EXPECT_EQ(CacheFilePath(L"C:\\t\\qll0\\", L"pdf"), L"C:\\t\\qll0\\pdf.pdf");
}

TEST(CacheFilePath, FitsIntoAPathBuffer)
{
    const std::wstring folder = L"C:\\" + std::wstring(91, L'f') + L"\\qll0\\";
    ASSERT_EQ(folder.size(), 100u);
    EXPECT_EQ(CacheFilePath(folder, std::wstring(155, L'n') + L".pdf").size(), 259u);
    EXPECT_EQ(CacheFilePath(folder, std::wstring(156, L'n') + L".p"), L"");
    EXPECT_EQ(CacheFilePath(folder, std::wstring(255, L'n') + L".pdf"), L"");
}

TEST(CacheFilePath, StaysInItsFolder)
{
    EXPECT_EQ(CacheFilePath(L"C:\\t\\qll0\\", L"..\\..\\boot.pdf"), L"C:\\t\\qll0\\Untitled.pdf");
    EXPECT_EQ(CacheFilePath(L"C:\\t\\qll0\\", L"a\\..\\..\\boot.pdf"), L"C:\\t\\qll0\\Untitled.pdf");
    EXPECT_EQ(CacheFilePath(L"C:\\t\\qll0\\", L"..\\qll00\\boot.pdf"), L"C:\\t\\qll0\\Untitled.pdf");
    EXPECT_EQ(CacheFilePath(L"C:\\t\\qll0\\", L"a\\..\\b.pdf"), L"C:\\t\\qll0\\a\\..\\b.pdf");
    EXPECT_EQ(CacheFilePath(L"C:\\t\\qll0\\", L"...pdf"), L"C:\\t\\qll0\\...pdf");
}

} // namespace
} // namespace quill
