#include "sharepoint/decisions/case_insensitive.h"

#include <gtest/gtest.h>

#include <locale>
#include <string>

namespace quill {
namespace {

struct text_case
{
    std::wstring_view text;
    std::wstring_view part;
    bool contains;
    bool begins;
    bool ends;
    bool equal;
};

TEST(IgnoringCase, ComparesText)
{
    const text_case cases[] = {
        {L"", L"", true, true, true, true},
        {L"a", L"", true, true, true, false},
        {L"", L"a", false, false, false, false},
        {L"a", L"a", true, true, true, true},
        {L"a", L"A", true, true, true, true},
        {L"A", L"a", true, true, true, true},
        {L"a", L"b", false, false, false, false},
        {L"ab", L"A", true, true, false, false},
        {L"ab", L"B", true, false, true, false},
        {L"xABy", L"ab", true, false, false, false},
        {L"a", L"ab", false, false, false, false},
        {L"aab", L"AB", true, false, true, false},
        {L"azAZ{[@`", L"AZaz{[@`", true, true, true, true}, // the characters next to the letters have no case
        {L"[", L"{", false, false, false, false},
        {L"@", L"`", false, false, false, false},
        {L"http://h/Doc.pdf", L"HTTP://H/DOC.PDF", true, true, true, true},
        {L"/Übersicht ж/文書.PDF", L".pdf", true, false, true, false},
        {L"/Übersicht ж/文書.PDF", L"ÜBERSICHT Ж/", false, false, false,
         false}, // see ComparesAsTheStandardFacetDoes
        {L"/Übersicht ж/文書.PDF", L"ÜbersichT ж/文", true, false, false, false},
        {L"\xD83D\xDE00.pdf", L"\xD83D\xDE00.PDF", true, true, true, true},
        {std::wstring_view(L"a\0B", 3), std::wstring_view(L"A\0b", 3), true, true, true, true},
        {std::wstring_view(L"a\0B", 3), std::wstring_view(L"A\0c", 3), false, false, false, false},
        {L"ß", L"SS", false, false, false, false}, // character by character: lengths never change
    };
    for (const text_case& expected : cases) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(expected.text)) + " / " +
                     testing::PrintToString(std::wstring(expected.part)));
        EXPECT_EQ(contains_ignoring_case(expected.text, expected.part), expected.contains);
        EXPECT_EQ(begins_with_ignoring_case(expected.text, expected.part), expected.begins);
        EXPECT_EQ(ends_with_ignoring_case(expected.text, expected.part), expected.ends);
        EXPECT_EQ(equal_ignoring_case(expected.text, expected.part), expected.equal);
    }
}

// The facet decides which characters beyond ASCII have a case; each must compare as it does there.
TEST(IgnoringCase, ComparesAsTheStandardFacetDoes)
{
    const std::locale locale;
    const auto& facet = std::use_facet<std::ctype<wchar_t>>(locale);
    for (unsigned code = 0; code < 0x10000; ++code) {
        const std::wstring character(1, static_cast<wchar_t>(code));
        const wchar_t upper_character = facet.toupper(character[0]);
        const std::wstring upper(1, upper_character);
        const std::wstring other(1, static_cast<wchar_t>(code ^ 0x20));
        const bool same = upper_character == facet.toupper(other[0]);
        ASSERT_TRUE(equal_ignoring_case(character, upper)) << code;
        ASSERT_EQ(equal_ignoring_case(character, other), same) << code;
        ASSERT_EQ(contains_ignoring_case(character, other), same) << code;
        ASSERT_EQ(ends_with_ignoring_case(character, other), same) << code;
        ASSERT_EQ(begins_with_ignoring_case(character, other), same) << code;
    }
}

TEST(IgnoringCase, FindsTextInMegabytes)
{
    std::wstring text(4'000'000, L'x');
    EXPECT_FALSE(contains_ignoring_case(text, L"xxxxY"));
    text += L"y";
    EXPECT_TRUE(contains_ignoring_case(text, L"XXXXy"));
}

} // namespace
} // namespace quill
