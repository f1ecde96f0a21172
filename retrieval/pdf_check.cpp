#include "retrieval/pdf_check.h"

#include "logging/log_stream.h"
#include "platform/unique_handle.h"
#include "retrieval/pdf_judge.h"

#include <windows.h>

#include <shlwapi.h>

#include <array>
#include <optional>

namespace quill {
namespace {

// One zero byte behind what is read: the place of the version's digit when the header ends the window.
struct file_window
{
    std::array<char, pdf_check_bytes + 1> bytes{};
    DWORD bytes_read = 0;
};

// Nothing when the file cannot be opened. A file that cannot be read counts as empty.
std::optional<file_window> read_window(const wchar_t* path) noexcept
{
    const unique_handle file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                         FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        return std::nullopt;
    file_window window;
    if (!ReadFile(file.get(), window.bytes.data(), pdf_check_bytes, &window.bytes_read, nullptr))
        window.bytes_read = 0;
    return window;
}

} // namespace

int isPDF(const wchar_t* path) noexcept
{
    if (!path || !PathFileExistsW(path)) {
        log_stream(log_level::debug) << "ACTIVEDOC isPDF [FALSE] MISSING FILE";
        return 0;
    }
    const auto window = read_window(path);
    if (!window)
        return 0;
    switch (JudgePdf({window->bytes.data(), window->bytes.size()}, window->bytes_read)) {
    case pdf_verdict::pdf:
        log_stream(log_level::debug) << "ACTIVEDOC isPDF [TRUE]";
        return 1;
    case pdf_verdict::protected_pdf:
        log_stream(log_level::debug) << "ACTIVEDOC isPDF [TRUE] - ppdf file";
        return 1;
    case pdf_verdict::refused:
        break;
    }
    log_stream(log_level::debug) << "ACTIVEDOC isPDF [FALSE]";
    return 0;
}

} // namespace quill
