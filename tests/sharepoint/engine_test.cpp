// The helper object in the system's browser engine, created by its class, with the browser control or a tab
// object around it as the site, on pages of a web server.
#include "sharepoint/identifiers.h"
#include "stand_ins/browser/tab_browser.h"
#include "tests/browser/engine.h"
#include "tests/browser/registered_module.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/support/http_server.h"
#include "tests/support/log_file.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>
#include <mshtml.h>

#include <algorithm>
#include <string>
#include <vector>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char html[] = "text/html; charset=utf-8";
constexpr char generator[] = R"(<meta name="GENERATOR" content="Microsoft SharePoint">)";

std::string page(const std::string& head, const std::string& body)
{
    return "<!DOCTYPE html><html><head><title>Documents</title>" + head + "</head><body>" + body +
           "</body></html>";
}

class HelperInTheEngine : public testing::Test
{
protected:
    HelperInTheEngine()
    {
        editors.use_editor();
        server.route("/list", http_response::ok(page(generator, "<p>Library</p>"), html));
        server.route("/plain", http_response::ok(page("", "<p>Plain</p>"), html));
        // An HTML page, because the end of its loading can be waited for.
        server.route("/Doc.pdf", http_response::ok(page("", "<p>Document</p>"), html));
        EXPECT_EQ(CoCreateInstance(CLSID_SharepointBrowserHelperObject, nullptr, CLSCTX_INPROC_SERVER,
                                   IID_PPV_ARGS(&helper)),
                  S_OK);
    }
    ~HelperInTheEngine() override
    {
        helper.Release();
        browser.close();
    }

    IWebBrowser2* control() { return browser.control().browser(); }

    // The engine's page if it is a complete HTML page; otherwise null.
    CComPtr<IHTMLDocument2> shown_page()
    {
        CComPtr<IDispatch> document;
        if (FAILED(control()->get_Document(&document)))
            return nullptr;
        return CComQIPtr<IHTMLDocument2>(document);
    }
    bool is_showing(const std::wstring& address)
    {
        const auto shown = shown_page();
        CComBSTR state;
        CComBSTR url;
        return shown && SUCCEEDED(shown->get_readyState(&state)) && state == L"complete" &&
               SUCCEEDED(shown->get_URL(&url)) && url == address.c_str();
    }
    void show(const wchar_t* target)
    {
        browser.open(server.url(target));
        EXPECT_TRUE(wait_until([&] { return is_showing(server.url(target)); }))
            << to_utf8(target) << "; requests: " << testing::PrintToString(requested())
            << "; failures: " << browser.failures().size();
    }
    std::vector<std::string> requested() const
    {
        std::vector<std::string> targets;
        for (const http_request& request : server.requests())
            targets.push_back(request.target);
        return targets;
    }
    // The log's lines so far, as "level: text".
    std::vector<std::string> logged() const
    {
        std::vector<std::string> all;
        for (const log_line& line : log.lines())
            all.push_back(line.level + ": " + line.text);
        return all;
    }
    std::size_t count_lines(const std::string& line) const
    {
        const auto lines = logged();
        return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
    }
    std::string url(const wchar_t* target) const { return to_utf8(server.url(target)); }

    ole_apartment apartment;
    editor_programs editors;
    log_folder_scope log;
    environment_scope level{L"QUILL_LOG_LEVEL", L"debug"};
    registered_module module;
    registered_library pages{L"QuillPages.dll"};
    http_server server;
    engine browser;
    CComPtr<IObjectWithSite> helper;
};

TEST_F(HelperInTheEngine, CancelsTheNavigationToAPdf)
{
    EXPECT_EQ(helper->SetSite(control()), S_OK);
    show(L"/list");
    const auto before = logged().size();
    browser.open(server.url(L"/Doc.pdf"));

    EXPECT_THAT(editors.starts(1), ElementsAre(editors.editor_start(server.url(L"/Doc.pdf"))));
    EXPECT_THAT(requested(), ElementsAre("/list"));
    EXPECT_TRUE(is_showing(server.url(L"/list")));
    auto lines = logged();
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_THAT(lines, ElementsAre("debug: on_before_navigate " + url(L"/Doc.pdf"),
                                   "debug: detect click to " + url(L"/Doc.pdf"),
                                   "info: sharepoint document has been detected",
                                   "info: trying to open pdf link", "info: checkout file " + url(L"/Doc.pdf"),
                                   "info:  block navigation to sharepoint PDF!"));
}

// The engine fires BeforeNavigate2 while messages are pumped. If more than 100 ms pass between two events on
// a loaded machine, they are two navigations; the test then tries again.
TEST_F(HelperInTheEngine, CancelsARepeatedNavigationAndStartsOneEditor)
{
    EXPECT_EQ(helper->SetSite(control()), S_OK);
    show(L"/list");
    const std::string announcement = "debug: on_before_navigate " + url(L"/Doc.pdf");
    const std::string repeat = "info: " + url(L"/Doc.pdf") + " just canceled";
    std::size_t announcements = 0;
    for (int attempt = 0; attempt < 5 && count_lines(repeat) == 0; ++attempt) {
        browser.open(server.url(L"/Doc.pdf"));
        EXPECT_TRUE(wait_until([&] { return count_lines(announcement) == announcements + 1; }));
        browser.open(server.url(L"/Doc.pdf"));
        announcements += 2;
        EXPECT_TRUE(wait_until([&] { return count_lines(announcement) == announcements; }));
    }
    EXPECT_EQ(count_lines(repeat), 1u);
    EXPECT_EQ(count_lines("info: trying to open pdf link"), announcements - 1);
    EXPECT_EQ(count_lines("info:  block navigation to sharepoint PDF!"), announcements);
    EXPECT_THAT(editors.starts(announcements - 1), SizeIs(announcements - 1));
    EXPECT_THAT(requested(), ElementsAre("/list"));
}

