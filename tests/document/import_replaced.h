// Replaces a function that the module imports by one of the test.
#pragma once

#include "tests/support/faults/import_table.h"

#include <gtest/gtest.h>

namespace quill::test {

class import_replaced
{
public:
    template <class Function>
    import_replaced(HMODULE module, const char* name, Function* function)
        : module_(module), name_(name),
          original_(redirect_import(module, name, reinterpret_cast<code_address>(function)))
    {
        EXPECT_NE(original_, nullptr) << name << " is not imported";
    }
    ~import_replaced() { redirect_import(module_, name_, original_); }
    import_replaced(const import_replaced&) = delete;
    import_replaced& operator=(const import_replaced&) = delete;

private:
    HMODULE module_;
    const char* name_;
    code_address original_;
};

} // namespace quill::test
