// PDFs in the browser's engine: alone, and embedded in a page.
#include "tests/acceptance/installed/installed_fixture.h"
#include "tests/support/scopes.h"
#include "tests/support/text.h"

namespace quill::test {
namespace {

using testing::EndsWith;
using testing::UnorderedElementsAre;

class Engine : public installed_fixture
{
};

TEST_F(Engine, OpensAPdfAtThePageAndZoomOfItsUrl)
{
    const std::string document = sample(L"bracket.pdf");
    server.route("/bracket.pdf", http_response::ok(document));
    engine browser;
    browser.open(server.url(L"/bracket.pdf#page=2#zoom=150"));

    EXPECT_TRUE(wait_for_calls(viewer_set_zoom, 1));
    print_seen("the viewer got " + viewer_calls());
    print_seen("the server got " + requests());
    ASSERT_EQ(script.texts(viewer_open).size(), 1u);
    EXPECT_THAT(script.texts(viewer_go_to_page), testing::ElementsAre("4(I4 1)"));
    EXPECT_THAT(script.texts(viewer_set_zoom), testing::ElementsAre("9(R8 1.5)"));
    for (const recorded_call& call : script.received)
        if (call.id == viewer_open)
            EXPECT_TRUE(read_file(call.arguments.at(0).text) == document) << "another file was opened";
    for (const http_request& request : server.requests())
        EXPECT_EQ(request.target, "/bracket.pdf");
}

// With the embedded page the engine's own HTML page hosts two documents.
class EmbeddedPage : public installed_fixture
{
};

TEST_F(EmbeddedPage, ShowsThePdfOfEachElement)
{
    server.route("/embedded.html", http_response::ok(sample(L"embedded.html"), "text/html; charset=utf-8"));
    for (const wchar_t* name : {L"bracket.pdf", L"care.pdf"})
        server.route("/" + to_utf8(name), http_response::ok(sample(name)));
    engine browser;
    browser.open(server.url(L"/embedded.html"));

    EXPECT_TRUE(wait_for_calls(viewer_set_zoom, 2));
    print_seen("the viewers got " + viewer_calls());
    print_seen("the server got " + requests());
    EXPECT_THAT(script.texts(viewer_open),
                UnorderedElementsAre(EndsWith("\\bracket.pdf)"), EndsWith("\\care.pdf)")));
    EXPECT_THAT(script.texts(viewer_go_to_page), testing::Contains("4(I4 1)"));
}

} // namespace
} // namespace quill::test
