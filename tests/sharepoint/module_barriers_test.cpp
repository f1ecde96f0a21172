// The DLL's guarded entries, with a host in another binary whose objects throw and crash in the middle of
// them: what the host gets, what the log says, and that the next event works.
#include "logging/pdfcore_exception.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/sharepoint/module_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/crashes.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <system_error>
#include <typeinfo>

namespace quill::test {
namespace {

using lines = std::vector<std::string>;

enum class entry
{
    set_site,
    before_navigate,
    document_complete,
    click
};

struct guarded_entry
{
    entry which;
    const char* name;
    const char* line;
    const char* host_call; // what it calls of the host
    lines before;          // what it has logged by then
};

const guarded_entry guarded_entries[] = {
    {entry::set_site,
     "quill::sharepoint_bho::SetSite",
     "58",
     "IConnectionPoint::Advise",
     {"debug: unload BHO for closing IE TAB", "debug: initilize BHO for IE TAB...", "debug: PDF Editor: "}},
    {entry::before_navigate,
     "quill::browser_events_sink::on_before_navigate",
     "70",
     "IWebBrowser2::get_Document",
     {}},
    {entry::document_complete,
     "quill::browser_events_sink::on_document_complete",
     "92",
     "IWebBrowser2::get_Document",
     {}},
    {entry::click,
     "quill::html_events_sink::on_click",
     "37",
     "IHTMLEventObj::get_srcElement",
     {"debug: CLICK!"}},
};

// What came out of an entry: what the host was told, and whether the entry did its work.
struct outcome
{
    HRESULT code = E_UNEXPECTED;
    bool has_worked = false;

    friend bool operator==(const outcome&, const outcome&) = default;
};

void PrintTo(const outcome& out, std::ostream* stream)
{
    *stream << std::hex << out.code << (out.has_worked ? " worked" : " did nothing");
}

class host
{
public:
    explicit host(const suite_setup& suite = {}) : module(suite)
    {
        editors.break_default_handler();
        browser->document = page->dispatch();
        helper = module.make_helper();
    }
    ~host()
    {
        scene.interrupt_calls_named({}, {});
        EXPECT_EQ(helper->SetSite(nullptr), S_OK);
        EXPECT_EQ(helper.Detach()->Release(), 0u) << "references to the helper object";
    }

    // Makes everything ready for the entry, and then calls it with something happening in the middle.
    outcome call(const guarded_entry& what, const std::function<void()>& happening)
    {
        scene.interrupt_calls_named({}, {});
        helper->SetSite(nullptr);
        if (what.which != entry::set_site) {
            EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
            EXPECT_EQ(browser->document_complete(L"http://h/"), S_OK);
        }
        module.new_lines();
        scene.interrupt_calls_named(happening ? what.host_call : "", happening);
        const outcome out = call(what.which);
        scene.interrupt_calls_named({}, {});
        return out;
    }

