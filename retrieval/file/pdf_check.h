// Decides whether a fetched or local file is a PDF that the viewer may open. The download worker and the
// document window use isPDF; judge_pdf is the decision without the file.
#pragma once

#include <cstddef>
#include <string_view>

namespace quill {

// Returns 1 if the file at path is a PDF or a protected PDF; 0 if not, or if it cannot be read. Devices and
// pipes count as missing and are never read. Callable on any thread.
int isPDF(const wchar_t* path) noexcept;

// How many bytes of a file are examined.
inline constexpr std::size_t pdf_check_bytes = 1024;

enum class pdf_verdict
{
    refused,
    pdf,
    protected_pdf
};

// window: a buffer that begins with the file's first bytes; zero bytes do not end the search. bytes_read:
// how many bytes of it come from the file, at most window.size().
pdf_verdict judge_pdf(std::string_view window, std::size_t bytes_read);

} // namespace quill
