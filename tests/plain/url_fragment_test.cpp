#include "retrieval/url/url_fragment.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace quill {
namespace {

constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();

struct document_case
{
    const wchar_t* url;
    bool succeeds;
    std::int32_t page;
    bool zoom_succeeds;
    std::int32_t zoom;
};

TEST(ParseUrlNumber, ReadsTheUrlOfTheDocument)
{
    const document_case cases[] = {
        {nullptr, false, 0, false, 0},
        {L"", false, 0, false, 0},
        {L"http://h/a.pdf", true, 0, true, 0},
        {L"http://h/a.pdf#", true, 0, true, 0},
        {L"http://h/page=7.pdf", true, 0, true, 0}, // only what follows the "#" counts
        {L"http://h/a.pdf#page=1", true, 1, true, 0},
        {L"http://h/a.pdf#page=0", true, 0, true, 0},
        {L"http://h/a.pdf#zoom=50", true, 0, true, 50},
        {L"http://h/a.pdf#page=3#zoom=150", true, 3, true, 150},
        {L"http://h/a.pdf#zoom=150#page=3", true, 3, true, 150},
        {L"http://h/a.pdf#page=3&zoom=150", true, 3, true, 3},
        {L"http://h/a.pdf#pagemode=none#page=3", true, 0, true, 0}, // the first piece with the key decides
        {L"http://h/a.pdf#view=Fit#page=3", true, 3, true, 0},
        {L"http://h/a.pdf#x=9&page=3", true, 9, true, 0},
        {L"http://h/a.pdf#page", false, 0, true, 0},
        {L"http://h/a.pdf#page#page=3", false, 0, true, 0},
        {L"http://h/a.pdf#x=1#page", false, 0, true, 0}, // an earlier piece's "=" does not help
        {L"http://h/a.pdf##page=3", true, 3, true, 0},
        {L"http://h/a.pdf#Page=3", true, 0, true, 0},
        {L"http://h/a.pdf#page=", true, 0, true, 0},
        {L"http://h/a.pdf#page==3", true, 0, true, 0},
        {L"http://h/a.pdf#page=12abc", true, 12, true, 0},
        {L"http://h/a.pdf#page= 3", true, 0, true, 0},
        {L"http://h/a.pdf#page=-3", true, 0, true, 0},
        {L"http://h/a.pdf#page=+3", true, 0, true, 0},
        {L"http://h/a.pdf#page=007", true, 7, true, 0},
        {L"http://h/a.pdf#page=2147483647", true, largest, true, 0},
        {L"http://h/a.pdf#page=2147483648", true, largest, true, 0},
        {L"http://h/a.pdf#page=99999999999999999999999999", true, largest, true, 0},
        {L"http://h/a.pdf#zoom=150.9", true, 0, true, 150},
        {L"http://h/a.pdf#zoom=150&page=3", true, 150, true, 150},
        {L"http://h/a.pdf#pagemode=none", true, 0, true, 0},
        {L"http://h/a.pdf#pagemode=4", true, 4, true, 0},
        {L"http://h/a.pdf#page=5#page=6", true, 5, true, 0},
        {L"http://h/a.pdf#page=x5", true, 0, true, 0},
        {L"http://h/a.pdf#nameddest=page", true, 0, true, 0},
        {L"http://h/a.pdf#page=2##zoom=25#", true, 2, true, 25},
        {L"http://h/a.pdf?page=9", true, 0, true, 0},
        {L"http://h/a.pdf?page=9#zoom=200", true, 0, true, 200},
    };
    for (const document_case& expected : cases) {
        SCOPED_TRACE(testing::PrintToString(expected.url ? std::wstring(expected.url) : L"null"));
        std::int32_t value = 77;
        EXPECT_EQ(parse_url_number(expected.url, L"page", value), expected.succeeds);
        EXPECT_EQ(value, expected.page);
        value = 77;
        EXPECT_EQ(parse_url_number(expected.url, L"zoom", value), expected.zoom_succeeds);
        EXPECT_EQ(value, expected.zoom);
    }
}

struct page_case
{
    const wchar_t* url;
    std::int32_t page;
    std::int32_t zoom;
};

TEST(PageUrlNumber, ReadsTheUrlOfTheHostingPage)
{
    const page_case cases[] = {
        {L"", 0, 0},
        {L"http://h/p.html", 0, 0},
        {L"http://h/p.html?page=3", 0, 0},
        {L"http://h/p.html#page=5#zoom=150", 5, 150},
        {L"http://h/p.html#zoom=150", 0, 150},
        {L"http://h/p.html#page=5&zoom=150", 5, 5},
        {L"http://h/p.html#page#page=5", 0, 0},
        {L"http://h/p.html#homepage=2#page=5", 2, 0},
        {L"http://h/p.html#page= \t 5", 5, 0},
        {L"http://h/p.html#page=-5", -5, 0},
        {L"http://h/p.html#page=+5", 5, 0},
        {L"http://h/p.html#page=+-5", 0, 0},
        {L"http://h/p.html#page=- 5", 0, 0},
        {L"http://h/p.html#page=5x", 5, 0},
        {L"http://h/p.html#page=x5", 0, 0},
        {L"http://h/p.html#page=", 0, 0},
        {L"http://h/p.html#page=2147483648#zoom=-2147483648", largest, smallest},
        {L"http://h/p.html#page=99999999999999999999#zoom=-99999999999999999999", largest, smallest},
    };
    for (const auto& [url, page, zoom] : cases) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(url)));
        EXPECT_EQ(page_url_number(url, L"page"), page);
        EXPECT_EQ(page_url_number(url, L"zoom"), zoom);
    }
}

// A quadratic algorithm exceeds the time limit of the test.
TEST(UrlFragment, AcceptsMegabytesOfPiecesAndDigits)
{
    std::wstring url = L"http://h/a.pdf#" + std::wstring(8'000'000, L'#');
    std::int32_t value = 77;
    EXPECT_TRUE(parse_url_number(url.c_str(), L"page", value));
    EXPECT_EQ(value, 0);
    url += L"page=" + std::wstring(8'000'000, L'9');
    EXPECT_TRUE(parse_url_number(url.c_str(), L"page", value));
    EXPECT_EQ(value, largest);
    EXPECT_EQ(page_url_number(url, L"page"), largest);
}

} // namespace
} // namespace quill
