// PDFs of ordinary pages open in the browser with and without the helper object.
#include "tests/sharepoint_pages/library_site.h"
#include "tests/support/viewer/viewer_class.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

class Documents : public LibrarySite
{
protected:
    Documents()
    {
        script.calls.allow("viewer class::CreateInstance");
        script.answers_ole_object = true;
    }

    viewer_registration registration;
    call_log calls;
    viewer_script script{calls};
    viewer_class viewers{script};
};

TEST_F(Documents, OpenInTheBrowserFromAnOrdinaryPage)
{
    for (const with_helper helper : {with_helper::no, with_helper::yes}) {
        helper_tab tab(helper);
        tab.show(server.url(L"/documents.html"));
        const std::size_t opened = script.texts(viewer_open).size();
        tab.click(L"care");
        ASSERT_TRUE(wait_until([&] { return script.texts(viewer_open).size() > opened; }));
        EXPECT_THAT(script.texts(viewer_open).back(), EndsWith("\\care.pdf)"));
        EXPECT_FALSE(tab.after.entries().back().cancelled);
        const auto requests = requests_so_far();
        // One request of the browser and one of the document.
        EXPECT_THAT(requests, ElementsAre("GET /documents.html", "GET /care.pdf", "GET /care.pdf"));
    }
    EXPECT_THAT(editor.starts(0), IsEmpty());
}

} // namespace
} // namespace quill::test
