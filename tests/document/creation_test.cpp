// The window's creation: the host window, the viewer's setup, and where the document comes from.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>

namespace quill::test {
namespace {

using lines = std::vector<std::string>;

// What the creation writes, without what checking a file writes and without sizes.
lines creation_lines(document_bench& bench)
{
    return without(without(bench.take_log(), "ACTIVEDOC isPDF"), "OnSize");
}

bool contains(const lines& all, const std::string& line)
{
    return std::find(all.begin(), all.end(), line) != all.end();
}

// The host's and the viewer's calls in the order of the creation.
lines creation_calls(document_bench& bench)
{
    return bench.host.calls.calls_of(
        {"IServiceProvider::QueryService", "IShellBrowser::GetWindow", "viewer class::CreateInstance",
         "viewer::1", "viewer::4", "viewer::9", "viewer::12", "viewer::15", "viewer::16", "viewer::19",
         "viewer::23", "viewer::24", "IWebBrowser2::get_LocationURL", "IOleClientSite::GetMoniker",
         "IOleClientSite::GetContainer", "IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu"});
}

QUILL_DOCUMENT_TEST(DocumentCreation, MakesTheHostWindow)
{
    bench.show_file(bench.pdf());
    const HWND host = bench.viewer_host_window();
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(GetParent(host), bench.window());
    EXPECT_EQ(GetDlgCtrlID(host), 1);
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongW(host, GWL_STYLE)), WS_CHILD | WS_VISIBLE | WS_BORDER);
    EXPECT_EQ(GetWindowLongPtrW(host, GWLP_HINSTANCE), reinterpret_cast<LONG_PTR>(bench.module.handle()));
    EXPECT_EQ(GetWindowTextLengthW(host), 0);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, SetsTheViewerUp)
{
    bench.show_file(bench.pdf());
    const std::string window = std::to_string(reinterpret_cast<ULONG_PTR>(bench.window()));
    EXPECT_EQ(bench.viewer.texts(),
              (lines{"23(UI8 " + window + ", UI4 34562)", "24(UI8 " + window + ", UI4 34577)", "15()", "16()",
                     "1(BSTR " + to_utf8(bench.files / L"sample.pdf") + ")"}));
    EXPECT_EQ(bench.viewers.viewers().size(), 1u);
    bench.close_in_order();
    EXPECT_EQ(bench.viewers.living_viewers(), 0);
}

QUILL_DOCUMENT_TEST(DocumentCreation, OfALocalFileIsLoggedLineByLine)
{
    bench.create();
    bench.set_site();
    const std::wstring path = bench.pdf();
    bench.load_file(path);
    bench.take_log();
    bench.show();
    const std::string file = to_utf8(path);
    EXPECT_EQ(
        without(bench.take_log(), "OnSize"),
        (lines{"@ DoVerb {-1} {10 20 410 320} {" + pointer_text(bench.host.site.client_site()) + " -1 0 1}",
               "@ OnCreate [#1] {10 400 20 300}", "@ OnCreate [#2] " + file, "ACTIVEDOC isPDF [TRUE]",
               "@ LOADFILE " + file, "@ LOADFILE RESULT -1"}));
    bench.close_in_order();
    bench.log.skip();
}

QUILL_DOCUMENT_TEST(DocumentCreation, OfALocalFileAsksInOrder)
{
    bench.show_file(bench.pdf());
    EXPECT_EQ(creation_calls(bench),
              (lines{"IServiceProvider::QueryService shell", "IShellBrowser::GetWindow",
                     "viewer class::CreateInstance", "viewer::23", "viewer::24", "viewer::15", "viewer::16",
                     "IServiceProvider::QueryService browser", "IWebBrowser2::get_LocationURL", "viewer::1",
                     "IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu"}));
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, OfAUrlIsLoggedLineByLine)
{
    bench.create();
    bench.set_site();
    bench.load_url(unserved_url);
    bench.take_log();
    bench.show();
    const auto logged = creation_lines(bench);
    ASSERT_EQ(logged.size(), 5u) << testing::PrintToString(logged);
    EXPECT_EQ(lines(logged.begin() + 1, logged.end()),
              (lines{"@ OnCreate [#1] {10 400 20 300}", "@ OnCreate [#2] ", "@ OnCreate [#3]",
                     "@ OnCreate [URL]"}));
    bench.wait_for_failed_worker();
    EXPECT_EQ(creation_calls(bench),
              (lines{"IServiceProvider::QueryService shell", "IShellBrowser::GetWindow",
                     "viewer class::CreateInstance", "viewer::23", "viewer::24", "viewer::15", "viewer::16",
                     "IServiceProvider::QueryService browser", "IWebBrowser2::get_LocationURL"}));
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{}) << "nothing is there to open yet";
    bench.close_in_order();
}

