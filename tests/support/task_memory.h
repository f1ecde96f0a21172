// Counts task memory and automation strings, which no system counter shows.
#pragma once

namespace quill::test {

// Blocks allocated with CoTaskMemAlloc or SysAllocString, by anybody in this process, since the first
// call, and not yet freed.
long outstanding_task_memory();

} // namespace quill::test
