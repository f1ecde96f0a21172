// Questions about urlmon and WinINet: each test measures and prints what it has seen. It fails only if
// measuring fails, because what the system does is not known beforehand.
#include "platform/unique_handle.h"
#include "tests/acceptance/installed/installed_fixture.h"
#include "tests/support/process_resources.h"
#include "tests/support/scopes.h"
#include "tests/support/text.h"

#include <urlmon.h>
#include <wininet.h>

#include <atomic>
#include <sstream>
#include <string>
#include <thread>

namespace quill::test {
namespace {

// The object that asks for a download, and its callback, in the same place: what is counted is the caller's.
class counted_caller final : public IUnknown
{
public:
    STDMETHODIMP QueryInterface(REFIID iid, void** out) override
    {
        ++queries;
        *out = nullptr;
        if (!IsEqualIID(iid, IID_IUnknown))
            return E_NOINTERFACE;
        *out = static_cast<IUnknown*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override
    {
        ++additions;
        return static_cast<ULONG>(++references);
    }
    STDMETHODIMP_(ULONG) Release() override
    {
        released_on = GetCurrentThreadId();
        return static_cast<ULONG>(--references);
    }

    std::atomic<long> references = 1;
    std::atomic<long> additions = 0;
    std::atomic<long> queries = 0;
    std::atomic<DWORD> released_on = 0;
};

class counting_callback final : public IBindStatusCallback
{
public:
    STDMETHODIMP QueryInterface(REFIID iid, void** out) override
    {
        *out = nullptr;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IBindStatusCallback))
            return E_NOINTERFACE;
        *out = static_cast<IBindStatusCallback*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }
    STDMETHODIMP OnStartBinding(DWORD, IBinding* binding) override
    {
        ++starts;
        has_binding = binding != nullptr;
        return S_OK;
    }
    STDMETHODIMP GetPriority(LONG*) override { return E_NOTIMPL; }
    STDMETHODIMP OnLowResource(DWORD) override { return S_OK; }
    STDMETHODIMP OnProgress(ULONG, ULONG, ULONG, LPCWSTR) override
    {
        ++progress;
        return S_OK;
    }
    STDMETHODIMP OnStopBinding(HRESULT, LPCWSTR) override
    {
        ++stops;
        return S_OK;
    }
    STDMETHODIMP GetBindInfo(DWORD*, BINDINFO*) override { return E_NOTIMPL; }
    STDMETHODIMP OnDataAvailable(DWORD, DWORD, FORMATETC*, STGMEDIUM*) override { return S_OK; }
    STDMETHODIMP OnObjectAvailable(REFIID, IUnknown*) override { return S_OK; }

    std::atomic<long> references = 1;
    std::atomic<long> starts = 0;
    std::atomic<long> progress = 0;
    std::atomic<long> stops = 0;
    std::atomic<bool> has_binding = false;
};

class Download : public testing::Test
{
protected:
    // On a thread of its own that enters no apartment, as the module's worker.
    HRESULT download(IUnknown* caller, const std::wstring& url, IBindStatusCallback* callback)
    {
        HRESULT result = E_UNEXPECTED;
        std::thread worker([&] {
            worker_id = GetCurrentThreadId();
            result = URLDownloadToFileW(caller, url.c_str(), (scratch / L"file.pdf").c_str(), 0, callback);
        });
        worker.join();
        return result;
    }

