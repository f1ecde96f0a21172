// Redirects a system function that the test program imports, for the code under test that is linked into it.
#pragma once

#include "tests/support/faults/import_table.h"

#include <gtest/gtest.h>

namespace quill::test {

// replacement: a function with the signature and calling convention of the imported one.
template <class Function>
class replaced_import
{
public:
    replaced_import(const char* name, Function* replacement)
        : name_(name), original_(redirect_import(GetModuleHandleW(nullptr), name,
                                                 reinterpret_cast<code_address>(replacement)))
    {
        EXPECT_NE(original_, nullptr) << name << " is not imported";
    }
    ~replaced_import()
    {
        if (original_)
            redirect_import(GetModuleHandleW(nullptr), name_, original_);
    }
    replaced_import(const replaced_import&) = delete;
    replaced_import& operator=(const replaced_import&) = delete;

    Function* original() const { return reinterpret_cast<Function*>(const_cast<void*>(original_)); }

private:
    const char* name_;
    code_address original_;
};

} // namespace quill::test
