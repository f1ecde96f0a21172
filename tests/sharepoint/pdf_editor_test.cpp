// The launcher, with a real program for the editor and one for the system's default handler.
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

using test::editor_bench;
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
    editor_bench bench;
    bench.use_editor();
    log_capture log;
    pdf_editor().open(parse_url(url));
    EXPECT_EQ(log.lines(), (lines{editor_line(bench.scratch() / L"Editor\\editor.exe"), checkout_line}));

    const auto starts = bench.starts(1);
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0], bench.editor_start(url));
    EXPECT_EQ(starts[0].command_line, L"/pdf \"sharepoint://https://server/sites/a/x.pdf\"");
}

TEST(PdfEditor, IsFoundWithBlanksAndAnyCharacters)
{
    editor_bench bench;
    const std::wstring path = bench.install_editor(L"Übersicht 文書 ж\\My Editor ä.exe");
    bench.set_editor(path);
    pdf_editor().open(parse_url(url));
    const auto starts = bench.starts(1);
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0].command_line, L"/pdf \"sharepoint://https://server/sites/a/x.pdf\"");
    EXPECT_EQ(starts[0].directory, bench.scratch() / L"Übersicht 文書 ж");
}

TEST(PdfEditor, IsFoundInThe32BitViewOnly)
{
    editor_bench bench;
    bench.set_editor(bench.install_editor(L"Editor\\editor.exe"), KEY_WOW64_32KEY);
    pdf_editor().open(parse_url(url));
    EXPECT_EQ(bench.starts(1), std::vector{bench.editor_start(url)});
}

TEST(PdfEditor, IsTakenFromThe64BitViewFirst)
{
    editor_bench bench;
    bench.use_editor();
    bench.set_editor(L"C:\\nowhere\\editor.exe", KEY_WOW64_32KEY);
    pdf_editor().open(parse_url(url));
    EXPECT_EQ(bench.starts(1), std::vector{bench.editor_start(url)});
}

// The settings are read once: a tab keeps its editor.
TEST(PdfEditor, ReadsTheSettingsOnce)
{
    editor_bench bench;
    bench.use_editor();
    const pdf_editor editor;
    bench.set_editor(L"C:\\nowhere\\editor.exe");
    editor.open(parse_url(url));
    EXPECT_EQ(bench.starts(1), std::vector{bench.editor_start(url)});
}

// The warning of a missing editor comes after the default handler's start, that of an editor that cannot be
// started before it: from the warning on, addresses go to another handler.
void expect_default_handler(editor_bench& bench, const std::string& editor, const char* warning)
{
    log_capture log;
    log.on_line([&](const std::string& line) {
        if (line == warning)
            bench.use_second_default_handler();
    });
    pdf_editor().open(parse_url(url));
    EXPECT_EQ(log.lines(), (lines{editor, checkout_line, warning}));
    const auto starts = bench.starts(1);
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0].command_line, warning == not_found_line
                                          ? editor_bench::default_handler_line(url)
                                          : editor_bench::second_default_handler_line(url));
    EXPECT_EQ(starts[0].directory, current_directory());
    EXPECT_EQ(starts[0].show_command, SW_SHOWNORMAL);
}

TEST(PdfEditor, GivesTheAddressToTheDefaultHandlerWithoutAnEditor)
{
    editor_bench bench;
    expect_default_handler(bench, "debug: PDF Editor: ", not_found_line);
}

TEST(PdfEditor, GivesTheAddressToTheDefaultHandlerWhenTheEditorIsGone)
{
    editor_bench bench;
    bench.set_editor(L"C:\\nowhere\\editor.exe");
    expect_default_handler(bench, "debug: PDF Editor: C:\\nowhere\\editor.exe", not_found_line);
}

TEST(PdfEditor, GivesTheAddressToTheDefaultHandlerWhenTheEditorIsNoProgram)
{
    editor_bench bench;
    const std::wstring path = bench.scratch() / L"editor.exe";
    ASSERT_TRUE(test::write_file(path, "not a program"));
    bench.set_editor(path);
    expect_default_handler(bench, editor_line(path), failed_line);
}

