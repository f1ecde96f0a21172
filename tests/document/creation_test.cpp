// The creation of the window: the host window, the set-up of the viewer, and where the document comes from.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>

namespace quill::test {
namespace {

// The lines of the creation, without those of the file check and without sizes.
lines creation_lines(document_fixture& fixture)
{
    return without(without(fixture.take_log(), "ACTIVEDOC isPDF"), "OnSize");
}

bool contains(const lines& all, const std::string& line)
{
    return std::find(all.begin(), all.end(), line) != all.end();
}

// The calls of the host and the viewer in the order of the creation.
lines creation_calls(document_fixture& fixture)
{
    return fixture.host.calls.calls_of(
        {"IServiceProvider::QueryService", "IShellBrowser::GetWindow", "viewer class::CreateInstance",
         "viewer::1", "viewer::4", "viewer::9", "viewer::12", "viewer::15", "viewer::16", "viewer::19",
         "viewer::23", "viewer::24", "IWebBrowser2::get_LocationURL", "IOleClientSite::GetMoniker",
         "IOleClientSite::GetContainer", "IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu"});
}

QUILL_DOCUMENT_TEST(DocumentCreation, CreatesTheHostWindow)
{
    fixture.show_file(fixture.pdf());
    const HWND host = fixture.viewer_host_window();
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(GetParent(host), fixture.window());
    EXPECT_EQ(GetDlgCtrlID(host), 1);
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongW(host, GWL_STYLE)), WS_CHILD | WS_VISIBLE | WS_BORDER);
    EXPECT_EQ(GetWindowLongPtrW(host, GWLP_HINSTANCE), reinterpret_cast<LONG_PTR>(fixture.module.handle()));
    EXPECT_EQ(GetWindowTextLengthW(host), 0);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, SetsTheViewerUp)
{
    fixture.show_file(fixture.pdf());
    const std::string window = std::to_string(reinterpret_cast<ULONG_PTR>(fixture.window()));
    EXPECT_EQ(fixture.viewer.texts(),
              (lines{"23(UI8 " + window + ", UI4 34562)", "24(UI8 " + window + ", UI4 34577)", "15()", "16()",
                     "1(BSTR " + to_utf8(fixture.files / L"sample.pdf") + ")"}));
    EXPECT_EQ(fixture.viewers.viewers().size(), 1u);
    fixture.close_in_order();
    EXPECT_EQ(fixture.viewers.living_viewers(), 0);
}

QUILL_DOCUMENT_TEST(DocumentCreation, OfALocalFileIsLoggedLineByLine)
{
    fixture.create();
    fixture.set_site();
    const std::wstring path = fixture.pdf();
    fixture.load_file(path);
    fixture.take_log();
    fixture.show();
    const std::string file = to_utf8(path);
    EXPECT_EQ(
        without(fixture.take_log(), "OnSize"),
        (lines{"@ DoVerb {-1} {10 20 410 320} {" + pointer_text(fixture.host.site.client_site()) + " -1 0 1}",
               "@ OnCreate [#1] {10 400 20 300}", "@ OnCreate [#2] " + file, "ACTIVEDOC isPDF [TRUE]",
               "@ LOADFILE " + file, "@ LOADFILE RESULT -1"}));
    fixture.close_in_order();
    fixture.log.skip();
}

QUILL_DOCUMENT_TEST(DocumentCreation, OfALocalFileMakesItsCallsInOrder)
{
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(creation_calls(fixture),
              (lines{"IServiceProvider::QueryService shell", "IShellBrowser::GetWindow",
                     "viewer class::CreateInstance", "viewer::23", "viewer::24", "viewer::15", "viewer::16",
                     "IServiceProvider::QueryService browser", "IWebBrowser2::get_LocationURL", "viewer::1",
                     "IOleInPlaceFrame::InsertMenus", "IOleInPlaceFrame::SetMenu menu"}));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, OfAUrlIsLoggedLineByLine)
{
    fixture.create();
    fixture.set_site();
    fixture.load_url(unserved_url);
    fixture.take_log();
    fixture.show();
    const auto logged = creation_lines(fixture);
    ASSERT_EQ(logged.size(), 5u) << testing::PrintToString(logged);
    EXPECT_EQ(lines(logged.begin() + 1, logged.end()),
              (lines{"@ OnCreate [#1] {10 400 20 300}", "@ OnCreate [#2] ", "@ OnCreate [#3]",
                     "@ OnCreate [URL]"}));
    fixture.wait_for_failed_worker();
    EXPECT_EQ(creation_calls(fixture),
              (lines{"IServiceProvider::QueryService shell", "IShellBrowser::GetWindow",
                     "viewer class::CreateInstance", "viewer::23", "viewer::24", "viewer::15", "viewer::16",
                     "IServiceProvider::QueryService browser", "IWebBrowser2::get_LocationURL"}));
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{}) << "nothing is there to open yet";
    fixture.close_in_order();
}

