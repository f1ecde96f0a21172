// A host that re-enters in each call: it sets the site to null or to another object, releases the helper
// object, fires OnQuit, navigates, or fires another event. Nothing may crash, leak or be used after its
// release.
#include "sharepoint/sharepoint_bho.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"

#include <gtest/gtest.h>

#include <utility>

namespace quill {
namespace {

using test::fake_browser;
using test::fake_document;
using test::fake_event;
using test::fake_tab;
using test::make_fake;

void expect_harmless(HRESULT code)
{
    EXPECT_TRUE(code == S_OK || code == E_FAIL) << std::hex << code;
}

class visited_tab
{
public:
    visited_tab()
    {
        EXPECT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(nullptr, IID_IObjectWithSite,
                                                                reinterpret_cast<void**>(&helper)),
                  S_OK);
        link = &page->add_to_body(test::list_link(L"http://h/x.pdf"));
        page->add_to_body(
            {.tag = L"A", .outer_html = L"<a onclick=\"PdfFile.OpenDocuments()\">", .href = L"/y.pdf"});
        browser->document = page->dispatch();
    }

    // Fires each event for which there is a sink. Does not hold the helper object while calling it.
    void visit()
    {
        expect_harmless(helper->SetSite(browser->unknown()));
        complete();
        click();
        make_ready();
        navigate(L"http://h/z.pdf");
        quit();
        set_site_to_null();
    }

    bool is_connected() const { return browser && browser->events().sinks() == 1; }
    bool is_page_connected() const { return page && page->events().sinks() == 1; }

    void complete()
    {
        if (is_connected())
            expect_harmless(browser->document_complete(L"http://h/"));
    }
    void navigate(const wchar_t* url)
    {
        if (is_connected())
            expect_harmless(browser->before_navigate(url).code);
    }
    void quit()
    {
        if (is_connected())
            browser->quit();
    }
    void click()
    {
        if (!is_page_connected())
            return;
        const CComPtr<fake_document> engine_reference(page);
        const auto event = make_fake<fake_event>(fakes, link);
        EXPECT_EQ(engine_reference->click(event).code, S_OK);
    }
    void make_ready()
    {
        if (!is_page_connected())
            return;
        const CComPtr<fake_document> engine_reference(page);
        EXPECT_EQ(engine_reference->change_ready_state(L"complete").code, S_OK);
    }
    void set_site_to_null()
    {
        if (helper)
            expect_harmless(helper->SetSite(nullptr));
    }

    fake_tab fakes;
    CComPtr<fake_browser> browser = make_fake<fake_browser>(fakes);
    CComPtr<fake_browser> other = make_fake<fake_browser>(fakes);
    CComPtr<fake_document> page = test::sharepoint_page(fakes, L"http://h/");
    CComPtr<fake_document> next_page = test::sharepoint_page(fakes, L"http://next/");
    test::fake_element* link = nullptr;
    CComPtr<IObjectWithSite> helper;
};

struct interruption
{
    const char* name;
    void (*run)(visited_tab&);
};

const interruption interruptions[] = {
    {"SetsTheSiteToNull", [](visited_tab& in) { in.set_site_to_null(); }},
    {"SetsTheSiteAgain",
     [](visited_tab& in) {
         if (in.helper)
             expect_harmless(in.helper->SetSite(in.browser->unknown()));
     }},
    {"SetsAnotherSite",
     [](visited_tab& in) {
         if (in.helper)
             expect_harmless(in.helper->SetSite(in.other->unknown()));
     }},
    {"ReleasesTheHelperObject", [](visited_tab& in) { in.helper.Release(); }},
    {"SetsTheSiteToNullAndReleases",
     [](visited_tab& in) {
         in.set_site_to_null();
         in.helper.Release();
     }},
    {"FiresOnQuit", [](visited_tab& in) { in.quit(); }},
    {"CompletesAnotherPage",
     [](visited_tab& in) {
         in.browser->document = in.next_page->dispatch();
         in.page.Release();
         in.complete();
     }},
    {"CompletesTheSamePageAgain", [](visited_tab& in) { in.complete(); }},
    {"FiresTheReadyState", [](visited_tab& in) { in.make_ready(); }},
    {"ClicksAgain", [](visited_tab& in) { in.click(); }},
    {"NavigatesToAPdf", [](visited_tab& in) { in.navigate(L"http://h/other.pdf"); }},
};

class Reentrance : public testing::TestWithParam<interruption>
{
};

TEST_P(Reentrance, IsHarmlessInEveryCall)
{
    test::editor_programs editors;
    editors.break_default_handler(); // nothing needs to be started
    int calls = 0;
    for (bool has_interrupted = true; has_interrupted;) {
        SCOPED_TRACE(++calls);
        visited_tab host;
        host.fakes.interrupt_call(calls, [&] { GetParam().run(host); });
        host.visit();
        if (host.helper)
            EXPECT_EQ(host.helper->SetSite(nullptr), S_OK);
        host.helper.Release();
        EXPECT_FALSE(host.is_connected());
        EXPECT_EQ(host.other->events().sinks(), 0u);
        EXPECT_FALSE(host.is_page_connected());
        has_interrupted = host.fakes.has_interrupted();
    }
    EXPECT_GT(calls, 60);
}

INSTANTIATE_TEST_SUITE_P(OfAHostThat, Reentrance, testing::ValuesIn(interruptions),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
} // namespace quill
