#include "diagnose/report.h"

#include <gtest/gtest.h>

namespace quill::diagnose {
namespace {

TEST(Report, FindingIsFourLines)
{
    EXPECT_TRUE(text_of(finding{state::problem, L"Check", L"a", L"b", L"c"}) ==
                L"PROBLEM Check\n    found:    a\n    expected: b\n    to do:    c\n");
    EXPECT_TRUE(text_of(finding{state::ok, L"Check", L"a", L"b", L""}) ==
                L"OK      Check\n    found:    a\n    expected: b\n    to do:    nothing\n");
}

TEST(Report, OneProblemDecidesTheResult)
{
    report findings = {{state::ok, L"A", L"", L"", L""}, {state::note, L"B", L"", L"", L""}};
    EXPECT_TRUE(would_open(findings));
    EXPECT_TRUE(summary_of(findings).starts_with(L"0 problems, 1 note, 1 OK\nRESULT: a PDF would open"));
    findings.push_back({state::problem, L"C", L"", L"", L""});
    EXPECT_FALSE(would_open(findings));
    EXPECT_TRUE(summary_of(findings).ends_with(L"because of:\n    C\n"));
}

TEST(Report, WithoutFindingsIsNoGoodResult)
{
    EXPECT_FALSE(would_open({}));
}

TEST(Report, QuotedTextEndsAtTheLastQuotationMark)
{
    EXPECT_TRUE(quoted(L"C:\\a \"b\"") == L"\"C:\\a <U+0022>b<U+0022>\"");
    EXPECT_TRUE(quoted(L"") == L"\"\"");
}

TEST(Report, TextStaysInItsLine)
{
    EXPECT_TRUE(printable(L"a\r\nb\tc\x1B[1m") == L"a<U+000D><U+000A>b<U+0009>c<U+001B>[1m");
    EXPECT_TRUE(printable(L"\u202E\u2066\uFEFF\u200F\u2028") == L"<U+202E><U+2066><U+FEFF><U+200F><U+2028>");
    EXPECT_TRUE(printable(L"\u061C\u00AD\u180E\u2060\u206F\uFFF9") ==
                L"<U+061C><U+00AD><U+180E><U+2060><U+206F><U+FFF9>");
    EXPECT_TRUE(printable(L"\u00E4\u03A9 \u65E5") == L"\u00E4\u03A9 \u65E5");
    EXPECT_TRUE(printable(std::wstring(400, L'x')) == std::wstring(400, L'x'));
    EXPECT_TRUE(printable(std::wstring(500'000, L'x')) ==
                std::wstring(400, L'x') + L"... (500000 characters)");
}

TEST(Report, NumbersAreWrittenInFull)
{
    EXPECT_TRUE(hexadecimal(0) == L"0");
    EXPECT_TRUE(hexadecimal(0x400) == L"400");
    EXPECT_TRUE(hexadecimal(0x800B0100, 8) == L"800B0100");
    EXPECT_TRUE(hexadecimal(0xA, 4) == L"000A");
    EXPECT_TRUE(number_text(18'446'744'073'709'551'615ull) == L"18446744073709551615");
    EXPECT_TRUE(counted(1, L"file") == L"1 file");
    EXPECT_TRUE(counted(0, L"file") == L"0 files");
}

} // namespace
} // namespace quill::diagnose
