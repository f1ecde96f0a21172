// Gives the running test program a folder of its own, in which it can put an ieframe.dll beside itself:
// Wine takes a program's own copy of that library only by a registry value that has to stand before the
// program starts, and a copy beside all test programs would be taken by all of them.
#pragma once

#include <string>

namespace quill::test {

// The variants of the test's ieframe.dll that were built; the name stands for what is left out.
enum class ieframe
{
    complete,
    without_dialog,
    without_folder,
    without_save,
    without_cancel
};

// Puts a library that lies beside the original program beside the running copy, too; it stays there.
void bring_along(const std::wstring& library);

// Puts a variant beside this program, in place of any other, and takes it away again.
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
