// How a document is handed its content: IPersistMoniker, IPersistFile, IPersistStreamInit.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/support/listening_pipe.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <ole2.h>
#include <urlmon.h>

#include <algorithm>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;
using lines = std::vector<std::string>;

bool can_be_written(const std::wstring& path)
{
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    CloseHandle(file);
    return true;
}

QUILL_DOCUMENT_TEST(DocumentPersistence, MonikerLoadIsLogged)
{
    bench.create();
    EXPECT_EQ(bench.load_url(unserved_url), S_OK);
    EXPECT_EQ(bench.take_log(), lines{"@ Load IPersistMoniker 0"});
    EXPECT_EQ(bench.load_url(unserved_url, TRUE), E_FAIL);
    EXPECT_EQ(bench.take_log(), lines{"@ Load IPersistMoniker 1"});
}

QUILL_DOCUMENT_TEST(DocumentPersistence, NullMonikerIsRefusedWithoutALine)
{
    bench.create();
    EXPECT_EQ(bench.as<IPersistMoniker>()->Load(FALSE, nullptr, nullptr, STGM_READ), E_FAIL);
    EXPECT_EQ(bench.as<IPersistMoniker>()->Load(TRUE, nullptr, nullptr, STGM_READ), E_FAIL);
    EXPECT_EQ(bench.take_log(), lines{});
}

