// Any page can carry SharePoint's generator: what a hostile page can make the editor and the default handler
// start.
#include "sharepoint/editor/pdf_editor.h"
#include "tests/sharepoint/aggregator_fixture.h"
#include "tests/sharepoint/recorded_launches.h"

#include <atlutil.h>
#include <gmock/gmock.h>

namespace quill::test {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using urls = std::vector<std::wstring>;

constexpr wchar_t empty_url[] = L"http://"; // the URL that is opened for text that cannot be parsed

class HostilePage : public aggregator_fixture
{
protected:
    // Clicks a list link of a page; returns whether the click was cancelled.
    bool click(const std::wstring& href, fake_document* page = nullptr)
    {
        fake_document* const clicked = page ? page : page_.p;
        browser_->document = clicked->dispatch();
        complete();
        const auto event = make_fake<fake_event>(tab_, &clicked->add_to_body(list_link(href)));
        const auto result = clicked->click(event);
        EXPECT_EQ(result.code, S_OK);
        EXPECT_EQ(is_bool(result.value, true), event->is_untouched());
        return is_bool(result.value, false);
    }
    void remove_editor()
    {
        editors_.set_editor(L"C:\\nowhere\\editor.exe");
        make_aggregator();
    }
};

struct hostile_link
{
    std::wstring href;
    std::wstring on_command_line;
};

// The editor is a real program, which parses its command line itself.
TEST_F(HostilePage, PassesTheEditorOneArgumentWhateverTheLinkIs)
{
    const hostile_link links[] = {
        {L"http://h/a\" /other \"C:\\x.pdf", L"http://h/a%22 /other %22C:\\x.pdf"},
        {L"http://h/\"\"\".pdf", L"http://h/%22%22%22.pdf"},
        {L"http://h/a\\\".pdf", L"http://h/a\\%22.pdf"},
        {L"http://h/a\\\\\" /b.pdf", L"http://h/a\\\\%22 /b.pdf"},
        {L"http://h/a\tb\r\nc\x01\x1F.pdf", L"http://h/a%09b%0D%0Ac%01%1F.pdf"},
        {L"http://h/a b \\ c.pdf", L"http://h/a b \\ c.pdf"},
        {L"http://h/%22%00\x7F^&|<>.pdf", L"http://h/%22%00\x7F^&|<>.pdf"},
        {L"http://h/*?*.pdf", L"http://h/*?*.pdf"},
        {L"http://h?\" \".pdf", L"http://h?%22 %22.pdf"},
        {L"http://h:8\"1/x.pdf", empty_url},
        {L"http://u\":p\"@h\"/x.pdf", L"http://u%22:p%22@h%22/x.pdf"},
        {L"/a\" b.pdf", L"http://h/a%22 b.pdf"},
        {L"//other\"/x.pdf", L"http://other%22/x.pdf"},
        {L"/\\other\\x.pdf", L"http://h/\\other\\x.pdf"},
        {L"http \" /x.pdf", empty_url},
        {L"httpfoo:\" /x.pdf", L"httpfoo:%22 /x.pdf"},
    };
    std::vector<program_start> expected;
    for (const hostile_link& link : links) {
        EXPECT_TRUE(click(link.href)) << testing::PrintToString(link.href);
        expected.push_back(editors_.editor_start(link.on_command_line));
    }
    // Programs that run concurrently are recorded in any order.
    EXPECT_THAT(editors_.starts(expected.size()), testing::UnorderedElementsAreArray(expected));
}

TEST_F(HostilePage, PassesTheEditorOneArgumentWhateverTheNavigationIs)
{
    const hostile_link navigations[] = {
        {L"http://h/a\" /other \"C:\\x.pdf", L"http://h/a%22 /other %22C:\\x.pdf"},
        {L"http://h/\"\"\".pdf", L"http://h/%22%22%22.pdf"},
        {L"http://h/a\\\".pdf", L"http://h/a\\%22.pdf"},
        {L"http://h/a\\\\\" /b.pdf", L"http://h/a\\\\%22 /b.pdf"},
        {L"http://h/a b  c.pdf", L"http://h/a b  c.pdf"},
        {L"http://h/a\tb.pdf", L"http://h/a%09b.pdf"},
        {L"http://h/a\r\nb\n.pdf", L"http://h/a%0D%0Ab%0A.pdf"},
        {L"http://h/%22 /other %22.pdf", L"http://h/%22 /other %22.pdf"},
        {L"http://h/a\\\\.pdf", L"http://h/a\\\\.pdf"},
    };
    std::vector<program_start> expected;
    for (const hostile_link& navigation : navigations) {
        EXPECT_TRUE(navigate(navigation.href)) << testing::PrintToString(navigation.href);
        expected.push_back(editors_.editor_start(navigation.on_command_line));
    }
    // A trailing backslash would escape the closing quotation mark.
    EXPECT_FALSE(navigate(L"http://h/x.pdf\\"));
    EXPECT_FALSE(navigate(L"http://h/x.pdf\" \\"));
    EXPECT_THAT(editors_.starts(expected.size()), testing::UnorderedElementsAreArray(expected));
}

// UTF-8, the record's encoding, has no unpaired surrogates, but a command line may have them.
TEST_F(HostilePage, PassesUnpairedSurrogatesToTheEditor)
{
    EXPECT_TRUE(click(L"http://h/\xD800 \xDC00\" .pdf"));
    auto expected = editors_.editor_start(L"http://h/\xD800 \xDC00%22 .pdf");
    expected.command_line = L"/pdf \"sharepoint://http://h/\xFFFD \xFFFD%22 .pdf\"";
    EXPECT_EQ(editors_.starts(1), std::vector{expected});
}

TEST_F(HostilePage, LogsTheUrlUnchanged)
{
    const launch_recording recording;
    log_.clear();
    EXPECT_TRUE(navigate(L"http://h/a\"\t.pdf"));
    EXPECT_EQ(log_.lines().back(), "info: checkout file http://h/a\"\t.pdf");
    EXPECT_EQ(recorded_launches().editor_lines, urls{L"/pdf \"sharepoint://http://h/a%22%09.pdf\""});
}

TEST_F(HostilePage, PassesTheUrlUnchangedToTheDefaultHandler)
{
    remove_editor();
    const launch_recording recording;
    EXPECT_TRUE(navigate(L"http://h/a\" /other \"\t.pdf"));
    EXPECT_TRUE(click(L"/a\"\\\".pdf"));
    EXPECT_EQ(recorded_launches().default_urls,
              (urls{L"http://h/a\" /other \"\t.pdf", L"http://h/a\"\\\".pdf"}));
    EXPECT_EQ(recorded_launches().editor_lines, urls{});
}

// Windows accepts command lines of up to 32,766 characters.
TEST_F(HostilePage, StartsTheEditorWithTheLongestCommandLine)
{
    const std::wstring around = L"/pdf \"sharepoint://http://h/.pdf\"";
    const std::wstring url = L"http://h/" + std::wstring(32'766 - around.size(), L'x') + L".pdf";
    EXPECT_TRUE(click(url));
    const auto starts = editors_.starts(1);
    EXPECT_EQ(starts, std::vector{editors_.editor_start(url)});
    EXPECT_EQ(starts.at(0).command_line.size(), 32'766u);
}

TEST_F(HostilePage, PassesAUrlThatIsTooLongForACommandLineToTheDefaultHandler)
{
    const launch_recording recording;
    const std::wstring around = L"/pdf \"sharepoint://http://h/.pdf\"";
    const std::wstring url = L"http://h/" + std::wstring(32'767 - around.size(), L'x') + L".pdf";
    // An escaped character takes three characters of the line.
    const std::wstring quotes = L"http://h/" + std::wstring(11'000, L'"') + L".pdf";
    EXPECT_TRUE(click(url));
    EXPECT_TRUE(navigate(quotes));
    EXPECT_EQ(recorded_launches().default_urls, (urls{url, quotes}));
    EXPECT_EQ(recorded_launches().editor_lines, urls{});
    EXPECT_EQ(log_.lines().back(), "warning: QuillStudio failed. Trying to use default pdf view...");
}

// Up to the null, the text is another URL than the one that was tested.
TEST_F(HostilePage, OpensNoLinkWithAnEmbeddedNull)
{
    const launch_recording recording;
    for (const auto text : {L"http://h/x.exe\0.pdf"sv, L"/x.exe\0.pdf"sv, L"\0http://h/x.pdf"sv,
                            L"http://h\0/x.pdf"sv, L"http://h/x.pdf\0.pdf"sv, L"http://h/x\0\0.pdf"sv}) {
        const std::wstring href(text);
        SCOPED_TRACE(testing::PrintToString(href));
        EXPECT_FALSE(click(href));
        EXPECT_EQ(log_.lines().back(), "info: do not block clicks for not-pdf links");
        EXPECT_FALSE(navigate(href));
    }
    EXPECT_EQ(recorded_launches().urls(), urls{});
}

TEST_F(HostilePage, PassesAnEscapedNullUnchanged)
{
    const launch_recording recording;
    EXPECT_TRUE(click(L"http://h/x.exe%00.pdf"));
    EXPECT_TRUE(click(L"/a%00b.pdf"));
    EXPECT_TRUE(navigate(L"http://h/%00.pdf"));
    EXPECT_EQ(recorded_launches().editor_lines,
              (urls{L"/pdf \"sharepoint://http://h/x.exe%00.pdf\"",
                    L"/pdf \"sharepoint://http://h/a%00b.pdf\"", L"/pdf \"sharepoint://http://h/%00.pdf\""}));
}

TEST_F(HostilePage, RewritesNoLinkWithAnEmbeddedNull)
{
    auto& link = page_->add_to_body({.tag = L"A",
                                     .outer_html = L"<a onclick=\"PdfFile.OpenDocuments()\">",
                                     .href = L"http://h/x.exe\0.pdf"s});
    complete();
    EXPECT_EQ(link.outer_html(), L"<a onclick=\"PdfFile.OpenDocuments()\">");
}

TEST_F(HostilePage, OpensAnEmptyUrlForAPageUrlWithAnEmbeddedNull)
{
    const launch_recording recording;
    EXPECT_TRUE(click(L"/x.pdf", sharepoint_page(tab_, L"http://other\0.h/list"s)));
    EXPECT_EQ(recorded_launches().urls(), urls{empty_url});
}

TEST_F(HostilePage, ParsesNoPartOfTextWithAnEmbeddedNull)
{
    EXPECT_STREQ(parse_url(L"http://h/x.exe\0.pdf"sv).GetUrlPath(), L"");
    EXPECT_STREQ(parse_url(L"http://h/x.exe\0.pdf"sv).GetHostName(), L"");
}

// CUrl cannot parse the link without a server, so an empty URL is opened.
TEST_F(HostilePage, CompletesNoServerRelativeLinksOnPagesOfOtherSchemes)
{
    const launch_recording recording;
    for (const wchar_t* page_url_without_server :
         {L"file://server/share/page.htm", L"FILE:///C:/page.htm", L"ftp://h/page.htm", L"res://h/page.htm",
          L"mhtml:file://server/share/page.mht", L"ms-its:x.chm::/x.htm", L"about:blank", L"httpx://h/",
          L"xhttp://h/", L"javascript:'http://h/'", L""}) {
        SCOPED_TRACE(testing::PrintToString(page_url_without_server));
        for (const wchar_t* href :
             {L"/x.pdf", L"//other/x.pdf", L"///other/share/x.pdf", L"/\\other\\x.pdf"}) {
            recorded_launches() = {};
            EXPECT_TRUE(click(href, sharepoint_page(tab_, page_url_without_server)));
            EXPECT_EQ(recorded_launches().editor_lines, urls{L"/pdf \"sharepoint://http://\""}) << href;
        }
    }
    remove_editor();
    recorded_launches() = {};
    EXPECT_TRUE(click(L"//other/x.pdf", sharepoint_page(tab_, L"file://server/share/page.htm")));
    EXPECT_EQ(recorded_launches().default_urls, urls{empty_url});
}

TEST_F(HostilePage, CompletesServerRelativeLinksOfHttpAndHttps)
{
    const launch_recording recording;
    EXPECT_TRUE(click(L"/x.pdf", sharepoint_page(tab_, L"HTTP://h/list")));
    EXPECT_TRUE(click(L"//other/x.pdf", sharepoint_page(tab_, L"hTTps://h/list")));
    EXPECT_EQ(recorded_launches().urls(), (urls{L"HTTP://h/x.pdf", L"hTTps://other/x.pdf"}));
}

// Without the page's URL the link would be opened without its server.
TEST_F(HostilePage, OpensNothingWhenThePageRunsOutOfMemory)
{
    const launch_recording recording;
    bool fails = true;
    class page_without_memory : public fake_document
    {
    public:
        page_without_memory(fake_tab& tab, const bool& is_out_of_memory)
            : fake_document(tab, L"http://h/list"), is_out_of_memory_(is_out_of_memory)
        {
        }
        HRESULT STDMETHODCALLTYPE get_URL(BSTR* out) override
        {
            return is_out_of_memory_ ? E_OUTOFMEMORY : fake_document::get_URL(out);
        }

    private:
        const bool& is_out_of_memory_;
    };
    const auto page = make_fake<page_without_memory>(tab_, fails);
    page->add_to_head({.tag = L"META", .name = L"GENERATOR", .content = L"SharePoint"});
    EXPECT_FALSE(click(L"/x.pdf", page));
    EXPECT_EQ(recorded_launches().urls(), urls{});
    fails = false;
    EXPECT_TRUE(click(L"/x.pdf", page));
    EXPECT_EQ(recorded_launches().urls(), urls{L"http://h/x.pdf"});
}

} // namespace
} // namespace quill::test
