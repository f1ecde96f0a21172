#include "retrieval/download/cache_folder.h"

#include <gtest/gtest.h>

namespace quill {
namespace {

TEST(CacheFileName, IsTheUrlsName)
{
    EXPECT_EQ(cache_file_name(L"http://h/docs/My%20File.pdf#page=3"), L"My File.pdf");
    EXPECT_EQ(cache_file_name(L"http://h/get.aspx?id=7&file=c:\\x\\report.PDF"), L"report.PDF");
    EXPECT_EQ(cache_file_name(L"http://h/%C3%A9t%C3%A9.pdf"), L"\u00e9t\u00e9.pdf");
    // Unescaped first, then split.
    EXPECT_EQ(cache_file_name(L"http://h/a%2Fb.pdf"), L"b.pdf");
}

TEST(CacheFileName, IsUntitledWithoutAName)
{
    EXPECT_EQ(cache_file_name(L"http://h/"), L"Untitled.pdf");
    EXPECT_EQ(cache_file_name(L"http://h/get.aspx?id=7"), L"Untitled.pdf");
    EXPECT_EQ(cache_file_name(L"http://h/x?y=/z.pdf"), L"Untitled.pdf");
    EXPECT_EQ(cache_file_name(nullptr), L"Untitled.pdf");
}

TEST(CacheFileName, IsUntitledFrom260CodeUnits)
{
    const std::wstring fits = std::wstring(255, L'n') + L".pdf";
    EXPECT_EQ(cache_file_name((L"http://h/" + fits).c_str()), fits);
    EXPECT_EQ(cache_file_name((L"http://h/n" + fits).c_str()), L"Untitled.pdf");
    EXPECT_EQ(cache_file_name((L"http://h/nn" + fits).c_str()), L"Untitled.pdf");
}

TEST(CacheFileName, IsUntitledForANameThatNoFileCanHave)
{
    for (const wchar_t* name :
         {L"10%3A30.pdf", L"docs%5Cfile.pdf", L"..%5C..%5Cboot.pdf", L"%22a%22.pdf", L"a%3Cb.pdf",
          L"a%3Eb.pdf", L"a%7Cb.pdf", L"a%2A.pdf", L"a%3Fb.pdf", L"a%0D%0Ab.pdf", L"a%1F.pdf", L"%01.pdf",
          L"a%09b.pdf", L"a.pdf%3Astream", L"a.pdf%3A%3A$DATA", L"C%3A", L"a.p%7Cdf", L"get.aspx?f=:x.pdf"}) {
        EXPECT_EQ(cache_file_name((std::wstring(L"http://h/") + name).c_str()), L"Untitled.pdf")
            << testing::PrintToString(name);
    }
}

// An escaped zero truncates the URL before the characters that are not permitted.
TEST(CacheFileName, EndsAtAnEscapedZero)
{
    EXPECT_EQ(cache_file_name(L"http://h/a%00b.pdf"), L"a");
    EXPECT_EQ(cache_file_name(L"http://h/a.pdf%00.exe"), L"a.pdf");
    EXPECT_EQ(cache_file_name(L"http://h/%00.pdf"), L"Untitled.pdf");
    EXPECT_EQ(cache_file_name(L"http://h/nul%00.pdf"), L"Untitled.pdf");
    EXPECT_EQ(cache_file_name(L"http://h/x.pdf?a=%00b.pdf"), L"x.pdf");
    EXPECT_EQ(cache_file_name(L"http://h/get.aspx?f=a%00.pdf"), L"Untitled.pdf");
}

TEST(CacheFileName, IsUntitledForADevice)
{
    for (const wchar_t* name :
         {L"NUL", L"NUL.pdf", L"nul.PDF", L"Con.pdf", L"PRN.ppdf", L"aux.tar.pdf", L"com1+.pdf",
          L"COM1%20%20.pdf", L"COM9.pdf", L"com0.pdf", L"LPT3.pdf", L"COM%C2%B9.pdf", L"lpt%C2%B3.pdf",
          L"CONIN$.pdf", L"conout$.pdf", L"NUL%20", L"NUL.", L"get.aspx?file=nul.pdf"}) {
        EXPECT_EQ(cache_file_name((std::wstring(L"http://h/") + name).c_str()), L"Untitled.pdf")
            << testing::PrintToString(name);
    }
}

// A name that ends in a dot or a blank is valid, because ".pdf" is appended to it.
TEST(CacheFileName, KeepsUnusualNamesThatAreValid)
{
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {{L"null.pdf", L"null.pdf"},
                                                               {L"COM10.pdf", L"COM10.pdf"},
                                                               {L"a.nul", L"a.nul"},
                                                               {L"+nul.pdf", L" nul.pdf"},
                                                               {L"a+.pdf", L"a .pdf"},
                                                               {L"a.", L"a."},
                                                               {L"..", L".."},
                                                               {L"%25PATH%25.pdf", L"%PATH%.pdf"},
                                                               {L"a%7F.pdf", L"a\x7f.pdf"},
                                                               {L"%EF%BC%9A.pdf", L"\uff1a.pdf"},
                                                               {L"COM%E2%81%B4.pdf", L"COM\u2074.pdf"},
                                                               {L"nul-1.pdf", L"nul-1.pdf"}};
    for (const auto& [escaped, name] : cases)
        EXPECT_EQ(cache_file_name((std::wstring(L"http://h/") + escaped).c_str()), name);
}

TEST(WithSeparator, AddsOneWhereItIsMissing)
{
    EXPECT_EQ(with_separator(L"C:\\temp"), L"C:\\temp\\");
    EXPECT_EQ(with_separator(L"C:\\temp\\"), L"C:\\temp\\");
    EXPECT_EQ(with_separator(L"C:/temp/"), L"C:/temp/");
    EXPECT_EQ(with_separator(L""), L"");
}

} // namespace
} // namespace quill