QUILL_DOCUMENT_TEST(DocumentPersistence, TheUrlIsKeptAlsoWhenTheContentIsThereAlready)
{
    bench.create();
    bench.set_site();
    EXPECT_EQ(bench.load_url(unserved_url, TRUE), E_FAIL);
    bench.show();
    EXPECT_EQ(document_url(bench), unserved_url);
    bench.wait_for_failed_worker();
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, ASecondLoadReplacesTheUrl)
{
    bench.show_url(unserved_url);
    EXPECT_EQ(bench.load_url(L"quilltest://host.test/other.pdf"), S_OK);
    EXPECT_EQ(document_url(bench), L"quilltest://host.test/other.pdf");
    bench.wait_for_failed_worker();
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, TheUrlIsEscaped)
{
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"quilltest://h/a b.pdf", L"quilltest://h/a+b.pdf"},
        {L"quilltest://h/\u00e9.pdf", L"quilltest://h/%C3%A9.pdf"},
        {L"quilltest://h/\u20ac\u4e2d.pdf", L"quilltest://h/%E2%82%AC%E4%B8%AD.pdf"},
        {L"quilltest://h/\U0001f600", L"quilltest://h/%F0%9F%98%80"},
        {L"quilltest://h/a%20+b?c=<\"{|}>#\\", L"quilltest://h/a%20+b?c=<\"{|}>#\\"},
        {L"quilltest://h/\u007f\u0080", L"quilltest://h/\u007f%C2%80"},
        {L"x", L"x"},
    };
    bench.show_url(unserved_url);
    bench.wait_for_failed_worker();
    for (const auto& [given, expected] : cases) {
        EXPECT_EQ(bench.load_url(given), S_OK);
        EXPECT_EQ(document_url(bench), expected);
    }
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AUrlOfAnyLengthIsKept)
{
    bench.show_url(unserved_url);
    bench.wait_for_failed_worker();
    std::wstring longest = L"quilltest://h/";
    longest.append(100'000, L'\u00e9');
    std::wstring expected = L"quilltest://h/";
    for (int count = 0; count < 100'000; ++count)
        expected += L"%C3%A9";
    EXPECT_EQ(bench.load_url(longest), S_OK);
    EXPECT_EQ(document_url(bench), expected);
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AMonikerWithoutANameIsBorne)
{
    for (const bad_answer kind : every_bad_answer) {
        SCOPED_TRACE(to_text(kind));
        bench.create();
        bench.host.calls.make_fail("loaded moniker::GetDisplayName", kind);
        bench.load_url(unserved_url);
        EXPECT_EQ(bench.take_log(), lines{"@ Load IPersistMoniker 0"});
        bench.release();
    }
}

QUILL_DOCUMENT_TEST(DocumentPersistence, TakesTheSystemsOwnUrlMoniker)
{
    ComPtr<IMoniker> moniker;
    ASSERT_EQ(CreateURLMonikerEx(nullptr, L"http://127.0.0.1:1/dir/x.pdf#page=2", &moniker, URL_MK_UNIFORM),
              S_OK);
    ComPtr<IBindCtx> context;
    ASSERT_EQ(CreateBindCtx(0, &context), S_OK);
    bench.create();
    bench.set_site();
    EXPECT_EQ(bench.as<IPersistMoniker>()->Load(FALSE, moniker.Get(), context.Get(), 0x12), S_OK);
    moniker.Reset();
    context.Reset();
    bench.show();
    EXPECT_EQ(document_url(bench), L"http://127.0.0.1:1/dir/x.pdf#page=2");
    bench.wait_for_failed_worker();
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, OtherMonikerMethodsDoNothing)
{
    bench.create();
    const auto persist = bench.as<IPersistMoniker>();
    EXPECT_EQ(persist->Save(nullptr, nullptr, FALSE), S_OK);
    EXPECT_EQ(persist->SaveCompleted(nullptr, nullptr), S_OK);
    auto* const untouched = reinterpret_cast<IMoniker*>(&bench);
    IMoniker* current = untouched;
    EXPECT_EQ(persist->GetCurMoniker(&current), S_OK);
    EXPECT_EQ(current, untouched) << "the out argument is not written";
    EXPECT_EQ(persist->GetCurMoniker(nullptr), S_OK);
    EXPECT_EQ(bench.take_log(),
              (lines{"@ Save IPersistMoniker", "@ SaveCompleted IPersistMoniker",
                     "@ GetCurMoniker IPersistMoniker", "@ GetCurMoniker IPersistMoniker"}));
}

QUILL_DOCUMENT_TEST(DocumentPersistence, StreamMethodsDoNothing)
{
    bench.create();
    const auto persist = bench.as<IPersistStreamInit>();
    EXPECT_EQ(persist->IsDirty(), S_FALSE);
    EXPECT_EQ(persist->Load(nullptr), S_OK);
    EXPECT_EQ(persist->Save(nullptr, TRUE), S_OK);
    EXPECT_EQ(bench.take_log(), (lines{"@ IsDirty", "@ Load STREAM", "@ Save STREAM"}));
}

QUILL_DOCUMENT_TEST(DocumentPersistence, OtherFileMethodsDoNothing)
{
    bench.create();
    const auto persist = bench.as<IPersistFile>();
    EXPECT_EQ(persist->Save(L"C:\\x.pdf", FALSE), S_OK);
    EXPECT_EQ(persist->Save(nullptr, FALSE), S_OK);
    EXPECT_EQ(persist->SaveCompleted(L"C:\\x.pdf"), S_OK);
    LPOLESTR current = nullptr;
    EXPECT_EQ(persist->GetCurFile(&current), E_NOTIMPL);
    EXPECT_EQ(current, nullptr);
    EXPECT_EQ(persist->GetCurFile(nullptr), E_NOTIMPL);
    EXPECT_EQ(bench.take_log(),
              (lines{"@ Save", "@ Save", "@ SaveCompleted", "@ GetCurFile", "@ GetCurFile"}));
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AFileIsHeldAgainstWriting)
{
    const std::wstring path = bench.pdf();
    bench.create();
    EXPECT_EQ(bench.load_file(path), S_OK);
    EXPECT_EQ(bench.take_log(), lines{"@ Load " + to_utf8(path) + " 0"});
    EXPECT_FALSE(can_be_written(path));
    EXPECT_TRUE(read_file(path).has_value()) << "others may read it";
    bench.release();
    EXPECT_TRUE(can_be_written(path));
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AFileIsLetGoWithTheWindow)
{
    const std::wstring path = bench.pdf();
    bench.show_file(path);
    EXPECT_FALSE(can_be_written(path));
    bench.as<IOleInPlaceObject>()->InPlaceDeactivate();
    EXPECT_TRUE(can_be_written(path));
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, ASecondFileLetsGoOfTheFirst)
{
    const std::wstring first = bench.pdf(L"first.pdf");
    const std::wstring second = bench.pdf(L"second.pdf");
    bench.create();
    EXPECT_EQ(bench.load_file(first), S_OK);
    EXPECT_EQ(bench.load_file(second), S_OK);
    EXPECT_FALSE(can_be_written(second));
    bench.release();
    EXPECT_TRUE(can_be_written(first));
    EXPECT_TRUE(can_be_written(second));
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AMissingFileIsNotReported)
{
    bench.create();
    const std::wstring missing = bench.files / L"missing.pdf";
    EXPECT_EQ(bench.as<IPersistFile>()->Load(missing.c_str(), 0x20), S_OK);
    EXPECT_EQ(bench.take_log(), lines{"@ Load " + to_utf8(missing) + " 32"});
}

// The user interface would wait for whatever is at the other end.
QUILL_DOCUMENT_TEST(DocumentPersistence, APipeOrADeviceIsNotOpened)
{
    const listening_pipe pipe;
    bench.create();
    for (const std::wstring& path :
         {L"//./pipe/" + pipe.name(), L"\\\\?\\pipe\\" + pipe.name(), L"\\??\\pipe\\" + pipe.name(),
          L"\\\\.\\pipe\\" + pipe.name(), std::wstring(L"NUL")}) {
        EXPECT_EQ(bench.load_file(path), S_OK);
        EXPECT_FALSE(pipe.was_opened()) << testing::PrintToString(path);
    }
    bench.take_log();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AServersFileIsLeftAlone)
{
    const std::wstring path = bench.pdf();
    bench.create();
    bench.set_site();
    EXPECT_EQ(bench.load_file(path), S_OK);
    EXPECT_EQ(bench.load_file(L"\\\\server\\share\\x.pdf"), S_OK);
    bench.take_log();
    bench.show();
    const auto logged = bench.take_log();
    EXPECT_NE(std::find(logged.begin(), logged.end(), "@ OnCreate [#2] " + to_utf8(path)), logged.end())
        << testing::PrintToString(logged);
    EXPECT_EQ(bench.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, APathThatDoesNotFitIsCutOrRefused)
{
    bench.create();
    bench.set_site();
    std::wstring path = L"C:\\";
    path.append(1000, L'x');
    EXPECT_EQ(bench.load_file(path), S_OK);
    bench.take_log();
    bench.load_url(unserved_url);
    bench.show();
    const std::string beginning = "@ OnCreate [#2] ";
    bool seen = false;
    for (const auto& line : bench.take_log()) {
        if (line.rfind(beginning, 0) != 0)
            continue;
        seen = true;
        const std::string kept = line.substr(beginning.size());
        EXPECT_LT(kept.size(), 260u);
        EXPECT_EQ(to_utf8(path).rfind(kept, 0), 0u);
    }
    EXPECT_TRUE(seen);
    bench.wait_for_failed_worker();
    bench.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, NullPathIsBorne)
{
    bench.create();
    bench.as<IPersistFile>()->Load(nullptr, 0);
    bench.as<IPersistFile>()->SaveCompleted(nullptr);
}

} // namespace
} // namespace quill::test
