// Visits the same pages with and without the helper object and compares events, requests and pages.
#include "sharepoint/identifiers.h"
#include "tests/browser/engine.h"
#include "tests/browser/registered_module.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/support/http_server.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

#include <atlcom.h>
#include <exdispid.h>
#include <gmock/gmock.h>
#include <mshtml.h>

#include <algorithm>
#include <string>
#include <vector>

namespace quill::test {
namespace {

constexpr char html[] = "text/html; charset=utf-8";

// Records the navigation events of a browser.
class ATL_NO_VTABLE navigation_log : public CComObjectRootEx<CComSingleThreadModel>, public IDispatch
{
public:
    BEGIN_COM_MAP(navigation_log)
    COM_INTERFACE_ENTRY(IDispatch)
    COM_INTERFACE_ENTRY_IID(DIID_DWebBrowserEvents2, IDispatch)
    END_COM_MAP()

    std::vector<std::string> entries;

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                        UINT*) override
    {
        // The URL is the second argument of each of them; arguments are in reverse order.
        const bool has_url = id == DISPID_BEFORENAVIGATE2 || id == DISPID_NAVIGATECOMPLETE2 ||
                             id == DISPID_DOCUMENTCOMPLETE || id == DISPID_NAVIGATEERROR;
        if (!has_url || parameters->cArgs < 2)
            return S_OK;
        const VARIANT& address = parameters->rgvarg[parameters->cArgs - 2];
        const bool is_text = address.vt == (VT_BYREF | VT_VARIANT) && address.pvarVal->vt == VT_BSTR;
        entries.push_back(std::to_string(id) + " " + (is_text ? to_utf8(address.pvarVal->bstrVal) : "?"));
        return S_OK;
    }
};

std::string many_links()
{
    std::string body;
    for (int i = 0; i < 300; ++i)
        body += "<a href=\"/" + std::to_string(i) + ".pdf\" onclick=\"PdfFile.OpenDocuments(1)\">x</a> ";
    return body;
}

struct visit_result
{
    std::vector<std::string> events;
    std::vector<std::string> requests;
    std::vector<std::wstring> pages; // markup of each page that was shown
};

class Parity : public testing::Test
{
protected:
    Parity()
    {
        server.route("/links",
                     http_response::ok("<html><head></head><body>" + many_links() + "</body></html>", html));
        server.route(
            "/online",
            http_response::ok("<html><head><meta name=\"GENERATOR\" content=\"SharePoint\">"
                              "<script src=\"https://x.sharepointonline.com/x.js\"></script></head><body>" +
                                  many_links() + "</body></html>",
                              html));
        server.route("/broken", http_response::ok("<a href=/x.pdf <p <<< </html", html));
        server.route("/moved", http_response::redirect("/links"));
        server.route("/posted", http_response::ok("<html><body>posted</body></html>", html));
    }

    // Visits all of them.
    visit_result visit(bool with_helper)
    {
        visit_result taken;
        const std::size_t requests_before = server.requests().size();
        {
            engine browser;
            IWebBrowser2* const control = browser.control().browser();
            CComObject<navigation_log>* created = nullptr;
            EXPECT_EQ(CComObject<navigation_log>::CreateInstance(&created), S_OK);
            const CComPtr<navigation_log> log(created);
            DWORD cookie = 0;
            EXPECT_EQ(AtlAdvise(control, log, DIID_DWebBrowserEvents2, &cookie), S_OK);
            CComPtr<IObjectWithSite> helper;
            if (with_helper) {
                EXPECT_EQ(CoCreateInstance(CLSID_SharepointBrowserHelperObject, nullptr, CLSCTX_INPROC_SERVER,
                                           IID_PPV_ARGS(&helper)),
                          S_OK);
                EXPECT_EQ(helper->SetSite(control), S_OK);
            }
            for (const wchar_t* target : {L"/links", L"/online", L"/broken", L"/moved", L"/missing"}) {
                browser.open(server.url(target));
                taken.pages.push_back(settled_page(control, *log));
            }
            post(control);
            taken.pages.push_back(settled_page(control, *log));
            browser.open(refused);
            settled_page(control, *log);
            if (helper)
                EXPECT_EQ(helper->SetSite(nullptr), S_OK);
            AtlUnadvise(control, DIID_DWebBrowserEvents2, cookie);
            taken.events = log->entries;
        }
        const auto requests = server.requests();
        for (std::size_t i = requests_before; i < requests.size(); ++i)
            taken.requests.push_back(requests[i].method + " " + requests[i].target);
        return taken;
    }

    ole_apartment apartment;
    editor_programs editors;
    registered_module module;
    registered_library pages{L"QuillPages.dll"};
    http_server server;
    const std::wstring refused = http_server::refused_url(L"/x");

private:
    void post(IWebBrowser2* control)
    {
        SAFEARRAY* const bytes = SafeArrayCreateVector(VT_UI1, 0, 3);
        std::copy_n("a=b", 3, static_cast<char*>(bytes->pvData));
        CComVariant data;
        data.vt = VT_ARRAY | VT_UI1;
        data.parray = bytes;
        CComVariant address(server.url(L"/posted").c_str());
        CComVariant headers(L"Content-Type: application/x-www-form-urlencoded\r\n");
        CComVariant none;
        EXPECT_EQ(control->Navigate2(&address, &none, &none, &data, &headers), S_OK);
    }

    // Waits for the end of a navigation and returns the markup of the page.
    static std::wstring settled_page(IWebBrowser2* control, navigation_log& log)
    {
        const auto ended = [&] {
            return std::any_of(log.entries.begin() + static_cast<std::ptrdiff_t>(seen(log)),
                               log.entries.end(), [](const std::string& entry) {
                                   return entry.starts_with(std::to_string(DISPID_DOCUMENTCOMPLETE) + " ") ||
                                          entry.starts_with(std::to_string(DISPID_NAVIGATEERROR) + " ");
                               });
        };
        EXPECT_TRUE(wait_until(ended));
        log.entries.push_back("settled");
        CComPtr<IDispatch> document;
        control->get_Document(&document);
        const CComQIPtr<IHTMLDocument3> page(document);
        CComPtr<IHTMLElement> root;
        CComBSTR markup;
        if (!page || FAILED(page->get_documentElement(&root)) || !root ||
            FAILED(root->get_outerHTML(&markup)))
            return {};
        return std::wstring(markup.m_str ? markup.m_str : L"");
    }

    // The number of entries before the last "settled".
    static std::size_t seen(const navigation_log& log)
    {
        const auto last = std::find(log.entries.rbegin(), log.entries.rend(), "settled");
        return static_cast<std::size_t>(log.entries.rend() - last);
    }
};

TEST_F(Parity, MakesNoDifferenceOnOtherPages)
{
    const visit_result without = visit(false);
    const visit_result with = visit(true);
    EXPECT_EQ(with.events, without.events);
    EXPECT_EQ(with.requests, without.requests);
    EXPECT_EQ(with.pages, without.pages);
    EXPECT_GT(without.events.size(), 15u);
    EXPECT_NE(without.pages[0].find(L"299.pdf"), std::wstring::npos);
    // Wine's engine itself sometimes gives a URL that refuses the connection to the default handler.
    EXPECT_THAT(editors.starts(0),
                testing::Each(testing::Field(&program_start::crt_arguments,
                                             testing::ElementsAre(testing::_, L"--default", refused))));
}

} // namespace
} // namespace quill::test
