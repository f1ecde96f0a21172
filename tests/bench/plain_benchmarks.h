// The benchmarks that need no host.
#pragma once

namespace quill::bench {

void log_benchmarks();
void pdf_check_benchmarks();
void cache_folder_benchmarks();
void url_benchmarks();

} // namespace quill::bench
