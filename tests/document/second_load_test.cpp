// A second IPersistMoniker::Load on one object: the file of the former URL is not shown for the new one.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/document/held_worker.h"
#include "tests/document/page_container.h"
#include "tests/support/download_setting.h"
#include "tests/support/http_server.h"
#include "tests/support/scopes.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>

namespace quill::test {
namespace {

constexpr wchar_t other_url[] = L"quilltest://host.test/other.pdf";

void show_again(document_fixture& fixture)
{
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    fixture.viewer.forget_calls();
    EXPECT_EQ(fixture.host.view->Show(TRUE), S_OK);
    ASSERT_NE(fixture.window(), nullptr);
}

// One for each URL without a server.
void wait_for_failed_workers(const document_fixture& fixture, int count)
{
    EXPECT_TRUE(wait_until([&] {
        const auto all = fixture.log.worker_lines();
        return count <= std::count_if(all.begin(), all.end(), [](const std::string& line) {
                   return line.rfind("ACTIVEDOC DownloadPDFFile FAILED ", 0) == 0;
               });
    })) << testing::PrintToString(fixture.log.worker_lines());
}

QUILL_DOCUMENT_TEST(DocumentSecondLoad, ForgetsTheFetchedFile)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    load_fetched_file(fixture, fixture.pdf());
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 1u);
    EXPECT_EQ(fixture.load_url(other_url), S_OK);
    show_again(fixture);
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    EXPECT_EQ(document_url(fixture), other_url);
    const auto logged = fixture.take_log();
    EXPECT_NE(std::find(logged.begin(), logged.end(), "@ OnCreate [#2] "), logged.end());
    EXPECT_NE(std::find(logged.begin(), logged.end(), "@ OnCreate [URL]"), logged.end());
    wait_for_failed_workers(fixture, 2);
    fixture.close_in_order();
}

// The worker has passed its file to the window; the request to load it is still in the queue.
QUILL_DOCUMENT_TEST(DocumentSecondLoad, ForgetsAFileThatIsAboutToBeLoaded)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    EXPECT_EQ(fixture.send_text(message_set_cache_file, 0, fixture.pdf().c_str()), 0);
    EXPECT_EQ(fixture.load_url(other_url), S_OK);
    EXPECT_EQ(fixture.send(message_load_file), 0);
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentSecondLoad, AlsoWhenItIsRefused)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    load_fetched_file(fixture, fixture.pdf());
    EXPECT_EQ(fixture.load_url(other_url, TRUE), E_FAIL);
    show_again(fixture);
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    wait_for_failed_workers(fixture, 2);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentSecondLoad, OfTheSameUrlKeepsItsFile)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    const std::wstring path = fixture.pdf();
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.load_url(unserved_url), S_OK);
    show_again(fixture);
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentSecondLoad, KeepsTheHostsFile)
{
    const std::wstring path = fixture.pdf();
    fixture.create();
    fixture.set_site();
    EXPECT_EQ(fixture.load_url(unserved_url), S_OK);
    EXPECT_EQ(fixture.load_file(path), S_OK);
    EXPECT_EQ(fixture.load_url(other_url), S_OK);
    fixture.show();
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    EXPECT_EQ(fixture.load_url(unserved_url), S_OK);
    show_again(fixture);
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentSecondLoad, ForgetsPageAndZoom)
{
    fixture.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    EXPECT_EQ(fixture.load_url(other_url), S_OK);
    fixture.host.calls.make_fail("IWebBrowser2::get_LocationURL", call_fault::error);
    show_again(fixture);
    wait_for_failed_workers(fixture, 2);
    load_fetched_file(fixture, fixture.pdf());
    EXPECT_EQ(fixture.viewer.texts(viewer_go_to_page), lines{});
    EXPECT_EQ(fixture.viewer.texts(viewer_set_zoom), lines{});
    fixture.close_in_order();
}

// The document of a page had no load before: the first load stores its URL and does nothing else.
struct document_of_a_page
{
    explicit document_of_a_page(document_fixture& fixture)
        : page(L"http://host.test/page.html#page=3#zoom=40")
    {
        page.add(L"EMBED", L"application/pdf", L"element.pdf");
        fixture.host.container = page.container();
        fixture.host.object_moniker.display_name = L"quilltest://host.test/dir/page.html";
        fixture.create();
        fixture.set_site();
        fixture.show();
        fixture.wait_for_failed_worker();
    }

