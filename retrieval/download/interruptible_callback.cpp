#include "retrieval/download/interruptible_callback.h"

#include <utility>

namespace quill {
namespace {

// A window of a class that the system has, found by its title: a class of our own would outlive the module.
constexpr wchar_t window_class[] = L"STATIC";
constexpr wchar_t window_title[] = L"QuillPDF.IE download";
constexpr UINT interrupt_message = WM_APP;

} // namespace

interruptible_callback::interruptible_callback(HWND notify_window, HANDLE cancel_event) noexcept
    : CBindStatusCallbackImpl(notify_window, cancel_event),
      // A pop-up: the frame of an overlapped window is measured at its creation, also where none is shown.
      window_(CreateWindowExW(0, window_class, window_title, WS_POPUP, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                              GetModuleHandleW(nullptr), nullptr))
{
    // Without the window the download can be stopped as it is: when something arrives.
    if (!window_)
        return;
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    control_procedure_ = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&window_procedure)));
}

interruptible_callback::~interruptible_callback()
{
    if (window_)
        DestroyWindow(window_);
    keep(nullptr);
}

STDMETHODIMP interruptible_callback::OnStartBinding(DWORD reserved, IBinding* binding)
{
    keep(binding);
    return CBindStatusCallbackImpl::OnStartBinding(reserved, binding);
}

STDMETHODIMP interruptible_callback::OnProgress(ULONG progress, ULONG progress_max, ULONG status_code,
                                                LPCWSTR status_text)
{
    // The window that would hear of it is closing: each further report would keep it waiting.
    if (is_ended_)
        return E_ABORT;
    const bool before = std::exchange(in_progress_, true);
    const HRESULT result =
        CBindStatusCallbackImpl::OnProgress(progress, progress_max, status_code, status_text);
    in_progress_ = before;
    // A report inside this one may have met the event's only signal.
    is_ended_ = is_ended_ || result == E_ABORT;
    return is_ended_ ? E_ABORT : result;
}

STDMETHODIMP interruptible_callback::OnStopBinding(HRESULT result, LPCWSTR error)
{
    keep(nullptr);
    return CBindStatusCallbackImpl::OnStopBinding(result, error);
}

LRESULT CALLBACK interruptible_callback::window_procedure(HWND window, UINT message, WPARAM wparam,
                                                          LPARAM lparam)
{
    auto* const self = reinterpret_cast<interruptible_callback*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self || !self->control_procedure_)
        return DefWindowProcW(window, message, wparam, lparam);
    // WM_NCDESTROY above all: the control frees its own memory then.
    if (message != interrupt_message)
        return CallWindowProcW(self->control_procedure_, window, message, wparam, lparam);
    // Messages are delivered inside a report as well, when it waits for the document's window.
    if (!self->in_progress_)
        self->abort();
    return 0;
}

void interruptible_callback::keep(IBinding* binding) noexcept
{
    if (binding)
        binding->AddRef();
    if (IBinding* const before = std::exchange(binding_, binding))
        before->Release();
}

void interruptible_callback::abort() noexcept
{
    IBinding* const binding = binding_;
    if (!binding)
        return;
    is_ended_ = true;
    binding->AddRef(); // Abort calls OnStopBinding, which releases the binding
    binding->Abort();
    binding->Release();
}

void InterruptDownload(HANDLE worker_thread) noexcept
{
    const DWORD thread = GetThreadId(worker_thread);
    if (thread == 0)
        return;
    for (HWND window = FindWindowExW(HWND_MESSAGE, nullptr, window_class, window_title); window;
         window = FindWindowExW(HWND_MESSAGE, window, window_class, window_title)) {
        if (GetWindowThreadProcessId(window, nullptr) == thread)
            SendNotifyMessageW(window, interrupt_message, 0, 0);
    }
    // Some systems wait for posted messages only.
    PostThreadMessageW(thread, WM_NULL, 0, 0);
}

} // namespace quill
