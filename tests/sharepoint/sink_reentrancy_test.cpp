// A host that does something of its own in the middle of each call that it gets: takes the site away, lets go
// of the helper object, ends the tab, goes elsewhere, tells the next event. Nothing may crash, leak or be
// used after its end, and the host is told nothing but what it is told otherwise.
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
using test::fake_scene;
using test::make_fake;

void expect_harmless(HRESULT code)
{
    EXPECT_TRUE(code == S_OK || code == E_FAIL) << std::hex << code;
}

class tab
{
public:
    tab()
    {
        EXPECT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(nullptr, IID_IObjectWithSite,
                                                                reinterpret_cast<void**>(&helper)),
                  S_OK);
        link = &page->add_to_body(test::list_link(L"http://h/x.pdf"));
        page->add_to_body(
            {.tag = L"A", .outer_html = L"<a onclick=\"PdfFile.OpenDocuments()\">", .href = L"/y.pdf"});
        browser->document = page->dispatch();
    }

    // A visit, each event of which comes only when there is a sink for it. The helper object is not held
    // while it is called.
    void visit()
    {
        expect_harmless(helper->SetSite(browser->unknown()));
        complete();
        click();
        make_ready();
        navigate(L"http://h/z.pdf");
        quit();
        take_site_away();
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
        const CComPtr<fake_document> engines_own(page);
        const auto event = make_fake<fake_event>(scene, link);
        EXPECT_EQ(engines_own->click(event).code, S_OK);
    }
    void make_ready()
    {
        if (!is_page_connected())
            return;
        const CComPtr<fake_document> engines_own(page);
        EXPECT_EQ(engines_own->change_ready_state(L"complete").code, S_OK);
    }
    void take_site_away()
    {
        if (helper)
            expect_harmless(helper->SetSite(nullptr));
    }

    fake_scene scene;
    CComPtr<fake_browser> browser = make_fake<fake_browser>(scene);
    CComPtr<fake_browser> other = make_fake<fake_browser>(scene);
    CComPtr<fake_document> page = test::sharepoint_page(scene, L"http://h/");
    CComPtr<fake_document> next_page = test::sharepoint_page(scene, L"http://next/");
    test::fake_element* link = nullptr;
    CComPtr<IObjectWithSite> helper;
};

struct interruption
{
    const char* name;
    void (*happen)(tab&);
};

const interruption interruptions[] = {
    {"TakesTheSiteAway", [](tab& in) { in.take_site_away(); }},
    {"GivesTheSiteAgain",
     [](tab& in) {
         if (in.helper)
             expect_harmless(in.helper->SetSite(in.browser->unknown()));
     }},
    {"GivesAnotherSite",
     [](tab& in) {
         if (in.helper)
             expect_harmless(in.helper->SetSite(in.other->unknown()));
     }},
    {"LetsGoOfTheHelper", [](tab& in) { in.helper.Release(); }},
    {"TakesTheSiteAwayAndLetsGo",
     [](tab& in) {
         in.take_site_away();
         in.helper.Release();
     }},
    {"EndsTheTab", [](tab& in) { in.quit(); }},
    {"GoesElsewhere",
     [](tab& in) {
         in.browser->document = in.next_page->dispatch();
         in.page.Release();
         in.complete();
     }},
    {"TellsTheSamePageAgain", [](tab& in) { in.complete(); }},
    {"TellsThePagesReadiness", [](tab& in) { in.make_ready(); }},
    {"ClicksAgain", [](tab& in) { in.click(); }},
    {"NavigatesToAPdf", [](tab& in) { in.navigate(L"http://h/other.pdf"); }},
};

class Reentrance : public testing::TestWithParam<interruption>
{
};

TEST_P(Reentrance, IsHarmlessInEveryCall)
{
    test::editor_bench bench;
    bench.break_default_handler(); // what would be started is not the question here
    int calls = 0;
    for (bool has_interrupted = true; has_interrupted;) {
        SCOPED_TRACE(++calls);
        tab host;
        host.scene.interrupt_call(calls, [&] { GetParam().happen(host); });
        host.visit();
        if (host.helper)
            EXPECT_EQ(host.helper->SetSite(nullptr), S_OK);
        host.helper.Release();
        EXPECT_FALSE(host.is_connected());
        EXPECT_EQ(host.other->events().sinks(), 0u);
        EXPECT_FALSE(host.is_page_connected());
        has_interrupted = host.scene.has_interrupted();
    }
    EXPECT_GT(calls, 60);
}

INSTANTIATE_TEST_SUITE_P(OfAHostThat, Reentrance, testing::ValuesIn(interruptions),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
} // namespace quill
