// Counts task memory and BSTRs, which no system counter shows.
#pragma once

namespace quill::test {

// Blocks of CoTaskMemAlloc and SysAllocString in this process that were allocated since the first call and
// are not freed.
long outstanding_task_memory();

} // namespace quill::test
