// LOADFILE: opens the file in the path buffer and evaluates the viewer's result.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::test {
namespace {

// A document whose window waits for its file: the download has failed, page and zoom are read.
void show_waiting(document_fixture& fixture)
{
    fixture.host.browser.location_url = L"http://host.test/x.pdf#page=2#zoom=50";
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    fixture.viewer.forget_calls();
    fixture.take_log();
}

QUILL_DOCUMENT_TEST(DocumentLoad, OpensTheFetchedFile)
{
    show_waiting(fixture);
    const std::wstring path = fixture.pdf();
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.viewer.texts(), (lines{"1(BSTR " + to_utf8(path) + ")", "4(I4 1)", "9(R8 0.5)"}));
    EXPECT_EQ(fixture.take_log(), load_lines(path, -1));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLoad, ReloadsEachTime)
{
    show_waiting(fixture);
    const std::wstring first = fixture.pdf(L"first.pdf");
    const std::wstring second = fixture.pdf(L"second.pdf");
    load_fetched_file(fixture, first);
    EXPECT_EQ(fixture.send(message_load_file), 0);
    load_fetched_file(fixture, second);
    EXPECT_EQ(fixture.viewer.texts(viewer_open),
              (lines{"1(BSTR " + to_utf8(first) + ")", "1(BSTR " + to_utf8(first) + ")",
                     "1(BSTR " + to_utf8(second) + ")"}));
    fixture.close_in_order();
}

// The worker has checked the file: any existing file is opened.
QUILL_DOCUMENT_TEST(DocumentLoad, DoesNotCheckAgain)
{
    show_waiting(fixture);
    load_fetched_file(fixture, fixture.file(L"x.txt", "no PDF"));
    EXPECT_EQ(fixture.viewer.texts(viewer_open).size(), 1u);
    EXPECT_EQ(without(fixture.take_log(), "LOADFILE"), lines{});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLoad, WithoutAFileOnlyHidesThePane)
{
    show_waiting(fixture);
    ASSERT_NE(fixture.pane(), nullptr);
    EXPECT_NE(GetWindowLongW(fixture.pane(), GWL_STYLE) & WS_VISIBLE, 0);
    const std::wstring missing = fixture.files / L"missing.pdf";
    load_fetched_file(fixture, missing);
    EXPECT_EQ(GetWindowLongW(fixture.pane(), GWL_STYLE) & WS_VISIBLE, 0);
    EXPECT_EQ(fixture.viewer.texts(), lines{});
    EXPECT_EQ(fixture.take_log(), lines{"@ LOADFILE " + to_utf8(missing)});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLoad, DoesNothingWithoutAPath)
{
    show_waiting(fixture);
    EXPECT_EQ(fixture.send(message_load_file), 0);
    EXPECT_EQ(fixture.viewer.texts(), lines{});
    EXPECT_EQ(fixture.take_log(), lines{"@ LOADFILE "});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLoad, AFileDeletedBeforeTheLoadIsNotOpened)
{
    show_waiting(fixture);
    const std::wstring path = fixture.pdf();
    EXPECT_EQ(fixture.send_text(message_set_cache_file, 0, path.c_str()), 0);
    EXPECT_TRUE(DeleteFileW(path.c_str()));
    EXPECT_EQ(fixture.send(message_load_file), 0);
    EXPECT_EQ(fixture.viewer.texts(), lines{});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLoad, OnlyTrueIsSuccess)
{
    show_waiting(fixture);
    const std::wstring path = fixture.pdf();

    fixture.viewer.answer_bool(viewer_open, VARIANT_FALSE);
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.take_log(), load_lines(path, 0));

    fixture.viewer.answer_bool(viewer_open, 1);
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.take_log(), load_lines(path, 1));

    fixture.viewer.answer_i4(viewer_open, 7);
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.take_log(), load_lines(path, 7));

    fixture.viewer.answer_i4(viewer_open, -1); // the right bits in the wrong type
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.take_log(), load_lines(path, -1));

    EXPECT_EQ(fixture.viewer.texts().size(), 4u) << "page and zoom are left alone";
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceFrame::InsertMenus"), 0);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLoad, HandlesAFailingViewer)
{
    show_waiting(fixture);
    const std::wstring path = fixture.pdf();
    fixture.host.calls.make_fail("viewer::1", call_fault::error);
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.take_log(), load_lines(path, 0));
    fixture.host.calls.make_fail("viewer::1", call_fault::null_result);
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.take_log(), load_lines(path, 0));
    EXPECT_EQ(fixture.viewer.texts().size(), 2u);
    fixture.close_in_order();
}

