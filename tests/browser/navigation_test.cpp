// The document during navigations of the engine, observed by a strict viewer and the web server.
#include "tests/browser/browser_fixture.h"
#include "tests/support/text.h"

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::SizeIs;
using testing::StartsWith;

class Navigation : public browser_fixture
{
protected:
    const std::string document = pdf_body(20'000);
};

TEST_F(Navigation, OpensADocumentByItsTypeAtThePageAndZoomOfItsUrl)
{
    server.route("/folder/plan.pdf", http_response::ok(document));
    engine browser;
    browser.open(server.url(L"/folder/plan.pdf#page=3#zoom=150"));

    ASSERT_TRUE(wait_for_calls(viewer_set_zoom, 1));
    EXPECT_THAT(script.texts(), ElementsAre(StartsWith("23(UI8 "), StartsWith("24(UI8 "), "15()", "16()",
                                            EndsWith("\\plan.pdf)"), "4(I4 2)", "9(R8 1.5)"));
    const std::wstring path = script.received[4].arguments.at(0).text;
    EXPECT_EQ(read_file(path), document);
}

TEST_F(Navigation, KeepsTheFragmentFromTheServer)
{
    server.route("/plan.pdf", http_response::ok(document));
    engine browser;
    browser.open(server.url(L"/plan.pdf#page=3#zoom=150"));

    ASSERT_TRUE(wait_for_calls(viewer_set_zoom, 1));
    for (const http_request& request : server.requests())
        EXPECT_EQ(request.target, "/plan.pdf");
}

class NavigationByType : public Navigation, public testing::WithParamInterface<const char*>
{
};

TEST_P(NavigationByType, OpensAUrlWithoutAnExtension)
{
    server.route("/documents/17", http_response::ok(document, GetParam()));
    engine browser;
    browser.open(server.url(L"/documents/17"));

    ASSERT_TRUE(wait_for_calls(viewer_open, 1));
    EXPECT_THAT(script.texts(viewer_open), ElementsAre(EndsWith("\\17.pdf)")));
}

INSTANTIATE_TEST_SUITE_P(EveryRegisteredType, NavigationByType,
                         testing::Values("application/pdf", "pdf", "application/ppdf", "ppdf"));

TEST_F(Navigation, WithoutAFragmentLeavesPageAndZoomToTheViewer)
{
    server.route("/plan.pdf", http_response::ok(document));
    engine browser;
    browser.open(server.url(L"/plan.pdf"));

    ASSERT_TRUE(wait_for_calls(viewer_open, 1));
    pump_messages();
    EXPECT_THAT(script.texts(viewer_go_to_page), SizeIs(0));
    EXPECT_THAT(script.texts(viewer_set_zoom), SizeIs(0));
}

TEST_F(Navigation, FollowsARedirection)
{
    server.route("/old", http_response::redirect("/new/plan.pdf"));
    server.route("/new/plan.pdf", http_response::ok(document));
    engine browser;
    browser.open(server.url(L"/old"));

    ASSERT_TRUE(wait_for_calls(viewer_open, 1));
    EXPECT_EQ(read_file(script.received[4].arguments.at(0).text), document);
}

TEST_F(Navigation, DoesNotShowOtherContentServedAsPdf)
{
    // No content whose type the engine would detect itself.
    server.route("/plan.pdf", http_response::ok(std::string("\x01\x02\x03 no document\n", 17)));
    server.route("/next.pdf", http_response::ok(document));
    engine browser;
    browser.open(server.url(L"/plan.pdf"));

    ASSERT_TRUE(wait_for_calls(viewer_second_setup, 1));
    ASSERT_TRUE(wait_until([&] { return server.requests().size() >= 2; })) << "the module fetches it itself";
    ASSERT_TRUE(server.wait_idle(default_deadline_ms));
    browser.open(server.url(L"/next.pdf"));
    ASSERT_TRUE(wait_for_calls(viewer_open, 1));
    EXPECT_THAT(script.texts(viewer_open), ElementsAre(EndsWith("\\next.pdf)")));
}

TEST_F(Navigation, ReleasesTheFirstDocumentWhenTheNextIsOpened)
{
    server.route("/first.pdf", http_response::ok(document));
    server.route("/second.pdf", http_response::ok(document));
    engine browser;
    browser.open(server.url(L"/first.pdf"));
    ASSERT_TRUE(wait_for_calls(viewer_open, 1));

    browser.open(server.url(L"/second.pdf"));
    ASSERT_TRUE(wait_for_calls(viewer_open, 2));
    ASSERT_THAT(viewers.viewers(), SizeIs(2));
    EXPECT_TRUE(viewers.viewers()[0]->released());
    EXPECT_EQ(viewers.viewers()[0]->ole_window(), nullptr);
    EXPECT_FALSE(viewers.viewers()[1]->released());
}

TEST_F(Navigation, ReloadingFetchesTheDocumentAgain)
{
    server.route("/plan.pdf", http_response::ok(document));
    engine browser;
    browser.open(server.url(L"/plan.pdf"));
    ASSERT_TRUE(wait_for_calls(viewer_open, 1));

    browser.open(server.url(L"/plan.pdf"));
    ASSERT_TRUE(wait_for_calls(viewer_open, 2));
    const auto opened = script.texts(viewer_open);
    EXPECT_NE(opened[0], opened[1]) << "two downloads share a folder";
}

TEST_F(Navigation, FollowsALinkThatTheViewerAsksFor)
{
    server.route("/a/c/plan.pdf", http_response::ok(document));
    server.route("/a/other.pdf", http_response::ok(document));
    engine browser;
    browser.open(server.url(L"/a/c/plan.pdf#page=2"));
    ASSERT_TRUE(wait_for_calls(viewer_open, 1));

    const recorded_call& links = script.received[0];
    const auto target = reinterpret_cast<HWND>(static_cast<UINT_PTR>(links.arguments.at(0).integer));
    // An absolute URL: the engine of this platform has no moniker to resolve a relative one against.
    const std::wstring link = server.url(L"/a/other.pdf#page=4");
    SendMessageW(target, static_cast<UINT>(links.arguments.at(1).integer), 0,
                 reinterpret_cast<LPARAM>(link.c_str()));

    ASSERT_TRUE(wait_for_calls(viewer_open, 2));
    EXPECT_THAT(script.texts(viewer_open)[1], EndsWith("\\other.pdf)"));
    ASSERT_TRUE(wait_for_calls(viewer_go_to_page, 2));
    EXPECT_EQ(script.texts(viewer_go_to_page)[1], "4(I4 3)");
    EXPECT_EQ(browser.navigations().back(), link);
}

TEST_F(Navigation, OpensManyDocumentsOneAfterTheOther)
{
    constexpr std::size_t count = 8;
    engine browser;
    for (std::size_t i = 1; i <= count; ++i) {
        const std::string path = "/" + std::to_string(i) + ".pdf";
        server.route(path, http_response::ok(document));
        browser.open(server.url(to_wide(path)));
        ASSERT_TRUE(wait_for_calls(viewer_open, i)) << i;
        EXPECT_THAT(script.texts(viewer_open).back(), EndsWith("\\" + std::to_string(i) + ".pdf)"));
        EXPECT_EQ(viewers.living_viewers(), 1);
    }
}

} // namespace
} // namespace quill::test
