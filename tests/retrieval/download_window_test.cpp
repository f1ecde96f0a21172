// The worker with windows that do not reply, hang and are destroyed.
#include "retrieval/download/window_exchange.h"
#include "tests/retrieval/download_fixture.h"
#include "tests/support/balance.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A send times out after 2000 ms; the rest is for a machine under load.
constexpr DWORD shortest_hang_ms = 1'900;
constexpr DWORD longest_hang_ms = 10'000;

class DownloadForWindow : public download_fixture
{
protected:
    DownloadForWindow() { server_.route("/a.pdf", http_response::ok(pdf_body(100))); }

    // Runs the worker while the window hangs, and returns the duration.
    ULONGLONG time_against_hanging(fake_document_window& window) const
    {
        const ULONGLONG start = GetTickCount64();
        const download_thread worker(job_for(window));
        EXPECT_TRUE(worker.ended_within(longest_hang_ms));
        return GetTickCount64() - start;
    }

    std::wstring url() const { return server_.url(L"/a.pdf"); }

    std::vector<std::string> lines_of_a_download() const
    {
        auto expected = lines_up_to_download(url(), "qll0\\a.pdf");
        expected.push_back("debug: ACTIVEDOC DownloadPDFFile CACHE:TEMP\\qll0\\a.pdf");
        expected.push_back("debug: ACTIVEDOC isPDF [TRUE]");
        return expected;
    }
};

