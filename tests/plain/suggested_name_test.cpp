#include "retrieval/save_as/suggested_name.h"

#include <gtest/gtest.h>

namespace quill {
namespace {

using optional_name = std::optional<std::wstring>;

TEST(SuggestedName, OmitsTheCacheNumber)
{
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"C:\\x\\doc.pdf", L"doc.pdf"},
        {L"C:\\x\\doc[2].pdf", L"doc.pdf"},
        {L"C:\\x\\doc[2].PDF", L"doc.PDF"},
        {L"a]b.pdf", L"a]b.pdf"},
        {L"my[b].pdf", L"my.pdf"},
        {L"my[1][2].pdf", L"my[1].pdf"},
        {L"my[a]b].pdf", L"my.pdf"}, // from the last "["
        {L"my[1]].pdf", L"my.pdf"},
        {L"my].pdf", L"my].pdf"}, // no "["
        {L"my[.pdf", L"my[.pdf"},
        {L"my[].pdf", L"my.pdf"},
        {L"[1].pdf", L".pdf"},
        {L".pdf", L".pdf"},
        {L"].pdf", L"].pdf"},
        {L"C:\\folder[1]\\doc.pdf", L"doc.pdf"},
        {L"C:\\folder]\\.pdf", L".pdf"},
        {L"two.dots[3].pdf", L"two.dots.pdf"},
        {L"doc[1].ppdf", L"doc.ppdf"},
        {L"doc.", L"doc."},
    };
    for (const auto& [path, name] : cases) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(path)));
        EXPECT_EQ(suggested_file_name(path), optional_name(name));
    }
}

TEST(SuggestedName, NeedsANameAndAnExtension)
{
    for (const wchar_t* path : {L"", L"doc", L"C:\\x.y\\doc", L"C:\\x\\", L"C:\\x.y\\", L"a.b/c"})
        EXPECT_EQ(suggested_file_name(path), std::nullopt) << testing::PrintToString(std::wstring(path));
    EXPECT_EQ(suggested_file_name(nullptr), std::nullopt);
}

TEST(SuggestedName, FitsIntoAPathBuffer)
{
    const std::wstring longest = std::wstring(255, L'a') + L".pdf";
    EXPECT_EQ(suggested_file_name(longest.c_str()), longest);
    EXPECT_EQ(suggested_file_name((L"a" + longest).c_str()), std::nullopt);
}

} // namespace
} // namespace quill
