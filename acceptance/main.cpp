// QuillAcceptance.exe: the acceptance run on a machine. Started by accept.cmd in the folder above it.
//   QuillAcceptance [--only STEP,STEP...]
#include "acceptance/child.h"
#include "acceptance/exit_codes.h"
#include "acceptance/kit.h"
#include "acceptance/report.h"
#include "acceptance/run.h"
#include "acceptance/steps.h"
#include "acceptance/windows_text.h"
#include "platform/text.h"

#include <windows.h>

#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace quill::acceptance {
namespace {

unique_handle run_ended;

// The console's output is UTF-8 until the end of the scope; the caller's cmd keeps its own code page.
class console_code_page
{
public:
    console_code_page() { SetConsoleOutputCP(CP_UTF8); }
    ~console_code_page() { SetConsoleOutputCP(before_); }
    console_code_page(const console_code_page&) = delete;
    console_code_page& operator=(const console_code_page&) = delete;

private:
    UINT before_ = GetConsoleOutputCP();
};

// Runs on a thread of the system's. After Ctrl+C the run restores the machine; when the console is closed,
// the system ends the process after some seconds, and the next run restores.
BOOL WINAPI on_control(DWORD)
{
    SetEvent(broken_off_event);
    WaitForSingleObject(run_ended.get(), INFINITE);
    return TRUE;
}

std::optional<std::vector<std::string>> parse_arguments(int count, wchar_t** values)
{
    if (count == 1)
        return std::vector<std::string>();
    if (count == 3 && std::wstring(values[1]) == L"--only")
        return parse_selection(to_utf8(values[2]));
    return std::nullopt;
}

void print_usage()
{
    std::fputs("usage: accept.cmd [--only STEP,STEP...]\nsteps:", stderr);
    for (const auto* steps : {&test_steps(), &installed_steps()})
        for (const step& each : *steps)
            std::fprintf(stderr, " %.*s", static_cast<int>(each.name.size()), each.name.data());
    for (const std::string_view each : installer_steps())
        std::fprintf(stderr, " %.*s", static_cast<int>(each.size()), each.data());
    std::fputs("\n", stderr);
}

exit_code run_kit(const std::vector<std::string>& selection)
{
    kit here = own_kit();
    const unique_handle only_one(CreateMutexW(nullptr, TRUE, L"Global\\QuillAcceptance"));
    if (!only_one || GetLastError() == ERROR_ALREADY_EXISTS) {
        std::fputs("REFUSED: another run of the kit is in progress. Nothing was changed.\n", stderr);
        return exit_already_running;
    }
    report writes;
    if (!writes.open(here.report(), here.refused_report())) {
        const std::string error = error_text(GetLastError());
        std::fprintf(stderr, "REFUSED: %s cannot be written (%s). Nothing was changed.\n",
                     to_utf8(writes.path()).c_str(), error.c_str());
        return exit_no_report;
    }
    return run(here, writes, selection).execute();
}

} // namespace
} // namespace quill::acceptance

int wmain(int count, wchar_t** values)
{
    using namespace quill::acceptance;
    try {
        SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
        const console_code_page utf8;
        const auto selection = parse_arguments(count, values);
        if (!selection) {
            print_usage();
            return exit_usage;
        }
        broken_off_event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        run_ended.reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        SetConsoleCtrlHandler(on_control, TRUE);
        const exit_code code = run_kit(*selection);
        std::printf("exit code %d\n", code);
        std::fflush(stdout);
        SetEvent(run_ended.get());
        return code;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "QuillAcceptance: %s\n", failure.what());
        SetEvent(run_ended.get());
        return exit_failed;
    }
}
