// denied_key.exe HKLM|HKCU PATH COMMAND-LINE: runs a program while a registry key admits no access, and
// returns the program's exit code.
#include "platform/unique_handle.h"
#include "tests/acceptance/programs/command.h"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

int run(HKEY key, std::wstring command)
{
    DWORD size = 0;
    RegGetKeySecurity(key, DACL_SECURITY_INFORMATION, nullptr, &size);
    std::vector<char> before(size);
    ACL empty_list{}; // admits no access
    SECURITY_DESCRIPTOR denied{};
    if (RegGetKeySecurity(key, DACL_SECURITY_INFORMATION, before.data(), &size) != ERROR_SUCCESS ||
        !InitializeAcl(&empty_list, sizeof empty_list, ACL_REVISION) ||
        !InitializeSecurityDescriptor(&denied, SECURITY_DESCRIPTOR_REVISION) ||
        !SetSecurityDescriptorDacl(&denied, TRUE, &empty_list, FALSE) ||
        RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, &denied) != ERROR_SUCCESS)
        return quill::test::not_started;
    STARTUPINFOW startup = quill::test::startup_info();
    PROCESS_INFORMATION started{};
    const int code = CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                    &startup, &started)
                         ? quill::test::exit_code_of(started)
                         : quill::test::not_started;
    RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, before.data());
    return code;
}

} // namespace

int wmain(int count, wchar_t** values)
{
    if (count < 4)
        return quill::test::not_started;
    const HKEY root = std::wstring_view(values[1]) == L"HKCU" ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
    quill::unique_registry_key key;
    const LSTATUS status =
        RegOpenKeyExW(root, values[2], 0, READ_CONTROL | WRITE_DAC | KEY_WOW64_64KEY, key.put());
    if (status != ERROR_SUCCESS) {
        std::fprintf(stderr, "denied_key: error %ld\n", status);
        return quill::test::not_started;
    }
    return run(key.get(), quill::test::command_line(3, count, values));
}
