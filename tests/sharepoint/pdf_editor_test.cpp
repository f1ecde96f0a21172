// Starts real programs in place of the editor and of the system's default handler.
#include "platform/unique_handle.h"
#include "sharepoint/editor/pdf_editor.h"
#include "tests/sharepoint/editor_programs.h"
#include "tests/support/balance.h"
#include "tests/support/child_process.h"
#include "tests/support/log_capture.h"

#include <atlutil.h>
#include <gmock/gmock.h>

namespace quill {
namespace {

using test::editor_programs;
using test::log_capture;
using lines = std::vector<std::string>;

constexpr wchar_t url[] = L"https://server/sites/a/x.pdf";
constexpr char checkout_line[] = "info: checkout file https://server/sites/a/x.pdf";
constexpr char not_found_line[] = "warning: QuillStudio not found. Trying to use default pdf view...";
constexpr char failed_line[] = "warning: QuillStudio failed. Trying to use default pdf view...";

std::string editor_line(const std::wstring& path)
{
    return "debug: PDF Editor: " + std::string(path.begin(), path.end());
}

std::wstring current_directory()
{
    wchar_t path[MAX_PATH] = {};
    GetCurrentDirectoryW(MAX_PATH, path);
    return path;
}

TEST(PdfEditor, StartsTheEditor)
{
    editor_programs editors;
    editors.use_editor();
    log_capture log;
    pdf_editor().open(parse_url(url));
    EXPECT_EQ(log.lines(), (lines{editor_line(editors.scratch() / L"Editor\\editor.exe"), checkout_line}));

    const auto starts = editors.starts(1);
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0], editors.editor_start(url));
    EXPECT_EQ(starts[0].command_line, L"/pdf \"sharepoint://https://server/sites/a/x.pdf\"");
}

TEST(PdfEditor, IsFoundWithBlanksAndAnyCharacters)
{
    editor_programs editors;
    const std::wstring path = editors.install_editor(L"Übersicht 文書 ж\\My Editor ä.exe");
    editors.set_editor(path);
    pdf_editor().open(parse_url(url));
    const auto starts = editors.starts(1);
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0].command_line, L"/pdf \"sharepoint://https://server/sites/a/x.pdf\"");
    EXPECT_EQ(starts[0].directory, editors.scratch() / L"Übersicht 文書 ж");
}

TEST(PdfEditor, IsFoundInThe32BitViewOnly)
{
    editor_programs editors;
    editors.set_editor(editors.install_editor(L"Editor\\editor.exe"), KEY_WOW64_32KEY);
    pdf_editor().open(parse_url(url));
    EXPECT_EQ(editors.starts(1), std::vector{editors.editor_start(url)});
}

TEST(PdfEditor, IsTakenFromThe64BitViewFirst)
{
    editor_programs editors;
    editors.use_editor();
    editors.set_editor(L"C:\\nowhere\\editor.exe", KEY_WOW64_32KEY);
    pdf_editor().open(parse_url(url));
    EXPECT_EQ(editors.starts(1), std::vector{editors.editor_start(url)});
}

// The settings are read once for each tab.
TEST(PdfEditor, ReadsTheSettingsOnce)
{
    editor_programs editors;
    editors.use_editor();
    const pdf_editor editor;
    editors.set_editor(L"C:\\nowhere\\editor.exe");
    editor.open(parse_url(url));
    EXPECT_EQ(editors.starts(1), std::vector{editors.editor_start(url)});
}

// A missing editor is logged after the default handler was started, an editor that does not start before it.
// The test replaces the handler at the warning.
void expect_default_handler(editor_programs& editors, const std::string& editor, const char* warning)
{
    log_capture log;
    log.on_line([&](const std::string& line) {
        if (line == warning)
            editors.use_second_default_handler();
    });
    pdf_editor().open(parse_url(url));
    EXPECT_EQ(log.lines(), (lines{editor, checkout_line, warning}));
    const auto starts = editors.starts(1);
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0].command_line, warning == not_found_line
                                          ? editor_programs::default_handler_line(url)
                                          : editor_programs::second_default_handler_line(url));
    EXPECT_EQ(starts[0].directory, current_directory());
    EXPECT_EQ(starts[0].show_command, SW_SHOWNORMAL);
}

TEST(PdfEditor, PassesTheUrlToTheDefaultHandlerWithoutAnEditor)
{
    editor_programs editors;
    expect_default_handler(editors, "debug: PDF Editor: ", not_found_line);
}