// The result of a failed call has no defined value.
QUILL_DOCUMENT_TEST(DocumentLoad, TheResultOfAFailedCallIsNotLogged)
{
    show_waiting(fixture);
    const std::wstring path = fixture.pdf();
    VARIANT value{};
    value.vt = VT_I4;
    value.lVal = 7;
    fixture.viewer.answer(viewer_open, DISP_E_EXCEPTION, value);
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.take_log(), load_lines(path, 0));
    value.vt = VT_BOOL;
    value.lVal = 0;
    value.boolVal = VARIANT_TRUE;
    fixture.viewer.answer(viewer_open, E_FAIL, value);
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.take_log(), load_lines(path, 0));
    EXPECT_EQ(fixture.viewer.texts().size(), 2u) << "page and zoom are left alone";
    fixture.close_in_order();
}

// The value of a failed call is not a reference: this one has none to release.
QUILL_DOCUMENT_TEST(DocumentLoad, TheResultOfAFailedCallIsNotReleased)
{
    show_waiting(fixture);
    const std::wstring path = fixture.pdf();
    fixture.viewer.failure_leaves = static_cast<IUnknown*>(&fixture.host.browser);
    fixture.host.calls.make_fail("viewer::1", call_fault::error);
    fixture.host.calls.make_fail("viewer::19", call_fault::error);
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.take_log(), load_lines(path, 0));
    fixture.send(WM_KEYDOWN, 'A', 1);
    EXPECT_EQ(fixture.host.browser.references(), 0);
    fixture.close_in_order();
}

// Results that own something: the document has to free them.
QUILL_DOCUMENT_TEST(DocumentLoad, AResultOfAnyTypeIsFreed)
{
    show_waiting(fixture);
    const std::wstring path = fixture.pdf();
    VARIANT text{};
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocString(L"true");
    fixture.viewer.answer(viewer_open, S_OK, text);
    fixture.viewer.answer(viewer_get_window, S_OK, text);
    load_fetched_file(fixture, path);
    fixture.send(WM_KEYDOWN, 'A', 1);
    SysFreeString(text.bstrVal);
    VARIANT object{};
    object.vt = VT_UNKNOWN;
    object.punkVal = fixture.host.site.client_site();
    const long before = fixture.host.site.references();
    fixture.viewer.answer(viewer_open, S_OK, object);
    fixture.viewer.answer(viewer_get_window, S_OK, object);
    load_fetched_file(fixture, path);
    fixture.send(WM_KEYDOWN, 'A', 1);
    fixture.viewer.answer_bool(viewer_open, VARIANT_TRUE);
    fixture.viewer.answer_bool(viewer_get_window, VARIANT_TRUE);
    EXPECT_EQ(fixture.host.site.references(), before);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLoad, IgnoresFailingPageAndZoomCalls)
{
    fixture.host.calls.make_fail("viewer::4", call_fault::error);
    fixture.host.calls.make_fail("viewer::9", call_fault::error);
    show_waiting(fixture);
    const std::wstring path = fixture.pdf();
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.viewer.texts().size(), 3u);
    EXPECT_EQ(fixture.take_log(), load_lines(path, -1));
    EXPECT_EQ(fixture.host.calls.count("IOleInPlaceFrame::SetMenu"), 1);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLoad, APathThatDoesNotFitIsTruncatedOrRefused)
{
    show_waiting(fixture);
    std::wstring path = L"C:\\";
    path.append(5000, L'y');
    load_fetched_file(fixture, path);
    const auto logged = fixture.take_log();
    ASSERT_EQ(logged.size(), 1u);
    const std::string kept = logged[0].substr(std::string{"@ LOADFILE "}.size());
    EXPECT_LT(kept.size(), 260u);
    EXPECT_EQ(to_utf8(path).rfind(kept, 0), 0u);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLoad, TheLongestPathIsKeptWhole)
{
    show_waiting(fixture);
    std::wstring path = L"C:\\";
    path.append(259 - path.size(), L'y');
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.take_log(), lines{"@ LOADFILE " + to_utf8(path)});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLoad, NamesOfAnyLanguageAreOpened)
{
    show_waiting(fixture);
    const std::wstring path = fixture.pdf(L"\u00e9\u4e2d \U0001f600.pdf");
    load_fetched_file(fixture, path);
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    EXPECT_EQ(fixture.take_log(), load_lines(path, -1));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentLoad, OpensNothingWithoutAViewer)
{
    fixture.registration.remove();
    fixture.show_url(unserved_url);
    load_fetched_file(fixture, fixture.pdf());
    EXPECT_EQ(fixture.viewer.texts(), lines{});
    fixture.close_in_order();
}

} // namespace
} // namespace quill::test
