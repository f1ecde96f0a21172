#include "retrieval/file/pdf_check.h"

#include "logging/log_stream.h"
#include "platform/unique_handle.h"
#include "retrieval/file/file_names.h"
#include "retrieval/file/pdf_judge.h"

#include <windows.h>

#include <shlwapi.h>

#include <array>

namespace quill {
namespace {

// One zero byte behind what is read: the place of the version's digit when the header ends the window.
struct file_window
{
    std::array<char, pdf_check_bytes + 1> bytes{};
    DWORD bytes_read = 0;
};

// A drive without a medium is an answer, not a reason for the system to ask the user for one.
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

enum class look
{
    missing,
    refused, // is there and cannot be opened
    taken
};

// A page chooses the path, and the user interface waits for the answer: what is no file on a disk counts as
// missing, is not opened where the path shows it, and never read. A file that cannot be read counts as empty.
look read_window(const wchar_t* path, file_window& window) noexcept
{
    if (!path || !may_name_disk_file(path))
        return look::missing;
    const no_system_dialogs quiet;
    const unique_handle file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                         FILE_ATTRIBUTE_NORMAL, nullptr));
    // Asked for only now: nearly every file is there.
    if (!file)
        return PathFileExistsW(path) ? look::refused : look::missing;
    if (GetFileType(file.get()) != FILE_TYPE_DISK)
        return look::missing;
    if (!ReadFile(file.get(), window.bytes.data(), pdf_check_bytes, &window.bytes_read, nullptr))
        window.bytes_read = 0;
    return look::taken;
}

} // namespace

int isPDF(const wchar_t* path) noexcept
{
    file_window window;
    switch (read_window(path, window)) {
    case look::missing:
        QUILL_LOG(log_level::debug) << "ACTIVEDOC isPDF [FALSE] MISSING FILE";
        return 0;
    case look::refused:
        return 0;
    case look::taken:
        break;
    }
    switch (JudgePdf({window.bytes.data(), window.bytes.size()}, window.bytes_read)) {
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
