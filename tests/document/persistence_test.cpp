// How a document gets its content: IPersistMoniker, IPersistFile, IPersistStreamInit.
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
    fixture.create();
    EXPECT_EQ(fixture.load_url(unserved_url), S_OK);
    EXPECT_EQ(fixture.take_log(), lines{"@ Load IPersistMoniker 0"});
    EXPECT_EQ(fixture.load_url(unserved_url, TRUE), E_FAIL);
    EXPECT_EQ(fixture.take_log(), lines{"@ Load IPersistMoniker 1"});
}

QUILL_DOCUMENT_TEST(DocumentPersistence, NullMonikerIsRefusedWithoutALine)
{
    fixture.create();
    EXPECT_EQ(fixture.as<IPersistMoniker>()->Load(FALSE, nullptr, nullptr, STGM_READ), E_FAIL);
    EXPECT_EQ(fixture.as<IPersistMoniker>()->Load(TRUE, nullptr, nullptr, STGM_READ), E_FAIL);
    EXPECT_EQ(fixture.take_log(), lines{});
}

QUILL_DOCUMENT_TEST(DocumentPersistence, TheUrlIsKeptAlsoWhenTheContentIsThereAlready)
{
    fixture.create();
    fixture.set_site();
    EXPECT_EQ(fixture.load_url(unserved_url, TRUE), E_FAIL);
    fixture.show();
    EXPECT_EQ(document_url(fixture), unserved_url);
    fixture.wait_for_failed_worker();
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, ASecondLoadReplacesTheUrl)
{
    fixture.show_url(unserved_url);
    EXPECT_EQ(fixture.load_url(L"quilltest://host.test/other.pdf"), S_OK);
    EXPECT_EQ(document_url(fixture), L"quilltest://host.test/other.pdf");
    fixture.wait_for_failed_worker();
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, TheUrlIsEscaped)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    EXPECT_EQ(fixture.load_url(L"quilltest://h/a \u00e9.pdf"), S_OK);
    EXPECT_EQ(document_url(fixture), L"quilltest://h/a+%C3%A9.pdf");
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AUrlOfAnyLengthIsKept)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    std::wstring longest = L"quilltest://h/";
    longest.append(100'000, L'\u00e9');
    std::wstring expected = L"quilltest://h/";
    for (int count = 0; count < 100'000; ++count)
        expected += L"%C3%A9";
    EXPECT_EQ(fixture.load_url(longest), S_OK);
    EXPECT_EQ(document_url(fixture), expected);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AcceptsAMonikerWithoutAName)
{
    for (const call_fault kind : host_faults) {
        SCOPED_TRACE(to_text(kind));
        fixture.create();
        fixture.host.calls.make_fail("loaded moniker::GetDisplayName", kind);
        fixture.load_url(unserved_url);
        EXPECT_EQ(fixture.take_log(), lines{"@ Load IPersistMoniker 0"});
        fixture.release();
    }
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AcceptsTheUrlMonikerOfTheSystem)
{
    ComPtr<IMoniker> moniker;
    ASSERT_EQ(CreateURLMonikerEx(nullptr, L"http://127.0.0.1:1/dir/x.pdf#page=2", &moniker, URL_MK_UNIFORM),
              S_OK);
    ComPtr<IBindCtx> context;
    ASSERT_EQ(CreateBindCtx(0, &context), S_OK);
    fixture.create();
    fixture.set_site();
    EXPECT_EQ(fixture.as<IPersistMoniker>()->Load(FALSE, moniker.Get(), context.Get(), 0x12), S_OK);
    moniker.Reset();
    context.Reset();
    fixture.show();
    EXPECT_EQ(document_url(fixture), L"http://127.0.0.1:1/dir/x.pdf#page=2");
    fixture.wait_for_failed_worker();
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, OtherMonikerMethodsAreNotImplemented)
{
    fixture.create();
    const auto persist = fixture.as<IPersistMoniker>();
    EXPECT_EQ(persist->Save(nullptr, nullptr, FALSE), S_OK);
    EXPECT_EQ(persist->SaveCompleted(nullptr, nullptr), S_OK);
    auto* const untouched = reinterpret_cast<IMoniker*>(&fixture);
    IMoniker* current = untouched;
    EXPECT_EQ(persist->GetCurMoniker(&current), S_OK);
    EXPECT_EQ(current, untouched) << "the out parameter is not written";
    EXPECT_EQ(persist->GetCurMoniker(nullptr), S_OK);
    EXPECT_EQ(fixture.take_log(),
              (lines{"@ Save IPersistMoniker", "@ SaveCompleted IPersistMoniker",
                     "@ GetCurMoniker IPersistMoniker", "@ GetCurMoniker IPersistMoniker"}));
}

QUILL_DOCUMENT_TEST(DocumentPersistence, StreamMethodsAreStubs)
{
    fixture.create();
    const auto persist = fixture.as<IPersistStreamInit>();
    EXPECT_EQ(persist->IsDirty(), S_FALSE);
    EXPECT_EQ(persist->Load(nullptr), S_OK);
    EXPECT_EQ(persist->Save(nullptr, TRUE), S_OK);
    EXPECT_EQ(fixture.take_log(), (lines{"@ IsDirty", "@ Load STREAM", "@ Save STREAM"}));
}

QUILL_DOCUMENT_TEST(DocumentPersistence, OtherFileMethodsAreNotImplemented)
{
    fixture.create();
    const auto persist = fixture.as<IPersistFile>();
    EXPECT_EQ(persist->Save(L"C:\\x.pdf", FALSE), S_OK);
    EXPECT_EQ(persist->Save(nullptr, FALSE), S_OK);
    EXPECT_EQ(persist->SaveCompleted(L"C:\\x.pdf"), S_OK);
    LPOLESTR current = nullptr;
    EXPECT_EQ(persist->GetCurFile(&current), E_NOTIMPL);
    EXPECT_EQ(current, nullptr);
    EXPECT_EQ(persist->GetCurFile(nullptr), E_NOTIMPL);
    EXPECT_EQ(fixture.take_log(),
              (lines{"@ Save", "@ Save", "@ SaveCompleted", "@ GetCurFile", "@ GetCurFile"}));
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AFileIsHeldAgainstWriting)
{
    const std::wstring path = fixture.pdf();
    fixture.create();
    EXPECT_EQ(fixture.load_file(path), S_OK);
    EXPECT_EQ(fixture.take_log(), lines{"@ Load " + to_utf8(path) + " 0"});
    EXPECT_FALSE(can_be_written(path));
    EXPECT_TRUE(read_file(path).has_value()) << "others may read it";
    fixture.release();
    EXPECT_TRUE(can_be_written(path));
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AFileIsClosedWithTheWindow)
{
    const std::wstring path = fixture.pdf();
    fixture.show_file(path);
    EXPECT_FALSE(can_be_written(path));
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    EXPECT_TRUE(can_be_written(path));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, ASecondFileClosesTheFirst)
{
    const std::wstring first = fixture.pdf(L"first.pdf");
    const std::wstring second = fixture.pdf(L"second.pdf");
    fixture.create();
    EXPECT_EQ(fixture.load_file(first), S_OK);
    EXPECT_EQ(fixture.load_file(second), S_OK);
    EXPECT_FALSE(can_be_written(second));
    fixture.release();
    EXPECT_TRUE(can_be_written(first));
    EXPECT_TRUE(can_be_written(second));
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AMissingFileIsNotReported)
{
    fixture.create();
    const std::wstring missing = fixture.files / L"missing.pdf";
    EXPECT_EQ(fixture.as<IPersistFile>()->Load(missing.c_str(), 0x20), S_OK);
    EXPECT_EQ(fixture.take_log(), lines{"@ Load " + to_utf8(missing) + " 32"});
}

// The UI thread would wait for the other end of the pipe.
QUILL_DOCUMENT_TEST(DocumentPersistence, APipeOrADeviceIsNotOpened)
{
    const listening_pipe pipe;
    fixture.create();
    for (const std::wstring& path :
         {L"//./pipe/" + pipe.name(), L"\\\\?\\pipe\\" + pipe.name(), L"\\??\\pipe\\" + pipe.name(),
          L"\\\\.\\pipe\\" + pipe.name(), std::wstring(L"NUL")}) {
        EXPECT_EQ(fixture.load_file(path), S_OK);
        EXPECT_FALSE(pipe.was_opened()) << testing::PrintToString(path);
    }
    fixture.take_log();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AFileOfAServerIsNotOpened)
{
    const std::wstring path = fixture.pdf();
    fixture.create();
    fixture.set_site();
    EXPECT_EQ(fixture.load_file(path), S_OK);
    EXPECT_EQ(fixture.load_file(L"\\\\server\\share\\x.pdf"), S_OK);
    fixture.take_log();
    fixture.show();
    const auto logged = fixture.take_log();
    EXPECT_NE(std::find(logged.begin(), logged.end(), "@ OnCreate [#2] " + to_utf8(path)), logged.end())
        << testing::PrintToString(logged);
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, APathThatDoesNotFitIsTruncatedOrRefused)
{
    fixture.create();
    fixture.set_site();
    std::wstring path = L"C:\\";
    path.append(1000, L'x');
    EXPECT_EQ(fixture.load_file(path), S_OK);
    fixture.take_log();
    fixture.load_url(unserved_url);
    fixture.show();
    const std::string beginning = "@ OnCreate [#2] ";
    bool seen = false;
    for (const auto& line : fixture.take_log()) {
        if (line.rfind(beginning, 0) != 0)
            continue;
        seen = true;
        const std::string kept = line.substr(beginning.size());
        EXPECT_LT(kept.size(), 260u);
        EXPECT_EQ(to_utf8(path).rfind(kept, 0), 0u);
    }
    EXPECT_TRUE(seen);
    fixture.wait_for_failed_worker();
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentPersistence, AcceptsANullPath)
{
    fixture.create();
    fixture.as<IPersistFile>()->Load(nullptr, 0);
    fixture.as<IPersistFile>()->SaveCompleted(nullptr);
}

} // namespace
} // namespace quill::test