    page_container page;
};

constexpr wchar_t element_url[] = L"quilltest://host.test/dir/element.pdf";

QUILL_DOCUMENT_TEST(DocumentFirstLoad, KeepsTheElementOfThePage)
{
    const document_of_a_page document(fixture);
    EXPECT_EQ(fixture.load_url(other_url), S_OK);
    EXPECT_EQ(document_url(fixture), element_url);
    fixture.close_in_order();
    fixture.release();
}

QUILL_DOCUMENT_TEST(DocumentFirstLoad, KeepsTheFileThatIsAboutToBeLoaded)
{
    const document_of_a_page document(fixture);
    const std::wstring path = fixture.pdf();
    EXPECT_EQ(fixture.send_text(message_set_cache_file, 0, path.c_str()), 0);
    EXPECT_TRUE(PostMessageW(fixture.window(), message_load_file, 0, 0));
    EXPECT_EQ(fixture.load_url(other_url), S_OK);
    pump_messages();
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    fixture.close_in_order();
    fixture.release();
}

QUILL_DOCUMENT_TEST(DocumentSecondLoad, ForgetsTheElementOfThePage)
{
    const document_of_a_page document(fixture);
    EXPECT_EQ(fixture.load_url(unserved_url), S_OK);
    EXPECT_EQ(fixture.load_url(other_url), S_OK);
    EXPECT_EQ(document_url(fixture), other_url);
    show_again(fixture);
    EXPECT_EQ(document_url(fixture), other_url);
    wait_for_failed_workers(fixture, 2);
    fixture.close_in_order();
    fixture.release();
}

// Not in balance: the system's download service keeps handles from its first use on.
struct DocumentSecondLoadWhileDownloading : testing::TestWithParam<bool>
{
    download_setting settings;
    http_server server;
    document_fixture fixture;
};

TEST_P(DocumentSecondLoadWhileDownloading, ShowsTheNewDocumentOnly)
{
    if (GetParam())
        settings.use_wininet();
    auto held = http_response::ok(pdf_body(20'000));
    held.hold_after = 10'000;
    server.route("/former.pdf", held);
    server.route("/new.pdf", http_response::ok(pdf_body(2'000)));
    fixture.show_url(server.url(L"/former.pdf"));
    ASSERT_TRUE(wait_until([&] { return !server.requests().empty(); }));
    EXPECT_EQ(fixture.load_url(server.url(L"/new.pdf")), S_OK);
    server.release();
    fixture.wait_for_no_worker();
    pump_messages();
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    show_again(fixture);
    ASSERT_TRUE(wait_until([&] { return !fixture.viewer.texts(viewer_open).empty(); }));
    EXPECT_NE(fixture.viewer.texts(viewer_open)[0].find("\\new.pdf)"), std::string::npos)
        << fixture.viewer.texts(viewer_open)[0];
    fixture.close_in_order();
}

TEST_P(DocumentSecondLoadWhileDownloading, RefusesTheFileOfTheFormerUrl)
{
    if (GetParam())
        settings.use_wininet();
    server.route("/former.pdf", http_response::ok(pdf_body(2'000)));
    const held_worker worker(fixture, message_set_cache_file, held_worker::side::before);
    fixture.show_url(server.url(L"/former.pdf"));
    worker.wait_until_held();
    EXPECT_EQ(fixture.load_url(other_url), S_OK);
    worker.resume();
    fixture.wait_for_no_worker();
    pump_messages();
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    EXPECT_NE(GetWindowLongW(fixture.pane(), GWL_STYLE) & WS_VISIBLE, 0);
    EXPECT_EQ(fixture.send(message_load_file), 0);
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{}) << "the former file was accepted";
    fixture.close_in_order();
}

INSTANTIATE_TEST_SUITE_P(Document, DocumentSecondLoadWhileDownloading, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& way) {
                             return std::string(way.param ? "WinINet" : "Urlmon");
                         });

} // namespace
} // namespace quill::test