TEST_F(DownloadForWindow, EndsSilentlyWithoutALength)
{
    fake_document_window window({.url = url(), .to_length = reply::nothing});
    download(window);
    EXPECT_THAT(window.messages(), ElementsAre(WM_USER_GETURLLENGTH));
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(DownloadForWindow, EndsSilentlyWithALengthOfZero)
{
    fake_document_window window({.url = L""});
    download(window);
    EXPECT_THAT(window.messages(), ElementsAre(WM_USER_GETURLLENGTH));
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(DownloadForWindow, EndsSilentlyWithoutAWindow)
{
    const download_thread worker({nullptr, cancel_event_, nullptr});
    EXPECT_TRUE(worker.ended_within(longest_hang_ms));
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(DownloadForWindow, EndsSilentlyWithADestroyedWindow)
{
    fake_document_window window({.url = url()});
    window.close();
    download(window);
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(DownloadForWindow, EndsSilentlyWhenTheWindowIsDestroyedDuringARequest)
{
    fake_document_window at_length({.url = url(), .to_length = reply::vanish});
    download(at_length);
    EXPECT_THAT(at_length.messages(), ElementsAre(WM_USER_GETURLLENGTH));
    fake_document_window at_url({.url = url(), .to_url = reply::vanish});
    download(at_url);
    EXPECT_THAT(at_url.messages(), ElementsAre(WM_USER_GETURLLENGTH, WM_USER_GETURL));
    EXPECT_THAT(at_url.violations(), IsEmpty());
}

TEST_F(DownloadForWindow, WaitsTwoSecondsForTheLength)
{
    fake_document_window window({.url = url(), .to_length = reply::hang});
    EXPECT_GE(time_against_hanging(window), shortest_hang_ms);
    EXPECT_THAT(lines(), IsEmpty());
    // The window continues and still handles the message: the data that it points to is valid.
    window.stop_hanging();
    EXPECT_TRUE(wait_until([&] { return window.handled() == 1; }));
    EXPECT_THAT(window.violations(), IsEmpty());
}

TEST_F(DownloadForWindow, WaitsTwoSecondsForTheUrl)
{
    fake_document_window window({.url = url(), .to_url = reply::hang});
    EXPECT_GE(time_against_hanging(window), shortest_hang_ms);
    EXPECT_THAT(lines(), IsEmpty());
    window.stop_hanging();
    EXPECT_TRUE(wait_until([&] { return window.handled() == 2; }));
    EXPECT_THAT(window.violations(), IsEmpty());
}

TEST_F(DownloadForWindow, DoesNotRequestTheLoadOfARejectedPath)
{
    fake_document_window window({.url = url(), .to_cache_file = reply::hang});
    EXPECT_GE(time_against_hanging(window), shortest_hang_ms);
    EXPECT_EQ(lines(), lines_of_a_download());
    window.close();
    EXPECT_EQ(window.messages().back(), WM_USER_SETCACHEFILE);
    EXPECT_EQ(window.cache_file(), temporary_ / L"qll0\\a.pdf");
}

TEST_F(DownloadForWindow, EndsWhenTheWindowIsDestroyedAsItGetsThePath)
{
    fake_document_window window({.url = url(), .to_cache_file = reply::vanish});
    download(window);
    EXPECT_EQ(lines(), lines_of_a_download());
    EXPECT_EQ(window.messages().back(), WM_USER_SETCACHEFILE);
}

TEST_F(DownloadForWindow, ContinuesWhenTheWindowIsDestroyedDuringTheDownload)
{
    auto response = http_response::slow(pdf_body(400'000), 100'000, 100);
    server_.route("/a.pdf", response);
    fake_document_window window({.url = url(), .to_progress = reply::vanish});
    download(window);
    EXPECT_EQ(lines(), lines_of_a_download());
    EXPECT_THAT(window.messages(), ElementsAre(WM_USER_GETURLLENGTH, WM_USER_GETURL, WM_USER_PROGRESS));
}

TEST_F(DownloadForWindow, NeedsNoCancelEvent)
{
    fake_document_window window({.url = url()});
    const download_thread worker({window.handle(), nullptr, nullptr});
    EXPECT_TRUE(worker.ended_within(longest_hang_ms));
    EXPECT_EQ(lines(), lines_of_a_download());
}

TEST_F(DownloadForWindow, AsksForAUrlOfAnyLength)
{
    const std::wstring longest = L"bogus://" + std::wstring(1'000'000, L'x');
    fake_document_window window({.url = longest});
    download(window);
    EXPECT_THAT(window.violations(), IsEmpty());
    const auto written = lines();
    ASSERT_GE(written.size(), 2u);
    EXPECT_EQ(written[0].size(),
              std::string("debug: ACTIVEDOC DownloadPDFFile URL: ").size() + longest.size());
    EXPECT_EQ(written[1], "debug: ACTIVEDOC DownloadPDFFile CACHE: TEMP\\qll0\\Untitled.pdf");
}

// Returns a length and writes nothing, or fills the whole buffer.
class faulty_window
{
public:
    explicit faulty_window(std::size_t length) : length_(length)
    {
        window_ =
            CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
    }
    ~faulty_window() { DestroyWindow(window_); }
    faulty_window(const faulty_window&) = delete;
    faulty_window& operator=(const faulty_window&) = delete;
    HWND handle() const { return window_; }

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
    {
        const auto* self = reinterpret_cast<const faulty_window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (message == WM_USER_GETURLLENGTH)
            *reinterpret_cast<std::size_t*>(lparam) = self->length_;
        else if (message == WM_USER_GETURL)
            std::fill_n(reinterpret_cast<wchar_t*>(lparam), wparam, L'u');
        else
            return DefWindowProcW(window, message, wparam, lparam);
        return 0;
    }

    std::size_t length_;
    HWND window_;
};

TEST(RequestUrl, EndsAtTheTerminator)
{
    const faulty_window window(3);
    std::wstring url;
    EXPECT_TRUE(request_url(window.handle(), url));
    EXPECT_EQ(url, L"uuuu");
}

TEST(RequestUrl, RefusesALengthThatNoUrlHas)
{
    for (const std::size_t length : {static_cast<std::size_t>(-1), static_cast<std::size_t>(-2),
                                     static_cast<std::size_t>(-1) / sizeof(wchar_t)}) {
        const faulty_window window(length);
        EXPECT_EQ(DownloadPDFFile({window.handle(), nullptr, nullptr}), 0u);
    }
}

// Whether a worker of this process has the window that interrupts its download.
bool has_callback_window()
{
    return FindWindowExW(HWND_MESSAGE, nullptr, L"STATIC", L"QuillPDF.IE download") != nullptr;
}

TEST_F(DownloadForWindow, IsReadyForTheUrlWhenItAsks)
{
    bool was_ready = false;
    fake_document_window window({.url = url(), .on_length = [&] { was_ready = has_callback_window(); }});
    download(window);
    EXPECT_TRUE(was_ready);
    EXPECT_FALSE(has_callback_window());
}

TEST_F(DownloadForWindow, ReleasesEverything)
{
    fake_document_window window({.url = url()});
    expect_balance([&] {
        download(window);
        EXPECT_TRUE(server_.wait_idle(default_deadline_ms));
    });
}

} // namespace
} // namespace quill::test
