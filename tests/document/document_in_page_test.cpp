// Documents inside a page: which element each one belongs to, and where its file comes from then.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/document/page_container.h"
#include "tests/support/listening_pipe.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>

namespace quill::test {
namespace {

void prepare(document_fixture& fixture, page_container& page)
{
    fixture.host.container = page.container();
    fixture.host.object_moniker.display_name = L"quilltest://host.test/dir/page.html";
    fixture.create();
    fixture.set_site();
    fixture.take_log();
}

lines creation_lines(document_fixture& fixture)
{
    auto logged = without(without(fixture.take_log(), "ACTIVEDOC isPDF"), "OnSize");
    const auto third = std::find(logged.begin(), logged.end(), "@ OnCreate [#3]");
    EXPECT_NE(third, logged.end());
    logged.erase(logged.begin(), third);
    return logged;
}

QUILL_DOCUMENT_TEST(DocumentInPage, FetchesTheElementsUrl)
{
    page_container page(L"http://host.test/page.html#page=7#zoom=70");
    page.add(L"EMBED", L"application/pdf", L"quilltest://ftp://other.test/x.pdf#page=4#zoom=40");
    prepare(fixture, page);
    fixture.show();
    EXPECT_EQ(creation_lines(fixture), (lines{"@ OnCreate [#3]", "@ ProcessHTMLBodyElement URL",
                                              "@ OnCreate [EmbedURL]", "@ OnCreate [URL]"}));
    EXPECT_EQ(document_url(fixture), L"quilltest://ftp://other.test/x.pdf#page=4#zoom=40");
    fixture.wait_for_failed_worker();
    load_fetched_file(fixture, fixture.pdf());
    EXPECT_EQ(fixture.viewer.texts(viewer_go_to_page), lines{"4(I4 3)"})
        << "the element's page, not the page's";
    EXPECT_EQ(fixture.viewer.texts(viewer_set_zoom), lines{"9(R8 0.4)"});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentInPage, ResolvesTheElementsReference)
{
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"x.pdf", L"quilltest://host.test/dir/x.pdf"},
        {L"../x.pdf", L"quilltest://host.test/x.pdf"},
        {L"a \u00e9.pdf", L"quilltest://host.test/dir/a+%C3%A9.pdf"},
    };
    for (const auto& [reference, expected] : cases) {
        page_container page(L"http://host.test/page.html");
        page.add(L"EMBED", L"application/pdf", reference);
        prepare(fixture, page);
        fixture.show();
        EXPECT_EQ(document_url(fixture), expected);
        fixture.wait_for_failed_worker();
        fixture.close_in_order();
        fixture.release();
    }
}

// A page must not make the document show a file of the browser's current folder.
QUILL_DOCUMENT_TEST(DocumentInPage, AReferenceIsNoFileOfTheCurrentFolder)
{
    wchar_t former[MAX_PATH] = {};
    ASSERT_NE(GetCurrentDirectoryW(MAX_PATH, former), 0u);
    fixture.pdf(L"x.pdf");
    ASSERT_TRUE(SetCurrentDirectoryW(fixture.files.path().c_str()));
    page_container page(L"http://host.test/page.html");
    page.add(L"EMBED", L"application/pdf", L"x.pdf");
    prepare(fixture, page);
    fixture.show();
    EXPECT_TRUE(SetCurrentDirectoryW(former));
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    EXPECT_EQ(document_url(fixture), L"quilltest://host.test/dir/x.pdf");
    fixture.wait_for_failed_worker();
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentInPage, OpensALocalFileAtOnce)
{
    const std::wstring path = fixture.pdf();
    page_container page(L"http://host.test/page.html#page=7#zoom=70");
    page.add(L"OBJECT", L"application/pdf", path.c_str());
    prepare(fixture, page);
    fixture.show();
    const auto logged = creation_lines(fixture);
    EXPECT_EQ(logged, (lines{"@ OnCreate [#3]", "@ ProcessHTMLBodyElement URL", "@ OnCreate [EmbedURL]",
                             "@ LOADFILE " + to_utf8(path), "@ LOADFILE RESULT -1"}));
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    EXPECT_EQ(fixture.viewer.texts(viewer_go_to_page), lines{"4(I4 6)"}) << "of the hosting page";
    EXPECT_EQ(fixture.viewer.texts(viewer_set_zoom), lines{"9(R8 0.7)"});
    EXPECT_EQ(fixture.log.worker_lines(), lines{});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentInPage, ALocalFileThatIsNoPdfCountsAsAReference)
{
    page_container page(L"http://host.test/page.html");
    page.add(L"EMBED", L"application/pdf", fixture.file(L"x.txt", "no PDF at all").c_str());
    prepare(fixture, page);
    fixture.show();
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    EXPECT_EQ(document_url(fixture).rfind(L"quilltest://host.test/dir/", 0), 0u);
    fixture.wait_for_failed_worker();
    fixture.close_in_order();
}

