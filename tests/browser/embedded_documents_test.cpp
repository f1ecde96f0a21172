// Pages with PDF elements in the system's browser engine: the document of each element gets the right file.
#include "retrieval/download/window_messages.h"
#include "stand_ins/browser/shown_document.h"
#include "tests/browser/browser_fixture.h"
#include "tests/browser/html_page_access.h"
#include "tests/browser/registered_pages.h"

#include <algorithm>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Embedded : public browser_fixture
{
protected:
    Embedded()
    {
        for (const char* name : {"/files/first.pdf", "/files/second.pdf", "/files/third.PDF"})
            server.route(name, http_response::ok(pdf_body(20'000)));
    }

    void serve_page(const std::string& body)
    {
        server.route("/pages/page.html",
                     http_response::ok("<!DOCTYPE html><title>Page</title><body>" + body, "text/html"));
    }

    // All requests but that for the page itself.
    std::vector<std::string> fetched() const
    {
        std::vector<std::string> targets;
        for (const auto& request : server.requests())
            if (!request.target.ends_with(".html"))
                targets.push_back(request.target);
        return targets;
    }

    // What a document returns to its viewer, by the window of the document.
    static std::uint32_t instance_of(HWND document)
    {
        std::uint32_t instance = 77;
        SendMessageW(document, WM_USER_GETINSTANCE, 0, reinterpret_cast<LPARAM>(&instance));
        return instance;
    }

    static std::wstring url_of(HWND document)
    {
        std::array<wchar_t, 512> url{};
        SendMessageW(document, WM_USER_GETURL, url.size(), reinterpret_cast<LPARAM>(url.data()));
        return url.data();
    }

    static std::vector<HWND> documents_in(engine& browser)
    {
        auto windows = windows_of_class(browser, L"AtlAxWin140");
        for (HWND& window : windows)
            window = GetParent(window);
        std::sort(windows.begin(), windows.end(),
                  [](HWND a, HWND b) { return instance_of(a) < instance_of(b); });
        return windows;
    }

    registered_pages pages;
};

TEST_F(Embedded, TwoElementsShowTheirOwnFiles)
{
    serve_page("<p>Before</p><embed type='application/pdf' src='../files/first.pdf' width=400 height=200>"
               "<p>Between</p><embed type='application/pdf' src='/files/second.pdf' width=400 height=200>");
    engine browser;
    open_page(browser, server.url(L"/pages/page.html"));
    ASSERT_TRUE(wait_for_opened(2));

    EXPECT_THAT(fetched(), UnorderedElementsAre("/files/first.pdf", "/files/second.pdf"));
    EXPECT_THAT(script.texts(viewer_open),
                UnorderedElementsAre(EndsWith("\\first.pdf)"), EndsWith("\\second.pdf)")));
    const auto documents = documents_in(browser);
    ASSERT_EQ(documents.size(), 2u);
    EXPECT_EQ(instance_of(documents[0]), 0u);
    EXPECT_EQ(instance_of(documents[1]), 1u);
    EXPECT_EQ(url_of(documents[0]), server.url(L"/files/first.pdf"));
    EXPECT_EQ(url_of(documents[1]), server.url(L"/files/second.pdf"));
    EXPECT_EQ(pages.living().embedded_sites, 2);
}

TEST_F(Embedded, DocumentsAreAtThePositionsOfTheirElements)
{
    serve_page("<embed type='application/pdf' src='/files/first.pdf' width=420 height=210>"
               "<p>Text</p><embed type='application/pdf' src='/files/second.pdf' width=50% height=160>");
    engine browser;
    open_page(browser, server.url(L"/pages/page.html"));
    ASSERT_TRUE(wait_for_opened(2));
    const auto documents = documents_in(browser);
    ASSERT_EQ(documents.size(), 2u);
    RECT first{};
    RECT second{};
    GetWindowRect(documents[0], &first);
    GetWindowRect(documents[1], &second);
    EXPECT_EQ(first.right - first.left, 420);
    EXPECT_EQ(first.bottom - first.top, 210);
    EXPECT_EQ(second.bottom - second.top, 160);
    EXPECT_GT(second.top, first.bottom);
    for (const HWND document : documents) {
        EXPECT_TRUE(IsWindowVisible(document));
        EXPECT_EQ(GetParent(document), browser.find_window(L"QuillPage"));
    }
}

TEST_F(Embedded, ObjectElementsAreNumberedWithTheOthersInThePagesOrder)
{
    serve_page("<div><object type='application/pdf' data='/files/first.pdf'></object></div>"
               "<table><tr><td><object data='/files/third.PDF'>not shown</object></table>"
               "<embed src='/files/second.pdf'>");
    engine browser;
    open_page(browser, server.url(L"/pages/page.html"));
    ASSERT_TRUE(wait_for_opened(3));
    const auto documents = documents_in(browser);
    ASSERT_EQ(documents.size(), 3u);
    EXPECT_EQ(url_of(documents[0]), server.url(L"/files/first.pdf"));
    EXPECT_EQ(url_of(documents[1]), server.url(L"/files/third.PDF"));
    EXPECT_EQ(url_of(documents[2]), server.url(L"/files/second.pdf"));
}

TEST_F(Embedded, PageAndZoomOfTheReferenceAreShown)
{
    serve_page("<embed type='application/pdf' src='/files/first.pdf#page=3#zoom=150'>");
    engine browser;
    open_page(browser, server.url(L"/pages/page.html"));
    ASSERT_TRUE(wait_until([this] { return !script.texts(viewer_set_zoom).empty(); }));
    EXPECT_THAT(script.texts(viewer_go_to_page), ElementsAre("4(I4 2)"));
    EXPECT_THAT(script.texts(viewer_set_zoom), ElementsAre("9(R8 1.5)"));
}

TEST_F(Embedded, NavigatingAwayReleasesEverything)
{
    serve_page("<embed type='application/pdf' src='/files/first.pdf'>"
               "<object type='application/pdf' data='/files/second.pdf'></object>");
    server.route("/other.html", http_response::ok("<p>Other", "text/html"));
    engine browser;
    open_page(browser, server.url(L"/pages/page.html"));
    ASSERT_TRUE(wait_for_opened(2));
    ASSERT_EQ(viewers.living_viewers(), 2);

    open_page(browser, server.url(L"/other.html"));
    EXPECT_TRUE(wait_until([this] { return module.can_unload(); })) << "a document is still referenced";
    EXPECT_EQ(viewers.living_viewers(), 0);
    EXPECT_TRUE(wait_until([this] { return pages.living().pages == 1; }))
        << testing::PrintToString(pages.living());
    EXPECT_EQ(pages.living().embedded_sites, 0);
    EXPECT_THAT(documents_in(browser), IsEmpty());
}

TEST_F(Embedded, TheNextPageCountsFromZeroAgain)
{
    serve_page("<embed type='application/pdf' src='/files/first.pdf'>");
    server.route("/pages/next.html",
                 http_response::ok("<embed type='application/pdf' src='/files/second.pdf'>", "text/html"));
    engine browser;
    open_page(browser, server.url(L"/pages/page.html"));
    ASSERT_TRUE(wait_for_opened(1));
    open_page(browser, server.url(L"/pages/next.html"));
    ASSERT_TRUE(wait_for_opened(2));
    EXPECT_THAT(script.texts(viewer_open), ElementsAre(EndsWith("\\first.pdf)"), EndsWith("\\second.pdf)")));
}

TEST_F(Embedded, ClosingTheBrowserReleasesEverything)
{
    serve_page("<embed type='application/pdf' src='/files/first.pdf'>"
               "<embed type='application/pdf' src='/files/second.pdf'>");
    {
        engine browser;
        open_page(browser, server.url(L"/pages/page.html"));
        ASSERT_TRUE(wait_for_opened(2));
    }
    EXPECT_EQ(viewers.living_viewers(), 0);
    EXPECT_TRUE(wait_until([this] { return module.can_unload(); }));
    EXPECT_TRUE(pages.all_gone()) << testing::PrintToString(pages.living());
}

TEST_F(Embedded, ClosingInTheMiddleOfTheDownloadsStopsThem)
{
    auto slow = http_response::slow(pdf_body(300'000), 1'000, 100);
    server.route("/files/first.pdf", slow);
    server.route("/files/second.pdf", slow);
    serve_page("<embed type='application/pdf' src='/files/first.pdf'>"
               "<embed type='application/pdf' src='/files/second.pdf'>");
    {
        engine browser;
        open_page(browser, server.url(L"/pages/page.html"));
        ASSERT_TRUE(wait_until([this] { return fetched().size() == 2; }));
    }
    EXPECT_THAT(script.texts(viewer_open), IsEmpty());
    EXPECT_TRUE(server.wait_idle(default_deadline_ms)) << "a download is still running";
    EXPECT_TRUE(wait_until([this] { return module.can_unload(); }));
}

TEST_F(Embedded, VisitsLeakNoWindowThreadOrGdiObject)
{
    serve_page("<embed type='application/pdf' src='/files/first.pdf'>"
               "<embed type='application/pdf' src='/files/second.pdf'>");
    std::size_t visits = 0;
    const auto visit = [&] {
        engine browser;
        open_page(browser, server.url(L"/pages/page.html"));
        ASSERT_TRUE(wait_for_opened(2 * ++visits));
    };
    expect_flat(visit);
}

TEST_F(Embedded, APageWithoutPdfElementsIsLeftAlone)
{
    serve_page("<p>A <a href='/files/first.pdf'>link to a PDF</a> is no element.</p>"
               "<embed type='video/mp4' src='/files/film.mp4'><object data='/files/picture.svg'></object>"
               "<embed type='text/html' src='/pages/page.html'>");
    engine browser;
    open_page(browser, server.url(L"/pages/page.html"));
    // The page is laid out when its window replies; objects are created then.
    ASSERT_TRUE(wait_until([&] { return browser.find_window(L"QuillPage") != nullptr; }));
    UpdateWindow(browser.find_window(L"QuillPage"));
    pump_messages();
    EXPECT_THAT(fetched(), IsEmpty());
    EXPECT_EQ(pages.living().embedded_sites, 0);
    EXPECT_EQ(viewers.living_viewers(), 0);
    EXPECT_TRUE(module.can_unload()) << "the page used the module";
}

TEST_F(Embedded, AreFoundAmongHundredsOfOtherElements)
{
    std::string body;
    for (int i = 0; i < 300; ++i)
        body += "<div><span>" + std::to_string(i) + "</span><embed type='video/mp4' src='x.mp4'></div>";
    serve_page("<embed type='application/pdf' src='/files/first.pdf'>" + body +
               "<embed type='application/pdf' src='/files/second.pdf'>");
    engine browser;
    open_page(browser, server.url(L"/pages/page.html"));
    ASSERT_TRUE(wait_for_opened(2));
    const auto documents = documents_in(browser);
    ASSERT_EQ(documents.size(), 2u);
    EXPECT_EQ(url_of(documents[0]), server.url(L"/files/first.pdf"));
    EXPECT_EQ(url_of(documents[1]), server.url(L"/files/second.pdf"));
}

} // namespace
} // namespace quill::test
