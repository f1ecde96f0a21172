// Frames: the tab fires the events of their browsers, and each navigation is judged by its frame's page.
#include "tests/browser/html_page_access.h"
#include "tests/sharepoint_pages/library_site.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr char library_request[] = "GET /sites/workshop/Service%20manuals/Forms/AllItems.aspx";
constexpr char last_request[] = "GET /last.html";

class Frames : public LibrarySite
{
protected:
    Frames()
    {
        serve_library("2016");
        serve_short_page("/sites/workshop/Service%20manuals/Typed.pdf");
    }

    // A frame in a tab: a browser whose events the tab fires.
    class frame
    {
    public:
        explicit frame(helper_tab& tab)
        {
            EXPECT_EQ(tab.tab().add_frame(browser_.control().browser()), S_OK);
        }
        void show(const std::wstring& url) { page_ = open_page(browser_, url); }
        void go_to(const std::wstring& url) { browser_.open(url); }
        bool is_showing(const std::wstring& expected)
        {
            const auto shown = complete_page(browser_);
            CComBSTR url;
            return shown && shown->get_URL(&url) == S_OK && url == expected.c_str();
        }
        CComPtr<IHTMLElement> element(const wchar_t* id) { return element_by_id(page_, id); }

    private:
        engine browser_;
        CComPtr<IHTMLDocument2> page_;
    };

    // All requests.
    std::vector<std::string> requests_at_the_end_of(frame& inside)
    {
        inside.show(server.url(L"/last.html"));
        return requests_so_far();
    }
};

TEST_F(Frames, APdfOfALibraryInAFrameStartsTheEditor)
{
    helper_tab tab;
    tab.show(server.url(L"/frames.html"));
    frame inside(tab);
    inside.show(server.url(library_page));
    inside.go_to(file(L"Typed.pdf"));
    EXPECT_THAT(editor.starts(1), ElementsAre(editor.editor_start(file(L"Typed.pdf"))));
    EXPECT_TRUE(inside.is_showing(server.url(library_page)));
    EXPECT_THAT(requests_at_the_end_of(inside),
                ElementsAre("GET /frames.html", library_request, last_request));
}

// A frame's page is not the tab's page: no sink is advised on it, and it is not rewritten.
TEST_F(Frames, AFramesPageIsNeitherAdvisedNorChanged)
{
    helper_tab tab;
    tab.show(server.url(L"/frames.html"));
    frame inside(tab);
    inside.show(server.url(library_page));
    EXPECT_EQ(tab.after.count(DISPID_DOCUMENTCOMPLETE, server.url(library_page)), 1u);
    EXPECT_NE(outer_html_of(inside.element(L"care")).find(L"PdfFile.OpenDocuments"), std::wstring::npos);
    // The navigation is cancelled, not the click.
    EXPECT_EQ(inside.element(L"bracket")->click(), S_OK);
    const std::wstring bracket = file(L"Pivot%20bracket%202291-B.pdf");
    EXPECT_THAT(editor.starts(1), ElementsAre(editor.editor_start(bracket)));
    EXPECT_EQ(tab.after.count(DISPID_BEFORENAVIGATE2, bracket), 1u);
}

TEST_F(Frames, APdfOfAnOrdinaryPageInAFrameOfALibraryIsNotCancelled)
{
    helper_tab tab;
    tab.show(server.url(library_page));
    frame inside(tab);
    inside.show(server.url(L"/documents.html"));
    inside.go_to(file(L"Typed.pdf"));
    EXPECT_TRUE(wait_until([&] { return inside.is_showing(file(L"Typed.pdf")); }));
    EXPECT_THAT(requests_at_the_end_of(inside),
                ElementsAre(library_request, "GET /documents.html",
                            "GET /sites/workshop/Service%20manuals/Typed.pdf", last_request));
    EXPECT_THAT(tab.after.lines(), Not(Contains(HasSubstr("cancelled"))));
    EXPECT_THAT(editor.starts(0), IsEmpty());
}

// Clicks in both frames of samples/handbook.
TEST_F(Frames, AreTheSameWithAndWithoutTheHelperObject)
{
    std::vector<std::vector<std::string>> events;
    std::vector<std::vector<std::string>> requests;
    for (const with_helper helper : {with_helper::no, with_helper::yes}) {
        helper_tab tab(helper);
        tab.show(server.url(L"/frames.html"));
        frame contents(tab);
        frame chapter(tab);
        contents.show(server.url(L"/contents.html"));
        chapter.show(server.url(L"/documents.html"));
        EXPECT_EQ(chapter.element(L"parts")->click(), S_OK);
        EXPECT_TRUE(wait_until([&] { return chapter.is_showing(server.url(L"/parts.html")); }));
        chapter.go_to(server.url(L"/sites/workshop/Service%20manuals/Typed.pdf"));
        EXPECT_TRUE(wait_until([&] { return chapter.is_showing(file(L"Typed.pdf")); }));
        requests.push_back(requests_at_the_end_of(contents));
        events.push_back(tab.after.lines());
    }
    EXPECT_EQ(events[1], events[0]);
    EXPECT_EQ(requests[1], requests[0]);
    EXPECT_EQ(requests[0].size(), 6u);
    EXPECT_THAT(editor.starts(0), IsEmpty());
}

} // namespace
} // namespace quill::test
