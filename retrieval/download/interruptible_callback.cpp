#include "retrieval/download/interruptible_callback.h"

#include <initializer_list>
#include <utility>

namespace quill {
namespace {

// A system class and a title to find it by: a class of our own would outlive the module.
constexpr wchar_t window_class[] = L"STATIC";
constexpr wchar_t window_title[] = L"QuillPDF.IE download";
constexpr UINT interrupt_message = WM_APP;

} // namespace

interruptible_callback::interruptible_callback(HWND notify_window, HANDLE cancel_event) noexcept
    : CBindStatusCallbackImpl(notify_window, cancel_event),
      // WS_POPUP: creating an overlapped window measures its frame, even if it is never shown.
      window_(CreateWindowExW(0, window_class, window_title, WS_POPUP, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                              GetModuleHandleW(nullptr), nullptr))
{
    // Without the window the download can still be cancelled when data arrives.
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
    set_binding(nullptr);
}

STDMETHODIMP interruptible_callback::OnStartBinding(DWORD reserved, IBinding* binding)
{
    set_binding(binding);
    return CBindStatusCallbackImpl::OnStartBinding(reserved, binding);
}

STDMETHODIMP interruptible_callback::OnProgress(ULONG progress, ULONG progress_max, ULONG status_code,
                                                LPCWSTR status_text)
{
    // The document's window is closing: each further send would delay it.
    if (is_cancelled_)
        return E_ABORT;
    const bool before = std::exchange(in_progress_, true);
    const HRESULT result =
        CBindStatusCallbackImpl::OnProgress(progress, progress_max, status_code, status_text);
    in_progress_ = before;
    // A nested OnProgress may have consumed the event's signal.
    is_cancelled_ = is_cancelled_ || result == E_ABORT;
    return is_cancelled_ ? E_ABORT : result;
}

STDMETHODIMP interruptible_callback::OnStopBinding(HRESULT result, LPCWSTR error)
{
    set_binding(nullptr);
    return CBindStatusCallbackImpl::OnStopBinding(result, error);
}

LRESULT CALLBACK interruptible_callback::window_procedure(HWND window, UINT message, WPARAM wparam,
                                                          LPARAM lparam)
{
    auto* const self = reinterpret_cast<interruptible_callback*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self || !self->control_procedure_)
        return DefWindowProcW(window, message, wparam, lparam);
    // The control frees its memory at WM_NCDESTROY.
    if (message != interrupt_message)
        return CallWindowProcW(self->control_procedure_, window, message, wparam, lparam);
    // OnProgress also dispatches messages, while its send waits for the document's window.
    if (!self->in_progress_)
        self->abort();
    return 0;
}

void interruptible_callback::set_binding(IBinding* binding) noexcept
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
    is_cancelled_ = true;
    binding->AddRef(); // Abort calls OnStopBinding, which releases the binding
    binding->Abort();
    binding->Release();
}

void interrupt_download(HANDLE worker_thread) noexcept
{
    const DWORD thread = GetThreadId(worker_thread);
    if (thread == 0)
        return;
    for (HWND window = FindWindowExW(HWND_MESSAGE, nullptr, window_class, window_title); window;
         window = FindWindowExW(HWND_MESSAGE, window, window_class, window_title)) {
        if (GetWindowThreadProcessId(window, nullptr) == thread)
            SendNotifyMessageW(window, interrupt_message, 0, 0);
    }
    // On some systems urlmon wakes up for posted messages only.
    PostThreadMessageW(thread, WM_NULL, 0, 0);
}

void pin_download_libraries() noexcept
{
    for (const wchar_t* library : {L"urlmon.dll", L"wininet.dll"}) {
        HMODULE pinned = nullptr; // not counted, nothing to release
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN, library, &pinned);
    }
}

} // namespace quill
