// Decides whether a fetched or local file may be handed to the inner viewer.
#pragma once

namespace quill {

// 1 when the file at path may be shown, else 0, also when it is missing or cannot be read. What is no file on
// a disk (a device, a pipe) counts as missing and is never read. Reads the first pdf_check_bytes once and
// leaves the file as it is. Any thread; never throws.
int isPDF(const wchar_t* path) noexcept;

} // namespace quill
