#include "sharepoint/decisions/links.h"
#include "sharepoint/decisions/page_kind.h"
#include "sharepoint/decisions/ready_state.h"
#include "sharepoint/decisions/repeat_guard.h"
#include "sharepoint/editor/editor_launch.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

namespace quill {
namespace {

struct meta_texts
{
    std::wstring name_text;
    std::wstring content_text;
    int* contents_read = nullptr;

    const std::wstring& name() const { return name_text; }
    const std::wstring& content() const
    {
        if (contents_read)
            ++*contents_read;
        return content_text;
    }
};

page_kind kind_of(const std::vector<std::wstring>& scripts, const std::vector<meta_texts>& metas)
{
    return decide_page_kind([&](auto test) { return std::any_of(scripts.begin(), scripts.end(), test); },
                            [&](auto test) { return std::any_of(metas.begin(), metas.end(), test); });
}

TEST(PageKind, IsDecidedByTheHead)
{
    struct
    {
        const char* what;
        std::vector<std::wstring> scripts;
        std::vector<meta_texts> metas;
        page_kind kind;
    } const cases[] = {
        {"nothing", {}, {}, page_kind::regular},
        {"generator", {}, {{L"GENERATOR", L"Microsoft SharePoint"}}, page_kind::sharepoint},
        {"lower case, longer text", {}, {{L"generator", L"My SHAREPOINTserver 16"}}, page_kind::sharepoint},
        {"exactly", {}, {{L"Generator", L"SharePoint"}}, page_kind::sharepoint},
        {"another generator", {}, {{L"GENERATOR", L"WordPress"}}, page_kind::regular},
        {"another name", {}, {{L"description", L"SharePoint"}}, page_kind::regular},
        {"longer name", {}, {{L"GENERATORS", L"SharePoint"}}, page_kind::regular},
        {"name with a blank", {}, {{L"GENERATOR ", L"SharePoint"}}, page_kind::regular},
        {"empty content", {}, {{L"GENERATOR", L""}}, page_kind::regular},
        {"parted word", {}, {{L"GENERATOR", L"Share Point"}}, page_kind::regular},
        {"second generator",
         {},
         {{L"GENERATOR", L"x"}, {L"a", L"b"}, {L"generator", L"sharepoint"}},
         page_kind::sharepoint},
        {"script",
         {L"https://static.sharepointonline.com/bld/x.js"},
         {},
         page_kind::sharepoint_online_scripts},
        {"script in capitals",
         {L"HTTPS://X.SHAREPOINTONLINE.COM/X.JS"},
         {},
         page_kind::sharepoint_online_scripts},
        {"second script",
         {L"/init.js", L"//a.sharepointonline.com/"},
         {},
         page_kind::sharepoint_online_scripts},
        {"script without the slash", {L"https://x.sharepointonline.com"}, {}, page_kind::regular},
        {"script without the dot", {L"https://sharepointonline.com/x.js"}, {}, page_kind::regular},
        {"scripts win",
         {L"https://x.sharepointonline.com/x.js"},
         {{L"GENERATOR", L"SharePoint"}},
         page_kind::sharepoint_online_scripts},
        {"other scripts do not matter",
         {L"", L"x.js"},
         {{L"GENERATOR", L"SharePoint"}},
         page_kind::sharepoint},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.what);
        EXPECT_EQ(kind_of(expected.scripts, expected.metas), expected.kind);
    }
}

TEST(PageKind, ReadsContentsOfGeneratorsOnly)
{
    int contents_read = 0;
    kind_of({}, {{L"viewport", L"w", &contents_read}, {L"generator", L"w", &contents_read}});
    EXPECT_EQ(contents_read, 1);
}

TEST(PageKind, HasFixedValues)
{
    EXPECT_EQ(static_cast<int>(page_kind::sharepoint), 0);
    EXPECT_EQ(static_cast<int>(page_kind::sharepoint_online_scripts), 1);
    EXPECT_EQ(static_cast<int>(page_kind::regular), 2);
}

using namespace std::string_view_literals;

struct url_case
{
    std::wstring_view url;
    bool is_link;
};

TEST(PdfLink, IsRecognised)
{
    const url_case cases[] = {
        {L"", false},
        {L"/", false},
        {L"/sites/a/Shared Documents/x.PDF", true},
        {L"/x.pdf", true},
        {L"/.pdf", true},
        {L"//server/x.pdf", true},
        {L"ftp://h/x.pdf", false},
        {L"file:///c:/x.pdf", false},
        {L"x.pdf", false},
        {L".pdf", false},
        {L"\\x.pdf", false},
        {L" /x.pdf", false},
        {L" http://h/x.pdf", false},
        {L"http.pdf", true}, // only the beginning counts
        {L"http://h/x.pdf", true},
        {L"https://h/x.pdf", true},
        {L"HTTPS://H/X.PDF", true},
        {L"htt", false},
        {L"https://h/x.pdf?web=1", false},
        {L"https://h/x.pdf#page=2", false},
        {L"https://h/x.pdf ", false},
        {L"https://h/x?f=y.pdf", true},
        {L"https://h/xpdf", false},
        {L"https://h/x.pdfx", false},
        {L"https://h/_vti_history/512/x.pdf", false},
        {L"https://h/_VTI_History/512/x.pdf", false},
        {L"/_vti_history/512/x.pdf", false},
        {L"https://h/_vti_bin/x.pdf", false},
        {L"https://h/a/_VTI_BIN/x.pdf", false},
        {L"https://h/_vti_history.pdf", true},
        {L"https://h/_vti_binary/x.pdf", true},
        {L"https://h/x_vti_bin/x.pdf", true},
        {L"/Übersicht/文書.PdF", true},
        {L"\xD83D\xDE00.pdf", false},
        {L"httpfoo:x.pdf", true}, // only the beginning counts
        {L"http://h/a\" /b.pdf", true},
        {L"http://h/\t\x01\xD800.pdf", true},
        {L"http://h/x.exe\0.pdf"sv, false},
        {L"/x.exe\0.pdf"sv, false},
        {L"http\0://h/x.pdf"sv, false},
        {L"/x\0.pdf"sv, false},
        {L"/x.pdf\0"sv, false},
    };
    for (const url_case& expected : cases) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(expected.url)));
        EXPECT_EQ(is_pdf_link(expected.url), expected.is_link);
    }
}

