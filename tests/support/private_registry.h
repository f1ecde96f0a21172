// A private registry: HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER and HKEY_CLASSES_ROOT of this process are
// redirected to an empty key until the end of the scope. The real keys are not accessed.
#pragma once

#include <windows.h>

#include <string>

namespace quill::test {

// Below the real HKEY_CURRENT_USER; it has a key for each process that uses a private registry.
inline constexpr wchar_t private_registry_parent[] = L"Software\\QuillPDF.IE tests";

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

// Makes a key below which no key can be created. The path has at least two parts.
void make_unusable(HKEY root, const std::wstring& path);

// Everything below the roots except HKEY_CLASSES_ROOT, which is part of the first: a line for each key with
// its full path, followed by an indented line for each of its values, "name = type data", both sorted without
// regard to case. Types are s, d and b; the name of the default value is @.
std::string registry_listing();

} // namespace quill::test