    scratch_directory scratch;
    http_server server;
    DWORD worker_id = 0;
};

TEST_F(Download, ReportsWhatUrlmonDoesWithItsCallerAndItsCallback)
{
    server.route("/file.pdf", http_response::slow(pdf_body(200'000), 50'000, 50));
    // Never deleted: urlmon may release them after the test.
    auto& caller = *new counted_caller;
    auto& callback = *new counting_callback;
    const HRESULT result = download(&caller, server.url(L"/file.pdf"), &callback);
    const long held = caller.references - 1;
    wait_until([&] { return caller.references == 1; }, 3'000);

    ASSERT_EQ(result, S_OK);
    print_answer("start-binding", "URLDownloadToFile called OnStartBinding " +
                                      std::to_string(callback.starts) + " times" +
                                      (callback.has_binding ? ", with a binding" : "") + ", OnProgress " +
                                      std::to_string(callback.progress) + " times, OnStopBinding " +
                                      std::to_string(callback.stops) + " times");
    print_answer("caller-object",
                 "references added during the download: " + std::to_string(caller.additions) +
                     ", interfaces asked for: " + std::to_string(caller.queries) +
                     ", references held after its thread had ended: " + std::to_string(held) +
                     ", at most three seconds later: " + std::to_string(caller.references - 1));
    print_answer("last-release",
                 caller.references != 1            ? "not released within 3 s"
                 : caller.released_on == 0         ? "the caller object was never released, because it was "
                                                     "never held"
                 : caller.released_on == worker_id ? "on the thread that downloads"
                                                   : "on another thread than the one that downloads");
}

// Signals the event whose handle is in the message.
LRESULT CALLBACK signalling_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
{
    if (message != WM_APP)
        return DefWindowProcW(window, message, wparam, lparam);
    SetEvent(reinterpret_cast<HANDLE>(lparam));
    return 0;
}

TEST_F(Download, ReportsWhetherUrlmonDispatchesSentMessages)
{
    constexpr DWORD wait_ms = 2'000;
    auto silent = http_response::ok(pdf_body(1'000));
    silent.hold_head = true;
    server.route("/silent.pdf", silent);
    std::atomic<HWND> window = nullptr;
    DWORD thread_id = 0;
    std::thread worker([&] {
        thread_id = GetCurrentThreadId();
        const HWND created =
            CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        SetWindowLongPtrW(created, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&signalling_procedure));
        window = created;
        URLDownloadToFileW(nullptr, server.url(L"/silent.pdf").c_str(), (scratch / L"silent.pdf").c_str(), 0,
                           nullptr);
        DestroyWindow(created);
    });
    const bool is_waiting = wait_until([&] { return window != nullptr && !server.requests().empty(); });
    const unique_handle events[] = {unique_handle(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
                                    unique_handle(CreateEventW(nullptr, TRUE, FALSE, nullptr))};
    const auto send = [&](bool with_posted_message) {
        const unique_handle& dispatched = events[with_posted_message];
        const ULONGLONG before = GetTickCount64();
        SendNotifyMessageW(window, WM_APP, 0, reinterpret_cast<LPARAM>(dispatched.get()));
        if (with_posted_message)
            PostThreadMessageW(thread_id, WM_NULL, 0, 0);
        return WaitForSingleObject(dispatched.get(), wait_ms) == WAIT_OBJECT_0
                   ? "was dispatched after " + std::to_string(GetTickCount64() - before) + " ms"
                   : "was not dispatched within " + std::to_string(wait_ms) + " ms";
    };
    const std::string alone = send(false); // first: the posted message would dispatch it too
    const std::string with_posted_message = send(true);
    server.release();
    worker.join();

    ASSERT_TRUE(is_waiting);
    print_answer("sent-messages",
                 "a message that was sent, and followed by a posted one as the module does, " +
                     with_posted_message + "; a message that was sent alone " + alone);
}

TEST_F(Download, ReportsWhatIsKept)
{
    constexpr int downloads = 20;
    server.route("/file.pdf", http_response::ok(pdf_body(20'000)));
    ASSERT_EQ(download(nullptr, server.url(L"/file.pdf"), nullptr), S_OK); // sets the services up
    const std::size_t first_requests = server.requests().size();
    const process_resources before = process_resources::now();
    for (int i = 0; i < downloads; ++i)
        ASSERT_EQ(download(nullptr, server.url(L"/file.pdf"), nullptr), S_OK);
    const process_resources after = process_resources::now();
    const std::size_t requests = server.requests().size() - first_requests;
    std::ostringstream text;
    text << "by urlmon, " << downloads << " downloads, for which the server got " << requests
         << " requests: " << before << " to " << after
         << "; blocks of memory are not counted, and WinINet is not measured alone";
    print_answer("kept-memory", text.str());
}

TEST_F(Download, ReportsWhichHandlesTakeTheCertificateOption)
{
    const HINTERNET session = InternetOpenW(L"Quill", INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0);
    const HINTERNET connection =
        InternetConnectW(session, L"127.0.0.1", 443, nullptr, nullptr, INTERNET_SERVICE_HTTP, 0, 0);
    const HINTERNET request =
        HttpOpenRequestW(connection, nullptr, L"/", nullptr, nullptr, nullptr, INTERNET_FLAG_SECURE, 0);
    const auto set = [](HINTERNET handle) {
        DWORD flags = SECURITY_FLAG_IGNORE_UNKNOWN_CA;
        DWORD read = 0;
        DWORD size = sizeof read;
        std::ostringstream text;
        if (InternetSetOptionW(handle, INTERNET_OPTION_SECURITY_FLAGS, &flags, sizeof flags))
            text << "is set";
        else
            text << "fails with error " << GetLastError();
        if (InternetQueryOptionW(handle, INTERNET_OPTION_SECURITY_FLAGS, &read, &size))
            text << " and reads 0x" << std::hex << read;
        else
            text << " and cannot be read (error " << std::dec << GetLastError() << ")";
        return text.str();
    };
    ASSERT_NE(request, nullptr);
    print_answer("session-certificates", "the option to ignore an unknown authority " + set(session) +
                                             " on a session; it " + set(request) + " on a request");
    for (const HINTERNET handle : {request, connection, session})
        InternetCloseHandle(handle);
}

// With the whole document, because closing waits for the worker.
class DownloadOfADocument : public installed_fixture
{
};

TEST_F(DownloadOfADocument, ReportsHowLongClosingTakes)
{
    auto silent = http_response::ok(pdf_body(100'000));
    silent.hold_after = 1'000;
    server.route("/plan.pdf", http_response::ok(pdf_body(20'000)));
    server.route("/silent.pdf", [requests = 0, silent](const http_request&) mutable {
        // The engine's own download ends, so that the document asks for the second one.
        return ++requests == 1 ? http_response::ok(pdf_body(100'000)) : silent;
    });
    engine browser;
    browser.open(server.url(L"/silent.pdf"));
    const bool is_waiting = wait_until([&] { return server.requests().size() >= 2; });
    // The worker must not be in the middle of a progress report, which closing would wait for.
    constexpr DWORD reports_end_ms = 1'000;
    wait_until([] { return false; }, reports_end_ms);
    const ULONGLONG before = GetTickCount64();
    browser.close();
    const ULONGLONG took = GetTickCount64() - before;
    server.release();

    if (is_waiting)
        print_answer("closing",
                     std::to_string(took) + " ms, while the server had sent the beginning of the document");
    else
        print_answer("closing", "not measured: the document did not ask the server itself");
}

} // namespace
} // namespace quill::test
