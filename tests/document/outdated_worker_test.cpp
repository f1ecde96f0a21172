// A URL that is loaded while the worker of the former URL exchanges messages with the window.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/document/held_worker.h"
#include "tests/document/import_replaced.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <ole2.h>
#include <urlmon.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace quill::test {
namespace {

constexpr wchar_t longer_url[] = L"quilltest://host.test/a/much/longer/url/than/the/former/one/other.pdf";

HRESULT WINAPI download_small_pdf(IUnknown*, LPCWSTR, LPCWSTR path, DWORD, IBindStatusCallback*)
{
    EXPECT_TRUE(write_file(path, small_pdf));
    return S_OK;
}

lines fetched_urls(const document_fixture& fixture)
{
    constexpr std::string_view beginning = "ACTIVEDOC DownloadPDFFile URL: ";
    lines urls;
    for (const std::string& line : fixture.log.worker_lines())
        if (line.rfind(beginning, 0) == 0)
            urls.push_back(line.substr(beginning.size()));
    return urls;
}

bool has_load_line(document_fixture& fixture)
{
    const auto logged = fixture.take_log();
    return std::any_of(logged.begin(), logged.end(),
                       [](const std::string& line) { return line.rfind("@ LOADFILE", 0) == 0; });
}

// The result would be truncated to the length of the former URL.
QUILL_DOCUMENT_TEST(DocumentWorker, AsksAgainForAUrlThatIsLoadedBetweenItsLengthAndItself)
{
    const held_worker worker(fixture, message_get_url, held_worker::side::before);
    fixture.show_url(unserved_url);
    worker.wait_until_held();
    EXPECT_EQ(fixture.load_url(longer_url), S_OK);
    worker.resume();
    fixture.wait_for_failed_worker();
    EXPECT_EQ(fetched_urls(fixture), lines{to_utf8(longer_url)});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWorker, AsksAgainForAFirstUrlThatIsLoadedBetweenItsLengthAndItself)
{
    const held_worker worker(fixture, message_get_url, held_worker::side::before);
    fixture.host.object_moniker.display_name = unserved_url;
    fixture.create();
    fixture.set_site();
    fixture.show();
    worker.wait_until_held();
    EXPECT_EQ(fixture.load_url(longer_url), S_OK);
    worker.resume();
    fixture.wait_for_failed_worker();
    EXPECT_EQ(fetched_urls(fixture), lines{to_utf8(longer_url)});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWorker, EndsWhenAnotherUrlIsLoadedAfterItsOwn)
{
    const held_worker worker(fixture, message_get_url, held_worker::side::after);
    fixture.show_url(unserved_url);
    worker.wait_until_held();
    EXPECT_EQ(fixture.load_url(longer_url), S_OK);
    worker.resume();
    fixture.wait_for_no_worker();
    EXPECT_EQ(fetched_urls(fixture), lines{});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWorker, KeepsItsUrlWhenAFirstUrlIsLoadedAfterIt)
{
    const held_worker worker(fixture, message_get_url, held_worker::side::after);
    fixture.host.object_moniker.display_name = unserved_url;
    fixture.create();
    fixture.set_site();
    fixture.show();
    worker.wait_until_held();
    EXPECT_EQ(fixture.load_url(longer_url), S_OK);
    worker.resume();
    fixture.wait_for_failed_worker();
    EXPECT_EQ(fetched_urls(fixture), lines{to_utf8(unserved_url)});
    fixture.close_in_order();
}

// The path of the host's own file, and the pane, no longer belong to that worker.
QUILL_DOCUMENT_TEST(DocumentWorker, RequestsNoLoadWhenAnotherUrlIsLoadedAfterItsFile)
{
    const import_replaced download(fixture.module.handle(), "URLDownloadToFileW", &download_small_pdf);
    const held_worker worker(fixture, message_set_cache_file, held_worker::side::after);
    fixture.show_url(unserved_url);
    worker.wait_until_held();
    EXPECT_EQ(fixture.load_file(fixture.pdf()), S_OK);
    EXPECT_EQ(fixture.load_url(longer_url), S_OK);
    fixture.take_log();
    worker.resume();
    fixture.wait_for_no_worker();
    pump_messages();
    EXPECT_FALSE(has_load_line(fixture));
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    EXPECT_NE(GetWindowLongW(fixture.pane(), GWL_STYLE) & WS_VISIBLE, 0);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentWorker, LoadsNothingWhenAnotherUrlIsLoadedAfterItsRequest)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    EXPECT_EQ(fixture.load_file(fixture.pdf()), S_OK);
    fixture.take_log();
    EXPECT_TRUE(PostMessageW(fixture.window(), message_load_file, 0, 0));
    EXPECT_EQ(fixture.load_url(longer_url), S_OK);
    pump_messages();
    EXPECT_FALSE(has_load_line(fixture));
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{});
    EXPECT_NE(GetWindowLongW(fixture.pane(), GWL_STYLE) & WS_VISIBLE, 0);
    fixture.close_in_order();
}

// Only a running worker becomes outdated by another URL.
QUILL_DOCUMENT_TEST(DocumentWorker, ThatHasEndedIsNotAcceptedAsTheSender)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    fixture.wait_for_no_worker();
    EXPECT_EQ(fixture.load_url(longer_url), S_OK);
    const std::wstring path = fixture.pdf();
    const HWND window = fixture.window();
    std::atomic<bool> is_sent{false};
    std::thread sender([&] {
        DWORD_PTR result = 1;
        EXPECT_NE(SendMessageTimeoutW(window, message_set_cache_file, 0,
                                      reinterpret_cast<LPARAM>(path.c_str()), SMTO_ABORTIFHUNG,
                                      default_deadline_ms, &result),
                  0);
        is_sent = true;
    });
    EXPECT_TRUE(wait_until([&] { return is_sent.load(); }));
    sender.join();
    EXPECT_EQ(fixture.send(message_load_file), 0);
    EXPECT_EQ(fixture.viewer.texts(viewer_open), lines{"1(BSTR " + to_utf8(path) + ")"});
    fixture.close_in_order();
}

} // namespace
} // namespace quill::test
