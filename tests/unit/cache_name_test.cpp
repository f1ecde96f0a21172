#include "retrieval/cache_name.h"

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

} // namespace
} // namespace quill
