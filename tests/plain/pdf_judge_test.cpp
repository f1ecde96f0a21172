#include "retrieval/file/pdf_check.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace quill {
namespace {

// The window as it is after reading a file with that content.
pdf_verdict judge(const std::string& content)
{
    std::string window = content.substr(0, pdf_check_bytes);
    const std::size_t bytes_read = window.size();
    window.resize(pdf_check_bytes + 1, '\0');
    return judge_pdf(window, bytes_read);
}

std::string junk(std::size_t size)
{
    return std::string(size, 'j');
}

TEST(JudgePdf, AcceptsAHeaderAnywhereInTheFirstKilobyte)
{
    EXPECT_EQ(judge("%PDF-1.7\n"), pdf_verdict::pdf);
    EXPECT_EQ(judge(junk(500) + "%PDF-1.4"), pdf_verdict::pdf);
    EXPECT_EQ(judge(std::string(500, '\0') + "%PDF-1.4"), pdf_verdict::pdf);
    EXPECT_EQ(judge(junk(1017) + "%PDF-1.4"), pdf_verdict::pdf);
    EXPECT_EQ(judge(junk(1017) + "%PDF-1."), pdf_verdict::pdf);
}

TEST(JudgePdf, RefusesAHeaderThatDoesNotEndInTheFirstKilobyte)
{
    EXPECT_EQ(judge(junk(1018) + "%PDF-1.4"), pdf_verdict::refused);
    EXPECT_EQ(judge(junk(1024) + "%PDF-1.4"), pdf_verdict::refused);
}

TEST(JudgePdf, AcceptsAnyVersionDigit)
{
    EXPECT_EQ(judge("%PDF-1.x "), pdf_verdict::pdf);
    EXPECT_EQ(judge("  %PDF-1."), pdf_verdict::pdf);
    EXPECT_EQ(judge("%PDF-2.0 "), pdf_verdict::refused);
    EXPECT_EQ(judge("%pdf-1.4 "), pdf_verdict::refused);
}

TEST(JudgePdf, RefusesAFileOfLessThanNineBytes)
{
    EXPECT_EQ(judge(""), pdf_verdict::refused);
    EXPECT_EQ(judge("%PDF-1.7"), pdf_verdict::refused);
    EXPECT_EQ(judge("xx.pfile"), pdf_verdict::refused);
    EXPECT_EQ(judge("xxx.pfile"), pdf_verdict::protected_pdf);
}

TEST(JudgePdf, AcceptsTheProtectedFormat)
{
    EXPECT_EQ(judge(".pfile and more"), pdf_verdict::protected_pdf);
    EXPECT_EQ(judge(junk(1018) + ".pfile"), pdf_verdict::protected_pdf);
    EXPECT_EQ(judge(junk(1019) + ".pfile"), pdf_verdict::refused);
    EXPECT_EQ(judge(std::string(9, '\0') + ".pfile"), pdf_verdict::protected_pdf);
}

TEST(JudgePdf, PrefersTheHeaderToTheProtectedFormat)
{
    EXPECT_EQ(judge(".pfile %PDF-1.4"), pdf_verdict::pdf);
}

TEST(JudgePdf, NeedsRoomForTheDigitInsideTheWindow)
{
    EXPECT_EQ(judge_pdf(junk(1018) + "%PDF-1.", 1025), pdf_verdict::refused);
    EXPECT_EQ(judge_pdf(".pfile" + junk(1012) + "%PDF-1.", 1025), pdf_verdict::protected_pdf);
    EXPECT_EQ(judge_pdf(junk(1019) + ".pfile", 1025), pdf_verdict::protected_pdf);
}

TEST(JudgePdf, RefusesAPage)
{
    EXPECT_EQ(judge("<html><body>Not found</body></html>"), pdf_verdict::refused);
}

} // namespace
} // namespace quill
