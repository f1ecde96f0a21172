// A SharePoint page is whatever carries SharePoint's generator: what a page that means harm can make of the
// start of the editor and of the default handler.
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

constexpr wchar_t empty_url[] = L"http://"; // what text that cannot be taken apart is opened as

class HostilePage : public aggregator_bench
{
protected:
    // Clicks a list link of a page. Whether the click was cancelled.
    bool click(const std::wstring& href, fake_document* page = nullptr)
    {
        fake_document* const clicked = page ? page : page_.p;
        browser_->document = clicked->dispatch();
        complete();
        const auto event = make_fake<fake_event>(scene_, &clicked->add_to_body(list_link(href)));
        const auto result = clicked->click(event);
        EXPECT_EQ(result.code, S_OK);
        EXPECT_EQ(is_bool(result.value, true), event->is_untouched());
        return is_bool(result.value, false);
    }
    void remove_editor()
    {
        bench_.set_editor(L"C:\\nowhere\\editor.exe");
        aggregator_ = std::make_shared<browser_events_aggregator>();
    }
};

struct hostile_link
{
    std::wstring href;
    std::wstring on_command_line;
};

// The editor is a real program, which takes its command line apart itself.
TEST_F(HostilePage, GivesTheEditorOneArgumentWhateverTheLinkIs)
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
        expected.push_back(bench_.editor_start(link.on_command_line));
    }
    // Programs that run at the same time are recorded in any order.
    EXPECT_THAT(bench_.starts(expected.size()), testing::UnorderedElementsAreArray(expected));
}

TEST_F(HostilePage, GivesTheEditorOneArgumentWhateverTheNavigationIs)
{
    EXPECT_TRUE(navigate(L"http://h/a\" /other \"C:\\x.pdf"));
    EXPECT_EQ(bench_.starts(1), std::vector{bench_.editor_start(L"http://h/a%22 /other %22C:\\x.pdf")});
}

// Half a character is no text in UTF-8, which the record is in, but a character of a command line.
TEST_F(HostilePage, GivesTheEditorHalvesOfCharacters)
{
    EXPECT_TRUE(click(L"http://h/\xD800 \xDC00\" .pdf"));
    auto expected = bench_.editor_start(L"http://h/\xD800 \xDC00%22 .pdf");
    expected.command_line = L"/pdf \"sharepoint://http://h/\xFFFD \xFFFD%22 .pdf\"";
    EXPECT_EQ(bench_.starts(1), std::vector{expected});
}

TEST_F(HostilePage, ChangesNothingOfTheUrlInTheLog)
{
    const launch_recording recording;
    log_.clear();
    EXPECT_TRUE(navigate(L"http://h/a\"\t.pdf"));
    EXPECT_EQ(log_.lines().back(), "info: checkout file http://h/a\"\t.pdf");
    EXPECT_EQ(recorded_launches().editor_lines, urls{L"/pdf \"sharepoint://http://h/a%22%09.pdf\""});
}

TEST_F(HostilePage, ChangesNothingOfTheUrlForTheDefaultHandler)
{
    remove_editor();
    const launch_recording recording;
    EXPECT_TRUE(navigate(L"http://h/a\" /other \"\t.pdf"));
    EXPECT_TRUE(click(L"/a\"\\\".pdf"));
    EXPECT_EQ(recorded_launches().default_urls,
              (urls{L"http://h/a\" /other \"\t.pdf", L"http://h/a\"\\\".pdf"}));
    EXPECT_EQ(recorded_launches().editor_lines, urls{});
}

