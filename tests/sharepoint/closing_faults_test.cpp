// System exceptions in the host while it connects and disconnects: a tab that closes without
// SetSite(nullptr), and a host that keeps a sink although Advise or Unadvise failed.
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

    // Returns the remaining references, or the code of an exception that reached the browser.
    [[gnu::noinline]] static DWORD release_as_the_browser(IUnknown* object)
    {
        DWORD result = 0;
        __try {
            result = release(object);
        } __except (result = GetExceptionCode(), EXCEPTION_EXECUTE_HANDLER) {
        }
        return result;
    }

    editor_programs editors_;
    module_fixture module_;

private:
    [[gnu::noinline]] static DWORD release(IUnknown* object) { return object->Release(); }
};

// set_fault makes the number-th call fault. Returns the number of calls that can fault.
template <class SetFault>
int release_with_each_fault(module_fixture& module, const SetFault& set_fault,
                            DWORD (*release)(IUnknown* object))
{
    for (int number = 1;; ++number) {
        SCOPED_TRACE(number);
        fake_tab tab;
        const auto browser = make_fake<fake_browser>(tab);
        const auto page = sharepoint_page(tab, L"http://h/");
        browser->document = page->dispatch();
        CComPtr<IObjectWithSite> helper = module.make_helper();
        EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
        EXPECT_EQ(browser->document_complete(L"http://h/"), S_OK);
        module.new_lines();
        set_fault(tab, number);
        EXPECT_EQ(release(helper.Detach()), 0u);
        EXPECT_EQ(module.new_lines(),
                  tab.has_interrupted()
                      ? std::vector<std::string>{"info: System exception in quill::CrashBorder"}
                      : std::vector<std::string>{});
        if (!tab.has_interrupted() || testing::Test::HasFailure())
            return number - 1;
    }
}

TEST_F(ClosingTab, IsReleasedWhenAnyCallIntoTheHostFaults)
{
    // Each of two connections calls QueryInterface, FindConnectionPoint and Unadvise.
    EXPECT_EQ(release_with_each_fault(
                  module_, [](fake_tab& tab, int number) { tab.interrupt_call(number, read_nowhere); },
                  &release_as_the_browser),
              6);
    EXPECT_GE(release_with_each_fault(
                  module_,
                  [&](fake_tab& tab, int number) {
                      tab.interrupt_reference_call(module_.handle(), number, read_nowhere);
                  },
                  &release_as_the_browser),
              8);
}

TEST_F(ClosingTab, LeavesInertSinksInAHostThatKeepsThem)
{
    fake_tab tab;
    const auto browser = make_fake<fake_browser>(tab);
    const auto page = sharepoint_page(tab, L"http://h/");
    browser->document = page->dispatch();
    browser->events().keeps_sink_when_failing = true;
    page->events().keeps_sink_when_failing = true;
    const auto helper = module_.make_helper();
    EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
    EXPECT_EQ(browser->document_complete(L"http://h/"), S_OK);
    tab.interrupt_calls_named("IConnectionPoint::Unadvise", read_nowhere);
    EXPECT_EQ(helper->SetSite(nullptr), E_FAIL);
    tab.interrupt_calls_named({}, {});
    module_.new_lines();

    EXPECT_EQ(page->events().sinks(), 1u);
    const auto event = make_fake<fake_event>(tab, nullptr);
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

TEST_F(ClosingTab, ReleasesTheOldSiteWhenUnadviseFaults)
{
    fake_tab tab;
    const auto browser = make_fake<fake_browser>(tab);
    const ULONG references = references_to(browser->unknown());
    const auto helper = module_.make_helper();
    EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
    EXPECT_GT(references_to(browser->unknown()), references);
    tab.interrupt_calls_named("IConnectionPoint::Unadvise", read_nowhere);
    EXPECT_EQ(helper->SetSite(nullptr), E_FAIL);
    tab.interrupt_calls_named({}, {});

    EXPECT_EQ(references_to(browser->unknown()), references);
    void* site = &tab;
    EXPECT_EQ(helper->GetSite(IID_IUnknown, &site), E_FAIL);
    EXPECT_EQ(site, nullptr);
}

// The sink that the browser kept before the fault forwards nothing.
TEST_F(ClosingTab, IgnoresASinkThatABrowserKeepsAfterAFaultInAdvise)
{
    fake_tab tab;
    const auto browser = make_fake<fake_browser>(tab);
    browser->document = sharepoint_page(tab, L"http://h/")->dispatch();
    browser->events().keeps_sink_when_failing = true;
    const auto helper = module_.make_helper();
    tab.interrupt_calls_named("IConnectionPoint::Advise", read_nowhere);
    EXPECT_EQ(helper->SetSite(browser->unknown()), E_FAIL);
    tab.interrupt_calls_named({}, {});

    const auto ignored = browser->before_navigate(L"http://h/x.pdf");
    EXPECT_EQ(ignored.code, S_OK);
    EXPECT_EQ(ignored.cancel, VARIANT_FALSE);
    EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
    EXPECT_EQ(browser->events().sinks(), 2u);
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
}

// Only the sink of the next attempt handles a click.
TEST_F(ClosingTab, IgnoresASinkThatAPageKeepsAfterAFaultInAdvise)
{
    fake_tab tab;
    const auto browser = make_fake<fake_browser>(tab);
    const auto page = sharepoint_page(tab, L"http://h/");
    const auto link = make_fake<fake_element>(tab, list_link(L"http://h/x.pdf"));
    browser->document = page->dispatch();
    page->events().keeps_sink_when_failing = true;
    const auto helper = module_.make_helper();
    EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
    tab.interrupt_calls_named("IConnectionPoint::Advise", read_nowhere);
    EXPECT_EQ(browser->document_complete(L"http://h/"), E_FAIL);
    tab.interrupt_calls_named({}, {});
    EXPECT_EQ(browser->document_complete(L"http://h/"), S_OK);
    EXPECT_EQ(page->events().sinks(), 2u);

    module_.new_lines();
    const auto event = make_fake<fake_event>(tab, link);
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
