// The plain part of pdf_check.h: the decision, without the file.
#include "retrieval/file/pdf_check.h"

namespace quill {
namespace {

// Whether at least `wanted` bytes remain from the start of the first occurrence of marker.
bool holds(std::string_view window, std::string_view marker, std::size_t wanted)
{
    const std::size_t position = window.find(marker);
    return position != std::string_view::npos && window.size() - position >= wanted;
}

} // namespace

pdf_verdict judge_pdf(std::string_view window, std::size_t bytes_read)
{
    constexpr std::string_view header = "%PDF-1.", protected_marker = ".pfile";
    constexpr std::size_t smallest_file = 9;
    if (bytes_read < smallest_file)
        return pdf_verdict::refused;
    if (holds(window, header, header.size() + 1))
        return pdf_verdict::pdf;
    if (holds(window, protected_marker, protected_marker.size()))
        return pdf_verdict::protected_pdf;
    return pdf_verdict::refused;
}

} // namespace quill
