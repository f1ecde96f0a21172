// The stand-in viewer inside the document inside the engine: what a user sees and can do.
#include "stand_ins/browser/shown_document.h"
#include "stand_ins/viewer/viewer_layout.h"
#include "tests/browser/engine.h"
#include "tests/browser/registered_module.h"
#include "tests/support/http_server.h"
#include "tests/support/text.h"
#include "tests/support/viewer/viewer_class.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <set>

namespace quill::test {
namespace {

constexpr DWORD rendering_ms = 30'000; // other programs start here, possibly on a machine under load

// A document of one page with the word "there" in its upper left corner, which is a link.
std::string document_with_link(const std::string& url)
{
    const std::string content = "BT /F1 24 Tf 72 720 Td (there) Tj ET";
    const std::string objects[] = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 4 0 R /Annots [6 0 R] "
        "/Resources << /Font << /F1 5 0 R >> >> >>",
        "<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "\nendstream",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
        "<< /Type /Annot /Subtype /Link /Rect [70 715 140 745] /A << /S /URI /URI (" + url + ") >> >>"};
    std::string document = "%PDF-1.4\n";
    std::string table = "xref\n0 7\n0000000000 65535 f \n";
    int number = 0;
    for (const std::string& object : objects) {
        const std::string offset = std::to_string(document.size());
        table += std::string(10 - offset.size(), '0') + offset + " 00000 n \n";
        document += std::to_string(++number) + " 0 obj\n" + object + "\nendobj\n";
    }
    const std::string start = std::to_string(document.size());
    return document + table + "trailer\n<< /Size 7 /Root 1 0 R >>\nstartxref\n" + start + "\n%%EOF\n";
}

std::set<std::wstring> result_files()
{
    wchar_t folder[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, folder);
    std::set<std::wstring> names;
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW((std::wstring(folder) + L"qpv*.tmp").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return names;
    do {
        names.insert(found.cFileName);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return names;
}

class StandInViewer : public testing::Test
{
protected:
    StandInViewer()
    {
        server.route("/set/bracket.pdf", http_response::ok(sample(L"bracket.pdf")));
        server.route("/set/care.pdf", http_response::ok(sample(L"care.pdf")));
    }

    // The viewer's message at the end of its work.
    static shown_document settled(const engine& browser)
    {
        shown_document document;
        wait_until(
            [&] {
                document = find_shown_document(browser.window());
                return document.state == viewer_state::shown || document.state == viewer_state::failed;
            },
            rendering_ms);
        return document;
    }

    static bool shows(const engine& browser, const std::wstring& text)
    {
        return wait_until(
            [&] {
                const shown_document document = find_shown_document(browser.window());
                return document.state == viewer_state::shown && document.text == text;
            },
            rendering_ms);
    }

    // Clicks on a point of an A4 page shown at 100 % from its top, given in fractions of the page.
    static void click(const engine& browser, double x, double y)
    {
        const HWND pane = browser.find_window(L"QuillPDFPage");
        RECT client = {};
        GetClientRect(pane, &client);
        constexpr SIZE picture = {794, 1123};
        const POINT origin = page_origin({0, 0}, picture, {client.right, client.bottom});
        const LPARAM place = MAKELPARAM(origin.x + static_cast<LONG>(x * picture.cx),
                                        origin.y + static_cast<LONG>(y * picture.cy));
        PostMessageW(pane, WM_LBUTTONDOWN, MK_LBUTTON, place);
        PostMessageW(pane, WM_LBUTTONUP, 0, place);
    }

    // The links of a page are found after it is shown; until then a click does nothing.
    static bool click_until_shown(const engine& browser, double x, double y, const std::wstring& text)
    {
        const std::wstring before = find_shown_document(browser.window()).text;
        return wait_until(
            [&] {
                const shown_document document = find_shown_document(browser.window());
                if (document.state == viewer_state::shown && document.text == before)
                    click(browser, x, y);
                return document.state == viewer_state::shown && document.text == text;
            },
            rendering_ms);
    }

    ole_apartment apartment;
    registered_module module;
    // Locks the ProgID for other programs; the library then registers itself for it.
    viewer_registration registration;
    registered_library viewer{L"QuillPDFCtrl.dll"};
    http_server server;
};

TEST_F(StandInViewer, ShowsThePageAndZoomOfTheUrl)
{
    engine browser;
    browser.open(server.url(L"/set/bracket.pdf#page=2#zoom=150"));
    const shown_document document = settled(browser);
    EXPECT_EQ(document.state, viewer_state::shown);
    EXPECT_EQ(document.text, L"page 2 of 5 - 150 %");
}

TEST_F(StandInViewer, ShowsTheLastPageForOneBeyondIt)
{
    engine browser;
    browser.open(server.url(L"/set/bracket.pdf#page=77"));
    EXPECT_EQ(settled(browser).text, L"page 5 of 5 - 100 %");
}

TEST_F(StandInViewer, LimitsTheZoom)
{
    engine browser;
    browser.open(server.url(L"/set/bracket.pdf#page=2#zoom=100000"));
    EXPECT_EQ(settled(browser).text, L"page 2 of 5 - 400 %");
}

TEST_F(StandInViewer, ReportsADocumentThatCannotBeDrawn)
{
    server.route("/broken.pdf", http_response::ok("%PDF-1.4\n" + std::string(5'000, 'x')));
    engine browser;
    browser.open(server.url(L"/broken.pdf"));
    const shown_document document = settled(browser);
    EXPECT_EQ(document.state, viewer_state::failed);
    EXPECT_THAT(to_utf8(document.text), testing::HasSubstr("damaged"));
}

TEST_F(StandInViewer, GetsTheKeysThatTheDocumentForwards)
{
    engine browser;
    browser.open(server.url(L"/set/bracket.pdf"));
    ASSERT_TRUE(shows(browser, L"page 1 of 5 - 100 %"));
    const HWND document = GetParent(browser.find_window(L"AtlAxWin140"));
    SendMessageW(document, WM_KEYDOWN, VK_END, 0);
    EXPECT_TRUE(shows(browser, L"page 5 of 5 - 100 %"));
    SendMessageW(document, WM_KEYDOWN, VK_HOME, 0);
    EXPECT_TRUE(shows(browser, L"page 1 of 5 - 100 %"));
    SendMessageW(document, WM_KEYDOWN, VK_ADD, 0);
    EXPECT_TRUE(shows(browser, L"page 1 of 5 - 125 %"));
}

TEST_F(StandInViewer, FollowsALinkWithinTheDocument)
{
    engine browser;
    browser.open(server.url(L"/set/bracket.pdf"));
    ASSERT_TRUE(shows(browser, L"page 1 of 5 - 100 %"));
    // "Invoice 2291" in the contents
    EXPECT_TRUE(click_until_shown(browser, 100.0 / 892, 634.0 / 1263, L"page 4 of 5 - 100 %"));
    EXPECT_EQ(browser.navigations().size(), 1u) << "the browser must not navigate";
}

TEST_F(StandInViewer, FollowsALinkToAnotherDocument)
{
    const std::wstring url = server.url(L"/set/bracket.pdf#page=2");
    server.route("/link.pdf", http_response::ok(document_with_link(to_utf8(url))));
    engine browser;
    browser.open(server.url(L"/link.pdf"));
    ASSERT_TRUE(shows(browser, L"page 1 of 1 - 100 %"));
    EXPECT_TRUE(click_until_shown(browser, 90.0 / 595, (842 - 727.0) / 842, L"page 2 of 5 - 100 %"));
    EXPECT_EQ(browser.navigations().back(), url);
}

TEST_F(StandInViewer, KeepsNoFilesOfTheRenderer)
{
    const std::set<std::wstring> before = result_files();
    {
        engine browser;
        browser.open(server.url(L"/set/bracket.pdf#page=2"));
        ASSERT_TRUE(shows(browser, L"page 2 of 5 - 100 %"));
    }
    EXPECT_EQ(result_files(), before);
}

TEST_F(StandInViewer, ClosesWhileThePageIsBeingRendered)
{
    const std::set<std::wstring> before = result_files();
    {
        engine browser;
        browser.open(server.url(L"/set/bracket.pdf#page=2#zoom=400"));
        ASSERT_TRUE(
            wait_until([&] { return find_shown_document(browser.window()).state == viewer_state::working; },
                       rendering_ms));
    }
    EXPECT_EQ(result_files(), before);
    EXPECT_TRUE(viewer.can_unload());
}

} // namespace
} // namespace quill::test
