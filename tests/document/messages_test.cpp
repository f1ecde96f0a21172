// The private messages one by one, with every invalid argument.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>

namespace quill::test {
namespace {

LPARAM address_of(void* pointer)
{
    return reinterpret_cast<LPARAM>(pointer);
}

void show_idle(document_fixture& fixture)
{
    fixture.show_url(unserved_url);
    fixture.wait_for_failed_worker();
    fixture.take_log();
    fixture.viewer.forget_calls();
    fixture.host.calls.forget_calls();
}

QUILL_DOCUMENT_TEST(DocumentMessages, TheReservedNumberIsIgnored)
{
    show_idle(fixture);
    EXPECT_EQ(fixture.send(message_reserved, 0, 0), 0);
    EXPECT_EQ(fixture.send(message_reserved, 1, 2), 0);
    EXPECT_EQ(fixture.take_log(), lines{});
    EXPECT_EQ(fixture.host.calls.calls(), lines{});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMessages, NullArgumentsReturnZero)
{
    show_idle(fixture);
    for (const UINT message : {message_reserved, message_open_link, message_load_file, message_progress,
                               message_get_url, message_get_url_length, message_set_cache_file, message_log,
                               message_get_browser_window, message_get_instance, message_save_as}) {
        SCOPED_TRACE(message);
        EXPECT_EQ(fixture.send(message, 0, 0), 0);
        EXPECT_EQ(fixture.send(message, 100, 0), 0);
    }
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMessages, UrlIsCopiedWithinItsBounds)
{
    show_idle(fixture);
    const std::wstring url = unserved_url;
    for (const std::size_t capacity : {std::size_t{0}, std::size_t{1}, std::size_t{2}, url.size() - 1,
                                       url.size(), url.size() + 1, url.size() + 10}) {
        SCOPED_TRACE(capacity);
        std::vector<wchar_t> buffer(url.size() + 32, L'#');
        EXPECT_EQ(fixture.send(message_get_url, capacity, address_of(buffer.data())), 0);
        for (std::size_t index = capacity; index < buffer.size(); ++index)
            ASSERT_EQ(buffer[index], L'#') << "written past the capacity, at " << index;
        if (capacity == 0)
            continue;
        const auto end =
            std::find(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(capacity), L'\0');
        ASSERT_LT(static_cast<std::size_t>(end - buffer.begin()), capacity) << "not terminated";
        const std::wstring copied(buffer.begin(), end);
        EXPECT_EQ(url.rfind(copied, 0), 0u);
        if (capacity > url.size())
            EXPECT_EQ(copied, url);
    }
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMessages, LengthIsWrittenAs64Bits)
{
    show_idle(fixture);
    std::uint64_t length[2] = {~0ull, ~0ull};
    EXPECT_EQ(fixture.send(message_get_url_length, 0, address_of(length)), 0);
    EXPECT_EQ(length[0], std::wstring{unserved_url}.size());
    EXPECT_EQ(length[1], ~0ull);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMessages, LogTextIsWrittenWithItsFlag)
{
    show_idle(fixture);
    EXPECT_EQ(fixture.send_text(message_log, 0, L"viewer says"), 0);
    EXPECT_EQ(fixture.send_text(message_log, 1, L"viewer says"), 0);
    EXPECT_EQ(fixture.send_text(message_log, 0xffff'ffff'0000'0000, L"high bits"), 0);
    EXPECT_EQ(fixture.send_text(message_log, 2, L""), 0);
    EXPECT_EQ(fixture.send_text(message_log, 0, L"{} %s \u00e9"), 0);
    EXPECT_EQ(fixture.take_log(),
              (lines{"@ On_WM_USER_LOGFILE viewer says0", "@ On_WM_USER_LOGFILE viewer says1",
                     "@ On_WM_USER_LOGFILE high bits1", "@ On_WM_USER_LOGFILE 1",
                     "@ On_WM_USER_LOGFILE {} %s " + to_utf8(L"\u00e9") + "0"}));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMessages, LogTextOfAnyLengthIsWrittenWhole)
{
    show_idle(fixture);
    const std::wstring text(20'000, L'w');
    EXPECT_EQ(fixture.send_text(message_log, 0, text.c_str()), 0);
    EXPECT_EQ(fixture.take_log(), lines{"@ On_WM_USER_LOGFILE " + std::string(20'000, 'w') + "0"});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMessages, BrowserWindowIsTheShellsWindow)
{
    show_idle(fixture);
    HWND window = nullptr;
    EXPECT_EQ(fixture.send(message_get_browser_window, 0, address_of(&window)), 0);
    EXPECT_EQ(window, fixture.host.frame_window());
    EXPECT_EQ(fixture.host.calls.calls(),
              (lines{"IServiceProvider::QueryService shell", "IShellBrowser::GetWindow"}));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMessages, BrowserWindowIsNullWhenTheHostFails)
{
    show_idle(fixture);
    for (const char* call : {"IServiceProvider::QueryService", "IShellBrowser::GetWindow"}) {
        for (const call_fault kind : host_faults) {
            SCOPED_TRACE(std::string{call} + ": " + to_text(kind));
            fixture.host.calls.make_fail(call, kind);
            HWND window = nullptr;
            EXPECT_EQ(fixture.send(message_get_browser_window, 0, address_of(&window)), 0);
            EXPECT_EQ(window, nullptr);
        }
        fixture.host.calls.make_fail(call, call_fault::none);
    }
    fixture.host.site.offered.service_provider = false;
    HWND window = nullptr;
    EXPECT_EQ(fixture.send(message_get_browser_window, 0, address_of(&window)), 0);
    EXPECT_EQ(window, nullptr);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMessages, BrowserWindowIsNullWithoutASite)
{
    show_idle(fixture);
    const HWND target = fixture.window();
    EXPECT_EQ(fixture.as<IOleObject>()->SetClientSite(nullptr), S_OK);
    HWND window = nullptr;
    EXPECT_EQ(SendMessageW(target, message_get_browser_window, 0, address_of(&window)), 0);
    EXPECT_EQ(window, nullptr);
    EXPECT_EQ(SendMessageW(target, message_open_link, 0, reinterpret_cast<LPARAM>(L"http://x.test/")), 0);
    EXPECT_EQ(SendMessageW(target, message_open_link, 0, reinterpret_cast<LPARAM>(L"x.pdf")), 0);
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
}

// Save As needs functions of the browser; the sender gets 0 with and without them.
QUILL_DOCUMENT_TEST(DocumentMessages, SaveAsReturnsZero)
{
    show_idle(fixture);
    EXPECT_EQ(fixture.send(message_save_as), 0);
    load_fetched_file(fixture, fixture.pdf());
    EXPECT_EQ(fixture.send(message_save_as, 1, 1), 0);
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentMessages, UnknownNumbersReturnZero)
{
    show_idle(fixture);
    EXPECT_EQ(fixture.send(0x8700, 1, 1), 0);
    EXPECT_EQ(fixture.send(message_unknown, 1, 1), 0);
    EXPECT_EQ(fixture.send(0x870a, 1, 1), 0);
    EXPECT_EQ(fixture.take_log(), lines{});
    fixture.close_in_order();
}

} // namespace
} // namespace quill::test
