#include "tests/sharepoint/recorded_launches.h"

#include "tests/support/faults/import_table.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace quill::test {
namespace {

// In characters, with the terminator.
constexpr std::size_t longest_command_line = 32'767;

std::function<void()>& shell_action()
{
    static std::function<void()> action;
    return action;
}

HANDLE own_handle(HANDLE current)
{
    HANDLE copy = nullptr;
    DuplicateHandle(GetCurrentProcess(), current, GetCurrentProcess(), &copy, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    return copy;
}

BOOL WINAPI create_no_process(const wchar_t*, wchar_t* line, SECURITY_ATTRIBUTES*, SECURITY_ATTRIBUTES*, BOOL,
                              DWORD, void*, const wchar_t*, STARTUPINFOW*, PROCESS_INFORMATION* created)
{
    if (std::wstring_view(line).size() >= longest_command_line) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return FALSE;
    }
    recorded_launches().editor_lines.emplace_back(line);
    *created = {own_handle(GetCurrentProcess()), own_handle(GetCurrentThread()), GetCurrentProcessId(),
                GetCurrentThreadId()};
    return TRUE;
}

HINSTANCE WINAPI execute_nothing(HWND, const wchar_t*, const wchar_t* file, const wchar_t*, const wchar_t*,
                                 int)
{
    recorded_launches().default_urls.emplace_back(file);
    if (const auto action = shell_action())
        action();
    return reinterpret_cast<HINSTANCE>(INT_PTR{42}); // values above 32 mean success
}

code_address redirect_own(const char* function, code_address target)
{
    return redirect_import(GetModuleHandleW(nullptr), function, target);
}

} // namespace

std::vector<std::wstring> launches::urls() const
{
    constexpr std::wstring_view begin = L"/pdf \"sharepoint://";
    std::vector<std::wstring> all = default_urls;
    for (const std::wstring_view line : editor_lines) {
        const bool is_whole = line.starts_with(begin) && line.size() > begin.size() && line.ends_with(L'"');
        all.emplace_back(is_whole ? line.substr(begin.size(), line.size() - begin.size() - 1) : line);
    }
    std::sort(all.begin(), all.end());
    return all;
}

code_address recording_create_process()
{
    return reinterpret_cast<code_address>(&create_no_process);
}

code_address recording_shell_execute()
{
    return reinterpret_cast<code_address>(&execute_nothing);
}

launches& recorded_launches()
{
    static launches instance;
    return instance;
}

void while_shell_executes(std::function<void()> action)
{
    shell_action() = std::move(action);
}

launch_recording::launch_recording()
    : create_process_(redirect_own("CreateProcessW", recording_create_process())),
      shell_execute_(redirect_own("ShellExecuteW", recording_shell_execute()))
{
    recorded_launches() = {};
}

launch_recording::~launch_recording()
{
    while_shell_executes({});
    redirect_own("CreateProcessW", create_process_);
    redirect_own("ShellExecuteW", shell_execute_);
}

} // namespace quill::test
