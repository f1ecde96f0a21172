// The last Release on another thread than that of the document: on the download worker, whose urlmon holds
// the document, or on any other. The document is destroyed on its own thread.
#include "tests/document/document_fixture.h"
#include "tests/document/document_messages.h"
#include "tests/document/import_replaced.h"
#include "tests/support/download_setting.h"
#include "tests/support/http_server.h"
#include "tests/support/scopes.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <ole2.h>
#include <urlmon.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <utility>

namespace quill::test {
namespace {

// Replaces urlmon; holds a reference to the caller until the end of the download.
struct holding_urlmon
{
    holding_urlmon() { instance = this; }
    ~holding_urlmon()
    {
        for (const HANDLE event : {has_begun, may_end, has_released})
            CloseHandle(event);
    }
    holding_urlmon(const holding_urlmon&) = delete;
    holding_urlmon& operator=(const holding_urlmon&) = delete;

    static HRESULT WINAPI download(IUnknown* caller, LPCWSTR, LPCWSTR, DWORD, IBindStatusCallback*)
    {
        caller->AddRef();
        SetEvent(instance->has_begun);
        EXPECT_EQ(WaitForSingleObject(instance->may_end, default_deadline_ms), WAIT_OBJECT_0);
        instance->references_left = caller->Release();
        SetEvent(instance->has_released);
        return E_ABORT;
    }

