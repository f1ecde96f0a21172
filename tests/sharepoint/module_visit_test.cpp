// A visit from SetSite to SetSite(nullptr), observed from outside the DLL: log lines, started programs and
// changes of the page.
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/sharepoint/module_fixture.h"
#include "tests/support/faults/import_table.h"
#include "tests/support/process_resources.h"
#include "tests/support/storage_indexes.h"
#include "tests/support/text.h"

#include <gmock/gmock.h>
#include <mshtmdid.h>

#include <cstdint>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using lines = std::vector<std::string>;

ULONGLONG WINAPI stopped_tick_count()
{
    return 1'000'000;
}

// The repeated navigation is then recognised on a slow machine too.
void stop_clock(const module_fixture& module)
{
    EXPECT_NE(redirect_import(module.handle(), "GetTickCount64",
                              reinterpret_cast<code_address>(&stopped_tick_count)),
              nullptr);
}

class ModuleVisit : public testing::Test
{
protected:
    ModuleVisit()
    {
        library_->add_to_head({.tag = L"SCRIPT", .src = L"/_layouts/init.js"});
        list_link_ = &library_->add_to_body(list_link(L"http://h/List.pdf"));
        client_link_ = &library_->add_to_body(
            {.tag = L"A",
             .outer_html = LR"m(<a id="c" onclick="PdfFile.OpenDocuments(1)" href="/c.pdf">c</a>)m",
             .href = L"/c.pdf"});
    }

    bool click(fake_document* page, fake_element* element)
    {
        const auto event = make_fake<fake_event>(tab_, element);
        const auto result = page->click(event);
        EXPECT_EQ(result.code, S_OK);
        EXPECT_EQ(is_bool(result.value, true), event->is_untouched());
        return is_bool(result.value, false);
    }
    VARIANT_BOOL navigate(const wchar_t* url)
    {
        const auto result = browser_->before_navigate(url);
        EXPECT_EQ(result.code, S_OK);
        return result.cancel;
    }

    // Fires each event.
    void visit(IObjectWithSite* helper)
    {
        EXPECT_EQ(helper->SetSite(browser_->unknown()), S_OK);
        browser_->document = plain_->dispatch();
        EXPECT_EQ(navigate(L"http://h/p.pdf"), VARIANT_FALSE);
        EXPECT_EQ(browser_->document_complete(L"http://plain/"), S_OK);
        EXPECT_FALSE(click(plain_, list_link_));

        browser_->document = library_->dispatch();
        EXPECT_EQ(browser_->document_complete(L"http://h/list#top"), S_OK);
        EXPECT_EQ(library_->change_ready_state(L"interactive").code, S_OK);
        EXPECT_EQ(library_->change_ready_state(L"complete").code, S_OK);
        EXPECT_FALSE(click(library_, client_link_));
        EXPECT_TRUE(click(library_, list_link_));
        EXPECT_EQ(navigate(L"http://h/Nav.pdf"), VARIANT_TRUE);
        EXPECT_EQ(navigate(L"HTTP://H/NAV.PDF"), VARIANT_TRUE);
        EXPECT_EQ(navigate(L"http://h/page.aspx"), VARIANT_FALSE);
        browser_->quit();
        EXPECT_EQ(navigate(L"http://h/Nav.pdf"), VARIANT_FALSE);
        EXPECT_EQ(browser_->document_complete(L"http://h/list"), S_OK);
        EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    }

    lines expected_lines() const
    {
        lines expected = {
            "debug: unload BHO for closing IE TAB",
            "debug: initilize BHO for IE TAB...",
            "debug: PDF Editor: " + to_utf8(editors_.scratch() / L"Editor\\editor.exe"),
            "info: subscription for IE Browser events created",
            // an ordinary page
            "debug: on_before_navigate http://h/p.pdf",
            "debug: detect click to http://h/p.pdf",
            "debug: on_document_complete http://plain/",
            "debug: opening document by http://plain/",
            "info: http://plain/page events subscribed ",
            "debug: http://plain/page is new document",
            "debug: Should not modify links on regular documents",
            "debug: CLICK!",
            "debug: click handling...",
            "debug: do not block clicks for regular documents",
            // a library
            "debug: on_document_complete http://h/list#top",
            "debug: opening document by http://h/list#top",
            "info: sharepoint document has been detected",
            "info: http://h/list events subscribed ",
            "debug: http://h/list is new document",
            "debug: detect click to http://h/List.pdf",
            "debug: detect click to /c.pdf",
            "info: Ready state change.",
            "info: Ready state change.",
            "debug: document already exists",
            "debug: detect click to http://h/List.pdf",
            "debug: detect click to /c.pdf",
            "debug: CLICK!",
            "debug: click handling...",
            "info: do not block clicks for not-pdf links",
            "debug: CLICK!",
            "debug: click handling...",
            "debug: detect click to http://h/List.pdf",
            "info: checkout file http://h/List.pdf",
            "info: blocking click event...",
            "debug: on_before_navigate http://h/Nav.pdf",
            "debug: detect click to http://h/Nav.pdf",
            "info: sharepoint document has been detected",
            "info: trying to open pdf link",
            "info: checkout file http://h/Nav.pdf",
            "info:  block navigation to sharepoint PDF!",
            "debug: on_before_navigate HTTP://H/NAV.PDF",
            "debug: detect click to HTTP://H/NAV.PDF",
            "info: sharepoint document has been detected",
            "info: HTTP://H/NAV.PDF just canceled",
            "info:  block navigation to sharepoint PDF!",
            "debug: on_before_navigate http://h/page.aspx",
            "debug: detect click to http://h/page.aspx",
            // closing the tab
            "info: on_quit",
            "debug: on_before_navigate http://h/Nav.pdf",
            "debug: on_document_complete http://h/list",
            "debug: unload BHO for closing IE TAB",
        };
        return expected;
    }

