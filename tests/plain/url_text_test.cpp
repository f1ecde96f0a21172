#include "retrieval/url/url_text.h"

#include <gtest/gtest.h>

#include <array>
#include <ostream>

namespace quill {
namespace {

struct text_case
{
    std::wstring from;
    std::wstring to;
};

void PrintTo(const text_case& each, std::ostream* out)
{
    *out << testing::PrintToString(each.from);
}

class Encode : public testing::TestWithParam<text_case>
{
};

TEST_P(Encode, ReturnsTheEscapedText)
{
    EXPECT_EQ(EncodeUrl(GetParam().from), GetParam().to);
}

INSTANTIATE_TEST_SUITE_P(
    Url, Encode,
    testing::Values(text_case{L"", L""},
                    text_case{L"http://h/a.pdf?x=1&y=%20#p", L"http://h/a.pdf?x=1&y=%20#p"},
                    text_case{L"a b  c", L"a+b++c"}, text_case{L"\u00e9", L"%C3%A9"},
                    text_case{L"\u20ac", L"%E2%82%AC"}, text_case{L"\U0001F600", L"%F0%9F%98%80"},
                    text_case{L"\x7f\x80", L"\x7f%C2%80"}, text_case{L"a+b", L"a+b"},
                    text_case{L"\t\"<>", L"\t\"<>"}, text_case{L"x", L"x"},
                    text_case{L"a%20+b?c=<\"{|}>#\\", L"a%20+b?c=<\"{|}>#\\"},
                    text_case{L"\u20ac\u4e2d", L"%E2%82%AC%E4%B8%AD"},
                    text_case{std::wstring(1, wchar_t{0xD800}), L"%EF%BF%BD"}));

class Decode : public testing::TestWithParam<text_case>
{
};

TEST_P(Decode, ReturnsTheUnescapedText)
{
    EXPECT_EQ(DecodeUrl(GetParam().from.c_str()), GetParam().to);
}

INSTANTIATE_TEST_SUITE_P(
    Url, Decode,
    testing::Values(text_case{L"", L""}, text_case{L"abc", L"abc"}, text_case{L"a+b", L"a b"},
                    text_case{L"%zz", L"%zz"}, text_case{L"%C3%A9", L"\u00e9"},
                    text_case{L"%c3%a9", L"\u00e9"}, text_case{L"%4", L"\x04"}, text_case{L"x%4", L"x\x04"},
                    text_case{L"%", L"%"}, text_case{L"a%", L"a%"}, text_case{L"%%41", L"%A"},
                    text_case{L"%4g", L"%4g"}, text_case{L"%g4", L"%g4"}, text_case{L"%0x", L"%0x"},
                    text_case{L"%20%2B", L" +"}, text_case{L"%2", L"\x02"}, text_case{L"%-1", L"%-1"},
                    text_case{L"% 1", L"% 1"},
                    // An escaped zero ends the text.
                    text_case{L"a%00b", L"a"},
                    // Code units above 0xFF lose their high byte: U+0141 becomes "A".
                    text_case{L"\u0141", L"A"},
                    // A single byte from 0x80 is not valid UTF-8.
                    text_case{L"\u00e9", L"\ufffd"}, text_case{L"%FF", L"\ufffd"},
                    text_case{L"\u00c3\u00a9", L"\u00e9"},
                    text_case{L"/docs/My%20File.pdf#page=3", L"/docs/My File.pdf#page=3"}));

TEST(DecodeUrl, ReturnsEmptyTextForNull)
{
    EXPECT_EQ(DecodeUrl(nullptr), L"");
}

TEST(DecodeUrl, ReversesEncodeUrl)
{
    const std::wstring text = L"http://h/\u00e4 \u4e2d\u6587/\U0001F600.pdf";
    EXPECT_EQ(DecodeUrl(EncodeUrl(text).c_str()), text);
}

TEST(DecodeUrl, AcceptsAVeryLongUrl)
{
    const std::wstring text(2'000'000, L'x');
    EXPECT_EQ(DecodeUrl(text.c_str()), text);
}

struct name_case
{
    std::wstring url;
    std::size_t length;
    std::wstring name;
};

void PrintTo(const name_case& each, std::ostream* out)
{
    *out << testing::PrintToString(each.url);
}

class FileName : public testing::TestWithParam<name_case>
{
};

TEST_P(FileName, IsTheNameInTheUrl)
{
    std::array<wchar_t, 260> buffer{};
    EXPECT_EQ(GetFileNameFromUrl(GetParam().url.c_str(), buffer.data(), buffer.size()), GetParam().length);
    EXPECT_EQ(std::wstring(buffer.data()), GetParam().name);
}

constexpr std::size_t never_fits(std::size_t question, std::size_t start)
{
    return question - start;
}

INSTANTIATE_TEST_SUITE_P(
    Url, FileName,
    testing::Values(name_case{L"", 0, L""}, name_case{L"no-slash.pdf", 0, L""},
                    name_case{L"http://h/", 0, L""}, name_case{L"http://h/a.pdf", 5, L"a.pdf"},
                    name_case{L"/docs/My File.pdf#page=3", 11, L"My File.pdf"},
                    name_case{L"/a.html", 6, L"a.html"}, name_case{L"/a.html#x", 6, L"a.html"},
                    name_case{L"/a.pdf#b#c", 5, L"a.pdf"}, name_case{L"/#page=1", 0, L""},
                    name_case{L"/a.pdf#x/y.pdf", 5, L"y.pdf"}, name_case{L"/a.ppdf", 6, L"a.ppdf"},
                    name_case{L"/apdf?x", 4, L"apdf"}, name_case{L"/a.pdf?x=1", 5, L"a.pdf"},
                    name_case{L"/A.PdF?x=b.pdf", 5, L"A.PdF"},
                    // With a query the fragment does not end the name.
                    name_case{L"/a.pdf#x?file=b.pdf", 5, L"b.pdf"},
                    name_case{L"/get.aspx?id=7&file=c:\\x\\report.PDF", 10, L"report.PDF"},
                    name_case{L"/get.aspx?file=r.pdf&id=7", 5, L"r.pdf"},
                    name_case{L"/get.aspx?a=1.pdf&b=2.pdf", 5, L"1.pdf"},
                    name_case{L"/get.aspx?a=b=c.pdf", 7, L"b=c.pdf"}, name_case{L"/?f=x.pdf", 5, L"x.pdf"},
                    name_case{L"/?f=a:b*c?d\"e<f>g|h.pdf", 5, L"h.pdf"},
                    name_case{L"/?f=a|b\\c.pdf", 5, L"c.pdf"},
                    // Such a character is kept if it is the first of what remains.
                    name_case{L"/?f=:x.pdf", 6, L":x.pdf"}, name_case{L"/?f=a\\:x.pdf", 6, L":x.pdf"},
                    name_case{L"/?f=pdf", 3, L"pdf"}, name_case{L"/x?&&f=x.pdf&", 5, L"x.pdf"},

                    // The buffer keeps the path's name, which was written first; only the length tells that
                    // there is no name.
                    name_case{L"/x?f=a.pdf#page=2", 0, L"x"}, name_case{L"/x?f=", 0, L"x"}));

TEST(GetFileNameFromUrl, FindsNoNameInAQueryWithoutPdf)
{
    std::array<wchar_t, 260> buffer{};
    EXPECT_EQ(GetFileNameFromUrl(L"/get.aspx?id=7", buffer.data(), buffer.size()), 0u);
    EXPECT_EQ(GetFileNameFromUrl(L"/get.aspx?pdf", buffer.data(), buffer.size()), 0u);
    EXPECT_EQ(GetFileNameFromUrl(L"/get.aspx?id=7&pdf", buffer.data(), buffer.size()), 0u);
    EXPECT_EQ(GetFileNameFromUrl(L"/get.aspx?", buffer.data(), buffer.size()), 0u);
}

TEST(GetFileNameFromUrl, ReturnsALengthThatNeverFitsForASlashInTheQuery)
{
    std::array<wchar_t, 260> buffer{};
    const std::wstring url = L"http://h/x?y=/z.pdf";
    EXPECT_EQ(GetFileNameFromUrl(url.c_str(), buffer.data(), buffer.size()),
              never_fits(url.find(L'?'), url.rfind(L'/') + 1));
    EXPECT_GT(GetFileNameFromUrl(url.c_str(), buffer.data(), buffer.size()), buffer.size());
    EXPECT_EQ(buffer[0], L'\0');
}

TEST(GetFileNameFromUrl, WritesNothingIfTheNameDoesNotFit)
{
    for (const std::size_t length : {259u, 260u, 261u, 5000u}) {
        SCOPED_TRACE(length);
        const std::wstring name = std::wstring(length - 4, L'n') + L".pdf";
        for (const std::wstring& url : {L"http://h/" + name, L"http://h/?f=" + name}) {
            std::array<wchar_t, 261> buffer{};
            buffer.back() = L'!';
            EXPECT_EQ(GetFileNameFromUrl(url.c_str(), buffer.data(), 260), length);
            EXPECT_EQ(std::wstring(buffer.data()), length < 260 ? name : L"");
            EXPECT_EQ(buffer.back(), L'!');
        }
    }
}

TEST(GetFileNameFromUrl, AcceptsNullAndAnEmptyBuffer)
{
    wchar_t buffer[1] = {L'!'};
    EXPECT_EQ(GetFileNameFromUrl(nullptr, buffer, 1), 0u);
    EXPECT_EQ(GetFileNameFromUrl(L"/a.pdf", nullptr, 260), 0u);
    EXPECT_EQ(GetFileNameFromUrl(L"/a.pdf", buffer, 0), 5u);
    EXPECT_EQ(buffer[0], L'!');
}

} // namespace
} // namespace quill