    static inline holding_urlmon* instance = nullptr;
    HANDLE has_begun = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE may_end = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE has_released = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::atomic<ULONG> references_left{~0ul};
};

bool is_signalled(HANDLE event)
{
    return WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

// Releases the host's references without deactivating; others still hold the document.
void release_host(document_fixture& fixture)
{
    fixture.host.view.Reset();
    fixture.host.frame.drop_active_object();
    fixture.host.document = nullptr;
    EXPECT_NE(fixture.document.Detach()->Release(), 0u);
}

// The lines are of this thread only: a document that is destroyed on another thread leaves none here.
void expect_destroyed_here(document_fixture& fixture, const std::vector<std::string>& logged)
{
    EXPECT_NE(std::find(logged.begin(), logged.end(), "~@"), logged.end())
        << "not destroyed on its own thread: " << testing::PrintToString(logged);
    EXPECT_EQ(fixture.host.site.references(), 0);
    EXPECT_EQ(fixture.host.frame.references(), 0);
    EXPECT_EQ(fixture.viewers.living_viewers(), 0);
    EXPECT_EQ(fixture.module.can_unload_now(), S_OK);
}

// Releases a reference on a new thread and waits for that thread without dispatching messages.
void release_on_other_thread(IUnknown* reference)
{
    std::thread([reference] { reference->Release(); }).join();
}

IUnknown* reference_to(const document_fixture& fixture)
{
    fixture.document.Get()->AddRef();
    return fixture.document.Get();
}

QUILL_DOCUMENT_TEST(DocumentReleasedLast, OnTheWorker)
{
    holding_urlmon urlmon;
    const import_replaced download(fixture.module.handle(), "URLDownloadToFileW", &holding_urlmon::download);
    fixture.show_url(L"http://127.0.0.1:1/x.pdf");
    ASSERT_TRUE(wait_until([&] { return is_signalled(urlmon.has_begun); }));
    const HWND window = fixture.window();
    fixture.take_log();
    release_host(fixture);
    EXPECT_TRUE(IsWindow(window)) << "the worker still holds the document";
    SetEvent(urlmon.may_end);
    EXPECT_EQ(WaitForSingleObject(urlmon.has_released, default_deadline_ms), WAIT_OBJECT_0);
    EXPECT_NE(urlmon.references_left, 0u) << "the worker destroyed the document";
    EXPECT_TRUE(IsWindow(window)) << "destroyed before this thread handled the message";
    EXPECT_TRUE(wait_until([&] { return !IsWindow(window); }));
    expect_destroyed_here(fixture, fixture.take_log());
    fixture.wait_for_no_worker();
}

// The destruction of the window waits for the worker, so urlmon's Release is not the last one.
QUILL_DOCUMENT_TEST(DocumentReleasedLast, NeverOnTheWorkerOfAWindowThatIsDestroyedFirst)
{
    holding_urlmon urlmon;
    const import_replaced download(fixture.module.handle(), "URLDownloadToFileW", &holding_urlmon::download);
    fixture.show_url(L"http://127.0.0.1:1/x.pdf");
    ASSERT_TRUE(wait_until([&] { return is_signalled(urlmon.has_begun); }));
    fixture.take_log();
    release_host(fixture);
    SetEvent(urlmon.may_end);
    fixture.host.destroy_windows();
    EXPECT_TRUE(is_signalled(urlmon.has_released));
    expect_destroyed_here(fixture, fixture.take_log());
    fixture.wait_for_no_worker();
}

QUILL_DOCUMENT_TEST(DocumentReleasedLast, OnAnyOtherThreadWaitsForTheWindowsThread)
{
    fixture.show_file(fixture.pdf());
    const HWND window = fixture.window();
    IUnknown* const reference = reference_to(fixture);
    release_host(fixture);
    fixture.take_log();
    release_on_other_thread(reference);
    EXPECT_TRUE(IsWindow(window));
    EXPECT_EQ(fixture.take_log(), std::vector<std::string>{});
    EXPECT_TRUE(wait_until([&] { return !IsWindow(window); }));
    expect_destroyed_here(fixture, fixture.take_log());
}

QUILL_DOCUMENT_TEST(DocumentReleasedLast, IsDestroyedWithTheWindowWhenThatIsDestroyedFirst)
{
    fixture.show_file(fixture.pdf());
    IUnknown* const reference = reference_to(fixture);
    release_host(fixture);
    fixture.take_log();
    release_on_other_thread(reference);
    fixture.host.destroy_windows(); // and with them the message
    expect_destroyed_here(fixture, fixture.take_log());
}

QUILL_DOCUMENT_TEST(DocumentReleasedLast, OnAnotherThreadAfterTheWindowIsDestroyed)
{
    fixture.show_file(fixture.pdf());
    IUnknown* const reference = reference_to(fixture);
    fixture.close_in_order();
    fixture.host.view.Reset();
    release_host(fixture);
    release_on_other_thread(reference);
    pump_messages();
    EXPECT_TRUE(wait_until([&] { return fixture.module.can_unload_now() == S_OK; }));
    EXPECT_EQ(fixture.host.site.references(), 0);
}

QUILL_DOCUMENT_TEST(DocumentReleasedLast, OnAnotherThreadWithoutEverHavingAWindow)
{
    fixture.create();
    IUnknown* const reference = reference_to(fixture);
    release_host(fixture);
    release_on_other_thread(reference);
    EXPECT_TRUE(wait_until([&] { return fixture.module.can_unload_now() == S_OK; }));
}

BOOL WINAPI refuse_message(HWND, UINT, WPARAM, LPARAM)
{
    SetLastError(ERROR_NOT_ENOUGH_QUOTA);
    return FALSE;
}

// The queue is full and accepts no posted message.
QUILL_DOCUMENT_TEST(DocumentReleasedLast, ReachesAThreadWithAFullQueue)
{
    fixture.show_file(fixture.pdf());
    const import_replaced post(fixture.module.handle(), "PostMessageW", &refuse_message);
    const HWND window = fixture.window();
    IUnknown* const reference = reference_to(fixture);
    release_host(fixture);
    fixture.take_log();
    release_on_other_thread(reference);
    EXPECT_TRUE(IsWindow(window));
    EXPECT_TRUE(wait_until([&] { return !IsWindow(window); }));
    expect_destroyed_here(fixture, fixture.take_log());
}

QUILL_DOCUMENT_TEST(DocumentReleasedLast, IsDestroyedWithTheWindowWhenNoMessageIsHandled)
{
    fixture.show_file(fixture.pdf());
    const import_replaced post(fixture.module.handle(), "PostMessageW", &refuse_message);
    const import_replaced send(fixture.module.handle(), "SendNotifyMessageW", &refuse_message);
    const HWND window = fixture.window();
    IUnknown* const reference = reference_to(fixture);
    release_host(fixture);
    fixture.take_log();
    release_on_other_thread(reference);
    pump_messages();
    EXPECT_TRUE(IsWindow(window));
    fixture.host.destroy_windows();
    expect_destroyed_here(fixture, fixture.take_log());
}

// The document holds its site and has no window.
IUnknown* last_reference_without_window(document_fixture& fixture)
{
    fixture.show_file(fixture.pdf());
    EXPECT_EQ(fixture.as<IOleInPlaceObject>()->InPlaceDeactivate(), S_OK);
    IUnknown* const reference = reference_to(fixture);
    release_host(fixture);
    fixture.take_log();
    return reference;
}

QUILL_DOCUMENT_TEST(DocumentReleasedLast, WithoutAWindowWaitsForTheThreadOfItsHost)
{
    IUnknown* const reference = last_reference_without_window(fixture);
    release_on_other_thread(reference);
    EXPECT_NE(fixture.host.site.references(), 0) << "the host's site was released on the other thread";
    EXPECT_TRUE(wait_until([&] { return fixture.host.site.references() == 0; }));
    expect_destroyed_here(fixture, fixture.take_log());
}

QUILL_DOCUMENT_TEST(DocumentReleasedLast, WithASiteAndNeverAWindowWaitsForTheThreadOfItsHost)
{
    fixture.create();
    fixture.set_site();
    IUnknown* const reference = reference_to(fixture);
    release_host(fixture);
    fixture.take_log();
    release_on_other_thread(reference);
    EXPECT_NE(fixture.host.site.references(), 0) << "the host's site was released on the other thread";
    EXPECT_TRUE(wait_until([&] { return fixture.host.site.references() == 0; }));
    expect_destroyed_here(fixture, fixture.take_log());
}

// A thread that has messages needs no further message to wake up.
QUILL_DOCUMENT_TEST(DocumentReleasedLast, WithoutAWindowReachesAThreadWithAFullQueue)
{
    const import_replaced post(
        fixture.module.handle(), "PostThreadMessageW", +[](DWORD, UINT, WPARAM, LPARAM) -> BOOL {
            SetLastError(ERROR_NOT_ENOUGH_QUOTA);
            return FALSE;
        });
    IUnknown* const reference = last_reference_without_window(fixture);
    EXPECT_TRUE(PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0));
    release_on_other_thread(reference);
    EXPECT_TRUE(wait_until([&] { return fixture.host.site.references() == 0; }));
    expect_destroyed_here(fixture, fixture.take_log());
}

// Later, it could not be reached.
QUILL_DOCUMENT_TEST(DocumentReleasedLast, WithoutAWindowIsDestroyedAtOnceForAThreadThatRetrievesNoMessages)
{
    const import_replaced post(
        fixture.module.handle(), "PostThreadMessageW", +[](DWORD, UINT, WPARAM, LPARAM) -> BOOL {
            SetLastError(ERROR_INVALID_THREAD_ID);
            return FALSE;
        });
    IUnknown* const reference = last_reference_without_window(fixture);
    release_on_other_thread(reference);
    EXPECT_EQ(fixture.host.site.references(), 0);
    EXPECT_EQ(fixture.module.can_unload_now(), S_OK);
    pump_messages();
}

// The window that was notified is replaced by another one before it gets the message.
QUILL_DOCUMENT_TEST(DocumentReleasedLast, IsDestroyedWithTheWindowThatReplacesTheNotifiedOne)
{
    fixture.show_file(fixture.pdf());
    const HWND window = fixture.window();
    IUnknown* const reference = reference_to(fixture);
    release_host(fixture);
    fixture.take_log();
    bool is_replaced = false;
    HWND second = nullptr;
    fixture.host.calls.when("IOleInPlaceFrame::SetMenu", [&] {
        if (std::exchange(is_replaced, true))
            return;
        Microsoft::WRL::ComPtr<IUnknown> document(reference);
        Microsoft::WRL::ComPtr<IOleInPlaceObject> in_place;
        Microsoft::WRL::ComPtr<IOleDocumentView> view;
        ASSERT_EQ(document.As(&in_place), S_OK);
        ASSERT_EQ(document.As(&view), S_OK);
        in_place->InPlaceDeactivate();
        EXPECT_EQ(view->Show(TRUE), S_OK);
        in_place->GetWindow(&second);
    });
    release_on_other_thread(reference);
    DestroyWindow(window);
    ASSERT_TRUE(is_replaced);
    ASSERT_TRUE(IsWindow(second));
    EXPECT_NE(second, window);
    EXPECT_TRUE(DestroyWindow(second));
    expect_destroyed_here(fixture, fixture.take_log());
}

// Any program can send the message to the window.
QUILL_DOCUMENT_TEST(DocumentReleasedLast, IgnoresAForgedReleaseMessage)
{
    fixture.show_file(fixture.pdf());
    const ULONG before = fixture.document.Get()->AddRef();
    for (const LPARAM parameter : {0, 1, -1}) {
        EXPECT_EQ(fixture.send(message_release, static_cast<WPARAM>(parameter), parameter), 0);
        EXPECT_TRUE(PostMessageW(fixture.window(), message_release, 0, parameter));
    }
    pump_messages();
    EXPECT_EQ(fixture.document.Get()->Release(), before - 1);
    fixture.close_in_order();
}

// A message of the window takes a reference and releases it while the other thread releases the last one.
QUILL_DOCUMENT_TEST(DocumentReleasedLast, WhileTheWindowHandlesMessages)
{
    constexpr int rounds = 10;
    for (int round = 0; round < rounds; ++round) {
        fixture.show_file(fixture.pdf());
        const HWND window = fixture.window();
        IUnknown* const reference = reference_to(fixture);
        release_host(fixture);
        fixture.take_log();
        std::atomic<bool> is_released{false};
        std::thread other([&] {
            for (int times = 0; times < 1000; ++times) {
                reference->AddRef();
                reference->Release();
            }
            reference->Release();
            is_released = true;
        });
        while (!is_released)
            SendMessageW(window, message_reserved, 0, 0);
        other.join();
        EXPECT_TRUE(wait_until([&] { return !IsWindow(window); }));
        expect_destroyed_here(fixture, fixture.take_log());
        if (testing::Test::HasFailure())
            return;
    }
}

// Not in balance: the system's download service keeps handles from its first use on.
struct DocumentReleasedWhileDownloading : testing::TestWithParam<bool>
{
    download_setting settings;
    http_server server;
    document_fixture fixture;

