// The administrator's download path in the system's browser engine, for documents and for elements of a page.
#include "tests/browser/browser_fixture.h"
#include "tests/browser/html_page_access.h"
#include "tests/browser/registered_pages.h"
#include "tests/retrieval/tls_servers.h"
#include "tests/support/download_setting.h"
#include "tests/support/scopes.h"

#include <algorithm>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;

constexpr char own_agent[] = "Quill5_IEactivedoc";

class WinInetInBrowser : public browser_fixture
{
protected:
    WinInetInBrowser() { settings.use_wininet(); }

    // The requests of the module itself.
    std::vector<std::string> fetched() const
    {
        std::vector<std::string> targets;
        for (const http_request& request : server.requests())
            if (request.header("User-Agent") == own_agent)
                targets.push_back(request.target);
        return targets;
    }

    std::vector<std::optional<std::string>> opened_files() const
    {
        std::vector<std::optional<std::string>> contents;
        for (const recorded_call& call : script.received)
            if (call.id == viewer_open)
                contents.push_back(read_file(call.arguments.at(0).text));
        return contents;
    }

    download_setting settings;
    registered_pages pages;
    const std::string document = pdf_body(200'000);
};

TEST_F(WinInetInBrowser, OpensADocumentAtThePageAndZoomOfItsUrl)
{
    server.route("/folder/plan.pdf", http_response::ok(document));
    engine browser;
    browser.open(server.url(L"/folder/plan.pdf?v=1#page=3#zoom=150"));
    ASSERT_TRUE(wait_for_calls(viewer_set_zoom, 1));
    EXPECT_THAT(script.texts(viewer_open), ElementsAre(EndsWith("\\plan.pdf)")));
    EXPECT_THAT(script.texts(viewer_go_to_page), ElementsAre("4(I4 2)"));
    EXPECT_THAT(opened_files(), ElementsAre(document));
    EXPECT_THAT(fetched(), ElementsAre("/folder/plan.pdf?v=1"));
}

// The engine fetches pages itself by its own rules; the module fetches what a page embeds.
TEST_F(WinInetInBrowser, OpensWhatAPageEmbedsFromServersWithBadCertificates)
{
    const tls_servers secure(server.port());
    const std::string kinds[] = {"self_signed", "expired", "wrong_name"};
    const trusted_root root(secure.root());
    std::string body = "<!DOCTYPE html><title>Page</title><body>";
    for (const std::string& kind : kinds) {
        server.route("/" + kind + ".pdf", http_response::ok(document + kind));
        const std::wstring address = secure.url(kind, L"/");
        body += "<embed type='application/pdf' src='" + std::string(address.begin(), address.end()) + kind +
                ".pdf#page=2'>";
    }
    server.route("/page.html", http_response::ok(body, "text/html"));
    engine browser;
    open_page(browser, server.url(L"/page.html"));
    ASSERT_TRUE(wait_for_opened(3));
    EXPECT_THAT(fetched(),
                testing::UnorderedElementsAre("/self_signed.pdf", "/expired.pdf", "/wrong_name.pdf"));
    EXPECT_THAT(opened_files(), testing::UnorderedElementsAre(document + "self_signed", document + "expired",
                                                              document + "wrong_name"));
}

} // namespace
} // namespace quill::test