    editor_bench editors;
    module_bench module;
    fake_scene scene;
    CComPtr<fake_browser> browser = make_fake<fake_browser>(scene);
    CComPtr<fake_document> page = sharepoint_page(scene, L"http://h/");
    CComPtr<fake_element> link = make_fake<fake_element>(scene, list_link(L"http://h/x.pdf"));
    CComPtr<IObjectWithSite> helper;

private:
    outcome call(entry which)
    {
        switch (which) {
        case entry::set_site: {
            const HRESULT code = helper->SetSite(browser->unknown());
            return {code, browser->events().sinks() == 1};
        }
        case entry::before_navigate: {
            const auto result = browser->before_navigate(L"http://h/x.pdf");
            return {result.code, result.cancel == VARIANT_TRUE};
        }
        case entry::document_complete: {
            scene.forget_calls();
            const HRESULT code = browser->document_complete(L"http://h/");
            return {code, scene.count_calls("IHTMLDocument3::getElementsByTagName") == 1};
        }
        case entry::click: {
            const auto event = make_fake<fake_event>(scene, link);
            const auto result = page->click(event);
            EXPECT_EQ(is_bool(result.value, true), event->is_untouched());
            return {result.code, is_bool(result.value, false)};
        }
        }
        return {};
    }
};

// A click that is not cancelled is no failure to the host.
outcome fallback(const guarded_entry& what)
{
    return {what.which == entry::click ? S_OK : E_FAIL, false};
}

lines with(lines before, std::string line)
{
    before.push_back(std::move(line));
    return before;
}

struct own_exception
{
};

struct thrown_kind
{
    const char* level;
    std::string rest;
    std::function<void()> raise;
};

template <class Exception>
thrown_kind kind(std::string text, const Exception& exception)
{
    return {"error: ", std::move(text), [exception] { throw exception; }};
}

std::size_t count_in(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

// The suite's libraries are found beside the program as well as beside the DLL.
bool has_suite()
{
    return GetFileAttributesW(beside_this_program(L"as_compat.dll").c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::vector<thrown_kind> thrown_kinds()
{
    const std::system_error system(5, std::generic_category(), "x");
    return {
        {"debug: ", has_suite() ? " pdfcore exception: 0  (0)" : " pdfcore exception: 0 ",
         [] { throw pdfcore_exception(); }},
        kind(std::string(" system error(5): ") + system.what(), system),
        kind(" invalid argument: x", std::invalid_argument("x")),
        kind(" runtime error: ", std::runtime_error("")),
        kind(" runtime error: \xc3\xa4", std::range_error("\xc3\xa4")),
        kind(" logic error: x", std::logic_error("x")),
        kind(" logic error: x", std::out_of_range("x")),
        kind(" bad_alloc: std::bad_alloc", std::bad_alloc()),
        kind(" std exception: std::bad_cast", std::bad_cast()),
        kind(" unknown exception", own_exception()),
        kind(" unknown exception", 5),
        kind(" unknown exception", static_cast<const char*>("x")),
    };
}

TEST(ModuleBarriers, CatchWhatAnotherBinaryThrows)
{
    host test;
    for (const guarded_entry& what : guarded_entries) {
        for (const thrown_kind& thrown : thrown_kinds()) {
            SCOPED_TRACE(std::string(what.name) + thrown.rest);
            EXPECT_EQ(test.call(what, thrown.raise), fallback(what));
            EXPECT_EQ(test.module.new_lines(), with(what.before, thrown.level + std::string(what.name) + ":" +
                                                                     what.line + thrown.rest));
        }
        EXPECT_TRUE(test.call(what, nullptr).has_worked) << what.name;
    }
}

// Also where an object is only asked for an interface, and where a connection ends.
TEST(ModuleBarriers, CatchWhatIsThrownInAnyCallOfTheHosts)
{
    const auto raise = [] { throw std::runtime_error("x"); };
    host test;
    for (guarded_entry what : guarded_entries) {
        SCOPED_TRACE(what.name);
        what.host_call = "IUnknown::QueryInterface";
        what.before.resize(what.which == entry::set_site ? 2 : what.before.size());
        EXPECT_EQ(test.call(what, raise), fallback(what));
        EXPECT_EQ(test.module.new_lines(), with(what.before, "error: " + std::string(what.name) + ":" +
                                                                 what.line + " runtime error: x"));
    }
    EXPECT_EQ(test.helper->SetSite(test.browser->unknown()), S_OK);
    EXPECT_EQ(test.browser->document_complete(L"http://h/"), S_OK);
    test.module.new_lines();
    test.scene.interrupt_calls_named("IConnectionPoint::Unadvise", raise);
    EXPECT_EQ(test.helper->SetSite(nullptr), S_OK);
    const std::string line = "error: quill::NoThrow:38 runtime error: x";
    EXPECT_EQ(test.module.new_lines(), (lines{line, line, "debug: unload BHO for closing IE TAB"}));
}

TEST(ModuleBarriers, NameThePdfCoresExceptions)
{
    host test({.libraries = {L"pdfcore.dll", L"as_compat.dll"},
               .error_code = L"-1073",
               .error_text = L"Ung\x00fcltig"});
    for (const guarded_entry& what : guarded_entries) {
        EXPECT_EQ(test.call(what, [] { throw pdfcore_exception(); }), fallback(what));
        EXPECT_EQ(test.module.new_lines(),
                  with(what.before, "debug: " + std::string(what.name) + ":" + what.line +
                                        " pdfcore exception: -1073 Ung\xc3\xbcltig (-1073)"));
    }
}

struct system_exception
{
    DWORD code;
    void (*happen)();
};

const system_exception system_exceptions[] = {
    {EXCEPTION_ACCESS_VIOLATION, read_nowhere},
    {EXCEPTION_INT_DIVIDE_BY_ZERO, divide_by_zero},
    {EXCEPTION_STACK_OVERFLOW, overflow_stack},
    {0xE0001234, raise_own_exception},
};

class ModuleCrash : public testing::Test
{
protected:
    ModuleCrash() { keep_stack_for_handling(); }

    void start(const suite_setup& suite) { test_ = std::make_unique<host>(suite); }

    // The handler runs: the host is told a failure and goes on.
    void expect_handled()
    {
        for (const guarded_entry& what : guarded_entries) {
            for (const system_exception& exception : system_exceptions) {
                SCOPED_TRACE(std::string(what.name) + " " + std::to_string(exception.code));
                EXPECT_EQ(test_->call(what, exception.happen), fallback(what));
                EXPECT_EQ(test_->module.new_lines(),
                          with(what.before, "info: System exception in " + std::string(what.name)));
            }
            EXPECT_TRUE(test_->call(what, nullptr).has_worked) << what.name;
        }
    }

    std::unique_ptr<host> test_;
};

TEST_F(ModuleCrash, IsReportedAndHandled)
{
    testing::internal::CaptureStderr();
    start({});
    expect_handled();
    const std::string reports = testing::internal::GetCapturedStderr();
    for (const char* report : {"c0000005", "c0000094", "c00000fd", "e0001234"})
        EXPECT_EQ(count_in(reports, report), has_suite() ? std::size(guarded_entries) : 0)
            << report << " in " << reports;
}

// This program again, where the suite's libraries are not.
TEST(ModuleWithoutTheSuite, CatchesTheSame)
{
    if (!has_suite())
        return; // that is where we are
    const scratch_directory folder;
    for (const wchar_t* name : {L"test_sharepoint_module.exe", L"QuillPDF.IE.dll", L"quill_editor.exe"})
        ASSERT_TRUE(CopyFileW(beside_this_program(name).c_str(), (folder / name).c_str(), TRUE));
    const child_result run = run_program(
        folder / L"test_sharepoint_module.exe",
        L"--gtest_filter=ModuleBarriers.CatchWhatAnotherBinaryThrows:ModuleCrash.IsReportedAndHandled");
    EXPECT_EQ(run.exit_code, 0u) << run.output << run.errors;
    EXPECT_NE(run.output.find("[  PASSED  ] 2 tests."), std::string::npos) << run.output;
}

// The browser's own handler around the entry. Returns the code of what came through, 0 for nothing.
[[gnu::noinline]] DWORD call_as_the_browser(void (*call)(void*), void* context)
{
    DWORD code = 0;
    __try {
        call(context);
    } __except (code = GetExceptionCode(), EXCEPTION_EXECUTE_HANDLER) {
    }
    return code;
}

TEST_F(ModuleCrash, IsTheBrowsersWhenTheCrashLibrarySaysSo)
{
    testing::internal::CaptureStderr();
    start({.libraries = {L"crashguard14.dll"}, .verdict = L"search"});
    // The browser's handler skips what is between it and the fault.
    test_->module.expect_leaks();
    test_->scene.expect_leaks();
    struct context
    {
        host* test;
        const guarded_entry* what;
        void (*happen)();
    };
    for (const guarded_entry& what : guarded_entries) {
        for (const system_exception& exception : system_exceptions) {
            if (exception.code == EXCEPTION_STACK_OVERFLOW)
                continue; // whoever takes it has to put the guard page back
            SCOPED_TRACE(std::string(what.name) + " " + std::to_string(exception.code));
            context call{test_.get(), &what, exception.happen};
            EXPECT_EQ(call_as_the_browser(
                          [](void* pointer) {
                              const auto& self = *static_cast<context*>(pointer);
                              self.test->call(*self.what, self.happen);
                          },
                          &call),
                      exception.code);
            EXPECT_EQ(test_->module.new_lines(), what.before);
        }
    }
    // Each is reported once.
    EXPECT_EQ(count_in(testing::internal::GetCapturedStderr(), "exception"),
              std::size(guarded_entries) * (std::size(system_exceptions) - 1));
}

TEST_F(ModuleCrash, MayBeResumed)
{
    start({.libraries = {L"crashguard14.dll"}, .verdict = L"continue"});
    for (const guarded_entry& what : guarded_entries) {
        SCOPED_TRACE(what.name);
        forbid_page();
        const outcome out = test_->call(what, read_page);
        EXPECT_EQ(out, (outcome{S_OK, true}));
        for (const std::string& line : test_->module.new_lines())
            EXPECT_EQ(line.find("System exception"), std::string::npos) << line;
    }
}

} // namespace
} // namespace quill::test
