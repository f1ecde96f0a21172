// Clicks and rewriting on document libraries with the markup of several SharePoint versions, in the system's
// browser engine.
#include "stand_ins/html_engine/identifiers.h"
#include "tests/sharepoint_pages/library_site.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <regex>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

// Versions on a company's own server, which are handled, and of the online service, which are not.
constexpr const char* server_versions[] = {"2013", "2016", "2019"};
constexpr const char* online_versions[] = {"online", "online-modern"};

constexpr char page_request[] = "GET /sites/workshop/Service%20manuals/Forms/AllItems.aspx";
constexpr char last_request[] = "GET /last.html";

class Library : public LibrarySite
{
protected:
    std::wstring shown_page() const { return server.url(library_page); }

    // The page's markup without the helper object.
    std::wstring untouched_markup()
    {
        helper_tab plain(with_helper::no);
        plain.show(shown_page());
        return plain.markup();
    }

    void expect_start(const std::wstring& url)
    {
        expected_starts_.push_back(editor.editor_start(url));
        EXPECT_THAT(editor.starts(expected_starts_.size()), ElementsAreArray(expected_starts_));
    }

private:
    std::vector<program_start> expected_starts_;
};

TEST_F(Library, AClickOnAPdfStartsTheEditorAndIsCancelled)
{
    for (const char* version : server_versions) {
        SCOPED_TRACE(version);
        serve_library(version);
        helper_tab tab;
        tab.show(shown_page());
        tab.click(L"bracket");
        expect_start(file(L"Pivot%20bracket%202291-B.pdf"));
        tab.click(L"survey"); // its extension is in capitals
        expect_start(file(L"Mast%20survey.PDF"));
        EXPECT_TRUE(tab.is_showing(shown_page()));
        EXPECT_THAT(requests_at_the_end(tab), ElementsAre(page_request, last_request));
    }
}

// A link without its handler is followed, and the navigation is cancelled.
TEST_F(Library, ANavigationToAPdfStartsTheEditorAndIsCancelled)
{
    for (const char* version : server_versions) {
        SCOPED_TRACE(version);
        serve_library(version);
        helper_tab tab;
        tab.show(shown_page());
        tab.click(L"care");
        expect_start(file(L"Care%20of%20bearings.pdf"));
        tab.go_to(file(L"Typed.pdf"));
        expect_start(file(L"Typed.pdf"));
        EXPECT_TRUE(tab.is_showing(shown_page()));
        EXPECT_EQ(tab.after.count(DISPID_BEFORENAVIGATE2, file(L"Care%20of%20bearings.pdf")), 1u);
        EXPECT_TRUE(tab.after.entries().back().cancelled);
        EXPECT_THAT(requests_at_the_end(tab), ElementsAre(page_request, last_request));
    }
}

// The browser passes form data by a second reference, which is not dereferenced.
TEST_F(Library, AFormPostedToAPdfIsTreatedAsANavigation)
{
    serve_library("2013");
    helper_tab tab;
    tab.show(shown_page());
    tab.post_to(file(L"Report.pdf"), "part=2291-B");
    expect_start(file(L"Report.pdf"));
    EXPECT_THAT(requests_at_the_end(tab), ElementsAre(page_request, last_request));
}

TEST_F(Library, OnlyTheHandlersOfPdfsAreRemovedFromThePage)
{
    // The engine parses the written markup, which removes the space before the handler.
    const std::wregex handler(L" onclick=\"[^\"]*PdfFile\\.OpenDocuments[^\"]*\"");
    for (const char* version : server_versions) {
        SCOPED_TRACE(version);
        serve_library(version);
        const std::wstring untouched = untouched_markup();
        EXPECT_EQ(std::distance(std::wsregex_iterator(untouched.begin(), untouched.end(), handler), {}), 1);
        EXPECT_NE(untouched.find(L"SharePoint.OpenDocuments"), std::wstring::npos);
        helper_tab tab;
        tab.show(shown_page());
        EXPECT_EQ(tab.markup(), std::regex_replace(untouched, handler, L""));
    }
}

