// The helper object on SharePoint pages with links.
#pragma once

#include "tests/bench/support/loaded_library.h"

namespace quill::bench {

void sharepoint_page_benchmarks(const loaded_library& module);

} // namespace quill::bench
