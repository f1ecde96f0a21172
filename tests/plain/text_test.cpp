#include "platform/text.h"

#include <gtest/gtest.h>

namespace quill {
namespace {

TEST(EqualIgnoringAsciiCase, IgnoresTheCaseOfAsciiLetters)
{
    EXPECT_TRUE(equal_ignoring_ascii_case(L"Embed-Z a1", L"eMBED-z A1"));
    EXPECT_TRUE(equal_ignoring_ascii_case(L"", L""));
    EXPECT_FALSE(equal_ignoring_ascii_case(L"embed", L"emb"));
    EXPECT_FALSE(equal_ignoring_ascii_case(L"emb", L"embed"));
    EXPECT_FALSE(equal_ignoring_ascii_case(L"embed", L"embee"));
}

TEST(EqualIgnoringAsciiCase, DistinguishesOtherCharacters)
{
    EXPECT_FALSE(equal_ignoring_ascii_case(L"@[", L"`{")); // the characters next to the letters
    EXPECT_FALSE(equal_ignoring_ascii_case(L"\x00c4", L"\x00e4"));
    EXPECT_FALSE(equal_ignoring_ascii_case(L"k", L"\x212a"));
    EXPECT_FALSE(equal_ignoring_ascii_case(std::wstring_view(L"a\0b", 3), std::wstring_view(L"A\0C", 3)));
}

TEST(ToUtf8, ConvertsEveryLengthOfCharacter)
{
    EXPECT_EQ(to_utf8(L""), "");
    EXPECT_EQ(to_utf8(std::wstring_view()), "");
    EXPECT_EQ(to_utf8(L"a\x00e4\x20ac\xd83d\xde00"), "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80");
}

TEST(ToUtf8, ConvertsEmbeddedNuls)
{
    EXPECT_EQ(to_utf8(std::wstring_view(L"a\0b\0", 4)), std::string("a\0b\0", 4));
}

TEST(ToUtf8, ConvertsTheGivenLengthOnly)
{
    EXPECT_EQ(to_utf8(std::wstring_view(L"abcdef", 3)), "abc");
}

TEST(ToUtf8, ReplacesAnUnpairedSurrogate)
{
    EXPECT_EQ(to_utf8(L"a\xd83d"), "a\xef\xbf\xbd");
    EXPECT_EQ(to_utf8(L"\xde00z"), "\xef\xbf\xbdz");
}

TEST(ToUtf8, ConvertsLongText)
{
    EXPECT_EQ(to_utf8(std::wstring(1'000'000, L'\x20ac')).size(), 3'000'000u);
}

} // namespace
} // namespace quill