TEST(PdfLink, IsLoggedEvenIfItIsRejected)
{
    test::log_capture log;
    is_pdf_link(L"");
    is_pdf_link(L"/ä.pdf");
    is_pdf_link(L"mailto:x");
    const std::vector<std::string> expected = {"debug: detect click to ", "debug: detect click to /ä.pdf",
                                               "debug: detect click to mailto:x"};
    EXPECT_EQ(log.lines(), expected);
}

TEST(ListLink, IsRecognisedByTagAndMarkup)
{
    EXPECT_TRUE(is_link_tag(L"A"));
    EXPECT_TRUE(is_link_tag(L"a"));
    EXPECT_FALSE(is_link_tag(L""));
    EXPECT_FALSE(is_link_tag(L"AREA"));
    EXPECT_FALSE(is_link_tag(L"IMG"));

    const url_case markups[] = {
        {L"", false},
        {LR"m(<a class="ms-listlink ms-draggable" onclick="return DispEx(this,event)" href="/x.pdf">x</a>)m",
         true},
        {LR"m(<A HREF="/x.pdf" ONCLICK="RETURN DISPEX(THIS" CLASS="MS-LISTLINK MS-DRAGGABLE">)m", true},
        {LR"m(<a class="ms-listlink ms-draggable extra" onclick="return DispEx(this,event)">)m", false},
        {LR"m(<a class="x ms-listlink ms-draggable" onclick="return DispEx(this,event)">)m", false},
        {LR"m(<a class="ms-listlink" onclick="return DispEx(this,event)">)m", false},
        {LR"m(<a class='ms-listlink ms-draggable' onclick="return DispEx(this,event)">)m", false},
        {LR"m(<a class=" ms-listlink ms-draggable" onclick="return DispEx(this,event)">)m", false},
        {LR"m(<a class="ms-listlink ms-draggable" onclick=" return DispEx(this,event)">)m", false},
        {LR"m(<a class="ms-listlink ms-draggable" onclick='return DispEx(this,event)'>)m", false},
        {LR"m(<a class="ms-listlink ms-draggable" onclick = "return DispEx(this,event)">)m", false},
        {LR"m(<a class="ms-listlink ms-draggable" onclick="DispEx(this,event)">)m", false},
        {LR"m(<a class="ms-listlink ms-draggable" onmousedown="return DispEx(this)">)m", false},
        {LR"m(<a class="ms-listlink ms-draggable">)m", false},
    };
    for (const url_case& expected : markups) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(expected.url)));
        EXPECT_EQ(is_list_link_markup(expected.url), expected.is_link);
    }
}

