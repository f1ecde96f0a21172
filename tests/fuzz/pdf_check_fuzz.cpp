// The verdict on the beginning of a file. Input: the bytes of the file.
#include "retrieval/file/pdf_check.h"
#include "tests/fuzz/subjects.h"

#include <algorithm>

namespace quill::fuzz {
namespace {

// Whether the first occurrence of marker has `room` bytes from there to the end of the window.
bool first_has_room(std::string_view window, std::string_view marker, std::size_t room)
{
    for (std::size_t i = 0; i + marker.size() <= window.size(); ++i) {
        if (window.substr(i, marker.size()) == marker)
            return window.size() - i >= room;
    }
    return false;
}

pdf_verdict expected_verdict(std::string_view window, std::size_t bytes_read)
{
    if (bytes_read < 9)
        return pdf_verdict::refused;
    return first_has_room(window, "%PDF-1.", 8)  ? pdf_verdict::pdf
           : first_has_room(window, ".pfile", 6) ? pdf_verdict::protected_pdf
                                                 : pdf_verdict::refused;
}

} // namespace

void pdf_check(bytes input)
{
    const std::string file = narrow_text(input);
    const std::size_t bytes_read = std::min(file.size(), pdf_check_bytes);
    std::string window = file.substr(0, bytes_read);
    window.resize(pdf_check_bytes + 1);
    const pdf_verdict verdict = judge_pdf(exact_copy<char>(window), bytes_read);
    FUZZ_CHECK(verdict == expected_verdict(window, bytes_read));

    // Bytes after the window do not count, and a window of any size is accepted.
    const exact_copy<char> whole(file);
    FUZZ_CHECK(judge_pdf(whole, file.size()) == expected_verdict(file, file.size()));
}

} // namespace quill::fuzz