TEST_F(HelperInTheEngine, IgnoresAPdfOfAnOrdinaryPage)
{
    EXPECT_EQ(helper->SetSite(control()), S_OK);
    show(L"/plain");
    show(L"/Doc.pdf");
    EXPECT_THAT(requested(), ElementsAre("/plain", "/Doc.pdf"));
    EXPECT_THAT(editors.starts(0), IsEmpty());
}

TEST_F(HelperInTheEngine, ForwardsNothingWithoutASite)
{
    EXPECT_EQ(helper->SetSite(control()), S_OK);
    EXPECT_EQ(helper->SetSite(control()), S_OK);
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    show(L"/list");
    show(L"/Doc.pdf");
    EXPECT_THAT(editors.starts(0), IsEmpty());
}

TEST_F(HelperInTheEngine, ReleasesEverythingWithoutSetSiteNull)
{
    EXPECT_EQ(helper->SetSite(control()), S_OK);
    show(L"/list");
    helper.Release();
    EXPECT_TRUE(module.can_unload());
    browser.open(server.url(L"/plain"));
    EXPECT_TRUE(wait_until([&] { return is_showing(server.url(L"/plain")); }));
}

// A tab object reports TopLevelContainer, which the control does not, so DocumentComplete is handled.
class HelperInATab : public HelperInTheEngine
{
protected:
    HelperInATab()
    {
        const std::string links =
            "<a id='list' class='ms-listlink ms-draggable' onclick=\"return DispEx(this,event,'TRUE')\" "
            "href='" +
            url(L"/Doc.pdf") + "'>list</a> " +
            "<a id='other' title='t' onclick='PdfFile.OpenDocuments(1)' href='/Other.pdf'>other</a> " +
            "<a id='word' onclick='PdfFile.OpenDocuments(1)' href='/a.docx'>word</a>";
        server.route("/library", http_response::ok(page(generator, links), html));
        CComObject<tab_browser>* created = nullptr;
        EXPECT_EQ(CComObject<tab_browser>::CreateInstance(&created), S_OK);
        tab = created;
        EXPECT_EQ(tab->open(control()), S_OK);
        EXPECT_EQ(helper->SetSite(static_cast<IWebBrowser2*>(tab)), S_OK);
    }
    ~HelperInATab() override
    {
        if (helper)
            helper->SetSite(nullptr);
        tab->close();
    }

    // Fails the test and returns null if the page has none.
    CComPtr<IHTMLElement> element(const wchar_t* id)
    {
        const CComQIPtr<IHTMLDocument3> document(shown_page());
        CComPtr<IHTMLElement> found;
        EXPECT_TRUE(document && SUCCEEDED(document->getElementById(CComBSTR(id), &found)) && found);
        return found;
    }
    std::wstring markup(const wchar_t* id)
    {
        CComBSTR text;
        if (const CComPtr<IHTMLElement> found = element(id))
            found->get_outerHTML(&text);
        return std::wstring(text.m_str ? text.m_str : L"");
    }
    bool has_line(const std::string& line) const { return count_lines(line) > 0; }
    void show_library()
    {
        show(L"/library");
        EXPECT_TRUE(wait_until([&] { return has_line("debug: " + url(L"/library") + " is new document"); }));
    }

    CComPtr<tab_browser> tab;
};

TEST_F(HelperInATab, SendsAClickToTheEditor)
{
    show_library();
    const CComPtr<IHTMLElement> link = element(L"list");
    ASSERT_NE(link.p, nullptr);
    link->click();
    EXPECT_THAT(editors.starts(1), ElementsAre(editors.editor_start(server.url(L"/Doc.pdf"))));
    EXPECT_TRUE(has_line("info: blocking click event..."));
    EXPECT_THAT(requested(), ElementsAre("/library"));
}

TEST_F(HelperInATab, RemovesTheOpenHandlersFromThePage)
{
    show_library();
    EXPECT_EQ(markup(L"other").find(L"onclick"), std::wstring::npos) << to_utf8(markup(L"other"));
    EXPECT_NE(markup(L"other").find(L"title=\"t\""), std::wstring::npos);
    EXPECT_NE(markup(L"word").find(L"PdfFile.OpenDocuments"), std::wstring::npos);
    EXPECT_NE(markup(L"list").find(L"DispEx"), std::wstring::npos);
}

TEST_F(HelperInATab, RecordsAPageOnce)
{
    show_library();
    EXPECT_EQ(count_lines("debug: " + url(L"/library") + " is new document"), 1u);
    EXPECT_EQ(count_lines("info: " + url(L"/library") + " events subscribed "), 1u);
    EXPECT_TRUE(has_line("debug: on_document_complete " + url(L"/library")));
    EXPECT_TRUE(has_line("debug: opening document by " + url(L"/library")));
}

TEST_F(HelperInATab, ForwardsNothingAfterOnQuit)
{
    show_library();
    tab->close();
    EXPECT_EQ(logged().back(), "info: on_quit");
    show(L"/Doc.pdf");
    EXPECT_THAT(editors.starts(0), IsEmpty());
}

} // namespace
} // namespace quill::test
