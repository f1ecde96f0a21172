// The table by which a module in memory calls the functions of other libraries.
#pragma once

#include "tests/support/faults/import_faults.h"

namespace quill::test {

struct counted_import_tag;

// A piece of code that asks chooser(context) and goes on at the address that this gives, with the caller's
// arguments and on the caller's stack. Made once for each context and kept.
code_address counting_stub(void* context, code_address chooser);

template <class Context>
code_address counting_stub(Context* context, code_address (*chooser)(Context*) noexcept)
{
    return counting_stub(static_cast<void*>(context), reinterpret_cast<code_address>(chooser));
}

// Sends the module's calls of an imported function elsewhere. Gives the address that they went to; null when
// the module does not import it.
code_address redirect_import(HMODULE module, const char* name, code_address target);

} // namespace quill::test