TEST(AbsoluteLink, IsCompletedFromThePageUrl)
{
    struct
    {
        const wchar_t* link;
        const wchar_t* page;
        const wchar_t* url;
    } const cases[] = {
        {L"/sites/a/x.pdf", L"https://server/sites/a/Forms/AllItems.aspx", L"https://server/sites/a/x.pdf"},
        {L"/x.pdf", L"http://server:8080/list?a=b#c", L"http://server:8080/x.pdf"},
        {L"/x.pdf", L"http://server", L"http://server/x.pdf"},
        {L"/x.pdf", L"http://server?u=http://other/", L"http://server/x.pdf"},
        {L"/x.pdf", L"http://server#a/b", L"http://server/x.pdf"},
        {L"/Übersicht 文.pdf", L"http://ä/", L"http://ä/Übersicht 文.pdf"},
        {L"//other/x.pdf", L"https://server/list", L"https://other/x.pdf"},
        {L"http://other/x.pdf", L"https://server/list", L"http://other/x.pdf"},
        {L"https://server/x.pdf", L"http://server/", L"https://server/x.pdf"},
        {L"x.pdf", L"https://server/list", L"x.pdf"},
        {L"", L"https://server/list", L""},
        {L"/x.pdf", L"", L"/x.pdf"},
        {L"/x.pdf", L"about:blank", L"/x.pdf"},
        {L"/x.pdf", L"file:///c:/page.htm", L"/x.pdf"},
        {L"/x.pdf", L"http://", L"/x.pdf"},
        {L"/x.pdf", L"http:///list", L"/x.pdf"},
        {L"/x.pdf", L"HTTP://Server/list", L"HTTP://Server/x.pdf"},
        {L"//other/x.pdf", L"hTTps://server/", L"hTTps://other/x.pdf"},
        {L"/x.pdf", L"file://server/share/page.htm", L"/x.pdf"},
        {L"//other/x.pdf", L"file://server/share/page.htm", L"//other/x.pdf"},
        {L"//other/x.pdf", L"FILE:///c:/page.htm", L"//other/x.pdf"},
        {L"///other/share/x.pdf", L"file:///c:/page.htm", L"///other/share/x.pdf"},
        {L"/x.pdf", L"ftp://server/page.htm", L"/x.pdf"},
        {L"/x.pdf", L"res://module/page.htm", L"/x.pdf"},
        {L"/x.pdf", L"httpx://server/", L"/x.pdf"},
        {L"/x.pdf", L"xhttp://server/", L"/x.pdf"},
        {L"/x.pdf", L" http://server/", L"/x.pdf"},
        {L"/x.pdf", L"://server/", L"/x.pdf"},
        {L"/x.pdf", L"mhtml:http://server/page.mht", L"/x.pdf"},
        {L"/x.pdf", L"about:blank?http://server/", L"/x.pdf"},
    };
    for (const auto& expected : cases)
        EXPECT_EQ(absolute_link(expected.link, expected.page), expected.url)
            << testing::PrintToString(expected.link) << " in " << testing::PrintToString(expected.page);
}

TEST(ReadyState, IsNamedExactly)
{
    EXPECT_EQ(ready_state_from_text(L"uninitialized"), ready_state::uninitialized);
    EXPECT_EQ(ready_state_from_text(L"loading"), ready_state::loading);
    EXPECT_EQ(ready_state_from_text(L"loaded"), ready_state::loaded);
    EXPECT_EQ(ready_state_from_text(L"interactive"), ready_state::interactive);
    EXPECT_EQ(ready_state_from_text(L"complete"), ready_state::complete);
    EXPECT_EQ(static_cast<int>(ready_state::complete), 4);
    for (const wchar_t* other :
         {L"", L"Complete", L"COMPLETE", L"complete ", L"complet", L"completed", L"load"})
        EXPECT_EQ(ready_state_from_text(other), ready_state::uninitialized) << testing::PrintToString(other);
}