// If the browser's menu is not merged, page and zoom are those of the URL itself.
QUILL_DOCUMENT_TEST(DocumentCreation, OfAUrlWithoutMenuDoesNotReadTheLocation)
{
    fixture.create();
    fixture.set_site();
    fixture.load_url(unserved_url);
    EXPECT_EQ(fixture.do_verb(OLEIVERB_INPLACEACTIVATE), S_OK);
    fixture.wait_for_failed_worker();
    EXPECT_EQ(fixture.host.calls.count("IWebBrowser2::get_LocationURL"), 0);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, WorkerRequestsTheUrlOfTheDocument)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    EXPECT_TRUE(fixture.log.worker_wrote("ACTIVEDOC DownloadPDFFile URL: quilltest://host.test/a/c/d.pdf"));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, UsesTheMonikerOfTheObjectWithoutAUrl)
{
    fixture.host.object_moniker.display_name = L"quilltest://host.test/object.pdf";
    fixture.host.container_moniker.display_name = L"quilltest://host.test/container.pdf";
    fixture.create();
    fixture.set_site();
    fixture.take_log();
    fixture.show();
    const auto logged = creation_lines(fixture);
    EXPECT_TRUE(contains(logged, "@ OnCreate [#3]"));
    EXPECT_FALSE(contains(logged, "@ OnCreate [DocUrl] - FAILED"));
    EXPECT_TRUE(contains(logged, "@ OnCreate [URL]"));
    EXPECT_EQ(document_url(fixture), L"quilltest://host.test/object.pdf");
    EXPECT_EQ(fixture.host.calls.calls_of({"IOleClientSite::GetMoniker"}),
              lines{"IOleClientSite::GetMoniker 4 3"});
    EXPECT_GE(fixture.host.calls.count("IOleClientSite::GetContainer"), 1)
        << "an embedding page is looked for";
    fixture.wait_for_failed_worker();
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, UsesTheMonikerOfTheContainerLast)
{
    fixture.host.container_moniker.display_name = L"quilltest://host.test/a b\u00e9.pdf";
    fixture.create();
    fixture.set_site();
    fixture.take_log();
    fixture.show();
    const auto logged = creation_lines(fixture);
    ASSERT_EQ(logged.size(), 6u) << testing::PrintToString(logged);
    EXPECT_EQ(lines(logged.begin() + 3, logged.end()),
              (lines{"@ OnCreate [#3]", "@ OnCreate [DocUrl] - FAILED", "@ OnCreate [URL]"}));
    EXPECT_EQ(document_url(fixture), L"quilltest://host.test/a+b%C3%A9.pdf");
    EXPECT_EQ(fixture.host.calls.calls_of({"IOleClientSite::GetMoniker"}),
              (lines{"IOleClientSite::GetMoniker 4 3", "IOleClientSite::GetMoniker 4 1"}));
    fixture.wait_for_failed_worker();
    fixture.close_in_order();
}

// A host may have a moniker without a name.
QUILL_DOCUMENT_TEST(DocumentCreation, IgnoresAMonikerWithoutName)
{
    for (const char* call : {"IOleClientSite::GetMoniker", "object moniker::GetDisplayName"}) {
        for (const call_fault kind : host_faults) {
            SCOPED_TRACE(std::string{call} + ": " + to_text(kind));
            fixture.host.calls.forget_calls();
            fixture.host.object_moniker.display_name = L"quilltest://host.test/object.pdf";
            fixture.host.container_moniker.display_name = L"quilltest://host.test/container.pdf";
            fixture.host.calls.make_fail(call, kind, 1);
            fixture.create();
            fixture.set_site();
            fixture.take_log();
            fixture.show();
            EXPECT_TRUE(contains(creation_lines(fixture), "@ OnCreate [DocUrl] - FAILED"));
            EXPECT_EQ(document_url(fixture), L"quilltest://host.test/container.pdf");
            fixture.wait_for_failed_worker();
            fixture.close_in_order();
            fixture.release();
        }
        fixture.host.calls.make_fail(call, call_fault::none);
    }
}

