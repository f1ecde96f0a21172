#include "retrieval/file/pdf_check.h"

#include "logging/log_stream.h"
#include "platform/unique_handle.h"
#include "retrieval/file/file_names.h"

#include <windows.h>

#include <shlwapi.h>

#include <array>

namespace quill {
namespace {

// The zero byte at the end stands for the version digit if the header is the last thing read.
struct file_window
{
    std::array<char, pdf_check_bytes + 1> bytes{};
    DWORD bytes_read = 0;
};

// Keeps the system from prompting for a medium if the drive is empty.
class no_system_dialogs
{
public:
    no_system_dialogs() noexcept { is_set_ = SetThreadErrorMode(SEM_FAILCRITICALERRORS, &before_); }
    ~no_system_dialogs()
    {
        if (is_set_)
            SetThreadErrorMode(before_, nullptr);
    }
    no_system_dialogs(const no_system_dialogs&) = delete;
    no_system_dialogs& operator=(const no_system_dialogs&) = delete;

private:
    DWORD before_ = 0;
    BOOL is_set_;
};

enum class read_result
{
    missing,
    refused, // exists but cannot be opened
    done
};

// The path may come from a page, and the UI thread waits for the result: a device or pipe is not opened if
// its path identifies it, and is never read. A file that opens but cannot be read counts as empty.
read_result read_window(const wchar_t* path, file_window& window) noexcept
{
    if (!path || !may_name_disk_file(path))
        return read_result::missing;
    const no_system_dialogs quiet;
    const unique_handle file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                         FILE_ATTRIBUTE_NORMAL, nullptr));
    // Queried only after opening has failed, because nearly every file exists.
    if (!file)
        return PathFileExistsW(path) ? read_result::refused : read_result::missing;
    if (GetFileType(file.get()) != FILE_TYPE_DISK)
        return read_result::missing;
    if (!ReadFile(file.get(), window.bytes.data(), pdf_check_bytes, &window.bytes_read, nullptr))
        window.bytes_read = 0;
    return read_result::done;
}

} // namespace

int isPDF(const wchar_t* path) noexcept
{
    file_window window;
    switch (read_window(path, window)) {
    case read_result::missing:
        QUILL_LOG(log_level::debug) << "ACTIVEDOC isPDF [FALSE] MISSING FILE";
        return 0;
    case read_result::refused:
        return 0;
    case read_result::done:
        break;
    }
    switch (judge_pdf({window.bytes.data(), window.bytes.size()}, window.bytes_read)) {
    case pdf_verdict::pdf:
        QUILL_LOG(log_level::debug) << "ACTIVEDOC isPDF [TRUE]";
        return 1;
    case pdf_verdict::protected_pdf:
        QUILL_LOG(log_level::debug) << "ACTIVEDOC isPDF [TRUE] - ppdf file";
        return 1;
    case pdf_verdict::refused:
        break;
    }
    QUILL_LOG(log_level::debug) << "ACTIVEDOC isPDF [FALSE]";
    return 0;
}

} // namespace quill