    // The server sends nothing after the first bytes.
    void show_held()
    {
        if (GetParam())
            settings.use_wininet();
        auto held = http_response::slow(pdf_body(100'000), 1'000, 50);
        server.route("/x.pdf", held);
        fixture.show_url(server.url(L"/x.pdf"));
        ASSERT_TRUE(wait_until([&] { return !server.requests().empty(); }));
    }
};

TEST_P(DocumentReleasedWhileDownloading, ByTheHost)
{
    show_held();
    const HWND window = fixture.window();
    fixture.release();
    EXPECT_FALSE(IsWindow(window));
    fixture.wait_for_no_worker();
    EXPECT_EQ(fixture.viewer.texts(viewer_open), std::vector<std::string>{});
}

TEST_P(DocumentReleasedWhileDownloading, ByAnotherThread)
{
    show_held();
    const HWND window = fixture.window();
    IUnknown* const reference = reference_to(fixture);
    release_host(fixture);
    fixture.take_log();
    release_on_other_thread(reference);
    EXPECT_TRUE(wait_until([&] { return !IsWindow(window); }));
    expect_destroyed_here(fixture, fixture.take_log());
    fixture.wait_for_no_worker();
    EXPECT_EQ(fixture.viewer.texts(viewer_open), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(Document, DocumentReleasedWhileDownloading, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& way) {
                             return std::string(way.param ? "WinINet" : "Urlmon");
                         });

} // namespace
} // namespace quill::test
