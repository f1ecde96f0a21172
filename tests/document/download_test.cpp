// From the URL to the shown file: the document, its worker and a real server.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/support/http_server.h"
#include "tests/support/process_resources.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>

namespace quill::test {
namespace {

// The system's download service keeps handles and threads from its first use on, so these tests check the
// windows, references and log of the document and not the counts of the process.
class DocumentDownload : public testing::Test
{
protected:
    bool wait_for_viewer_calls(std::size_t count)
    {
        return wait_until([&] { return fixture.viewer.texts(viewer_open).size() >= count; });
    }
    bool wait_for_worker_line(const std::string& beginning)
    {
        return wait_until([&] { return fixture.log.worker_wrote(beginning); });
    }

    http_server server;
    document_fixture fixture;
};

TEST_F(DocumentDownload, ShowsTheServersFile)
{
    server.route("/dir/My%20File.pdf", http_response::ok(pdf_body(50'000)));
    fixture.host.browser.location_url = server.url(L"/dir/My%20File.pdf#page=3#zoom=125");
    fixture.show_url(server.url(L"/dir/My%20File.pdf"));
    ASSERT_TRUE(wait_for_viewer_calls(1));
    const std::wstring cached = fixture.temp / L"qll0\\My File.pdf";
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(cached) + ")"});
    EXPECT_EQ(fixture.viewer.texts(viewer_go_to_page), lines{"4(I4 2)"});
    EXPECT_EQ(fixture.viewer.texts(viewer_set_zoom), lines{"9(R8 1.25)"});
    EXPECT_EQ(read_file(cached), pdf_body(50'000));
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceFrame::SetMenu"), 1);
    const auto logged = fixture.take_log();
    const auto expected = load_lines(cached, -1);
    EXPECT_NE(std::search(logged.begin(), logged.end(), expected.begin(), expected.end()), logged.end())
        << testing::PrintToString(logged);
    fixture.close_in_order();
    EXPECT_TRUE(read_file(cached).has_value()) << "cached files stay";
}

TEST_F(DocumentDownload, ShowsTheContainersDocument)
{
    server.route("/page.pdf", http_response::ok(pdf_body(2'000)));
    fixture.host.container_moniker.display_name = server.url(L"/page.pdf");
    fixture.create();
    fixture.set_site();
    fixture.show();
    ASSERT_TRUE(wait_for_viewer_calls(1));
    fixture.close_in_order();
}

TEST_F(DocumentDownload, ShowsProgressAndHidesItWithTheFile)
{
    auto slow = http_response::slow(pdf_body(400'000), 100'000, 100);
    server.route("/slow.pdf", slow);
    fixture.show_url(server.url(L"/slow.pdf"));
    ASSERT_NE(fixture.pane(), nullptr);
    EXPECT_NE(GetWindowLongW(fixture.pane(), GWL_STYLE) & WS_VISIBLE, 0);
    ASSERT_TRUE(wait_for_viewer_calls(1));
    EXPECT_EQ(GetWindowLongW(fixture.pane(), GWL_STYLE) & WS_VISIBLE, 0);
    fixture.close_in_order();
}

TEST_F(DocumentDownload, DoesNotShowWhatIsNoPdf)
{
    server.route("/x.pdf", http_response::ok("<html><body>log in first</body></html>", "text/html"));
    fixture.show_url(server.url(L"/x.pdf"));
    ASSERT_TRUE(wait_for_worker_line("ACTIVEDOC DownloadPDFFile MISSING FILE"));
    pump_messages();
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    EXPECT_NE(GetWindowLongW(fixture.pane(), GWL_STYLE) & WS_VISIBLE, 0) << "the window keeps what it showed";
    fixture.close_in_order();
}

TEST_F(DocumentDownload, DoesNotShowWhatIsNotServed)
{
    fixture.show_url(http_server::refused_url(L"/x.pdf"));
    ASSERT_TRUE(wait_for_worker_line("ACTIVEDOC DownloadPDFFile FAILED "));
    pump_messages();
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    fixture.close_in_order();
}

TEST_F(DocumentDownload, StopsWhenTheDocumentIsClosedInTheMiddle)
{
    auto slow = http_response::slow(pdf_body(10'000'000), 50'000, 50);
    server.route("/slow.pdf", slow);
    fixture.show_url(server.url(L"/slow.pdf"));
    ASSERT_TRUE(wait_for_worker_line("ACTIVEDOC KIEBrowserPlugin: Default - "));
    ASSERT_TRUE(wait_until([&] { return !server.requests().empty(); }));
    fixture.close_in_order();
    EXPECT_EQ(fixture.window(), nullptr);
    const auto all = fixture.log.worker_lines();
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(all.back().rfind("ACTIVEDOC DownloadPDFFile FAILED ", 0), 0u) << all.back();
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
}

TEST_F(DocumentDownload, StopsWhenTheDocumentIsClosedAtOnce)
{
    auto slow = http_response::slow(pdf_body(10'000'000), 50'000, 50);
    server.route("/slow.pdf", slow);
    fixture.show_url(server.url(L"/slow.pdf"));
    fixture.host.destroy_windows(); // the worker may not even have requested the URL
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    fixture.release();
    EXPECT_EQ(fixture.module.can_unload_now(), S_OK);
}

// Closed after the worker has posted its request: the posted message is discarded with the window.
TEST_F(DocumentDownload, IsNotShownWhenClosedBeforeTheFileIsLoaded)
{
    server.route("/x.pdf", http_response::ok(pdf_body(2'000)));
    fixture.show_url(server.url(L"/x.pdf"));
    const bool checked = wait_until([&] { return fixture.log.worker_wrote("ACTIVEDOC isPDF [TRUE]"); });
    EXPECT_TRUE(checked);
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    pump_messages();
    fixture.close_in_order();
}

// A document that is hidden and shown again downloads its file again.
TEST_F(DocumentDownload, IsNotRepeatedForANewWindow)
{
    server.route("/x.pdf", http_response::ok(pdf_body(2'000)));
    fixture.show_url(server.url(L"/x.pdf"));
    ASSERT_TRUE(wait_for_viewer_calls(1));
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    fixture.viewer.forget_calls();
    EXPECT_EQ(fixture.host.view->Show(TRUE), S_OK);
    ASSERT_TRUE(wait_for_viewer_calls(1));
    fixture.close_in_order();
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(DocumentDownload, StartsAgainWithANewWindowAfterAFailure)
{
    server.route("/x.pdf", http_response::not_found());
    fixture.show_url(server.url(L"/x.pdf"));
    fixture.wait_for_no_worker(); // which could consume the stop
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    server.route("/x.pdf", http_response::ok(pdf_body(2'000)));
    EXPECT_EQ(fixture.host.view->Show(TRUE), S_OK);
    EXPECT_TRUE(wait_for_viewer_calls(1));
    fixture.close_in_order();
}

TEST_F(DocumentDownload, TwoDocumentsGetFoldersOfTheirOwn)
{
    server.route("/x.pdf", http_response::ok(pdf_body(2'000)));
    for (const wchar_t* folder : {L"qll0", L"qll1"}) {
        fixture.viewer.forget_calls();
        fixture.show_url(server.url(L"/x.pdf"));
        ASSERT_TRUE(wait_for_viewer_calls(1));
        EXPECT_EQ(fixture.viewer.texts(viewer_open),
                  lines{"1(BSTR " + to_utf8((fixture.temp / folder) + L"\\x.pdf") + ")"});
        fixture.close_in_order();
        fixture.release();
    }
}

// Repeated, to see growth: what the system keeps is bounded, a leak of the document would not be.
TEST_F(DocumentDownload, ManyDocumentsInTurnLeakNoHandles)
{
    server.route("/x.pdf", http_response::ok(pdf_body(2'000)));
    DWORD first = 0;
    constexpr int repeats = 12;
    constexpr int warm_up = 4;
    for (int number = 0; number < repeats; ++number) {
        fixture.viewer.forget_calls();
        fixture.show_url(server.url(L"/x.pdf"));
        ASSERT_TRUE(wait_for_viewer_calls(1));
        fixture.close_in_order();
        fixture.release();
        server.wait_idle(5'000);
        if (number == warm_up)
            first = process_resources::now().kernel_handles;
    }
    EXPECT_LT(process_resources::now().kernel_handles, first + repeats - warm_up - 1);
}

} // namespace
} // namespace quill::test
