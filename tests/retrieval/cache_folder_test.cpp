#include "retrieval/download/cache_folder.h"

#include <gtest/gtest.h>

namespace quill {
namespace {

TEST(CacheFilePath, AlwaysEndsInPdf)
{
    EXPECT_EQ(cache_file_path(L"C:\\t\\qll0\\", L"a.pdf"), L"C:\\t\\qll0\\a.pdf");
    EXPECT_EQ(cache_file_path(L"C:\\t\\qll0\\", L"a.ppdf"), L"C:\\t\\qll0\\a.pdf");
    EXPECT_EQ(cache_file_path(L"C:\\t\\qll0\\", L"a.b.aspx"), L"C:\\t\\qll0\\a.b.pdf");
    EXPECT_EQ(cache_file_path(L"C:\\t\\qll0\\", L"a"), L"C:\\t\\qll0\\a.pdf");
    EXPECT_EQ(cache_file_path(L"C:\\t\\qll0\\", L".pdf"), L"C:\\t\\qll0\\.pdf");
    EXPECT_EQ(cache_file_path(L"C:\\t\\qll0\\", L"pdf"), L"C:\\t\\qll0\\pdf.pdf");
}

TEST(CacheFilePath, FitsIntoAPathBuffer)
{
    const std::wstring folder = L"C:\\" + std::wstring(91, L'f') + L"\\qll0\\";
    ASSERT_EQ(folder.size(), 100u);
    EXPECT_EQ(cache_file_path(folder, std::wstring(155, L'n') + L".pdf").size(), 259u);
    EXPECT_EQ(cache_file_path(folder, std::wstring(156, L'n') + L".p"), L"");
    EXPECT_EQ(cache_file_path(folder, std::wstring(255, L'n') + L".pdf"), L"");
}

TEST(CacheFilePath, StaysInItsFolder)
{
    EXPECT_EQ(cache_file_path(L"C:\\t\\qll0\\", L"..\\..\\boot.pdf"), L"C:\\t\\qll0\\Untitled.pdf");
    EXPECT_EQ(cache_file_path(L"C:\\t\\qll0\\", L"a\\..\\..\\boot.pdf"), L"C:\\t\\qll0\\Untitled.pdf");
    EXPECT_EQ(cache_file_path(L"C:\\t\\qll0\\", L"..\\qll00\\boot.pdf"), L"C:\\t\\qll0\\Untitled.pdf");
    EXPECT_EQ(cache_file_path(L"C:\\t\\qll0\\", L"a\\..\\b.pdf"), L"C:\\t\\qll0\\a\\..\\b.pdf");
    EXPECT_EQ(cache_file_path(L"C:\\t\\qll0\\", L"...pdf"), L"C:\\t\\qll0\\...pdf");
}

} // namespace
} // namespace quill
