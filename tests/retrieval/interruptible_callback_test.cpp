// The callback of the download: what ends the download, and what its window forwards.
#include "retrieval/download/interruptible_callback.h"
#include "tests/retrieval/fake_document_window.h"
#include "tests/retrieval/static_class_watch.h"
#include "tests/support/fakes/com_object.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <vector>

namespace quill::test {
namespace {

using testing::Contains;

class auto_reset_event
{
public:
    auto_reset_event() = default;
    ~auto_reset_event() { CloseHandle(handle_); }
    auto_reset_event(const auto_reset_event&) = delete;
    auto_reset_event& operator=(const auto_reset_event&) = delete;

    void set() const { SetEvent(handle_); }
    bool is_consumed() const { return WaitForSingleObject(handle_, 0) == WAIT_TIMEOUT; }
    HANDLE handle() const { return handle_; }

private:
    HANDLE handle_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
};

HRESULT report(IBindStatusCallback& callback)
{
    return callback.OnProgress(1, 9, BINDSTATUS_DOWNLOADINGDATA, nullptr);
}

// Auto-reset, as the event of the document: a wait consumes the signal.
TEST(InterruptibleCallback, KeepsTheAbortThatItReturned)
{
    const auto_reset_event cancel;
    interruptible_callback callback(nullptr, cancel.handle());
    EXPECT_EQ(report(callback), S_OK);
    EXPECT_FALSE(callback.is_cancelled());
    cancel.set();
    EXPECT_EQ(report(callback), E_ABORT);
    EXPECT_TRUE(cancel.is_consumed());
    EXPECT_TRUE(callback.is_cancelled());
    EXPECT_EQ(report(callback), E_ABORT);
}

// A window of the worker's thread that makes a report during another report.
class reporting_window
{
public:
    explicit reporting_window(IBindStatusCallback& callback) : callback_(callback)
    {
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
    }
    ~reporting_window() { DestroyWindow(window_); }
    reporting_window(const reporting_window&) = delete;
    reporting_window& operator=(const reporting_window&) = delete;

    HWND handle() const { return window_; }
    const std::vector<HRESULT>& answers() const { return answers_; }

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
    {
        auto* const self = reinterpret_cast<reporting_window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (message != WM_APP)
            return DefWindowProcW(window, message, wparam, lparam);
        self->answers_.push_back(self->callback_.OnProgress(0, 0, BINDSTATUS_CONNECTING, nullptr));
        return 0;
    }

    IBindStatusCallback& callback_;
    std::vector<HRESULT> answers_;
    HWND window_ = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
};

TEST(InterruptibleCallback, KeepsTheAbortOfANestedReport)
{
    const auto_reset_event cancel;
    HWND nested = nullptr;
    fake_document_window window({.on_progress = [&](const seen_progress&) {
        cancel.set();
        SendMessageW(nested, WM_APP, 0, 0);
    }});
    interruptible_callback callback(window.handle(), cancel.handle());
    const reporting_window inner(callback);
    nested = inner.handle();
    EXPECT_EQ(report(callback), E_ABORT);
    EXPECT_EQ(inner.answers(), std::vector<HRESULT>{E_ABORT});
    EXPECT_TRUE(callback.is_cancelled());
    EXPECT_EQ(report(callback), E_ABORT);
}

class counting_binding final : public test_object<IBinding>
{
public:
    STDMETHODIMP Abort() override
    {
        ++aborts;
        return S_OK;
    }
    STDMETHODIMP Suspend() override { return E_NOTIMPL; }
    STDMETHODIMP Resume() override { return E_NOTIMPL; }
    STDMETHODIMP SetPriority(LONG) override { return E_NOTIMPL; }
    STDMETHODIMP GetPriority(LONG*) override { return E_NOTIMPL; }
    STDMETHODIMP GetBindResult(CLSID*, DWORD*, LPWSTR*, DWORD*) override { return E_NOTIMPL; }

    int aborts = 0;
};

TEST(InterruptibleCallback, HasEndedAfterTheBindingIsAborted)
{
    counting_binding binding;
    {
        interruptible_callback callback(nullptr, nullptr);
        interrupt_download(GetCurrentThread());
        EXPECT_FALSE(callback.is_cancelled()) << "nothing is under way";
        EXPECT_EQ(callback.OnStartBinding(0, &binding), S_OK);
        interrupt_download(GetCurrentThread());
        EXPECT_EQ(binding.aborts, 1);
        EXPECT_TRUE(callback.is_cancelled());
        EXPECT_EQ(report(callback), E_ABORT);
    }
    EXPECT_EQ(binding.references(), 0);
}

TEST(InterruptibleCallback, HasAWindowWithoutAFrame)
{
    const interruptible_callback callback(nullptr, nullptr);
    const HWND window = FindWindowExW(HWND_MESSAGE, nullptr, L"STATIC", L"QuillPDF.IE download");
    ASSERT_TRUE(window);
    EXPECT_EQ(GetWindowLongPtrW(window, GWL_STYLE) & WS_CAPTION, 0);
}

// The control frees its data for a window at the last message.
TEST(InterruptibleCallback, ForwardsTheLastMessagesToTheControl)
{
    const static_class_watch watch;
    {
        const interruptible_callback callback(nullptr, nullptr);
        EXPECT_THAT(watch.messages(), Contains(WM_NCCREATE));
    }
    EXPECT_THAT(watch.messages(), Contains(WM_DESTROY));
    EXPECT_THAT(watch.messages(), Contains(WM_NCDESTROY).Times(1));
}

} // namespace
} // namespace quill::test