// Without merging the browser's menu, the URL itself says page and zoom.
QUILL_DOCUMENT_TEST(DocumentCreation, OfAUrlWithoutMenuDoesNotAskForTheLocation)
{
    bench.create();
    bench.set_site();
    bench.load_url(unserved_url);
    EXPECT_EQ(bench.do_verb(OLEIVERB_INPLACEACTIVATE), S_OK);
    bench.wait_for_failed_worker();
    EXPECT_EQ(bench.host.calls.count("IWebBrowser2::get_LocationURL"), 0);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, WorkerAsksForTheDocumentsUrl)
{
    bench.show_url(unserved_url);
    bench.wait_for_failed_worker();
    EXPECT_TRUE(bench.log.worker_wrote("ACTIVEDOC DownloadPDFFile URL: quilltest://host.test/a/c/d.pdf"));
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, WithoutUrlTheObjectsMonikerIsTaken)
{
    bench.host.object_moniker.display_name = L"quilltest://host.test/object.pdf";
    bench.host.container_moniker.display_name = L"quilltest://host.test/container.pdf";
    bench.create();
    bench.set_site();
    bench.take_log();
    bench.show();
    const auto logged = creation_lines(bench);
    EXPECT_TRUE(contains(logged, "@ OnCreate [#3]"));
    EXPECT_FALSE(contains(logged, "@ OnCreate [DocUrl] - FAILED"));
    EXPECT_TRUE(contains(logged, "@ OnCreate [URL]"));
    EXPECT_EQ(document_url(bench), L"quilltest://host.test/object.pdf");
    EXPECT_EQ(bench.host.calls.calls_of({"IOleClientSite::GetMoniker"}),
              lines{"IOleClientSite::GetMoniker 4 3"});
    EXPECT_GE(bench.host.calls.count("IOleClientSite::GetContainer"), 1) << "an embedding page is looked for";
    bench.wait_for_failed_worker();
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, ThenTheContainersMoniker)
{
    bench.host.container_moniker.display_name = L"quilltest://host.test/a b\u00e9.pdf";
    bench.create();
    bench.set_site();
    bench.take_log();
    bench.show();
    const auto logged = creation_lines(bench);
    ASSERT_EQ(logged.size(), 6u) << testing::PrintToString(logged);
    EXPECT_EQ(lines(logged.begin() + 3, logged.end()),
              (lines{"@ OnCreate [#3]", "@ OnCreate [DocUrl] - FAILED", "@ OnCreate [URL]"}));
    EXPECT_EQ(document_url(bench), L"quilltest://host.test/a+b%C3%A9.pdf");
    EXPECT_EQ(bench.host.calls.calls_of({"IOleClientSite::GetMoniker"}),
              (lines{"IOleClientSite::GetMoniker 4 3", "IOleClientSite::GetMoniker 4 1"}));
    bench.wait_for_failed_worker();
    bench.close_in_order();
}

// A moniker may be given and have no name.
QUILL_DOCUMENT_TEST(DocumentCreation, AMonikerWithoutNameCountsAsNone)
{
    for (const char* call : {"IOleClientSite::GetMoniker", "object moniker::GetDisplayName"}) {
        for (const bad_answer kind : every_bad_answer) {
            SCOPED_TRACE(std::string{call} + ": " + to_text(kind));
            bench.host.calls.forget_calls();
            bench.host.object_moniker.display_name = L"quilltest://host.test/object.pdf";
            bench.host.container_moniker.display_name = L"quilltest://host.test/container.pdf";
            bench.host.calls.make_fail(call, kind, 1);
            bench.create();
            bench.set_site();
            bench.take_log();
            bench.show();
            EXPECT_TRUE(contains(creation_lines(bench), "@ OnCreate [DocUrl] - FAILED"));
            EXPECT_EQ(document_url(bench), L"quilltest://host.test/container.pdf");
            bench.wait_for_failed_worker();
            bench.close_in_order();
            bench.release();
        }
        bench.host.calls.make_fail(call, bad_answer::none);
    }
}

