#include "stand_ins/viewer/document_facts.h"

#include <gtest/gtest.h>

namespace quill {

static bool operator==(const page_size& a, const page_size& b)
{
    return a.width == b.width && a.height == b.height;
}

namespace test {
namespace {

TEST(PageSizes, AreReadFromTheReport)
{
    const auto pages = parse_page_sizes("Title:           Three of them\n"
                                        "Pages:           3\n"
                                        "Encrypted:       no\n"
                                        "Page    1 size:  595.276 x 841.89 pts (A4)\n"
                                        "Page    1 rot:   0\n"
                                        "Page    2 size:  595 x 420 pts (A5)\n"
                                        "Page    2 rot:   90\n"
                                        "Page    3 size:  612 x 792 pts (letter)\n"
                                        "Page    3 rot:   180\n"
                                        "PDF version:     1.4\n");
    ASSERT_EQ(pages.size(), 3u);
    EXPECT_EQ(pages[0], (page_size{595.276, 841.89}));
    EXPECT_EQ(pages[1], (page_size{420, 595})) << "a page turned sideways";
    EXPECT_EQ(pages[2], (page_size{612, 792}));
}

TEST(PageSizes, CountAsA4WhereTheyAreMissingOrAbsurd)
{
    const auto pages = parse_page_sizes("Pages:  4\r\n"
                                        "Page    2 size:  0 x 500 pts\r\n"
                                        "Page    3 size:  9999999 x 500 pts\r\n"
                                        "Page    4 size:  \r\n"
                                        "Page    5 size:  10 x 10 pts\r\n");
    ASSERT_EQ(pages.size(), 4u);
    for (const page_size& page : pages)
        EXPECT_EQ(page, (page_size{595, 842}));
}

TEST(PageSizes, AreEmptyWithoutPages)
{
    for (const char* report : {"", "\n\n", "Pages:\n", "Pages: 0\n", "Pages: 99999999999\n", "Pages: 1 2\n",
                               "Page 1 size: 10 x 10\n", "Title: Pages: 3\n"})
        EXPECT_TRUE(parse_page_sizes(report).empty()) << report;
}

constexpr char page_head[] =
    "<page number=\"1\" position=\"absolute\" top=\"0\" left=\"0\" height=\"200\" width=\"100\">\n";

TEST(PageLinks, AreReadWithTheirPlaces)
{
    const auto links = parse_page_links(
        std::string(page_head) +
            "<text top=\"20\" left=\"10\" width=\"40\" height=\"15\" font=\"8\"><a "
            "href=\"care.pdf\">Care</a></text>\n"
            "<text top=\"60\" left=\"10\" width=\"40\" height=\"15\" font=\"8\">no link</text>\n"
            "<text top=\"80\" left=\"0\" width=\"100\" height=\"20\" font=\"8\"><a "
            "href=\"own.html#3\">There</a></text>\n",
        "own");
    ASSERT_EQ(links.size(), 2u);
    EXPECT_DOUBLE_EQ(links[0].left, 0.1);
    EXPECT_DOUBLE_EQ(links[0].top, 0.1);
    EXPECT_DOUBLE_EQ(links[0].right, 0.5);
    EXPECT_DOUBLE_EQ(links[0].bottom, 0.175);
    EXPECT_EQ(links[0].target, L"care.pdf");
    EXPECT_TRUE(links[1].target.empty());
    EXPECT_EQ(links[1].page, 2u);
}

TEST(PageLinks, FollowTheNotesOnTheLineOfThePage)
{
    const auto links = parse_page_links(
        std::string(" link to page 2 ") + page_head +
            "<text top=\"1\" left=\"1\" width=\"1\" height=\"1\"><a href=\"x\">y</a></text>\n",
        "own");
    EXPECT_EQ(links.size(), 1u);
}

TEST(PageLinks, AreUnescaped)
{
    const auto links = parse_page_links(
        std::string(page_head) + "<text top=\"1\" left=\"1\" width=\"1\" height=\"1\"><a "
                                 "href=\"http://h/?a=1&amp;b=&lt;2&gt;&unknown;\xC3\xA4\">y</a></text>\n",
        "own");
    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(links[0].target, L"http://h/?a=1&b=<2>&unknown;\u00E4");
}

TEST(PageLinks, SkipsInvalidOnes)
{
    const char* const lines[] = {
        "<text top=\"1\" left=\"1\" width=\"1\"><a href=\"x\">y</a></text>\n",
        "<text top=\"1\" left=\"1\" width=\"1\" height=\"1\"><a href=\"\">y</a></text>\n",
        "<text top=\"1\" left=\"1\" width=\"1\" height=\"1\"><a href=\"own.html#0\">y</a></text>\n",
        "<text top=\"1\" left=\"1\" width=\"1\" height=\"1\"><a href=\"own.html#\">y</a></text>\n",
        "<a href=\"x\">y</a>\n",
        "<text",
    };
    for (const char* line : lines)
        EXPECT_TRUE(parse_page_links(std::string(page_head) + line, "own").empty()) << line;
    EXPECT_TRUE(parse_page_links(lines[0], "own").empty()) << "before the page's own line";
    EXPECT_TRUE(
        parse_page_links("<page height=\"0\" width=\"0\">\n"
                         "<text top=\"1\" left=\"1\" width=\"1\" height=\"1\"><a href=\"x\">y</a></text>\n",
                         "own")
            .empty());
}

} // namespace
} // namespace test
} // namespace quill
