#include "tests/retrieval/fake_document_window.h"

#include <cwchar>

namespace quill::test {
namespace {

constexpr wchar_t class_name[] = L"quill fake document window";
constexpr UINT close_request = WM_APP + 0x1000;

bool is_private(UINT message)
{
    return message >= 0x8700 && message < 0x8800;
}

} // namespace

fake_document_window::fake_document_window(window_script script)
    : script_(std::move(script)), go_on_(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    const HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    thread_ = std::thread([this, ready] { run(ready); });
    WaitForSingleObject(ready, INFINITE);
    CloseHandle(ready);
}

fake_document_window::~fake_document_window()
{
    close();
    CloseHandle(go_on_);
}

void fake_document_window::close()
{
    stop_hanging();
    if (!thread_.joinable())
        return;
    PostMessageW(window_, close_request, 0, 0);
    thread_.join();
}

void fake_document_window::run(HANDLE ready)
{
    WNDCLASSW window_class{};
    window_class.lpfnWndProc = procedure;
    window_class.hInstance = GetModuleHandleW(nullptr);
    window_class.lpszClassName = class_name;
    RegisterClassW(&window_class); // fails from the second window on: the class is registered
    window_ = CreateWindowExW(0, class_name, L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                              window_class.hInstance, nullptr);
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetEvent(ready);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
}

LRESULT CALLBACK fake_document_window::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
{
    auto* self = reinterpret_cast<fake_document_window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == close_request)
        DestroyWindow(window);
    else if (message == WM_DESTROY)
        PostQuitMessage(0);
    else if (self && is_private(message))
        self->handle_message(message, wparam, lparam);
    else
        return DefWindowProcW(window, message, wparam, lparam);
    return 0;
}

reply fake_document_window::reply_to(UINT message) const
{
    switch (message) {
    case WM_USER_GETURLLENGTH:
        return script_.to_length;
    case WM_USER_GETURL:
        return script_.to_url;
    case WM_USER_PROGRESS:
        return script_.to_progress;
    case WM_USER_SETCACHEFILE:
        return script_.to_cache_file;
    default:
        return reply::proper;
    }
}

void fake_document_window::handle_message(UINT message, WPARAM wparam, LPARAM lparam)
{
    note(message);
    switch (reply_to(message)) {
    case reply::vanish:
        DestroyWindow(window_);
        break;
    case reply::nothing:
        break;
    case reply::hang:
        WaitForSingleObject(go_on_, INFINITE);
        act(message, wparam, lparam);
        break;
    case reply::proper:
        act(message, wparam, lparam);
        break;
    }
    const std::lock_guard lock(mutex_);
    ++handled_;
}

void fake_document_window::act(UINT message, WPARAM wparam, LPARAM lparam)
{
    switch (message) {
    case WM_USER_GETURLLENGTH: {
        auto* length = reinterpret_cast<std::size_t*>(lparam);
        require(wparam == 0 && *length == 0, "the length is asked for with a count of 0");
        *length = script_.url.size();
        if (script_.on_length)
            script_.on_length();
        break;
    }
    case WM_USER_GETURL:
        require(wparam == script_.url.size() + 1, "the buffer has room for the URL and its terminator");
        wcsncpy(reinterpret_cast<wchar_t*>(lparam), script_.url.c_str(), wparam);
        break;
    case WM_USER_PROGRESS: {
        const auto& record = *reinterpret_cast<const progress_record*>(lparam);
        require(wparam == 0 && record.status_code == 5, "only the download of data is reported");
        const seen_progress seen{record.progress, record.progress_max, record.status_code};
        {
            const std::lock_guard lock(mutex_);
            progress_.push_back(seen);
        }
        if (script_.on_progress)
            script_.on_progress(seen);
        break;
    }
    case WM_USER_SETCACHEFILE: {
        require(wparam == 0, "the path comes without a number");
        const std::lock_guard lock(mutex_);
        cache_file_ = reinterpret_cast<const wchar_t*>(lparam);
        break;
    }
    case WM_USER_LOADFILE:
        require(wparam == 0 && lparam == 0, "the load request has no parameters");
        require(!InSendMessage(), "the load request is posted");
        break;
    default:
        require(false, "no other message is sent");
        break;
    }
}

void fake_document_window::note(UINT message)
{
    if (message != WM_USER_LOADFILE)
        require(InSendMessage(), "requests are sent");
    const std::lock_guard lock(mutex_);
    if (message != WM_USER_PROGRESS || messages_.empty() || messages_.back() != message)
        messages_.push_back(message);
}

void fake_document_window::require(bool condition, const char* what)
{
    if (condition)
        return;
    const std::lock_guard lock(mutex_);
    violations_.emplace_back(what);
}

std::vector<UINT> fake_document_window::messages() const
{
    const std::lock_guard lock(mutex_);
    return messages_;
}

std::vector<seen_progress> fake_document_window::progress() const
{
    const std::lock_guard lock(mutex_);
    return progress_;
}

std::wstring fake_document_window::cache_file() const
{
    const std::lock_guard lock(mutex_);
    return cache_file_;
}

std::vector<std::string> fake_document_window::violations() const
{
    const std::lock_guard lock(mutex_);
    return violations_;
}

std::size_t fake_document_window::handled() const
{
    const std::lock_guard lock(mutex_);
    return handled_;
}

} // namespace quill::test
