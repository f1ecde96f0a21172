// A document library in the browser's engine, with the installed helper object and the stand-in for the
// editor.
#include "tests/acceptance/installed/installed_fixture.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint_pages/helper_tab.h"
#include "tests/support/text.h"

namespace quill::test {
namespace {

constexpr char library_page[] = "/sites/workshop/Service%20manuals/Forms/AllItems.aspx";
constexpr wchar_t clicked_pdf[] = L"/sites/workshop/Service%20manuals/Pivot%20bracket%202291-B.pdf";

class Library : public installed_fixture
{
protected:
    Library()
    {
        editor.use_editor();
        server.route(library_page,
                     http_response::ok(sample(L"sharepoint/library-2013.html"), "text/html; charset=utf-8"));
        // The page's own scripts, so that the engine reports no errors.
        for (const char* script_path :
             {"/_layouts/15/init.js", "/_layouts/15/1033/initstrings.js", "/_layouts/15/core.js"})
            server.route(script_path, http_response::ok(" ", "text/javascript"));
    }

    editor_programs editor{default_handlers::untouched};
};

TEST_F(Library, AClickOnAPdfStartsTheEditorAndTheServerIsNotAsked)
{
    helper_tab tab;
    EXPECT_EQ(tab.browser().control().browser()->put_Silent(VARIANT_TRUE), S_OK); // no script error dialogs
    tab.show(server.url(to_wide(library_page)));
    tab.click(L"bracket");
    const auto starts = editor.starts(1);

    std::string events;
    for (const std::string& line : tab.before.lines())
        events += (events.empty() ? "" : ", ") + line;
    print_answer("html-events",
                 "browser events of the load and of a click by IHTMLElement::click, as the kit's "
                 "tab relays them, by their identifiers: " +
                     events + "; the page's own events are not recorded");
    for (const program_start& start : starts)
        print_seen("the editor's stand-in was started with " + to_utf8(start.command_line));
    print_seen("the server got " + requests());
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0], editor.editor_start(server.url(clicked_pdf)));
    EXPECT_TRUE(tab.is_showing(server.url(to_wide(library_page))));
    for (const http_request& request : server.requests())
        EXPECT_EQ(request.target.find(".pdf"), std::string::npos) << request.target;
}

} // namespace
} // namespace quill::test