    editor_programs editors_;
    fake_tab tab_;
    CComPtr<fake_browser> browser_ = make_fake<fake_browser>(tab_);
    CComPtr<fake_document> plain_ = make_fake<fake_document>(tab_, L"http://plain/page");
    CComPtr<fake_document> library_ = sharepoint_page(tab_, L"http://h/list");
    fake_element* list_link_ = nullptr;
    fake_element* client_link_ = nullptr;
};

TEST_F(ModuleVisit, IsLoggedCompletely)
{
    editors_.use_editor();
    module_fixture module;
    stop_clock(module);
    EXPECT_THAT(module.new_lines(), testing::IsEmpty());
    visit(module.make_helper());
    EXPECT_THAT(module.new_lines(), ElementsAreArray(expected_lines()));
    EXPECT_THAT(editors_.starts(2),
                testing::UnorderedElementsAre(editors_.editor_start(L"http://h/List.pdf"),
                                              editors_.editor_start(L"http://h/Nav.pdf")));
    EXPECT_THAT(client_link_->written_html(), ElementsAre(LR"m(<a id="c"  href="/c.pdf">c</a>)m"));
    EXPECT_THAT(list_link_->written_html(), testing::IsEmpty());
    EXPECT_EQ(browser_->stops, 2);
    EXPECT_EQ(browser_->events().sinks() + library_->events().sinks() + plain_->events().sinks(), 0u);
}

// Lines below the level are not written.
TEST_F(ModuleVisit, IsLoggedAtTheConfiguredLevel)
{
    editors_.use_editor();
    module_fixture module({}, L"info");
    stop_clock(module);
    visit(module.make_helper());
    lines expected = expected_lines();
    std::erase_if(expected, [](const std::string& line) { return line.starts_with("debug: "); });
    EXPECT_THAT(module.new_lines(), ElementsAreArray(expected));
    editors_.starts(2);
}

// The only warnings are those about the editor.
TEST_F(ModuleVisit, WarnsOfAMissingEditor)
{
    module_fixture module({}, L"warning");
    stop_clock(module);
    visit(module.make_helper());
    const std::string warning = "warning: QuillStudio not found. Trying to use default pdf view...";
    EXPECT_THAT(module.new_lines(), ElementsAre(warning, warning));
    editors_.starts(2);
}

TEST_F(ModuleVisit, LogsNothingWithLoggingOff)
{
    editors_.use_editor();
    module_fixture module({}, L"off");
    visit(module.make_helper());
    EXPECT_THAT(module.new_lines(), testing::IsEmpty());
    editors_.starts(2);
}

// Case-insensitive comparison of such text calls the C runtime.
TEST_F(ModuleVisit, LeaksNothingForLinksBeyondAscii)
{
    library_->add_to_head({.tag = L"META", .name = L"\x416GENERATOR", .content = L"\xDC\x416 SharePoint"});
    library_->add_to_head({.tag = L"SCRIPT", .src = L"/_layouts/\x6587\x66F8.js"});
    const std::wstring url = L"http://h/\xDC"
                             L"bersicht \x416 \x6587\x66F8.PDF";
    fake_element* const link = &library_->add_to_body(list_link(url));
    library_->add_to_body(list_link(url + L"\x436"));
    const auto visit_and_unload = [&] {
        module_fixture module;
        const CComPtr<IObjectWithSite> helper = module.make_helper();
        browser_->document = library_->dispatch();
        EXPECT_EQ(helper->SetSite(browser_->unknown()), S_OK);
        EXPECT_EQ(browser_->document_complete(L"http://h/list"), S_OK);
        EXPECT_TRUE(click(library_, link));
        EXPECT_EQ(navigate((url + L"\x436").c_str()), VARIANT_FALSE);
        EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    };
    visit_and_unload();
    visit_and_unload();
    const auto resources = process_resources::now();
    const auto indexes = storage_indexes::free_now();
    for (int i = 0; i < 3; ++i)
        visit_and_unload();
    EXPECT_EQ(GetModuleHandleW(L"QuillPDF.IE.dll"), nullptr);
    EXPECT_EQ(process_resources::now(), resources);
    EXPECT_EQ(storage_indexes::free_now(), indexes);
}

// Hosts pass a VARIANT on their stack as it is.
TEST_F(ModuleVisit, WritesItsResultToAnUninitialisedVariant)
{
    module_fixture module;
    const CComPtr<IObjectWithSite> helper = module.make_helper();
    browser_->document = library_->dispatch();
    EXPECT_EQ(helper->SetSite(browser_->unknown()), S_OK);
    EXPECT_EQ(browser_->document_complete(L"http://h/list"), S_OK);
    const auto event = make_fake<fake_event>(tab_, client_link_);
    VARIANT argument{};
    argument.vt = VT_DISPATCH;
    argument.pdispVal = event;
    DISPPARAMS parameters{&argument, nullptr, 1, 0};
    VARIANT result;
    result.vt = VT_DISPATCH;
    result.pdispVal = reinterpret_cast<IDispatch*>(std::uintptr_t{64});
    EXPECT_EQ(library_->events().first_sink()->Invoke(DISPID_HTMLDOCUMENTEVENTS2_ONCLICK, IID_NULL,
                                                      LOCALE_NEUTRAL, DISPATCH_METHOD, &parameters, &result,
                                                      nullptr, nullptr),
              S_OK);
    EXPECT_TRUE(is_bool(result, true));
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
}

} // namespace
} // namespace quill::test
