// The helper object's site: set, set again, replaced, set to null, or never set to null.
#include "tests/sharepoint_pages/library_site.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char page_request[] = "GET /sites/workshop/Service%20manuals/Forms/AllItems.aspx";
constexpr char last_request[] = "GET /last.html";
constexpr char pdf_request[] = "GET /sites/workshop/Service%20manuals/Typed.pdf";

class Site : public LibrarySite
{
protected:
    Site()
    {
        serve_library("2016");
        serve_short_page("/sites/workshop/Service%20manuals/Typed.pdf");
    }

    // A navigation that a helper object with a site cancels.
    void show_library_and_go_to_pdf(helper_tab& tab)
    {
        tab.show(server.url(library_page));
        tab.go_to(file(L"Typed.pdf"));
    }
    // Whether the navigation arrived, so that no helper object cancelled it.
    bool is_let_through(helper_tab& tab)
    {
        show_library_and_go_to_pdf(tab);
        return wait_until([&] { return tab.is_showing(file(L"Typed.pdf")); });
    }
};

TEST_F(Site, SetToNullEndsTheSubscription)
{
    helper_tab tab(with_helper::no);
    const ULONG references = tab.references_to_tab();
    const std::size_t sinks = tab.tab().sinks();
    const auto helper = create_helper();
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    EXPECT_EQ(helper->SetSite(tab.object()), S_OK);
    EXPECT_EQ(tab.tab().sinks(), sinks + 1);
    tab.show(server.url(library_page));
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    EXPECT_EQ(tab.tab().sinks(), sinks);
    EXPECT_EQ(tab.references_to_tab(), references);
    EXPECT_TRUE(is_let_through(tab));
    EXPECT_THAT(editor.starts(0), IsEmpty());
}

TEST_F(Site, SetTwiceIsOneSubscription)
{
    helper_tab tab;
    const ULONG references = tab.references_to_tab();
    const std::size_t sinks = tab.tab().sinks();
    EXPECT_EQ(tab.helper()->SetSite(tab.object()), S_OK);
    EXPECT_EQ(tab.references_to_tab(), references);
    EXPECT_EQ(tab.tab().sinks(), sinks);
    show_library_and_go_to_pdf(tab);
    EXPECT_THAT(editor.starts(1), ElementsAre(editor.editor_start(file(L"Typed.pdf"))));
    EXPECT_THAT(requests_at_the_end(tab), ElementsAre(page_request, last_request));
}

TEST_F(Site, ReplacedByAnotherMovesTheSubscription)
{
    helper_tab first;
    helper_tab second(with_helper::no);
    const std::size_t sinks = first.tab().sinks();
    EXPECT_EQ(first.helper()->SetSite(second.object()), S_OK);
    EXPECT_EQ(first.tab().sinks(), sinks - 1);
    EXPECT_TRUE(is_let_through(first));
    EXPECT_THAT(requests_at_the_end(first), ElementsAre(page_request, pdf_request, last_request));
    show_library_and_go_to_pdf(second);
    EXPECT_THAT(editor.starts(1), ElementsAre(editor.editor_start(file(L"Typed.pdf"))));
    EXPECT_THAT(requests_at_the_end(second), ElementsAre(page_request, last_request));
    first.release_helper();
}

TEST_F(Site, ThatIsNoBrowserIsKept)
{
    helper_tab tab(with_helper::no);
    const auto helper = create_helper();
    event_log no_browser;
    EXPECT_EQ(helper->SetSite(&no_browser), S_OK);
    CComPtr<IDispatch> site;
    EXPECT_EQ(helper->GetSite(IID_PPV_ARGS(&site)), S_OK);
    EXPECT_EQ(site.p, &no_browser);
    site.Release();
    EXPECT_TRUE(is_let_through(tab));
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    EXPECT_EQ(helper->GetSite(IID_PPV_ARGS(&site)), E_FAIL);
}

TEST_F(Site, NeverSetToNullLeaksNothing)
{
    helper_tab tab(with_helper::no);
    const ULONG references = tab.references_to_tab();
    auto helper = create_helper();
    EXPECT_EQ(helper->SetSite(tab.object()), S_OK);
    show_library_and_go_to_pdf(tab);
    EXPECT_THAT(editor.starts(1), ElementsAre(editor.editor_start(file(L"Typed.pdf"))));
    helper.Release();
    EXPECT_EQ(tab.references_to_tab(), references);
    EXPECT_TRUE(module.can_unload());
    EXPECT_TRUE(is_let_through(tab));
}

// A browser may release its helper objects after it has closed the tab.
TEST_F(Site, SetToNullAfterOnQuitLeaksNothing)
{
    const auto helper = create_helper();
    helper_tab tab(with_helper::no);
    EXPECT_EQ(helper->SetSite(tab.object()), S_OK);
    tab.show(server.url(library_page));
    tab.before.unadvise();
    tab.after.unadvise();
    tab.tab().close();
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    EXPECT_EQ(tab.references_to_tab(), 0u);
}

TEST_F(Site, ForwardsNothingAfterOnQuit)
{
    helper_tab tab;
    tab.tab().quit();
    EXPECT_TRUE(is_let_through(tab));
    EXPECT_THAT(requests_at_the_end(tab), ElementsAre(page_request, pdf_request, last_request));
    EXPECT_THAT(editor.starts(0), IsEmpty());
}

} // namespace
} // namespace quill::test