TEST(PdfEditor, GivesTheAddressToTheDefaultHandlerWhenTheEditorIsAFolder)
{
    editor_bench bench;
    bench.set_editor(bench.scratch().path());
    expect_default_handler(bench, editor_line(bench.scratch().path()), failed_line);
}

// A value that does not fit is no value, in either view.
TEST(PdfEditor, IgnoresAnOverlongPath)
{
    editor_bench bench;
    std::wstring path = bench.install_editor(L"Editor\\editor.exe");
    path.insert(path.find(L"\\Editor"), std::wstring(260, L'\\'));
    bench.set_editor(path);
    bench.set_editor(path, KEY_WOW64_32KEY);
    expect_default_handler(bench, "debug: PDF Editor: ", not_found_line);
}

TEST(PdfEditor, TakesAPathOfExactly259Characters)
{
    editor_bench bench;
    const std::wstring name = L"\\e.exe";
    const std::size_t taken = bench.scratch().path().size() + name.size() + 1;
    const std::wstring folder(259 - taken, L'f');
    const std::wstring path = bench.install_editor(folder + name);
    ASSERT_EQ(path.size(), 259u);
    bench.set_editor(path);
    log_capture log;
    pdf_editor().open(parse_url(url));
    EXPECT_EQ(log.lines(), (lines{editor_line(path), checkout_line}));
    const auto starts = bench.starts(1);
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0].command_line, bench.editor_start(url).command_line);
    EXPECT_EQ(starts[0].directory, bench.scratch() / folder);
}

TEST(PdfEditor, PassesAddressesCharacterForCharacter)
{
    editor_bench bench;
    bench.use_editor();
    const pdf_editor editor;
    std::vector<test::program_start> expected;
    for (const wchar_t* address : {L"http://server/a%20b.pdf", L"http://server/ä 文.pdf",
                                   L"http://server:8080/{}%s.pdf", L"https://server/x.pdf?a=b&c=d#page=2"}) {
        editor.open(parse_url(address));
        expected.push_back(bench.editor_start(address));
        EXPECT_EQ(bench.starts(expected.size()), expected);
    }
}

// The URL object makes an empty URL of text that it cannot take apart.
TEST(PdfEditor, OpensAnEmptyUrlForTextThatIsNone)
{
    editor_bench bench;
    bench.use_editor();
    const pdf_editor editor;
    std::vector<test::program_start> expected;
    for (const wchar_t* text : {L"/sites/a/x.pdf", L"", L"x.pdf", L"http:x.pdf", L"http://h:x/y.pdf"}) {
        editor.open(parse_url(text));
        expected.push_back(bench.editor_start(L"http://"));
    }
    EXPECT_EQ(bench.starts(expected.size()), expected);
}

TEST(PdfEditor, KeepsNoHandles)
{
    editor_bench bench;
    bench.use_editor();
    const pdf_editor editor;
    std::size_t starts = 0;
    test::expect_balance([&] {
        editor.open(parse_url(url));
        EXPECT_EQ(bench.starts(++starts).size(), starts);
    });
}

// The editor outlives the browser's tab: a file of the browser's that it inherited would stay open with it.
TEST(PdfEditor, GivesTheEditorNoHandlesOfTheBrowsers)
{
    editor_bench bench;
    bench.use_editor();
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    // So many that the last one has a number that the editor has not given to one of its own.
    std::vector<unique_handle> handles(200);
    for (auto& handle : handles)
        handle.reset(CreateEventW(&inheritable, TRUE, FALSE, nullptr));
    const test::environment_scope canary(
        L"QUILL_EDITOR_CANARY", std::to_wstring(reinterpret_cast<std::uintptr_t>(handles.back().get())));
    pdf_editor().open(parse_url(url));
    EXPECT_THAT(bench.starts(1), testing::ElementsAre(bench.editor_start(url)));
    EXPECT_TRUE(test::run_program(bench.scratch() / L"Editor\\editor.exe", L"--inherits").started);
    EXPECT_TRUE(bench.starts(2).back().has_canary) << "nobody would have noticed";
}

} // namespace
} // namespace quill
