#include "tests/support/child_process.h"

#include "tests/support/scopes.h"

#include <windows.h>

namespace quill::test {
namespace {

// Output goes to files: a pipe would have to be read while the program runs, and would stay open in every
// process that inherits it.
HANDLE inheritable_file(const std::wstring& path)
{
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                       CREATE_ALWAYS, 0, nullptr);
}

} // namespace

child_result run_program(const std::wstring& program, const std::wstring& arguments, DWORD deadline_ms)
{
    child_result result;
    const scratch_directory scratch;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = inheritable_file(scratch / L"out");
    startup.hStdError = inheritable_file(scratch / L"err");

    std::wstring command_line = L"\"" + program + L"\" " + arguments;
    PROCESS_INFORMATION process{};
    result.started = CreateProcessW(program.c_str(), command_line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                    nullptr, &startup, &process) != FALSE;
    CloseHandle(startup.hStdOutput);
    CloseHandle(startup.hStdError);
    if (!result.started)
        return result;

    result.process_id = process.dwProcessId;
    result.ended = WaitForSingleObject(process.hProcess, deadline_ms) == WAIT_OBJECT_0;
    if (!result.ended) {
        TerminateProcess(process.hProcess, ERROR_TIMEOUT);
        WaitForSingleObject(process.hProcess, deadline_ms);
    }
    GetExitCodeProcess(process.hProcess, &result.exit_code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    result.output = read_file(scratch / L"out").value_or("");
    result.errors = read_file(scratch / L"err").value_or("");
    return result;
}

std::wstring beside_this_program(const std::wstring& name)
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring text = path;
    return text.substr(0, text.find_last_of(L'\\') + 1) + name;
}

} // namespace quill::test
