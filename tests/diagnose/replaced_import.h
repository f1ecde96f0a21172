// Replaces a function of the system that this program imports, in the product's code as in the test's.
#pragma once

#include "tests/support/faults/import_table.h"

namespace quill::test {

code_address replace_own_import(const char* name, code_address target);

template <typename Function>
class replaced_import
{
public:
    replaced_import(const char* name, Function* target)
        : name_(name), original_(reinterpret_cast<Function*>(const_cast<void*>(
                           replace_own_import(name, reinterpret_cast<code_address>(target)))))
    {
    }
    ~replaced_import() { replace_own_import(name_, reinterpret_cast<code_address>(original_)); }
    replaced_import(const replaced_import&) = delete;
    replaced_import& operator=(const replaced_import&) = delete;

    Function* original() const { return original_; }

private:
    const char* name_;
    Function* original_;
};

} // namespace quill::test
