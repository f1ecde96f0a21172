// QuillDiagnose.exe: says why a PDF does not open, and removes old downloads.
#include "diagnose/checks.h"
#include "diagnose/command_line.h"
#include "diagnose/download_folders.h"
#include "diagnose/output.h"
#include "diagnose/product_facts.h"
#include "diagnose/windows_machine.h"

#include <windows.h>

#include <exception>

namespace quill::diagnose {
namespace {

constexpr int exit_good = 0;
constexpr int exit_bad = 1;
constexpr int exit_wrong_usage = 2;

int run_diagnosis(output& out)
{
    const product_constants product = read_constants();
    const product_settings settings = read_settings();
    const system_facts system = read_system();
    const windows_machine computer;
    out.write(L"QuillDiagnose " + product.version + L"\n\n");
    const report findings = diagnose({computer, product, settings, system});
    for (const finding& finding : findings)
        out.write(text_of(finding));
    out.write(L"\n" + summary_of(findings));
    return would_open(findings) ? exit_good : exit_bad;
}

int run_clean_up(unsigned days, output& out)
{
    removal total;
    const line_writer write = [&](const std::wstring& line) { out.write(line + L"\n"); };
    const clean_up_plan plan = plan_clean_up(read_settings());
    for (const std::wstring& line : plan.skipped)
        write(line);
    total.is_complete = plan.skipped.empty();
    for (const std::wstring& folder : plan.folders) {
        out.write(L"in " + quoted(folder) + L":\n");
        remove_downloads(folder, days, write, total);
    }
    out.write(counted(total.folders, L"folder") + L" removed, with " + counted(total.files, L"file") +
              L" and " + counted(total.bytes, L"byte") + L"; " + counted(total.left, L"older folder") +
              L" left\n");
    return total.left == 0 && total.is_complete ? exit_good : exit_bad;
}

int run(const options& options, output& out)
{
    switch (options.what) {
    case command::diagnose:
        return run_diagnosis(out);
    case command::clean_downloads:
        return run_clean_up(options.days, out);
    case command::help:
        out.write(usage_text());
        return exit_good;
    case command::wrong_usage:
        break;
    }
    output errors(STD_ERROR_HANDLE);
    errors.write(L"QuillDiagnose: " + options.error + L"\n\n" + usage_text());
    return exit_wrong_usage;
}

} // namespace
} // namespace quill::diagnose

int wmain(int argc, wchar_t** argv)
{
    using namespace quill::diagnose;
    // No dialog for a drive without a disk, for example.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    output out(STD_OUTPUT_HANDLE);
    try {
        const std::vector<std::wstring> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
        const int result = run(parse_arguments(arguments), out);
        return out.is_complete() || result != exit_good ? result : exit_bad;
    } catch (const std::exception& error) {
        try {
            output(STD_ERROR_HANDLE).write(L"QuillDiagnose: failed: " + widened(error.what()) + L"\n");
        } catch (const std::exception&) {
            return exit_bad; // without memory there is no message
        }
        return exit_bad;
    }
}
