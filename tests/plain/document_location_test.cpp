#include "active_doc/document_location.h"

#include <gtest/gtest.h>

#include <string>

namespace quill {
namespace {

constexpr wchar_t first_url[] = L"http://host.test/folder/first.pdf";
constexpr wchar_t second_url[] = L"http://host.test/folder/second.pdf";

TEST(DocumentLocation, IsEmptyAtFirst)
{
    const document_location location;
    EXPECT_STREQ(location.path(), L"");
    EXPECT_EQ(location.document_url(), L"");
    EXPECT_EQ(location.url_to_fetch(), L"");
    EXPECT_EQ(location.page(), 0);
    EXPECT_EQ(location.zoom(), 0);
}

TEST(DocumentLocation, TruncatesAPathThatDoesNotFit)
{
    document_location location;
    location.set_path(std::wstring(MAX_PATH - 1, L'a').c_str(), path_origin::host);
    EXPECT_EQ(location.path(), std::wstring(MAX_PATH - 1, L'a'));
    location.set_path(std::wstring(MAX_PATH, L'b').c_str(), path_origin::host);
    EXPECT_EQ(location.path(), std::wstring(MAX_PATH - 1, L'b'));
    location.set_path(L"short", path_origin::host);
    EXPECT_STREQ(location.path(), L"short");
}

TEST(DocumentLocation, FetchesTheLoadedUrl)
{
    document_location location;
    EXPECT_EQ(location.load_url(first_url), url_change::first);
    EXPECT_EQ(location.document_url(), first_url);
    EXPECT_EQ(location.url_to_fetch(), first_url);
}

TEST(DocumentLocation, IsUnchangedByTheSameUrl)
{
    document_location location;
    location.load_url(first_url);
    location.set_embedded_reference(L"http://other.test/e.pdf#page=3#zoom=50");
    location.set_path(L"fetched.pdf", path_origin::document_url);
    EXPECT_EQ(location.load_url(first_url), url_change::none);
    EXPECT_EQ(location.url_to_fetch(), L"http://other.test/e.pdf#page=3#zoom=50");
    EXPECT_EQ(location.page(), 3);
    EXPECT_EQ(location.zoom(), 50);
    EXPECT_STREQ(location.path(), L"fetched.pdf");
}

TEST(DocumentLocation, DiscardsWhatWasFoundForAReplacedUrl)
{
    document_location location;
    location.load_url(first_url);
    location.set_embedded_reference(L"http://other.test/e.pdf#page=3#zoom=50");
    location.set_path(L"fetched.pdf", path_origin::document_url);
    EXPECT_EQ(location.load_url(second_url), url_change::replaced);
    EXPECT_EQ(location.url_to_fetch(), second_url);
    EXPECT_EQ(location.page(), 0);
    EXPECT_EQ(location.zoom(), 0);
    EXPECT_STREQ(location.path(), L"");
}

TEST(DocumentLocation, KeepsThePathOfTheHostWhenTheUrlIsReplaced)
{
    document_location location;
    location.load_url(first_url);
    location.set_path(L"fetched.pdf", path_origin::document_url);
    location.set_path(L"local.pdf", path_origin::host);
    EXPECT_EQ(location.load_url(second_url), url_change::replaced);
    EXPECT_STREQ(location.path(), L"local.pdf");
    location.set_path(L"fetched.pdf", path_origin::document_url);
    EXPECT_EQ(location.load_url(first_url), url_change::replaced);
    EXPECT_STREQ(location.path(), L"");
}

// The window may have found a document by itself before the host's first Load.
TEST(DocumentLocation, KeepsWhatTheWindowFoundAtTheFirstLoad)
{
    document_location location;
    location.set_document_url(first_url);
    location.set_embedded_reference(L"e.pdf#page=3");
    location.set_path(L"fetched.pdf", path_origin::document_url);
    EXPECT_EQ(location.load_url(second_url), url_change::first);
    EXPECT_EQ(location.document_url(), second_url);
    EXPECT_EQ(location.url_to_fetch(), L"http://host.test/folder/e.pdf#page=3");
    EXPECT_EQ(location.page(), 3);
    EXPECT_STREQ(location.path(), L"fetched.pdf");
    EXPECT_EQ(location.load_url(first_url), url_change::replaced);
}

TEST(DocumentLocation, CountsAFirstLoadOfTheUrlThatTheWindowFound)
{
    document_location location;
    location.set_document_url(first_url);
    EXPECT_EQ(location.load_url(first_url), url_change::none);
    EXPECT_EQ(location.load_url(second_url), url_change::replaced);
}

TEST(DocumentLocation, ResolvesTheReferenceOfAnElement)
{
    const struct
    {
        const wchar_t* reference;
        const wchar_t* url;
    } cases[] = {
        {L"e.pdf", L"http://host.test/folder/e.pdf"},
        {L"../e.pdf", L"http://host.test/e.pdf"},
        {L"/e.pdf", L"http://host.test/e.pdf"},
        {L"https://other.test/e.pdf", L"https://other.test/e.pdf"},
        {L"ftp://other.test/e.pdf", L"ftp://other.test/e.pdf"},
        {L"file:///C:/e.pdf", L"file:///C:/e.pdf"},
    };
    for (const auto& each : cases) {
        document_location location;
        location.set_document_url(first_url);
        location.set_embedded_reference(each.reference);
        EXPECT_EQ(location.url_to_fetch(), each.url);
        EXPECT_EQ(location.document_url(), first_url);
    }
}

TEST(DocumentLocation, FetchesTheDocumentUrlIfAReferenceHasNoBase)
{
    document_location location;
    location.set_embedded_reference(L"e.pdf");
    EXPECT_EQ(location.url_to_fetch(), L"");
    location.set_document_url(first_url);
    EXPECT_EQ(location.url_to_fetch(), first_url);
}

TEST(DocumentLocation, DiscardsTheUrlOfAFormerElementIfAReferenceHasNoBase)
{
    document_location location;
    location.set_embedded_reference(L"http://other.test/e.pdf");
    location.set_embedded_reference(L"f.pdf");
    EXPECT_EQ(location.url_to_fetch(), L"");
}

TEST(DocumentLocation, ReadsPageAndZoomOfTheElementInPlaceOfThoseBefore)
{
    document_location location;
    location.set_document_url(first_url);
    location.set_page_and_zoom(7, 200);
    EXPECT_EQ(location.page(), 7);
    EXPECT_EQ(location.zoom(), 200);
    location.set_embedded_reference(L"e.pdf#zoom=50");
    EXPECT_EQ(location.page(), 0);
    EXPECT_EQ(location.zoom(), 50);
    location.read_page_and_zoom(L"http://host.test/x.pdf#page=2#zoom=75");
    EXPECT_EQ(location.page(), 2);
    EXPECT_EQ(location.zoom(), 75);
    EXPECT_EQ(location.url_to_fetch(), L"http://host.test/folder/e.pdf#zoom=50");
}

} // namespace
} // namespace quill
