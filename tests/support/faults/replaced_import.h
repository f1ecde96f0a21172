// Redirects the system calls of the code under test, which is linked into the test program.
#pragma once

#include "tests/support/faults/import_table.h"

#include <gtest/gtest.h>

namespace quill::test {

class replaced_import
{
public:
    // replacement: a function with the signature and calling convention of the imported one.
    template <class Function>
    replaced_import(const char* name, Function* replacement)
        : name_(name), before_(redirect_import(GetModuleHandleW(nullptr), name,
                                               reinterpret_cast<code_address>(replacement)))
    {
        EXPECT_NE(before_, nullptr) << name << " is not imported";
    }
    ~replaced_import()
    {
        if (before_)
            redirect_import(GetModuleHandleW(nullptr), name_, before_);
    }
    replaced_import(const replaced_import&) = delete;
    replaced_import& operator=(const replaced_import&) = delete;

private:
    const char* name_;
    code_address before_;
};

} // namespace quill::test
