// SharePoint pages loaded and clicked many times by one helper object and by new ones, in one process,
// through the exports of the module, without growth.
#include "tests/document/module_under_test.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/soak/resource_samples.h"
#include "tests/soak/soak_settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ole2.h>

#include <cstdio>
#include <string>
#include <vector>

namespace quill::soak {
namespace {

using test::fake_browser;
using test::fake_event;
using test::fake_tab;
using test::make_fake;

constexpr CLSID helper_class_id = {
    0x8d41f0b2, 0x6c7a, 0x4e93, {0xb5, 0xd8, 0x2a, 0x0f, 0x19, 0xc6, 0xe4, 0xd7}};
constexpr std::size_t short_pages = 48;
constexpr std::size_t warm_up_pages = 16;
constexpr std::size_t links_of_a_page = 20;
// A program takes much longer to start than a page to load, so most clicks are on links that start none. Odd,
// so that both the kept helper object and the new ones start some.
constexpr std::size_t loads_for_an_editor = 9;

CComPtr<IObjectWithSite> make_helper(const test::module_under_test& module)
{
    CComPtr<IClassFactory> factory;
    CComPtr<IObjectWithSite> helper;
    EXPECT_EQ(module.get_class_object(helper_class_id, IID_PPV_ARGS(&factory)), S_OK);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&helper)), S_OK);
    return helper;
}

bool click(test::fake_document& page, test::fake_element& element, fake_tab& tab)
{
    const auto event = make_fake<fake_event>(tab, &element);
    const bool cancelled = test::is_bool(page.click(event).value, false);
    EXPECT_EQ(event->is_untouched(), !cancelled);
    return cancelled;
}

// A page of a library: loaded, rewritten, clicked beside and on a document, navigated.
void visit(fake_tab& tab, IObjectWithSite* helper, std::size_t number)
{
    const auto browser = make_fake<fake_browser>(tab);
    const auto page = test::sharepoint_page(tab, L"http://h/list");
    auto& plain = page->add_to_body({.tag = L"A", .outer_html = L"<a href=\"/x\">", .href = L"/x"});
    for (std::size_t i = 0; i < links_of_a_page; ++i)
        page->add_to_body({.tag = L"A",
                           .outer_html = L"<a onclick=\"PdfFile.OpenDocuments()\">",
                           .href = L"/" + std::to_wstring(i) + L".pdf"});
    auto& document = page->add_to_body(test::list_link(L"http://h/x.pdf"));
    browser->document = page->dispatch();
    EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
    EXPECT_EQ(browser->document_complete(L"http://h/list"), S_OK);
    EXPECT_EQ(page->change_ready_state(L"complete").code, S_OK);
    EXPECT_EQ(browser->before_navigate(L"http://h/other").cancel, VARIANT_FALSE);
    EXPECT_FALSE(click(*page, plain, tab));
    if (number % loads_for_an_editor == 0) {
        EXPECT_TRUE(click(*page, document, tab));
        EXPECT_EQ(browser->before_navigate(L"http://h/y.pdf").cancel, VARIANT_TRUE);
    }
    if (number & 1)
        browser->quit();
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
}

TEST(HelperSoak, PagesWithClicks)
{
    ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
    sample_table table("SharePoint pages loaded and clicked");
    {
        test::editor_programs editors;
        editors.use_editor();
        test::module_under_test module;
        CComPtr<IObjectWithSite> kept = make_helper(module);
        std::size_t starts = 0;
        run_cycles(table, warm_up_pages, number_setting(L"QUILL_SOAK_PAGES", short_pages),
                   [&](std::size_t number) {
                       if (testing::Test::HasFailure())
                           return;
                       fake_tab tab;
                       // One helper object for the whole tab, and a tab of its own for every other page.
                       const CComPtr<IObjectWithSite> helper = number & 1 ? kept : make_helper(module);
                       visit(tab, helper, number);
                       starts += number % loads_for_an_editor == 0 ? 2 : 0;
                   });
        EXPECT_EQ(editors.starts(starts).size(), starts) << "editors started";
        growth_limits none;
        none.heap_bytes_each = 0;
        none.private_bytes_each = 0;
        EXPECT_THAT(table.growth_beyond(1, none), testing::IsEmpty());
        EXPECT_EQ(module.can_unload_now(), S_FALSE) << "the kept helper object must keep the module loaded";
        kept.Release();
        EXPECT_EQ(module.can_unload_now(), S_OK);
    }
    EXPECT_EQ(GetModuleHandleW(L"QuillPDF.IE.dll"), nullptr);
    OleUninitialize();
}

// A tab keeps its state for each of its pages, and with it the page, until the tab is closed; then all of it
// is released.
TEST(HelperSoak, OneTabOfManyPages)
{
    ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
    constexpr std::size_t warm_up_tabs = 2;
    constexpr std::size_t tabs = 4;
    const std::size_t pages_of_a_tab = number_setting(L"QUILL_SOAK_PAGES", short_pages) / tabs;
    sample_table table("tabs of " + std::to_string(pages_of_a_tab) + " SharePoint pages each");
    std::uint64_t blocks_at_the_end = 0;
    {
        test::editor_programs editors;
        editors.use_editor();
        test::module_under_test module;
        run_cycles(table, warm_up_tabs, tabs, [&](std::size_t) {
            if (testing::Test::HasFailure())
                return;
            fake_tab tab;
            const CComPtr<IObjectWithSite> helper = make_helper(module);
            const auto browser = make_fake<fake_browser>(tab);
            EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
            std::uint64_t blocks_before = 0;
            {
                std::vector<CComPtr<test::fake_document>> pages;
                for (std::size_t i = 0; i < pages_of_a_tab; ++i) {
                    pages.push_back(test::sharepoint_page(tab, L"http://h/list"));
                    browser->document = pages.back()->dispatch();
                }
                blocks_before = take_sample(0).heap_blocks;
                for (const auto& page : pages) {
                    browser->document = page->dispatch();
                    EXPECT_EQ(browser->document_complete(L"http://h/list"), S_OK);
                }
                blocks_at_the_end = take_sample(0).heap_blocks - blocks_before;
            }
            EXPECT_EQ(helper->SetSite(nullptr), S_OK);
        });
        growth_limits none;
        none.heap_bytes_each = 0;
        none.private_bytes_each = 0;
        EXPECT_THAT(table.growth_beyond(1, none), testing::IsEmpty());
        EXPECT_EQ(module.can_unload_now(), S_OK);
    }
    std::printf("heap blocks of a page, fakes included, while its tab is open: %.1f\n",
                static_cast<double>(blocks_at_the_end) / static_cast<double>(pages_of_a_tab));
    OleUninitialize();
}

} // namespace
} // namespace quill::soak
