// quill_browser.exe as the demo runs it.
#include "tests/browser/engine.h"
#include "tests/browser/registered_module.h"
#include "tests/support/child_process.h"
#include "tests/support/http_server.h"
#include "tests/support/scopes.h"
#include "tests/support/text.h"
#include "tests/support/viewer/viewer_class.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class BrowserProgram : public testing::Test
{
protected:
    static child_result run(const std::wstring& arguments)
    {
        return run_program(beside_this_program(L"quill_browser.exe"), arguments, 60'000);
    }

    ole_apartment apartment;
    registered_module module;
    viewer_registration registration;
    registered_library viewer{L"QuillPDFCtrl.dll"};
    http_server server;
    scratch_directory folder;
};

TEST_F(BrowserProgram, ShowsADocumentAndSavesAPicture)
{
    server.route("/bracket.pdf", http_response::ok(sample(L"bracket.pdf")));
    const std::wstring picture = folder / L"picture.png";
    const child_result result =
        run(L"--exit --screenshot \"" + picture + L"\" " + server.url(L"/bracket.pdf#page=2#zoom=150"));
    EXPECT_TRUE(result.ended);
    EXPECT_EQ(result.exit_code, 0u) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("quill_browser: shown: page 2 of 5 - 150 %"));
    EXPECT_THAT(read_file(picture).value_or(""), StartsWith("\x89PNG"));
}

TEST_F(BrowserProgram, FailsWhenTheViewerCannotShowTheDocument)
{
    server.route("/broken.pdf", http_response::ok("%PDF-1.4\n" + std::string(5'000, 'x')));
    const child_result result = run(L"--exit " + server.url(L"/broken.pdf"));
    EXPECT_EQ(result.exit_code, 1u);
    EXPECT_THAT(result.errors, HasSubstr("not shown: The document cannot be shown"));
}

TEST_F(BrowserProgram, FailsWhenNoDocumentAppears)
{
    server.route("/page.pdf", http_response::ok(std::string("\x01\x02\x03 no document\n", 17)));
    const child_result result = run(L"--exit --wait 1 " + server.url(L"/page.pdf"));
    EXPECT_EQ(result.exit_code, 1u);
    EXPECT_THAT(result.errors, HasSubstr("not shown: no document appeared in 1 s"));
}

TEST_F(BrowserProgram, FailsWhenTheServerDoesNotRespond)
{
    const child_result result = run(L"--exit --wait 20 " + http_server::refused_url(L"/x.pdf"));
    EXPECT_EQ(result.exit_code, 1u);
    EXPECT_THAT(result.errors, HasSubstr("not shown: "));
}

TEST_F(BrowserProgram, FailsWhenThePictureCannotBeSaved)
{
    server.route("/bracket.pdf", http_response::ok(sample(L"bracket.pdf")));
    const child_result result = run(L"--exit --screenshot \"" + (folder / L"missing\\picture.png") + L"\" " +
                                    server.url(L"/bracket.pdf"));
    EXPECT_EQ(result.exit_code, 1u);
    EXPECT_THAT(result.errors, HasSubstr("the picture could not be saved"));
}

TEST_F(BrowserProgram, PrintsItsUsageForWrongArguments)
{
    const child_result result = run(L"--exit");
    EXPECT_EQ(result.exit_code, 2u);
    EXPECT_THAT(result.errors, StartsWith("usage: quill_browser"));
}

} // namespace
} // namespace quill::test
