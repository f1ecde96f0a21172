#include "acceptance/child.h"

#include <array>

namespace quill::acceptance {
namespace {

// Programs in it end with this process, however that ends.
HANDLE job_of_children()
{
    static const unique_handle job = [] {
        unique_handle created(CreateJobObjectW(nullptr, nullptr));
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        SetInformationJobObject(created.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
        return created;
    }();
    return job.get();
}

unique_handle output_handle(const std::wstring& path)
{
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    return unique_handle(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     &inheritable, CREATE_ALWAYS, 0, nullptr));
}

void end_children(HANDLE process)
{
    constexpr DWORD end_limit_ms = 10'000;
    TerminateJobObject(job_of_children(), ERROR_TIMEOUT);
    TerminateProcess(process, ERROR_TIMEOUT);
    WaitForSingleObject(process, end_limit_ms);
}

} // namespace

HANDLE broken_off_event = nullptr;

void check_interruption()
{
    if (WaitForSingleObject(broken_off_event, 0) == WAIT_OBJECT_0)
        throw broken_off();
}

std::string read_whole_file(const std::wstring& path)
{
    std::string text;
    const unique_handle file(CreateFileW(path.c_str(), GENERIC_READ,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                         OPEN_EXISTING, 0, nullptr));
    if (!file)
        return text;
    std::array<char, 16'384> piece;
    DWORD count = 0;
    while (ReadFile(file.get(), piece.data(), static_cast<DWORD>(piece.size()), &count, nullptr) && count > 0)
        text.append(piece.data(), count);
    return text;
}

child_result run_child(const std::wstring& program, const std::wstring& arguments, DWORD limit_ms,
                       const std::wstring& output_file, at_interruption interruption)
{
    const bool may_end = interruption == at_interruption::end_program;
    if (may_end)
        check_interruption();
    child_result result;
    PROCESS_INFORMATION started{};
    {
        const unique_handle output = output_handle(output_file);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output.get();
        startup.hStdError = output.get();
        std::wstring command_line = L"\"" + program + L"\" " + arguments;
        // A process group of its own: Ctrl+C reaches this program only, which decides what ends. A program
        // that is to end with this one is suspended until it is in the job.
        const DWORD flags = CREATE_NEW_PROCESS_GROUP | (may_end ? CREATE_SUSPENDED : 0);
        if (!CreateProcessW(program.c_str(), command_line.data(), nullptr, nullptr, TRUE, flags, nullptr,
                            nullptr, &startup, &started)) {
            result.start_error = GetLastError();
            return result;
        }
    }
    const unique_handle process(started.hProcess);
    const unique_handle thread(started.hThread);
    if (may_end) {
        AssignProcessToJobObject(job_of_children(), process.get());
        ResumeThread(thread.get());
    }

    const std::array handles{process.get(), broken_off_event};
    const DWORD waited = WaitForMultipleObjects(may_end ? 2 : 1, handles.data(), FALSE, limit_ms);
    result.timed_out = waited == WAIT_TIMEOUT;
    if (waited != WAIT_OBJECT_0)
        end_children(process.get());
    GetExitCodeProcess(process.get(), &result.exit_code);
    result.output = read_whole_file(output_file);
    if (waited == WAIT_OBJECT_0 + 1)
        throw broken_off();
    return result;
}

} // namespace quill::acceptance
