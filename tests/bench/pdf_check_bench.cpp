// The PDF check against reading the beginning of a file.
#include "retrieval/file/pdf_check.h"
#include "tests/bench/plain_benchmarks.h"
#include "tests/bench/support/report.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <array>
#include <stdexcept>
#include <string>

namespace quill::bench {
namespace {

void open_read_close(const wchar_t* path)
{
    std::array<char, pdf_check_bytes> bytes;
    DWORD bytes_read = 0;
    const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &bytes_read, nullptr);
    CloseHandle(file);
    keep(bytes_read);
}

void compare(const std::string& what, const std::wstring& path, int expected)
{
    if (isPDF(path.c_str()) != expected)
        throw std::runtime_error("the PDF check judges " + what + " wrongly");
    const auto check = [&](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i)
            keep(isPDF(path.c_str()));
    };
    const auto baseline = [&](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i)
            open_read_close(path.c_str());
    };
    report("PDF check of " + what + " : open, read, close", compare_shortest(check, baseline), 1.15);
}

} // namespace

void pdf_check_benchmarks()
{
    const test::scratch_directory folder;
    const std::wstring pdf = folder / L"sample.pdf";
    const std::wstring page = folder / L"page.pdf";
    test::write_file(pdf, "%PDF-1.7\n" + std::string(100'000, 'x'));
    // Nothing in it looks like a header, or everything does: the worst cases of the search.
    std::string percents;
    while (percents.size() < 100'000)
        percents += "%PDF-1";
    test::write_file(page, percents);
    compare("a PDF", pdf, 1);
    compare("a file full of half headers", page, 0);
}

} // namespace quill::bench