QUILL_DOCUMENT_TEST(DocumentCreation, WithoutAnySourceTheWindowStaysEmpty)
{
    bench.create();
    bench.set_site();
    bench.take_log();
    bench.show();
    EXPECT_TRUE(contains(creation_lines(bench), "@ OnCreate [URL]"));
    EXPECT_EQ(document_url(bench), L"");
    bench.wait_for_no_worker();
    EXPECT_EQ(bench.log.worker_lines(), lines{}) << "without a URL the worker ends silently";
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{});
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, AFileThatIsNoPdfIsPassedOver)
{
    bench.create();
    bench.set_site();
    const std::wstring path = bench.file(L"page.pdf", "<html><body>not a PDF</body></html>");
    bench.load_file(path);
    bench.load_url(unserved_url);
    bench.take_log();
    bench.show();
    const auto logged = without(bench.take_log(), "OnSize");
    EXPECT_TRUE(contains(logged, "@ OnCreate [#2] " + to_utf8(path)));
    EXPECT_TRUE(contains(logged, "ACTIVEDOC isPDF [FALSE]"));
    EXPECT_TRUE(contains(logged, "@ OnCreate [#3]"));
    EXPECT_TRUE(contains(logged, "@ OnCreate [URL]"));
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{});
    bench.wait_for_failed_worker();
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, AProtectedFileIsOpened)
{
    const std::wstring path = bench.file(L"secret.ppdf", "0123456789.pfile and more");
    bench.create();
    bench.set_site();
    bench.load_file(path);
    bench.take_log();
    bench.show();
    EXPECT_TRUE(contains(bench.take_log(), "ACTIVEDOC isPDF [TRUE] - ppdf file"));
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    bench.close_in_order();
}

// A local file wins over a URL.
QUILL_DOCUMENT_TEST(DocumentCreation, ALocalFileIsPreferred)
{
    bench.create();
    bench.set_site();
    bench.load_url(unserved_url);
    bench.load_file(bench.pdf());
    bench.take_log();
    bench.show();
    EXPECT_FALSE(contains(bench.take_log(), "@ OnCreate [#3]"));
    EXPECT_EQ(bench.viewer.texts(viewer_open).size(), 1u);
    EXPECT_FALSE(bench.log.worker_wrote("ACTIVEDOC DownloadPDFFile"));
    bench.close_in_order();
}

// The file is checked, then the location is asked for: in between it can go.
QUILL_DOCUMENT_TEST(DocumentCreation, AFileThatVanishesAfterTheCheckIsNotOpened)
{
    const std::wstring path = bench.files / L"vanishing.pdf";
    bench.create();
    bench.set_site();
    bench.load_file(path); // not there yet, so nothing holds it
    bench.pdf(L"vanishing.pdf");
    bench.host.calls.when("IWebBrowser2::get_LocationURL",
                          [&] { EXPECT_TRUE(DeleteFileW(path.c_str())) << GetLastError(); });
    bench.take_log();
    bench.show();
    const auto logged = bench.take_log();
    EXPECT_TRUE(contains(logged, "ACTIVEDOC isPDF [TRUE]"));
    EXPECT_TRUE(contains(logged, "@ LOADFILE " + to_utf8(path)));
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{});
    for (const auto& line : logged)
        EXPECT_EQ(line.find("LOADFILE RESULT"), std::string::npos);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, WithoutServicesTheFileIsOpenedAllTheSame)
{
    bench.host.site.offered.service_provider = false;
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.viewer.texts(viewer_open).size(), 1u);
    EXPECT_EQ(instance_number(bench.window()), 0u);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, WithAFullControlAsViewer)
{
    bench.viewer.answers_ole_object = true;
    bench.show_file(bench.pdf());
    EXPECT_EQ(bench.viewer.texts(viewer_open).size(), 1u);
    ASSERT_EQ(bench.viewers.viewers().size(), 1u);
    const HWND control = bench.viewers.viewers()[0]->ole_window();
    EXPECT_NE(control, nullptr) << "the control was not activated in place";
    EXPECT_TRUE(IsChild(bench.viewer_host_window(), control));
    bench.close_in_order();
    EXPECT_FALSE(IsWindow(control));
}

} // namespace
} // namespace quill::test