// The page chooses the reference; the UI thread would wait for the other end of the pipe.
QUILL_DOCUMENT_TEST(DocumentInPage, ADeviceOrAPipeCountsAsAReferenceAndIsNotOpened)
{
    const listening_pipe pipe;
    for (const std::wstring& reference :
         {L"\\\\.\\pipe\\" + pipe.name(), L"\\\\localhost\\pipe\\" + pipe.name(),
          std::wstring(L"\\\\.\\COM1"), std::wstring(L"\\\\.\\NUL"), std::wstring(L"C:\\COM1.pdf")}) {
        SCOPED_TRACE(testing::PrintToString(reference));
        page_container page(L"http://host.test/page.html");
        page.add(L"EMBED", L"application/pdf", reference.c_str());
        prepare(fixture, page);
        fixture.show();
        const lines logged = fixture.take_log();
        EXPECT_EQ(std::count(logged.begin(), logged.end(), "ACTIVEDOC isPDF [FALSE] MISSING FILE"), 2)
            << "the document's own path, which is empty, and the element's";
        EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
        EXPECT_EQ(document_url(fixture).rfind(L"quilltest://host.test/dir/", 0), 0u);
        fixture.wait_for_failed_worker();
        fixture.close_in_order();
        fixture.release();
        EXPECT_FALSE(pipe.was_opened());
    }
}

QUILL_DOCUMENT_TEST(DocumentInPage, WithoutAnyElementTheDocumentsOwnUrlIsFetched)
{
    page_container page(L"http://host.test/page.html");
    page.add(L"EMBED", L"image/png", L"x.png");
    prepare(fixture, page);
    fixture.show();
    const auto logged = creation_lines(fixture);
    EXPECT_EQ(without(logged, "ProcessHTMLBodyElement"), (lines{"@ OnCreate [#3]", "@ OnCreate [URL]"}));
    EXPECT_EQ(document_url(fixture), L"quilltest://host.test/dir/page.html");
    fixture.wait_for_failed_worker();
    fixture.close_in_order();
}

// A document that was loaded by URL does not read the page.
QUILL_DOCUMENT_TEST(DocumentInPage, WithAUrlOfItsOwnThePageIsNotSearched)
{
    page_container page(L"http://host.test/page.html");
    page.add(L"EMBED", L"application/pdf", L"x.pdf");
    prepare(fixture, page);
    fixture.host.calls.forbid("IOleClientSite::GetContainer");
    fixture.load_url(unserved_url);
    fixture.show();
    EXPECT_EQ(document_url(fixture), unserved_url);
    fixture.wait_for_failed_worker();
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentInPage, AReferenceWithoutABaseCannotBeFetched)
{
    page_container page(L"http://host.test/page.html");
    page.add(L"EMBED", L"application/pdf", L"x.pdf");
    prepare(fixture, page);
    fixture.host.object_moniker.display_name.reset();
    fixture.show();
    EXPECT_EQ(document_url(fixture), L"");
    fixture.wait_for_no_worker();
    fixture.close_in_order();
}

// The number of the document in its browser window selects its element.
QUILL_DOCUMENT_TEST(DocumentInPage, TheSecondDocumentStandsForTheSecondElement)
{
    page_container page(L"http://host.test/page.html");
    page.add(L"EMBED", L"application/pdf", L"first.pdf");
    page.add(L"OBJECT", L"application/pdf", L"second.pdf");
    prepare(fixture, page);
    fixture.show();
    EXPECT_EQ(document_url(fixture), L"quilltest://host.test/dir/first.pdf");
    fixture.wait_for_failed_worker();

    document_host second_host;
    second_host.shell.window = fixture.host.frame_window();
    second_host.container = page.container();
    second_host.object_moniker.display_name = L"quilltest://host.test/dir/page.html";
    Microsoft::WRL::ComPtr<IClassFactory> factory;
    ASSERT_EQ(fixture.module.get_class_object(active_document_class_id, IID_PPV_ARGS(&factory)), S_OK);
    Microsoft::WRL::ComPtr<IOleObject> second;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&second)), S_OK);
    second_host.document = second.Get();
    second->SetClientSite(second_host.site.client_site());
    second->DoVerb(OLEIVERB_SHOW, nullptr, second_host.site.client_site(), -1, second_host.view_window(),
                   &second_host.position);
    Microsoft::WRL::ComPtr<IOleWindow> window;
    ASSERT_EQ(second.As(&window), S_OK);
    HWND handle = nullptr;
    window->GetWindow(&handle);
    wchar_t url[100]{};
    SendMessageW(handle, message_get_url, 100, reinterpret_cast<LPARAM>(url));
    EXPECT_STREQ(url, L"quilltest://host.test/dir/second.pdf");
    fixture.wait_for_no_worker();
    Microsoft::WRL::ComPtr<IOleInPlaceObject> in_place;
    ASSERT_EQ(second.As(&in_place), S_OK);
    in_place->InPlaceDeactivate();
    second->SetClientSite(nullptr);
    second_host.view.Reset();
    in_place.Reset();
    window.Reset();
    EXPECT_EQ(second.Detach()->Release(), 0u);
    fixture.close_in_order();
}

} // namespace
} // namespace quill::test
