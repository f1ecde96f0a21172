// A whole visit to a SharePoint page, with every single call of the browser's and the engine's objects
// failing in turn: nothing may leak, hang or reach the browser, and the next visit works.
#include "sharepoint/sharepoint_bho.h"
#include "tests/sharepoint/editor_bench.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/support/fault_points.h"

#include <gtest/gtest.h>

namespace quill {
namespace {

using test::fake_browser;
using test::fake_document;
using test::fake_event;
using test::fake_scene;
using test::make_fake;

// No event may tell the browser anything but these.
void expect_harmless(HRESULT code)
{
    EXPECT_TRUE(code == S_OK || code == E_FAIL) << std::hex << code;
}

struct visit_result
{
    HRESULT attach = E_UNEXPECTED;
    bool click_cancelled = false;
    VARIANT_BOOL navigation_cancelled = VARIANT_FALSE;
};

visit_result visit(fake_scene& scene, IObjectWithSite* helper, bool has_element2)
{
    visit_result result;
    const auto browser = make_fake<fake_browser>(scene);
    const auto page = test::sharepoint_page(scene, L"http://h/");
    page->head->has_element2 = has_element2;
    page->add_to_head({.tag = L"SCRIPT", .src = L"/x.js"});
    auto& link = page->add_to_body(test::list_link(L"http://h/x.pdf"));
    page->add_to_body(
        {.tag = L"A", .outer_html = L"<a onclick=\"PdfFile.OpenDocuments()\">", .href = L"/y.pdf"});
    browser->document = page->dispatch();

    result.attach = helper->SetSite(browser->unknown());
    if (browser->events().sinks() == 1) {
        const auto other = browser->before_navigate(L"http://h/other");
        expect_harmless(other.code);
        EXPECT_EQ(other.cancel, VARIANT_FALSE);
        expect_harmless(browser->document_complete(L"http://h/"));
    }
    if (page->events().sinks() == 1) {
        const auto event = make_fake<fake_event>(scene, &link);
        const auto click = page->click(event);
        EXPECT_EQ(click.code, S_OK);
        result.click_cancelled = test::is_bool(click.value, false);
        EXPECT_EQ(page->change_ready_state(L"complete").code, S_OK);
    }
    if (browser->events().sinks() == 1) {
        const auto navigation = browser->before_navigate(L"http://h/z.pdf");
        expect_harmless(navigation.code);
        result.navigation_cancelled = navigation.cancel;
        browser->quit();
    }
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    if (!scene.has_failed()) {
        // A host that does not say where its connections are keeps them; they are dead by then, and end with
        // the host.
        EXPECT_EQ(browser->events().sinks(), 0u);
        EXPECT_EQ(page->events().sinks(), 0u);
    }
    return result;
}

class FailingCalls : public testing::TestWithParam<std::tuple<fake_scene::failure, bool>>
{
};

TEST_P(FailingCalls, LeaveNothingBehind)
{
    const auto [how, has_element2] = GetParam();
    test::editor_bench bench;
    bench.break_default_handler(); // what would be started is not the question here
    CComPtr<IObjectWithSite> helper;
    ASSERT_EQ(sharepoint_bho::_CreatorClass::CreateInstance(nullptr, IID_IObjectWithSite,
                                                            reinterpret_cast<void**>(&helper)),
              S_OK);
    int calls = 0;
    for (int number = 1;; ++number) {
        SCOPED_TRACE(number);
        fake_scene scene;
        scene.fail_call(number, how);
        const visit_result result = visit(scene, helper, has_element2);
        if (!scene.has_failed()) {
            EXPECT_EQ(result.attach, S_OK);
            EXPECT_TRUE(result.click_cancelled);
            EXPECT_EQ(result.navigation_cancelled, VARIANT_TRUE);
            break;
        }
        ++calls;
        expect_harmless(result.attach);
    }
    EXPECT_GT(calls, 60);
    test::report_fault_points("a visit to a SharePoint page", static_cast<std::size_t>(calls));
}

INSTANTIATE_TEST_SUITE_P(InEveryWay, FailingCalls,
                         testing::Combine(testing::Values(fake_scene::failure::error,
                                                          fake_scene::failure::empty),
                                          testing::Bool()));

} // namespace
} // namespace quill
