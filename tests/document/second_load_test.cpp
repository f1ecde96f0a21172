// A second IPersistMoniker::Load on one object: what was fetched for the former URL is not shown for the new
// one.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/document/page_container.h"
#include "tests/support/http_server.h"
#include "tests/support/scopes.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace quill::test {
namespace {

using lines = std::vector<std::string>;

constexpr wchar_t other_url[] = L"quilltest://host.test/other.pdf";

void show_again(document_bench& bench)
{
    bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
    bench.viewer.forget_calls();
    EXPECT_EQ(bench.host.view->Show(TRUE), S_OK);
    ASSERT_NE(bench.window(), nullptr);
}

// Each for a URL without a server.
void wait_for_failed_workers(const document_bench& bench, int count)
{
    EXPECT_TRUE(wait_until([&] {
        const auto all = bench.log.worker_lines();
        return count <= std::count_if(all.begin(), all.end(), [](const std::string& line) {
                   return line.rfind("ACTIVEDOC DownloadPDFFile FAILED ", 0) == 0;
               });
    })) << testing::PrintToString(bench.log.worker_lines());
}

QUILL_DOCUMENT_TEST(DocumentSecondLoad, ForgetsTheFetchedFile)
{
    bench.show_url(unserved_url);
    bench.wait_for_failed_worker();
    load_fetched_file(bench, bench.pdf());
    EXPECT_EQ(bench.viewer.texts(viewer_open).size(), 1u);
    EXPECT_EQ(bench.load_url(other_url), S_OK);
    show_again(bench);
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{});
    EXPECT_EQ(document_url(bench), other_url);
    const auto logged = bench.take_log();
    EXPECT_NE(std::find(logged.begin(), logged.end(), "@ OnCreate [#2] "), logged.end());
    EXPECT_NE(std::find(logged.begin(), logged.end(), "@ OnCreate [URL]"), logged.end());
    wait_for_failed_workers(bench, 2);
    bench.close_in_order();
}

// The worker has handed its file over; the request to load it is still in the queue.
QUILL_DOCUMENT_TEST(DocumentSecondLoad, ForgetsAFileThatIsAboutToBeLoaded)
{
    bench.show_url(unserved_url);
    bench.wait_for_failed_worker();
    EXPECT_EQ(bench.send_text(message_set_cache_file, 0, bench.pdf().c_str()), 0);
    EXPECT_EQ(bench.load_url(other_url), S_OK);
    EXPECT_EQ(bench.send(message_load_file), 0);
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{});
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentSecondLoad, AlsoWhenItIsRefused)
{
    bench.show_url(unserved_url);
    bench.wait_for_failed_worker();
    load_fetched_file(bench, bench.pdf());
    EXPECT_EQ(bench.load_url(other_url, TRUE), E_FAIL);
    show_again(bench);
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{});
    wait_for_failed_workers(bench, 2);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentSecondLoad, OfTheSameUrlKeepsItsFile)
{
    bench.show_url(unserved_url);
    bench.wait_for_failed_worker();
    const std::wstring path = bench.pdf();
    load_fetched_file(bench, path);
    EXPECT_EQ(bench.load_url(unserved_url), S_OK);
    show_again(bench);
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentSecondLoad, KeepsTheHostsFile)
{
    const std::wstring path = bench.pdf();
    bench.create();
    bench.set_site();
    EXPECT_EQ(bench.load_url(unserved_url), S_OK);
    EXPECT_EQ(bench.load_file(path), S_OK);
    EXPECT_EQ(bench.load_url(other_url), S_OK);
    bench.show();
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    EXPECT_EQ(bench.load_url(unserved_url), S_OK);
    show_again(bench);
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentSecondLoad, ForgetsPageAndZoom)
{
    bench.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    bench.show_url(unserved_url);
    bench.wait_for_failed_worker();
    EXPECT_EQ(bench.load_url(other_url), S_OK);
    bench.host.calls.make_fail("IWebBrowser2::get_LocationURL", bad_answer::failure);
    show_again(bench);
    wait_for_failed_workers(bench, 2);
    load_fetched_file(bench, bench.pdf());
    EXPECT_EQ(bench.viewer.texts(viewer_go_to_page), lines{});
    EXPECT_EQ(bench.viewer.texts(viewer_set_zoom), lines{});
    bench.close_in_order();
}

// The page's document is not one that was loaded before: the first load records its URL and does nothing
// more.
struct document_of_a_page
{
    explicit document_of_a_page(document_bench& bench) : page(L"http://host.test/page.html#page=3#zoom=40")
    {
        page.add(L"EMBED", L"application/pdf", L"element.pdf");
        bench.host.container = page.container();
        bench.host.object_moniker.display_name = L"quilltest://host.test/dir/page.html";
        bench.create();
        bench.set_site();
        bench.show();
        bench.wait_for_failed_worker();
    }

