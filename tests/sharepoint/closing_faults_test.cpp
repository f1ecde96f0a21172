// System exceptions in the host around connections: while a tab closes without taking its site away, and in a
// host that keeps the sink of a connection that it failed to make or to end.
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/sharepoint/module_fixture.h"
#include "tests/support/crashes.h"

#include <gtest/gtest.h>
#include <mshtmdid.h>

#include <algorithm>

namespace quill::test {
namespace {

class ClosingTab : public testing::Test
{
protected:
    ClosingTab() { editors_.break_default_handler(); }

    // Returns the references left, or the exception that came through.
    [[gnu::noinline]] static DWORD release_as_the_browser(IUnknown* object)
    {
        DWORD result = 0;
        __try {
            result = release(object);
        } __except (result = GetExceptionCode(), EXCEPTION_EXECUTE_HANDLER) {
        }
        return result;
    }

    editor_bench editors_;
    module_bench module_;

private:
    [[gnu::noinline]] static DWORD release(IUnknown* object) { return object->Release(); }
};

// set_fault: makes the number-th call fault. Returns after how many calls there was none left.
template <class SetFault>
int release_with_each_fault(module_bench& module, const SetFault& set_fault,
                            DWORD (*release)(IUnknown* object))
{
    for (int number = 1;; ++number) {
        SCOPED_TRACE(number);
        fake_scene scene;
        const auto browser = make_fake<fake_browser>(scene);
        const auto page = sharepoint_page(scene, L"http://h/");
        browser->document = page->dispatch();
        CComPtr<IObjectWithSite> helper = module.make_helper();
        EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
        EXPECT_EQ(browser->document_complete(L"http://h/"), S_OK);
        module.new_lines();
        set_fault(scene, number);
        EXPECT_EQ(release(helper.Detach()), 0u);
        EXPECT_EQ(module.new_lines(),
                  scene.has_interrupted()
                      ? std::vector<std::string>{"info: System exception in quill::CrashBorder"}
                      : std::vector<std::string>{});
        if (!scene.has_interrupted() || testing::Test::HasFailure())
            return number - 1;
    }
}

TEST_F(ClosingTab, IsReleasedWhateverFaultsInTheHost)
{
    // Two connections, each found and ended.
    EXPECT_EQ(release_with_each_fault(
                  module_, [](fake_scene& scene, int number) { scene.interrupt_call(number, read_nowhere); },
                  &release_as_the_browser),
              6);
    EXPECT_GE(release_with_each_fault(
                  module_,
                  [&](fake_scene& scene, int number) {
                      scene.interrupt_reference_call(module_.handle(), number, read_nowhere);
                  },
                  &release_as_the_browser),
              8);
}

TEST_F(ClosingTab, LeavesAHostThatKeptItsSinksWithDeadOnes)
{
    fake_scene scene;
    const auto browser = make_fake<fake_browser>(scene);
    const auto page = sharepoint_page(scene, L"http://h/");
    browser->document = page->dispatch();
    browser->events().keeps_sink_when_failing = true;
    page->events().keeps_sink_when_failing = true;
    const auto helper = module_.make_helper();
    EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
    EXPECT_EQ(browser->document_complete(L"http://h/"), S_OK);
    scene.interrupt_calls_named("IConnectionPoint::Unadvise", read_nowhere);
    EXPECT_EQ(helper->SetSite(nullptr), E_FAIL);
    scene.interrupt_calls_named({}, {});
    module_.new_lines();

    EXPECT_EQ(page->events().sinks(), 1u);
    const auto event = make_fake<fake_event>(scene, nullptr);
    EXPECT_TRUE(is_bool(page->click(event).value, true));
    EXPECT_EQ(browser->document_complete(L"http://h/"), S_OK);
    EXPECT_EQ(module_.new_lines(),
              (std::vector<std::string>{"debug: CLICK!", "debug: on_document_complete http://h/"}));
}

ULONG references_to(IUnknown* object)
{
    object->AddRef();
    return object->Release();
}

TEST_F(ClosingTab, ReleasesTheOldSiteWhenTheEndOfTheConnectionFaults)
{
    fake_scene scene;
    const auto browser = make_fake<fake_browser>(scene);
    const ULONG references = references_to(browser->unknown());
    const auto helper = module_.make_helper();
    EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
    EXPECT_GT(references_to(browser->unknown()), references);
    scene.interrupt_calls_named("IConnectionPoint::Unadvise", read_nowhere);
    EXPECT_EQ(helper->SetSite(nullptr), E_FAIL);
    scene.interrupt_calls_named({}, {});

    EXPECT_EQ(references_to(browser->unknown()), references);
    void* site = &scene;
    EXPECT_EQ(helper->GetSite(IID_IUnknown, &site), E_FAIL);
    EXPECT_EQ(site, nullptr);
}

// The sink that the browser took before it faulted hears nothing.
TEST_F(ClosingTab, IgnoresASinkThatAFaultingBrowserTook)
{
    fake_scene scene;
    const auto browser = make_fake<fake_browser>(scene);
    browser->document = sharepoint_page(scene, L"http://h/")->dispatch();
    browser->events().keeps_sink_when_failing = true;
    const auto helper = module_.make_helper();
    scene.interrupt_calls_named("IConnectionPoint::Advise", read_nowhere);
    EXPECT_EQ(helper->SetSite(browser->unknown()), E_FAIL);
    scene.interrupt_calls_named({}, {});

    const auto ignored = browser->before_navigate(L"http://h/x.pdf");
    EXPECT_EQ(ignored.code, S_OK);
    EXPECT_EQ(ignored.cancel, VARIANT_FALSE);
    EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
    EXPECT_EQ(browser->events().sinks(), 2u);
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
}

// A click is handled once, by the sink of the next attempt.
TEST_F(ClosingTab, IgnoresASinkThatAFaultingPageTook)
{
    fake_scene scene;
    const auto browser = make_fake<fake_browser>(scene);
    const auto page = sharepoint_page(scene, L"http://h/");
    const auto link = make_fake<fake_element>(scene, list_link(L"http://h/x.pdf"));
    browser->document = page->dispatch();
    page->events().keeps_sink_when_failing = true;
    const auto helper = module_.make_helper();
    EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
    scene.interrupt_calls_named("IConnectionPoint::Advise", read_nowhere);
    EXPECT_EQ(browser->document_complete(L"http://h/"), E_FAIL);
    scene.interrupt_calls_named({}, {});
    EXPECT_EQ(browser->document_complete(L"http://h/"), S_OK);
    EXPECT_EQ(page->events().sinks(), 2u);

    module_.new_lines();
    const auto event = make_fake<fake_event>(scene, link);
    VARIANT argument{};
    argument.vt = VT_DISPATCH;
    argument.pdispVal = event;
    EXPECT_EQ(page->events().fire(DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, {argument}).size(), 2u);
    const auto lines = module_.new_lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "info: checkout file http://h/x.pdf"), 1);
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
}

} // namespace
} // namespace quill::test
