// Closing the browser, idle and during a download, without a hang or a leak.
#include "tests/browser/browser_fixture.h"

#include <atomic>

namespace quill::test {
namespace {

constexpr DWORD prompt_ms = 5'000;

class Closing : public browser_fixture
{
protected:
    // The browser's own request is served at once, and the one that follows, the module's, takes over half a
    // minute, so that waiting for its end would be noticed. The engine of this platform leaks a document that
    // is closed before the engine's own request has ended, which is not tested here.
    http_server::handler slow_for_the_module()
    {
        return [this](const http_request&) {
            if (++slow_requests == 1)
                return http_response::ok(pdf_body(6'000));
            auto slow = http_response::slow(pdf_body(300'000), 1'000, 100);
            return slow;
        };
    }

    bool wait_for_download() // the document has its window and its worker is fetching
    {
        return wait_until([this] { return slow_requests >= 2; });
    }

    std::atomic<int> slow_requests = 0; // counted on the threads of the server
};

TEST_F(Closing, WhileTheDocumentIsShownReleasesEverything)
{
    server.route("/plan.pdf", http_response::ok(pdf_body(6'000)));
    {
        engine browser;
        browser.open(server.url(L"/plan.pdf"));
        ASSERT_TRUE(wait_for_opened(1));
        EXPECT_FALSE(module.can_unload());
    }
    EXPECT_EQ(viewers.living_viewers(), 0);
    EXPECT_TRUE(module.can_unload());
}

TEST_F(Closing, ByDestroyingTheWindowFirstReleasesEverything)
{
    server.route("/plan.pdf", http_response::ok(pdf_body(6'000)));
    {
        engine browser;
        browser.open(server.url(L"/plan.pdf"));
        ASSERT_TRUE(wait_for_opened(1));
        DestroyWindow(browser.window());
    }
    EXPECT_EQ(viewers.living_viewers(), 0);
    EXPECT_TRUE(module.can_unload());
}

TEST_F(Closing, InTheMiddleOfADownloadStopsIt)
{
    server.route("/slow.pdf", slow_for_the_module());
    const ULONGLONG start = [this] {
        engine browser;
        browser.open(server.url(L"/slow.pdf"));
        EXPECT_TRUE(wait_for_download());
        return GetTickCount64();
    }(); // the engine is closed here
    EXPECT_LT(GetTickCount64() - start, prompt_ms);
    EXPECT_EQ(viewers.living_viewers(), 0);
    EXPECT_TRUE(script.texts(viewer_open).empty());
    EXPECT_TRUE(wait_until([this] { return module.can_unload(); }));
    EXPECT_TRUE(server.wait_idle(prompt_ms)) << "a download is still running";
}

TEST_F(Closing, NavigatingAwayInTheMiddleOfADownloadStopsIt)
{
    server.route("/slow.pdf", slow_for_the_module());
    server.route("/quick.pdf", http_response::ok(pdf_body(6'000)));
    engine browser;
    browser.open(server.url(L"/slow.pdf"));
    ASSERT_TRUE(wait_for_download());

    browser.open(server.url(L"/quick.pdf"));
    ASSERT_TRUE(wait_for_opened(1));
    EXPECT_THAT(script.texts(viewer_open), testing::ElementsAre(testing::EndsWith("\\quick.pdf)")));
    EXPECT_TRUE(server.wait_idle(prompt_ms)) << "the first download still runs";
}

TEST_F(Closing, BeforeAnythingArrivedIsHarmless)
{
    http_response held = http_response::ok(pdf_body(6'000));
    held.hold_after = 0;
    server.route("/held.pdf", held);
    {
        engine browser;
        browser.open(server.url(L"/held.pdf"));
        ASSERT_TRUE(wait_until([this] { return !server.requests().empty(); }));
    }
    EXPECT_EQ(viewers.living_viewers(), 0);
    EXPECT_TRUE(wait_until([this] { return module.can_unload(); }));
}

TEST_F(Closing, LeaksNoWindowThreadOrGdiObject)
{
    server.route("/plan.pdf", http_response::ok(pdf_body(6'000)));
    std::size_t visits = 0;
    const auto visit = [&] {
        engine browser;
        browser.open(server.url(L"/plan.pdf"));
        ASSERT_TRUE(wait_for_opened(++visits));
    };
    expect_flat(visit);
}

} // namespace
} // namespace quill::test
