// Gives the running test program a folder of its own for an ieframe.dll: Wine loads a program's own copy of
// that library only if a registry value is set before the program starts, and a copy in the folder of all
// test programs would be loaded by all of them.
#pragma once

#include <string>

namespace quill::test {

// The variants of the test's ieframe.dll; the name says which function is missing.
enum class ieframe
{
    complete,
    without_dialog,
    without_folder,
    without_save,
    without_cancel
};

// Copies a library from the folder of the original program to that of the running copy; it is not removed.
void copy_library(const std::wstring& library);

// Installs a variant in the folder of this program, replacing any other, and removes it at the end of the
// scope.
class ieframe_scope
{
public:
    explicit ieframe_scope(ieframe variant = ieframe::complete);
    ~ieframe_scope();
    ieframe_scope(const ieframe_scope&) = delete;
    ieframe_scope& operator=(const ieframe_scope&) = delete;

private:
    std::wstring path_;
};

} // namespace quill::test
