// quill_browser.exe with helper objects, as in the demo.
#include "tests/sharepoint_pages/library_site.h"
#include "tests/support/child_process.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr char page_request[] = "GET /sites/workshop/Service%20manuals/Forms/AllItems.aspx";

class Program : public LibrarySite
{
protected:
    Program()
    {
        serve_library("2013");
        serve_short_page("/sites/workshop/Service%20manuals/Pivot%20bracket%202291-B.pdf");
    }

    child_result run(const std::wstring& options)
    {
        return run_program(beside_this_program(L"quill_browser.exe"),
                           options + L" --exit --page " + server.url(library_page));
    }
};

TEST_F(Program, SendsAClickToTheEditor)
{
    const std::wstring picture = editor.scratch() / L"library.png";
    const child_result result = run(L"--helpers --click bracket --screenshot \"" + picture + L"\"");
    EXPECT_EQ(result.exit_code, 0u) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("quill_browser: helper objects loaded: 1"));
    EXPECT_THAT(result.output, HasSubstr("quill_browser: clicking on bracket"));
    EXPECT_THAT(result.output, HasSubstr("quill_browser: shown: Service manuals - All Documents"));
    EXPECT_THAT(read_file(picture).value_or(""), StartsWith("\x89PNG"));
    EXPECT_THAT(editor.starts(1), ElementsAre(editor.editor_start(file(L"Pivot%20bracket%202291-B.pdf"))));
    EXPECT_THAT(requests_so_far(), ElementsAre(page_request));
}

TEST_F(Program, FollowsAClickWithoutHelperObjects)
{
    const child_result result = run(L"--click bracket");
    EXPECT_EQ(result.exit_code, 0u) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("quill_browser: shown: Short"));
    EXPECT_THAT(
        requests_so_far(),
        ElementsAre(page_request, "GET /sites/workshop/Service%20manuals/Pivot%20bracket%202291-B.pdf"));
    EXPECT_THAT(editor.starts(0), IsEmpty());
}

TEST_F(Program, FailsWhenTheElementToClickDoesNotExist)
{
    const child_result result = run(L"--click nowhere");
    EXPECT_EQ(result.exit_code, 1u);
    EXPECT_THAT(result.errors, HasSubstr("not shown: the page has no element nowhere"));
}

} // namespace
} // namespace quill::test
