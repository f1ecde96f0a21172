// The import table of a loaded module.
#pragma once

#include "tests/support/faults/import_faults.h"

namespace quill::test {

struct counted_import_tag;

// A stub that calls chooser(context) and jumps to the address that it returns, with the caller's arguments
// and stack. Created once for each context and never freed.
code_address counting_stub(void* context, code_address chooser);

template <class Context>
code_address counting_stub(Context* context, code_address (*chooser)(Context*) noexcept)
{
    return counting_stub(static_cast<void*>(context), reinterpret_cast<code_address>(chooser));
}

// Redirects the module's calls of an imported function. Returns the former address; nullptr if the module
// does not import it.
code_address redirect_import(HMODULE module, const char* name, code_address target);

} // namespace quill::test
