// The places of downloads, with real folders.
#include "retrieval/download/cache_folder.h"
#include "tests/retrieval/download_fixture.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using testing::ElementsAre;

bool is_folder(const std::wstring& path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

TEST(CreateCacheFolder, CountsUpFromZero)
{
    const scratch_directory temporary;
    const std::wstring folder = temporary.path() + L"\\";
    EXPECT_EQ(create_cache_folder(folder), folder + L"qll0\\");
    EXPECT_EQ(create_cache_folder(folder), folder + L"qll1\\");
    EXPECT_EQ(create_cache_folder(folder), folder + L"qll2\\");
    remove_path(folder + L"qll1");
    EXPECT_EQ(create_cache_folder(folder), folder + L"qll1\\");
    EXPECT_TRUE(is_folder(folder + L"qll1"));
}

TEST(CreateCacheFolder, SkipsAPlainFileLikeAFolder)
{
    const scratch_directory temporary;
    const std::wstring folder = temporary.path() + L"\\";
    ASSERT_TRUE(write_file(folder + L"qll0", "a file"));
    EXPECT_EQ(create_cache_folder(folder), folder + L"qll1\\");
    EXPECT_EQ(read_file(folder + L"qll0"), "a file");
}

TEST(CreateCacheFolder, FailsWhereNoFolderCanBeCreated)
{
    const scratch_directory temporary;
    EXPECT_EQ(create_cache_folder(temporary / L"missing\\"), L"");
    ASSERT_TRUE(write_file(temporary / L"file", ""));
    EXPECT_EQ(create_cache_folder(temporary / L"file\\"), L"");
}

TEST(CreateCacheFolder, RefusesAPathThatDoesNotFit)
{
    EXPECT_EQ(create_cache_folder(L"C:\\" + std::wstring(256, L'x') + L"\\"), L"");
    EXPECT_EQ(create_cache_folder(L"C:\\" + std::wstring(5000, L'x') + L"\\"), L"");
}

class DownloadPlace : public download_fixture
{
protected:
    // The lines after the first one of a download of target, for this value of QUILL_TMP_FOLDER.
    std::vector<std::string> lines_behind_url(const std::wstring& target)
    {
        server_.route("/a.pdf", http_response::ok(pdf_body(100)));
        fake_document_window window({.url = server_.url(target)});
        download(window);
        cache_file_ = window.cache_file();
        auto written = lines();
        EXPECT_FALSE(written.empty());
        if (!written.empty())
            written.erase(written.begin());
        return written;
    }

    std::wstring cache_file_;
};

TEST_F(DownloadPlace, IsInsideAFolderNamedWithABackslash)
{
    const environment_scope named(L"QUILL_TMP_FOLDER", temporary_.path() + L"\\");
    lines_behind_url(L"/a.pdf");
    EXPECT_EQ(cache_file_, temporary_ / L"qll0\\a.pdf");
}

TEST_F(DownloadPlace, NeedsATemporaryFolderThatExists)
{
    const environment_scope named(L"QUILL_TMP_FOLDER", temporary_ / L"missing");
    EXPECT_THAT(lines_behind_url(L"/a.pdf"),
                ElementsAre("debug: ACTIVEDOC DownloadPDFFile FAILED TO CREATE TEMP DIRECTORY"));
    EXPECT_FALSE(is_folder(temporary_ / L"missing"));
}

TEST_F(DownloadPlace, NeedsATemporaryFolderThatIsOne)
{
    ASSERT_TRUE(write_file(temporary_ / L"file", "a file"));
    const environment_scope named(L"QUILL_TMP_FOLDER", temporary_ / L"file");
    EXPECT_THAT(lines_behind_url(L"/a.pdf"),
                ElementsAre("debug: ACTIVEDOC DownloadPDFFile FAILED TO CREATE TEMP DIRECTORY"));
}

TEST_F(DownloadPlace, NeedsATemporaryFolderThatFits)
{
    for (const std::size_t units : {252u, 259u, 260u, 1000u}) {
        SCOPED_TRACE(units);
        const environment_scope named(L"QUILL_TMP_FOLDER", L"C:\\" + std::wstring(units, L'x'));
        EXPECT_THAT(lines_behind_url(L"/a.pdf"),
                    ElementsAre("debug: ACTIVEDOC DownloadPDFFile FAILED TO CREATE TEMP DIRECTORY"));
    }
}

TEST_F(DownloadPlace, NeedsATemporaryPath)
{
    const environment_scope unnamed(L"QUILL_TMP_FOLDER", std::nullopt);
    const environment_scope tmp(L"TMP", temporary_ / L"missing");
    const environment_scope temp(L"TEMP", temporary_ / L"missing");
    EXPECT_THAT(lines_behind_url(L"/a.pdf"),
                ElementsAre("debug: ACTIVEDOC DownloadPDFFile FAILED TO GET TEMP PATH"));
}

TEST_F(DownloadPlace, LeavesTheFolderOfANameThatDoesNotFit)
{
    const std::wstring target = L"/" + std::wstring(255, L'n') + L".pdf";
    EXPECT_THAT(lines_behind_url(target),
                ElementsAre("debug: ACTIVEDOC DownloadPDFFile FAILED TO GET CACHE FILE PATH"));
    EXPECT_TRUE(is_folder(temporary_ / L"qll0"));
    EXPECT_TRUE(server_.requests().empty());
}

TEST_F(DownloadPlace, IsUntitledForALongerName)
{
    const std::wstring target = L"/" + std::wstring(256, L'n') + L".pdf";
    const auto written = lines_behind_url(target);
    ASSERT_FALSE(written.empty());
    EXPECT_EQ(written[0], "debug: ACTIVEDOC DownloadPDFFile CACHE: TEMP\\qll0\\Untitled.pdf");
}

TEST_F(DownloadPlace, IsUntitledForASlashInTheQuery)
{
    const auto written = lines_behind_url(L"/x?y=/z.pdf");
    ASSERT_FALSE(written.empty());
    EXPECT_EQ(written[0], "debug: ACTIVEDOC DownloadPDFFile CACHE: TEMP\\qll0\\Untitled.pdf");
}

// A time, a folder, a device, and paths out of the folder: on both download paths the document is stored at
// the end.
TEST_F(DownloadPlace, IsUntitledForANameThatNoFileCanHave)
{
    const std::string body = pdf_body(100);
    std::size_t number = 0;
    for (const wchar_t* value : {L"", L"/b 1"}) {
        user_settings_.set_string(switch_value, value);
        for (const std::string target : {"/10%3A30.pdf", "/docs%5Cfile.pdf", "/NUL.pdf", "/a%3Fb.pdf",
                                         "/a%22b.pdf", "/a%0Ab.pdf", "/..%5C..%5Cboot.pdf"}) {
            SCOPED_TRACE(target);
            server_.route(target, http_response::ok(body));
            fake_document_window window({.url = server_.url(std::wstring(target.begin(), target.end()))});
            download(window);
            const std::wstring file = L"qll" + std::to_wstring(number++) + L"\\Untitled.pdf";
            EXPECT_EQ(window.cache_file(), temporary_ / file);
            EXPECT_EQ(contents(file), body);
        }
    }
}

} // namespace
} // namespace quill::test