TEST(RepeatGuard, RecognisesTheSameUrlWithin100Milliseconds)
{
    repeat_guard guard(1'000);
    EXPECT_FALSE(guard.is_repeat(L"http://h/Doc.pdf", 1'000)); // nothing was cancelled yet

    guard.cancelled(L"http://h/Doc.pdf", 5'000);
    EXPECT_TRUE(guard.is_repeat(L"http://h/Doc.pdf", 5'000));
    EXPECT_TRUE(guard.is_repeat(L"HTTP://H/DOC.PDF", 5'050));
    EXPECT_TRUE(guard.is_repeat(L"http://h/Doc.pdf", 5'099));
    EXPECT_FALSE(guard.is_repeat(L"http://h/Doc.pdf", 5'100));
    EXPECT_FALSE(guard.is_repeat(L"http://h/Doc.pdf", 50'000));
    EXPECT_FALSE(guard.is_repeat(L"http://h/Doc.pdf?", 5'050));
    EXPECT_FALSE(guard.is_repeat(L"http://h/Doc.pd", 5'050));
    EXPECT_FALSE(guard.is_repeat(L"http://h/Dox.pdf", 5'050));
    EXPECT_FALSE(guard.is_repeat(L"", 5'050));
    EXPECT_FALSE(guard.is_repeat(L"http://h/Doc.pdf", 4'999)); // a tick before the last is ages away
}

TEST(RepeatGuard, RestartsTheIntervalWithEachCancellation)
{
    repeat_guard guard(0);
    guard.cancelled(L"http://h/a.pdf", 1'000);
    guard.cancelled(L"http://h/a.pdf", 1'090);
    EXPECT_TRUE(guard.is_repeat(L"http://h/a.pdf", 1'189));
    EXPECT_FALSE(guard.is_repeat(L"http://h/a.pdf", 1'190));
    guard.cancelled(L"http://h/b.pdf", 1'190);
    EXPECT_FALSE(guard.is_repeat(L"http://h/a.pdf", 1'191)); // one URL is remembered
    EXPECT_TRUE(guard.is_repeat(L"http://h/b.pdf", 1'191));
}

TEST(RepeatGuard, ForgetsTheUrlAndKeepsTheTime)
{
    repeat_guard guard(0);
    guard.cancelled(L"http://h/a.pdf", 1'000);
    guard.forget_url();
    EXPECT_FALSE(guard.is_repeat(L"http://h/a.pdf", 1'001));
    EXPECT_TRUE(guard.is_repeat(L"", 1'001));
}

TEST(RepeatGuard, ForgetsAUrlOnlyIfItIsTheLast)
{
    repeat_guard guard(0);
    guard.cancelled(L"http://h/a.pdf", 1'000);
    guard.forget_url(L"http://h/b.pdf");
    EXPECT_TRUE(guard.is_repeat(L"http://h/a.pdf", 1'001));
    guard.forget_url(L"HTTP://H/A.PDF");
    EXPECT_FALSE(guard.is_repeat(L"http://h/a.pdf", 1'001));
}

TEST(RepeatGuard, RecognisesTheUrlThatIsBeingOpenedAtAnyTime)
{
    repeat_guard guard(0);
    guard.begin_opening(L"http://h/a.pdf");
    EXPECT_TRUE(guard.is_repeat(L"HTTP://h/A.pdf", 50'000));
    EXPECT_FALSE(guard.is_repeat(L"http://h/b.pdf", 50'000));
    guard.begin_opening(L"http://h/b.pdf");
    EXPECT_TRUE(guard.is_repeat(L"http://h/a.pdf", 50'000));
    EXPECT_TRUE(guard.is_repeat(L"http://h/b.pdf", 50'000));
    EXPECT_EQ(guard.openings(), 2u);
    guard.end_openings(1);
    EXPECT_TRUE(guard.is_repeat(L"http://h/a.pdf", 50'000));
    EXPECT_FALSE(guard.is_repeat(L"http://h/b.pdf", 50'000));
    guard.forget_url();
    EXPECT_TRUE(guard.is_repeat(L"http://h/a.pdf", 50'000));
    guard.end_openings(2); // there are fewer already
    EXPECT_EQ(guard.openings(), 1u);
    guard.end_openings(0);
    EXPECT_FALSE(guard.is_repeat(L"http://h/a.pdf", 50'000));
    EXPECT_FALSE(guard.is_repeat(L"", 50'000));
}

TEST(RepeatGuard, ToleratesAnOverflowOfTheTickCount)
{
    repeat_guard guard(0);
    guard.cancelled(L"x", std::numeric_limits<std::uint64_t>::max() - 9);
    EXPECT_TRUE(guard.is_repeat(L"X", 89));
    EXPECT_FALSE(guard.is_repeat(L"X", 90));
}

TEST(EditorLaunch, FormatsTheCommandLine)
{
    EXPECT_EQ(editor_command_line(L"https://server/sites/a/x.pdf"),
              L"/pdf \"sharepoint://https://server/sites/a/x.pdf\"");
    EXPECT_EQ(editor_command_line(L""), L"/pdf \"sharepoint://\"");
    EXPECT_EQ(editor_command_line(L"{}%s{0}\\ä 文"), L"/pdf \"sharepoint://{}%s{0}\\ä 文\"");
}

TEST(EditorLaunch, EscapesCharactersThatEndAnArgument)
{
    EXPECT_EQ(editor_command_line(L"http://h/a\" /other \"C:\\x.pdf"),
              L"/pdf \"sharepoint://http://h/a%22 /other %22C:\\x.pdf\"");
    EXPECT_EQ(editor_command_line(L"\\\"\\"), L"/pdf \"sharepoint://\\%22\\\"");
    EXPECT_EQ(editor_command_line(L"\0\x01\t\n\r\x1B\x1F !"sv),
              L"/pdf \"sharepoint://%00%01%09%0A%0D%1B%1F !\"");
    EXPECT_EQ(editor_command_line(L"%22\x7F\x80\x0100\x0122\x2022\xD800\xFFFF"),
              L"/pdf \"sharepoint://%22\x7F\x80\x0100\x0122\x2022\xD800\xFFFF\"");
}

TEST(EditorLaunch, ExtractsTheWorkingDirectory)
{
    struct
    {
        const wchar_t* path;
        const wchar_t* directory;
    } const cases[] = {
        {L"C:\\Apps\\Editor\\editor.exe", L"C:\\Apps\\Editor"},
        {L"C:/Apps/Editor/editor.exe", L"C:/Apps/Editor"},
        {L"C:\\Apps/editor.exe", L"C:\\Apps"},
        {L"C:\\Apps\\\\//editor.exe", L"C:\\Apps"},
        {L"C:\\Program Files\\Übersicht 文\\e.exe", L"C:\\Program Files\\Übersicht 文"},
        {L"C:\\editor.exe", L"C:\\"},
        {L"C:\\\\editor.exe", L"C:\\"},
        {L"C:/editor.exe", L"C:/"},
        {L"C:editor.exe", L"C:"},
        {L"C:", L"C:"},
        {L"C:\\", L"C:\\"},
        {L"C:\\Apps\\", L"C:\\Apps"},
        {L"\\editor.exe", L"\\"},
        {L"/editor.exe", L"/"},
        {L"\\Apps\\editor.exe", L"\\Apps"},
        {L"\\\\\\editor.exe", L"\\"},
        {L"editor.exe", L""},
        {L"Apps\\editor.exe", L"Apps"},
        {L"Apps\\\\editor.exe", L"Apps"},
        {L"\\\\server\\share\\editor.exe", L"\\\\server\\share"},
        {L"\\\\server\\editor.exe", L"\\\\server\\"},
        {L"\\\\server", L"\\\\server"},
        {L"\\\\?\\C:\\editor.exe", L"\\\\?\\C:\\"},
        {L"\\\\?\\C:\\Apps\\editor.exe", L"\\\\?\\C:\\Apps"},
        {L"", L""},
        {L"\\", L"\\"},
        {L"\\\\", L"\\"},
    };
    for (const auto& expected : cases)
        EXPECT_EQ(parent_directory(expected.path), expected.directory)
            << testing::PrintToString(expected.path);
}

} // namespace
} // namespace quill
