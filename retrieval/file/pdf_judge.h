// The verdict on a file's beginning: whether it is a document that the inner viewer may be given.
#pragma once

#include <cstddef>
#include <string_view>

namespace quill {

// How much of a file is looked at, in bytes.
inline constexpr std::size_t pdf_check_bytes = 1024;

enum class pdf_verdict
{
    refused,
    pdf,
    protected_pdf
};

// The verdict on a file's beginning. window: the bytes looked at, at least bytes_read of them; zero
// bytes do not end the search. bytes_read: how many of them came from the file.
pdf_verdict JudgePdf(std::string_view window, std::size_t bytes_read);

} // namespace quill
