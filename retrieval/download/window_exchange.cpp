#include "retrieval/download/window_exchange.h"

#include "platform/mutex.h"

#include <cstdint>
#include <cwchar>
#include <list>
#include <memory>
#include <mutex>

namespace quill {
namespace {

// A window may handle a message after its sender gave up, and then accesses what the message points to. This
// memory is kept until the window is destroyed, which may be after the download has ended.
class late_memory
{
public:
    using entries = std::list<std::pair<HWND, std::shared_ptr<void>>>;

    static late_memory& store()
    {
        static late_memory instance;
        return instance;
    }

    // Transfers entry to the store, and frees the memory of windows that have been destroyed.
    void keep(entries& entry) noexcept
    {
        const std::lock_guard lock(mutex_);
        entries_.remove_if([](const auto& each) { return !IsWindow(each.first); });
        entries_.splice(entries_.end(), entry);
    }

private:
    platform::MutexImpl mutex_;
    entries entries_;
};

// lparam points into memory.
bool send(HWND window, UINT message, WPARAM wparam, const void* lparam, std::shared_ptr<void> memory)
{
    late_memory::entries entry; // allocated before the send, since keep() must not fail
    entry.emplace_back(window, std::move(memory));
    late_memory& store = late_memory::store();
    DWORD_PTR unused = 0;
    if (SendMessageTimeoutW(window, message, wparam, reinterpret_cast<LPARAM>(lparam), window_message_flags,
                            window_message_timeout_ms, &unused))
        return true;
    store.keep(entry);
    return false;
}

} // namespace

bool request_url(HWND window, std::wstring& url)
{
    const auto length = std::make_shared<std::size_t>(0);
    if (!send(window, WM_USER_GETURLLENGTH, 0, length.get(), length) || *length == 0)
        return false;
    const auto buffer = std::make_shared<std::wstring>();
    if (*length >= buffer->max_size())
        return false;
    buffer->resize(*length + 1);
    if (!send(window, WM_USER_GETURL, buffer->size(), buffer->data(), buffer))
        return false;
    // The URL ends at its terminator, not at the end of the buffer.
    // NOLINTNEXTLINE(readability-redundant-string-cstr)
    url = buffer->c_str();
    return true;
}

bool send_progress(HWND window, const progress_record& progress) noexcept
{
    struct kept_progress
    {
        progress_record record;
        std::wstring text;
    };
    try {
        const auto kept = std::make_shared<kept_progress>();
        kept->record = progress;
        if (progress.status_text) {
            kept->text = progress.status_text;
            kept->record.status_text = kept->text.c_str();
        }
        return send(window, WM_USER_PROGRESS, 0, &kept->record, kept);
    } catch (const std::exception&) {
        return false; // the download continues without the report
    }
}

bool send_cache_file(HWND window, const std::wstring& path)
{
    const auto kept = std::make_shared<std::wstring>(path);
    return send(window, WM_USER_SETCACHEFILE, 0, kept->c_str(), kept);
}

void post_load_file(HWND window) noexcept
{
    PostMessageW(window, WM_USER_LOADFILE, 0, 0);
}

} // namespace quill
