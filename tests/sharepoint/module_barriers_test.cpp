// The DLL's guarded entries with a host in another binary whose objects throw or fault inside them: result,
// log lines, and the next event.
#include "logging/pdfcore_exception.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/sharepoint/fake_browser.h"
#include "tests/sharepoint/module_fixture.h"
#include "tests/sharepoint/recorded_launches.h"
#include "tests/support/child_process.h"
#include "tests/support/crashes.h"
#include "tests/support/faults/import_table.h"
#include "tests/support/wait.h"

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
    const char* host_call; // the call into the host that throws or faults
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

// The result of an entry, and whether the entry did its work.
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
        tab.interrupt_calls_named({}, {});
        EXPECT_EQ(helper->SetSite(nullptr), S_OK);
        EXPECT_EQ(helper.Detach()->Release(), 0u) << "references to the helper object";
    }

    // Prepares the fakes and calls the entry with an action inside its call into the host.
    outcome call(const guarded_entry& what, const std::function<void()>& happening)
    {
        tab.interrupt_calls_named({}, {});
        helper->SetSite(nullptr);
        if (what.which != entry::set_site) {
            EXPECT_EQ(helper->SetSite(browser->unknown()), S_OK);
            EXPECT_EQ(browser->document_complete(L"http://h/"), S_OK);
        }
        module.new_lines();
        tab.interrupt_calls_named(happening ? what.host_call : "", happening);
        const outcome out = call(what.which);
        tab.interrupt_calls_named({}, {});
        return out;
    }

    editor_programs editors;
    module_fixture module;
    fake_tab tab;
    CComPtr<fake_browser> browser = make_fake<fake_browser>(tab);
    CComPtr<fake_document> page = sharepoint_page(tab, L"http://h/");
    CComPtr<fake_element> link = make_fake<fake_element>(tab, list_link(L"http://h/x.pdf"));
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
            tab.forget_calls();
            const HRESULT code = browser->document_complete(L"http://h/");
            return {code, tab.count_calls("IHTMLDocument3::getElementsByTagName") == 1};
        }
        case entry::click: {
            const auto event = make_fake<fake_event>(tab, link);
            const auto result = page->click(event);
            EXPECT_EQ(is_bool(result.value, true), event->is_untouched());
            return {result.code, is_bool(result.value, false)};
        }
        }
        return {};
    }
};

// A failed click returns S_OK to the host and is not cancelled.
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

// The suite's libraries are also found in the program's folder.
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

TEST(ModuleBarriers, CatchExceptionsOfAnotherBinary)
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

// Includes QueryInterface and Unadvise.
TEST(ModuleBarriers, CatchExceptionsInEveryCallIntoTheHost)
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
    test.tab.interrupt_calls_named("IConnectionPoint::Unadvise", raise);
    EXPECT_EQ(test.helper->SetSite(nullptr), S_OK);
    const std::string line = "error: quill::NoThrow:38 runtime error: x";
    EXPECT_EQ(test.module.new_lines(), (lines{line, line, "debug: unload BHO for closing IE TAB"}));
}

TEST(ModuleBarriers, LogExceptionsOfThePdfCore)
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

    // The handler runs, so the host gets a failure code.
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

// Runs this program in a folder without the suite's libraries.
TEST(ModuleWithoutTheSuite, CatchesTheSame)
{
    if (!has_suite())
        return; // in that process
    const scratch_directory folder;
    for (const wchar_t* name : {L"test_sharepoint_module.exe", L"QuillPDF.IE.dll", L"quill_editor.exe"})
        ASSERT_TRUE(CopyFileW(beside_this_program(name).c_str(), (folder / name).c_str(), TRUE));
    const child_result run = run_program(
        folder / L"test_sharepoint_module.exe",
        L"--gtest_filter=ModuleBarriers.CatchExceptionsOfAnotherBinary:ModuleCrash.IsReportedAndHandled");
    EXPECT_EQ(run.exit_code, 0u) << run.output << run.errors;
    EXPECT_NE(run.output.find("[  PASSED  ] 2 tests."), std::string::npos) << run.output;
}

// A handler in the browser around the entry. Returns the code of the exception that reached it, 0 for none.
[[gnu::noinline]] DWORD call_as_the_browser(void (*call)(void*), void* context)
{
    DWORD code = 0;
    __try {
        call(context);
    } __except (code = GetExceptionCode(), EXCEPTION_EXECUTE_HANDLER) {
    }
    return code;
}

TEST_F(ModuleCrash, IsLeftToTheBrowserWhenTheCrashLibraryDecidesSo)
{
    testing::internal::CaptureStderr();
    start({.libraries = {L"crashguard14.dll"}, .verdict = L"search"});
    // The browser's handler skips the frames between it and the fault.
    test_->module.expect_leaks();
    test_->tab.expect_leaks();
    struct context
    {
        host* test;
        const guarded_entry* what;
        void (*happen)();
    };
    for (const guarded_entry& what : guarded_entries) {
        for (const system_exception& exception : system_exceptions) {
            if (exception.code == EXCEPTION_STACK_OVERFLOW)
                continue; // its handler would have to restore the guard page
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
    // Each fault is reported once.
    EXPECT_EQ(count_in(testing::internal::GetCapturedStderr(), "exception"),
              std::size(guarded_entries) * (std::size(system_exceptions) - 1));
}

// The browser's handler skips the end of opening. Later navigations to the URL must not count as repeats.
TEST_F(ModuleCrash, WhileAUrlIsOpenedBlocksNoLaterNavigation)
{
    start({.libraries = {L"crashguard14.dll"}, .verdict = L"search"});
    test_->module.expect_leaks();
    test_->tab.expect_leaks();
    recorded_launches() = {};
    ASSERT_EQ(test_->helper->SetSite(test_->browser->unknown()), S_OK);
    const HMODULE module = test_->module.handle();
    const code_address original =
        redirect_import(module, "ShellExecuteW", reinterpret_cast<code_address>(&read_nowhere));
    ASSERT_NE(original, nullptr);
    const auto navigate = [](void* context) {
        static_cast<host*>(context)->browser->before_navigate(L"http://h/x.pdf");
    };
    EXPECT_EQ(call_as_the_browser(navigate, test_.get()), DWORD{EXCEPTION_ACCESS_VIOLATION});
    redirect_import(module, "ShellExecuteW", recording_shell_execute());
    const ULONGLONG faulted = GetTickCount64();
    ASSERT_TRUE(wait_until([&] { return GetTickCount64() - faulted >= 100; }));
    EXPECT_EQ(test_->browser->before_navigate(L"http://h/x.pdf").cancel, VARIANT_TRUE);
    redirect_import(module, "ShellExecuteW", original);
    EXPECT_EQ(recorded_launches().urls(), std::vector<std::wstring>{L"http://h/x.pdf"});
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
