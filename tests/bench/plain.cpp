// Benchmarks without a host: the log, the PDF check, the cache folder, the functions on URLs.
#include "tests/bench/plain_benchmarks.h"
#include "tests/bench/support/report.h"

int wmain(int argc, wchar_t** argv)
{
    return quill::bench::run(argc, argv, [] {
        quill::bench::log_benchmarks();
        quill::bench::pdf_check_benchmarks();
        quill::bench::cache_folder_benchmarks();
        quill::bench::url_benchmarks();
    });
}