// Windows takes command lines of up to 32,766 characters.
TEST_F(HostilePage, StartsTheEditorWithTheLongestCommandLine)
{
    const std::wstring around = L"/pdf \"sharepoint://http://h/.pdf\"";
    const std::wstring url = L"http://h/" + std::wstring(32'766 - around.size(), L'x') + L".pdf";
    EXPECT_TRUE(click(url));
    const auto starts = bench_.starts(1);
    EXPECT_EQ(starts, std::vector{bench_.editor_start(url)});
    EXPECT_EQ(starts.at(0).command_line.size(), 32'766u);
}

TEST_F(HostilePage, GivesTheDefaultHandlerWhatIsTooLongForACommandLine)
{
    const launch_recording recording;
    const std::wstring around = L"/pdf \"sharepoint://http://h/.pdf\"";
    const std::wstring url = L"http://h/" + std::wstring(32'767 - around.size(), L'x') + L".pdf";
    // Escapes are three characters of the line and one of the URL.
    const std::wstring quotes = L"http://h/" + std::wstring(11'000, L'"') + L".pdf";
    EXPECT_TRUE(click(url));
    EXPECT_TRUE(navigate(quotes));
    EXPECT_EQ(recorded_launches().default_urls, (urls{url, quotes}));
    EXPECT_EQ(recorded_launches().editor_lines, urls{});
    EXPECT_EQ(log_.lines().back(), "warning: QuillStudio failed. Trying to use default pdf view...");
}

// Read up to the null, such text is another URL than the one that was tested.
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

// An escaped null is text like any other; nothing on the way unescapes it.
TEST_F(HostilePage, PassesAnEscapedNullOnAsItIs)
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

TEST_F(HostilePage, OpensNothingOfAPageUrlWithAnEmbeddedNull)
{
    const launch_recording recording;
    EXPECT_TRUE(click(L"/x.pdf", sharepoint_page(scene_, L"http://other\0.h/list"s)));
    EXPECT_EQ(recorded_launches().urls(), urls{empty_url});
}

TEST_F(HostilePage, TakesNoPartOfTextWithAnEmbeddedNull)
{
    EXPECT_STREQ(parse_url(L"http://h/x.exe\0.pdf"sv).GetUrlPath(), L"");
    EXPECT_STREQ(parse_url(L"http://h/x.exe\0.pdf"sv).GetHostName(), L"");
}

// The link passes on as it stands, without a server, to the URL object, which makes an empty URL of it.
TEST_F(HostilePage, GivesServerRelativeLinksNoOtherSchemeThanHttp)
{
    const launch_recording recording;
    for (const wchar_t* page_of_no_server :
         {L"file://server/share/page.htm", L"FILE:///C:/page.htm", L"ftp://h/page.htm", L"res://h/page.htm",
          L"mhtml:file://server/share/page.mht", L"ms-its:x.chm::/x.htm", L"about:blank", L"httpx://h/",
          L"xhttp://h/", L"javascript:'http://h/'", L""}) {
        SCOPED_TRACE(testing::PrintToString(page_of_no_server));
        for (const wchar_t* href :
             {L"/x.pdf", L"//other/x.pdf", L"///other/share/x.pdf", L"/\\other\\x.pdf"}) {
            recorded_launches() = {};
            EXPECT_TRUE(click(href, sharepoint_page(scene_, page_of_no_server)));
            EXPECT_EQ(recorded_launches().editor_lines, urls{L"/pdf \"sharepoint://http://\""}) << href;
        }
    }
    remove_editor();
    recorded_launches() = {};
    EXPECT_TRUE(click(L"//other/x.pdf", sharepoint_page(scene_, L"file://server/share/page.htm")));
    EXPECT_EQ(recorded_launches().default_urls, urls{empty_url});
}

TEST_F(HostilePage, CompletesServerRelativeLinksOfHttpAndHttps)
{
    const launch_recording recording;
    EXPECT_TRUE(click(L"/x.pdf", sharepoint_page(scene_, L"HTTP://h/list")));
    EXPECT_TRUE(click(L"//other/x.pdf", sharepoint_page(scene_, L"hTTps://h/list")));
    EXPECT_EQ(recorded_launches().urls(), (urls{L"HTTP://h/x.pdf", L"hTTps://other/x.pdf"}));
}

// Without the page's URL the link would be opened without its server.
TEST_F(HostilePage, OpensNothingWhenThePageRunsOutOfMemory)
{
    const launch_recording recording;
    bool fails = true;
    class poor_page : public fake_document
    {
    public:
        poor_page(fake_scene& scene, const bool& is_poor)
            : fake_document(scene, L"http://h/list"), is_poor_(is_poor)
        {
        }
        HRESULT STDMETHODCALLTYPE get_URL(BSTR* out) override
        {
            return is_poor_ ? E_OUTOFMEMORY : fake_document::get_URL(out);
        }

    private:
        const bool& is_poor_;
    };
    const auto page = make_fake<poor_page>(scene_, fails);
    page->add_to_head({.tag = L"META", .name = L"GENERATOR", .content = L"SharePoint"});
    EXPECT_FALSE(click(L"/x.pdf", page));
    EXPECT_EQ(recorded_launches().urls(), urls{});
    fails = false;
    EXPECT_TRUE(click(L"/x.pdf", page));
    EXPECT_EQ(recorded_launches().urls(), urls{L"http://h/x.pdf"});
}

} // namespace
} // namespace quill::test