TEST_F(Library, AMouseClickOnAPdfStartsTheEditor)
{
    const std::string link = "<a class='ms-listlink ms-draggable' href='/x.pdf' "
                             "onclick=\"return DispEx(this,event,'TRUE')\">Document</a>";
    server.route("/list",
                 http_response::ok("<meta name=GENERATOR content=SharePoint><body>" + link, "text/html"));
    helper_tab tab;
    tab.show(server.url(L"/list"));
    const auto window = [&] { return tab.browser().find_window(page_window_class); };
    ASSERT_TRUE(wait_until([&] { return window() != nullptr; }));
    const LPARAM word = MAKELPARAM(24, 24); // the position of the page's first word
    PostMessageW(window(), WM_LBUTTONDOWN, MK_LBUTTON, word);
    PostMessageW(window(), WM_LBUTTONUP, 0, word);
    expect_start(server.url(L"/x.pdf"));
    EXPECT_THAT(requests_at_the_end(tab), ElementsAre("GET /list", last_request));
}

// Rewriting hundreds of links takes no longer than loading the page without it.
TEST_F(Library, WithHundredsOfPdfsIsRewrittenInTime)
{
    std::string page = sample(L"pages/parts.html");
    page = std::regex_replace(page, std::regex("partslist 3"), "Microsoft SharePoint");
    page = std::regex_replace(page, std::regex("href=\"parts/"), "href=\"/parts/");
    server.route("/large", http_response::ok(page, "text/html"));
    const std::wregex handler(L"onclick=\"[^\"]*PdfFile");
    double loading = 0;
    double longest = 1;
    // The machine may be busy in one run, but not in each.
    for (int attempt = 0; attempt < 3 && longest >= loading; ++attempt) {
        helper_tab plain(with_helper::no);
        plain.show(server.url(L"/large"));
        loading = plain.after.entries().back().at - plain.before.entries().front().at;
        helper_tab tab;
        tab.show(server.url(L"/large"));
        longest = longest_delay(tab);
        const std::wstring markup = tab.markup(); // every third link is not a PDF
        EXPECT_EQ(std::distance(std::wsregex_iterator(markup.begin(), markup.end(), handler), {}), 133);
    }
    EXPECT_LT(longest, loading);
}

TEST_F(Library, OtherLinksAreFollowed)
{
    struct
    {
        const char* version;
        const wchar_t* link;
        std::string target;
    } const links[] = {
        {"2013", L"history",
         "/sites/workshop/_vti_history/512/Service%20manuals/Pivot%20bracket%202291-B.pdf"},
        {"2013", L"home", "/sites/workshop/SitePages/Home.aspx"},
        {"2016", L"service", "/sites/workshop/_vti_bin/export.pdf"},
        {"2016", L"schedule", "/sites/workshop/Service%20manuals/Grease%20schedule.docx"},
        {"2019", L"archive", "/sites/workshop/Service%20manuals/Archive"},
    };
    for (const auto& link : links) {
        SCOPED_TRACE(link.target);
        serve_library(link.version);
        serve_short_page(link.target);
        helper_tab tab;
        tab.show(shown_page());
        tab.click(link.link);
        EXPECT_TRUE(wait_until([&] { return tab.is_showing(server.url(to_wide(link.target))); }));
        EXPECT_THAT(requests_at_the_end(tab), ElementsAre(page_request, "GET " + link.target, last_request));
    }
    EXPECT_THAT(editor.starts(0), IsEmpty());
}

TEST_F(Library, OfTheOnlineServiceIsIgnored)
{
    const std::string bracket = "/sites/workshop/Service%20manuals/Pivot%20bracket%202291-B.pdf";
    serve_short_page(bracket);
    for (const char* version : online_versions) {
        SCOPED_TRACE(version);
        serve_library(version);
        const std::wstring untouched = untouched_markup();
        requests_so_far();
        helper_tab tab;
        tab.show(shown_page());
        EXPECT_EQ(tab.markup(), untouched);
        tab.click(L"bracket");
        EXPECT_TRUE(wait_until([&] { return tab.is_showing(server.url(to_wide(bracket))); }));
        EXPECT_THAT(requests_at_the_end(tab), ElementsAre(page_request, "GET " + bracket, last_request));
    }
    EXPECT_THAT(editor.starts(0), IsEmpty());
}

} // namespace
} // namespace quill::test