    page_container page;
};

constexpr wchar_t element_url[] = L"quilltest://host.test/dir/element.pdf";

QUILL_DOCUMENT_TEST(DocumentFirstLoad, KeepsTheElementOfThePage)
{
    const document_of_a_page document(bench);
    EXPECT_EQ(bench.load_url(other_url), S_OK);
    EXPECT_EQ(document_url(bench), element_url);
    bench.close_in_order();
    bench.release();
}

QUILL_DOCUMENT_TEST(DocumentFirstLoad, KeepsTheFileThatIsAboutToBeLoaded)
{
    const document_of_a_page document(bench);
    const std::wstring path = bench.pdf();
    EXPECT_EQ(bench.send_text(message_set_cache_file, 0, path.c_str()), 0);
    EXPECT_TRUE(PostMessageW(bench.window(), message_load_file, 0, 0));
    EXPECT_EQ(bench.load_url(other_url), S_OK);
    pump_messages();
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    bench.close_in_order();
    bench.release();
}

QUILL_DOCUMENT_TEST(DocumentSecondLoad, ForgetsTheElementOfThePage)
{
    const document_of_a_page document(bench);
    EXPECT_EQ(bench.load_url(unserved_url), S_OK);
    EXPECT_EQ(bench.load_url(other_url), S_OK);
    EXPECT_EQ(document_url(bench), other_url);
    show_again(bench);
    EXPECT_EQ(document_url(bench), other_url);
    wait_for_failed_workers(bench, 2);
    bench.close_in_order();
    bench.release();
}

// The system's download service keeps handles of its own from the first use on: no balance here.
struct DocumentSecondLoadWhileDownloading : testing::TestWithParam<bool>
{
    registry_key_scope settings{HKEY_CURRENT_USER,
                                L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Preferences\\kBrowserPlugin"};
    http_server server;
    document_bench bench;
};

TEST_P(DocumentSecondLoadWhileDownloading, ShowsTheNewDocumentOnly)
{
    if (GetParam())
        settings.set_string(L"kIEBrowserPluginWinINet", L"/b 1");
    auto held = http_response::ok(pdf_body(20'000));
    held.hold_after = 10'000;
    server.route("/former.pdf", held);
    server.route("/new.pdf", http_response::ok(pdf_body(2'000)));
    bench.show_url(server.url(L"/former.pdf"));
    ASSERT_TRUE(wait_until([&] { return !server.requests().empty(); }));
    EXPECT_EQ(bench.load_url(server.url(L"/new.pdf")), S_OK);
    server.release();
    bench.wait_for_no_worker();
    pump_messages();
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{});
    show_again(bench);
    ASSERT_TRUE(wait_until([&] { return !bench.viewer.texts(viewer_open).empty(); }));
    EXPECT_NE(bench.viewer.texts(viewer_open)[0].find("\\new.pdf)"), std::string::npos)
        << bench.viewer.texts(viewer_open)[0];
    bench.close_in_order();
}

// As the worker that fetched the former URL, which gets to its hand-over after the load.
TEST_P(DocumentSecondLoadWhileDownloading, RefusesTheFileOfTheFormerUrl)
{
    if (GetParam())
        settings.set_string(L"kIEBrowserPluginWinINet", L"/b 1");
    auto held = http_response::ok(pdf_body(20'000));
    held.hold_after = 10'000;
    server.route("/former.pdf", held);
    bench.show_url(server.url(L"/former.pdf"));
    ASSERT_TRUE(wait_until([&] { return !server.requests().empty(); }));
    EXPECT_EQ(bench.load_url(other_url), S_OK);
    const std::wstring former = bench.pdf(L"former.pdf");
    const HWND window = bench.window();
    std::atomic<bool> is_sent{false};
    std::thread worker([&] {
        DWORD_PTR result = 1;
        EXPECT_NE(SendMessageTimeoutW(window, message_set_cache_file, 0,
                                      reinterpret_cast<LPARAM>(former.c_str()), SMTO_ABORTIFHUNG,
                                      default_deadline_ms, &result),
                  0);
        EXPECT_EQ(result, 0u);
        EXPECT_TRUE(PostMessageW(window, message_load_file, 0, 0));
        is_sent = true;
    });
    EXPECT_TRUE(wait_until([&] { return is_sent.load(); }));
    worker.join();
    pump_messages();
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{});
    server.release();
    bench.close_in_order();
}

INSTANTIATE_TEST_SUITE_P(Document, DocumentSecondLoadWhileDownloading, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& way) {
                             return std::string(way.param ? "WinINet" : "Urlmon");
                         });

} // namespace
} // namespace quill::test
