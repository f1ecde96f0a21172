#include "tests/diagnose/replaced_import.h"

#include <stdexcept>

namespace quill::test {

code_address replace_own_import(const char* name, code_address target)
{
    const code_address before = redirect_import(GetModuleHandleW(nullptr), name, target);
    if (!before)
        throw std::runtime_error(std::string("not imported: ") + name);
    return before;
}

} // namespace quill::test
