// A registry of the test's own: HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER and HKEY_CLASSES_ROOT of this process
// lead into an empty key until the end of the scope. Other programs, and this one's real keys, see nothing.
#pragma once

#include <windows.h>

#include <string>

namespace quill::test {

class private_registry
{
public:
    private_registry();
    ~private_registry();
    private_registry(const private_registry&) = delete;
    private_registry& operator=(const private_registry&) = delete;

private:
    std::wstring path_; // under the real HKEY_CURRENT_USER
};

// Makes a key that nothing lasting can be put into: creating a key below it fails, for whoever tries. The
// path has two parts at least.
void make_unusable(HKEY root, const std::wstring& path);

// Everything below the three roots but HKEY_CLASSES_ROOT, which is a part of the first: a line for every key
// with its full path, followed by an indented line for each of its values, "name = type data", both sorted
// without regard to case. Types are s, d and b; the default value's name is @.
std::string registry_listing();

} // namespace quill::test
