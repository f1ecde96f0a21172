#include "acceptance/child.h"

#include <array>
#include <vector>

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

// Creates a process in a job. If it were assigned afterwards, it would go on when this program is terminated
// in between. Before Windows 10 the attribute is unknown, and the list is empty.
class job_attribute
{
public:
    // Without a job the list is empty too.
    explicit job_attribute(HANDLE job) : job_(job)
    {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        memory_.resize(size);
        auto* const created = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.data());
        if (job_ && InitializeProcThreadAttributeList(created, 1, 0, &size)) {
            list_ = created;
            UpdateProcThreadAttribute(list_, 0, PROC_THREAD_ATTRIBUTE_JOB_LIST, static_cast<void*>(&job_),
                                      sizeof job_, nullptr, nullptr);
        }
    }
    ~job_attribute()
    {
        if (list_)
            DeleteProcThreadAttributeList(list_);
    }
    job_attribute(const job_attribute&) = delete;
    job_attribute& operator=(const job_attribute&) = delete;

    LPPROC_THREAD_ATTRIBUTE_LIST list() const { return list_; }

private:
    HANDLE job_; // the list refers to it
    std::vector<char> memory_;
    LPPROC_THREAD_ATTRIBUTE_LIST list_ = nullptr;
};

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
        const job_attribute job(may_end ? job_of_children() : nullptr);
        STARTUPINFOEXW startup{};
        startup.StartupInfo.cb = job.list() ? sizeof startup : sizeof startup.StartupInfo;
        startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        startup.StartupInfo.hStdOutput = output.get();
        startup.StartupInfo.hStdError = output.get();
        startup.lpAttributeList = job.list();
        std::wstring command_line = L"\"" + program + L"\" " + arguments;
        // A process group of its own: Ctrl+C reaches this program only, which decides what ends.
        const DWORD flags = CREATE_NEW_PROCESS_GROUP | (job.list() ? EXTENDED_STARTUPINFO_PRESENT : 0);
        if (!CreateProcessW(program.c_str(), command_line.data(), nullptr, nullptr, TRUE, flags, nullptr,
                            nullptr, &startup.StartupInfo, &started)) {
            result.start_error = GetLastError();
            return result;
        }
    }
    const unique_handle process(started.hProcess);
    const unique_handle thread(started.hThread);
    if (may_end) // where the system does not know the attribute
        AssignProcessToJobObject(job_of_children(), process.get());

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