TEST(PdfEditor, PassesTheUrlToTheDefaultHandlerWhenTheEditorIsMissing)
{
    editor_programs editors;
    editors.set_editor(L"C:\\nowhere\\editor.exe");
    expect_default_handler(editors, "debug: PDF Editor: C:\\nowhere\\editor.exe", not_found_line);
}

TEST(PdfEditor, PassesTheUrlToTheDefaultHandlerWhenTheEditorIsNoProgram)
{
    editor_programs editors;
    const std::wstring path = editors.scratch() / L"editor.exe";
    ASSERT_TRUE(test::write_file(path, "not a program"));
    editors.set_editor(path);
    expect_default_handler(editors, editor_line(path), failed_line);
}

TEST(PdfEditor, PassesTheUrlToTheDefaultHandlerWhenTheEditorIsAFolder)
{
    editor_programs editors;
    editors.set_editor(editors.scratch().path());
    expect_default_handler(editors, editor_line(editors.scratch().path()), failed_line);
}

// A value that is too long is ignored in both registry views.
TEST(PdfEditor, IgnoresAnOverlongPath)
{
    editor_programs editors;
    std::wstring path = editors.install_editor(L"Editor\\editor.exe");
    path.insert(path.find(L"\\Editor"), std::wstring(260, L'\\'));
    editors.set_editor(path);
    editors.set_editor(path, KEY_WOW64_32KEY);
    expect_default_handler(editors, "debug: PDF Editor: ", not_found_line);
}

TEST(PdfEditor, AcceptsAPathOf259Characters)
{
    editor_programs editors;
    const std::wstring name = L"\\e.exe";
    const std::size_t taken = editors.scratch().path().size() + name.size() + 1;
    const std::wstring folder(259 - taken, L'f');
    const std::wstring path = editors.install_editor(folder + name);
    ASSERT_EQ(path.size(), 259u);
    editors.set_editor(path);
    log_capture log;
    pdf_editor().open(parse_url(url));
    EXPECT_EQ(log.lines(), (lines{editor_line(path), checkout_line}));
    const auto starts = editors.starts(1);
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0].command_line, editors.editor_start(url).command_line);
    EXPECT_EQ(starts[0].directory, editors.scratch() / folder);
}

TEST(PdfEditor, PassesUrlsUnchanged)
{
    editor_programs editors;
    editors.use_editor();
    const pdf_editor editor;
    std::vector<test::program_start> expected;
    for (const wchar_t* address : {L"http://server/a%20b.pdf", L"http://server/ä 文.pdf",
                                   L"http://server:8080/{}%s.pdf", L"https://server/x.pdf?a=b&c=d#page=2"}) {
        editor.open(parse_url(address));
        expected.push_back(editors.editor_start(address));
        EXPECT_EQ(editors.starts(expected.size()), expected);
    }
}

// CUrl returns an empty URL for text that it cannot parse.
TEST(PdfEditor, OpensAnEmptyUrlForTextThatIsNoUrl)
{
    editor_programs editors;
    editors.use_editor();
    const pdf_editor editor;
    std::vector<test::program_start> expected;
    for (const wchar_t* text : {L"/sites/a/x.pdf", L"", L"x.pdf", L"http:x.pdf", L"http://h:x/y.pdf"}) {
        editor.open(parse_url(text));
        expected.push_back(editors.editor_start(L"http://"));
    }
    EXPECT_EQ(editors.starts(expected.size()), expected);
}

TEST(PdfEditor, LeaksNoHandles)
{
    editor_programs editors;
    editors.use_editor();
    const pdf_editor editor;
    std::size_t starts = 0;
    test::expect_balance([&] {
        editor.open(parse_url(url));
        EXPECT_EQ(editors.starts(++starts).size(), starts);
    });
}

// The editor may run longer than the browser: inherited handles would keep the browser's files open.
TEST(PdfEditor, InheritsNoHandlesToTheEditor)
{
    editor_programs editors;
    editors.use_editor();
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    // Enough handles that the last value is not used by a handle of the editor itself.
    std::vector<unique_handle> handles(200);
    for (auto& handle : handles)
        handle.reset(CreateEventW(&inheritable, TRUE, FALSE, nullptr));
    const test::environment_scope canary(
        L"QUILL_EDITOR_CANARY", std::to_wstring(reinterpret_cast<std::uintptr_t>(handles.back().get())));
    pdf_editor().open(parse_url(url));
    EXPECT_THAT(editors.starts(1), testing::ElementsAre(editors.editor_start(url)));
    EXPECT_TRUE(test::run_program(editors.scratch() / L"Editor\\editor.exe", L"--inherits").started);
    EXPECT_TRUE(editors.starts(2).back().has_canary) << "the recorder does not notice an inherited handle";
}

} // namespace
} // namespace quill