QUILL_DOCUMENT_TEST(DocumentCreation, WithoutAnySourceTheWindowStaysEmpty)
{
    fixture.create();
    fixture.set_site();
    fixture.take_log();
    fixture.show();
    EXPECT_TRUE(contains(creation_lines(fixture), "@ OnCreate [URL]"));
    EXPECT_EQ(document_url(fixture), L"");
    fixture.wait_for_no_worker();
    EXPECT_EQ(fixture.log.worker_lines(), lines{}) << "without a URL the worker ends silently";
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, DoesNotOpenAFileThatIsNoPdf)
{
    fixture.create();
    fixture.set_site();
    const std::wstring path = fixture.file(L"page.pdf", "<html><body>not a PDF</body></html>");
    fixture.load_file(path);
    fixture.load_url(unserved_url);
    fixture.take_log();
    fixture.show();
    const auto logged = without(fixture.take_log(), "OnSize");
    EXPECT_TRUE(contains(logged, "@ OnCreate [#2] " + to_utf8(path)));
    EXPECT_TRUE(contains(logged, "ACTIVEDOC isPDF [FALSE]"));
    EXPECT_TRUE(contains(logged, "@ OnCreate [#3]"));
    EXPECT_TRUE(contains(logged, "@ OnCreate [URL]"));
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    fixture.wait_for_failed_worker();
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, AProtectedFileIsOpened)
{
    const std::wstring path = fixture.file(L"secret.ppdf", "0123456789.pfile and more");
    fixture.create();
    fixture.set_site();
    fixture.load_file(path);
    fixture.take_log();
    fixture.show();
    EXPECT_TRUE(contains(fixture.take_log(), "ACTIVEDOC isPDF [TRUE] - ppdf file"));
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    fixture.close_in_order();
}

// A local file takes precedence over a URL.
QUILL_DOCUMENT_TEST(DocumentCreation, PrefersALocalFile)
{
    fixture.create();
    fixture.set_site();
    fixture.load_url(unserved_url);
    fixture.load_file(fixture.pdf());
    fixture.take_log();
    fixture.show();
    EXPECT_FALSE(contains(fixture.take_log(), "@ OnCreate [#3]"));
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 1u);
    EXPECT_FALSE(fixture.log.worker_wrote("ACTIVEDOC DownloadPDFFile"));
    fixture.close_in_order();
}

// The location is requested after the file is checked: the file can be deleted in between.
QUILL_DOCUMENT_TEST(DocumentCreation, AFileThatVanishesAfterTheCheckIsNotOpened)
{
    const std::wstring path = fixture.files / L"vanishing.pdf";
    fixture.create();
    fixture.set_site();
    fixture.load_file(path); // does not exist yet, so it is not held open
    fixture.pdf(L"vanishing.pdf");
    fixture.host.calls.when("IWebBrowser2::get_LocationURL",
                            [&] { EXPECT_TRUE(DeleteFileW(path.c_str())) << GetLastError(); });
    fixture.take_log();
    fixture.show();
    const auto logged = fixture.take_log();
    EXPECT_TRUE(contains(logged, "ACTIVEDOC isPDF [TRUE]"));
    EXPECT_TRUE(contains(logged, "@ LOADFILE " + to_utf8(path)));
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    for (const auto& line : logged)
        EXPECT_EQ(line.find("LOADFILE RESULT"), std::string::npos);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, OpensTheFileWithoutServices)
{
    fixture.host.site.offered.service_provider = false;
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 1u);
    EXPECT_EQ(instance_number(fixture.window()), 0u);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCreation, WithAFullControlAsViewer)
{
    fixture.viewer.answers_ole_object = true;
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 1u);
    ASSERT_EQ(fixture.viewers.viewers().size(), 1u);
    const HWND control = fixture.viewers.viewers()[0]->ole_window();
    EXPECT_NE(control, nullptr) << "the control was not activated in place";
    EXPECT_TRUE(IsChild(fixture.viewer_host_window(), control));
    fixture.close_in_order();
    EXPECT_FALSE(IsWindow(control));
}

} // namespace
} // namespace quill::test
