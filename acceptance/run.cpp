#include "acceptance/run.h"

#include "acceptance/child.h"
#include "acceptance/key_container.h"
#include "acceptance/questions.h"
#include "acceptance/registry_tree.h"
#include "acceptance/system_facts.h"
#include "acceptance/watched_keys.h"
#include "acceptance/windows_text.h"
#include "active_doc/identifiers.h"
#include "platform/settings.h"
#include "platform/text.h"
#include "platform/unique_handle.h"
#include "sharepoint/identifiers.h"

#include <ole2.h>

#include <algorithm>
#include <stdexcept>

namespace quill::acceptance {
namespace {

std::wstring class_text(REFCLSID id)
{
    wchar_t text[64]{};
    StringFromGUID2(id, text, 64);
    return text;
}

std::string suite_key(settings_key key)
{
    return to_utf8(settings_key_paths[static_cast<std::size_t>(key)]);
}

// What the tests and the stand-ins change besides the product's own keys.
std::vector<std::string> stand_in_keys()
{
    return {"HKLM\\" + suite_key(settings_key::product),
            "HKCU\\" + suite_key(settings_key::company),
            "HKCU\\SOFTWARE\\QuillTest",
            "HKCU\\SOFTWARE\\QuillPDF.IE tests",
            "HKLM\\SOFTWARE\\Classes\\" + to_utf8(inner_viewer_progid),
            "HKLM\\SOFTWARE\\Classes\\http\\shell\\open\\command",
            "HKLM\\SOFTWARE\\Classes\\https\\shell\\open\\command"};
}

// Whether the installation does not write the tree. The installer's own record is below the company's key, in
// the 64-bit view only.
bool is_of_stand_ins(const saved_tree& tree)
{
    const std::vector<saved_tree> trees = trees_of(stand_in_keys());
    return (tree.view == 32 && tree.path == suite_key(settings_key::company)) ||
           std::any_of(trees.begin(), trees.end(),
                       [&](const saved_tree& each) { return name_of(each) == name_of(tree); });
}

std::string text_of(const child_result& result)
{
    if (result.start_error != ERROR_SUCCESS)
        return "could not be started, " + error_text(result.start_error);
    return result.timed_out ? "did not end in time and was terminated"
                            : "exit code " + std::to_string(result.exit_code);
}

std::string msi_text_of(const child_result& result)
{
    return text_of(result) + std::string(remark_on(outcome_of(result)));
}

bool succeeded(const child_result& result)
{
    return result.start_error == ERROR_SUCCESS && !result.timed_out && result.exit_code == 0;
}

bool exists(const std::wstring& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

} // namespace

run::run(kit& of, report& writes, std::vector<std::string> selection)
    : kit_(of), report_(writes), selection_(std::move(selection))
{
}

bool run::is_selected(std::string_view step) const
{
    return selection_.empty() || std::find(selection_.begin(), selection_.end(), step) != selection_.end();
}

std::wstring run::installed_dll() const
{
    return server_of_class(class_text(CLSID_ActiveDocCtrl));
}

exit_code run::refuse(exit_code code, const std::string& message)
{
    report_.section(has_restored_               ? "REFUSED: the state before an earlier run was restored"
                    : code == exit_not_restored ? "REFUSED: the state before an earlier run is not restored"
                                                : "REFUSED: nothing was changed");
    report_.line("  " + message);
    report_.line("  exit code " + std::to_string(code));
    if (report_.is_beside_earlier())
        report_.line("  This is " + to_utf8(kit_.refused_report()) +
                     "; report.txt is that of an earlier run.");
    return code;
}

exit_code run::refusal()
{
    if (const std::string damage = damage_of(kit_); !damage.empty())
        return refuse(exit_damaged_kit, "The kit is not complete: " + damage + ". Unpack it again.");
    if (!has_administrator_rights())
        return refuse(exit_no_rights, "Administrator's rights are needed: run accept.cmd as administrator.");
    if (const exit_code code = restore_broken_off_run(); code != exit_passed)
        return code;
    if (const std::string missing = missing_engine_part(); !missing.empty())
        return refuse(exit_no_engine, "Internet Explorer's engine is missing: " + missing + ".");
    if (const auto installed = installed_products(kit_.installer); !installed.empty())
        return refuse(exit_installed, "The product is installed already (" + to_utf8(installed.front()) +
                                          "): remove it first. If an earlier run of the kit was broken off, "
                                          "run its accept.cmd again in its own folder.");
    for (const CLSID& id : {CLSID_ActiveDocCtrl, CLSID_SharepointBrowserHelperObject})
        for (const char* root : {"HKLM", "HKCU"})
            for (const int view : {64, 32}) {
                const saved_tree tree{root, view, "SOFTWARE\\Classes\\CLSID\\" + to_utf8(class_text(id)), {}};
                if (!read_tree(tree).keys.empty())
                    return refuse(exit_registered,
                                  "The product is registered already, by regsvr32 or otherwise (" +
                                      name_of(tree) + "): remove the registration first.");
            }
    return exit_passed;
}

// The keys that the tests change, and those that the installation writes.
std::vector<saved_tree> run::watched_trees(const std::string& product) const
{
    std::vector<std::string> keys = stand_in_keys();
    keys.push_back("HKLM\\" + suite_key(settings_key::company));
    keys.push_back("HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" + product);
    for (const wchar_t* listing : {L"registered_per_machine.txt", L"registered_per_user.txt"})
        for (const std::string& key : own_keys(read_whole_file(kit_.bin(listing))))
            if (std::find(keys.begin(), keys.end(), key) == keys.end())
                keys.push_back(key);
    return trees_of(keys);
}

// A journal that names other keys is not this kit's: restoring it could remove anything.
bool run::is_own(const journal& saved) const
{
    CLSID product{};
    const std::vector<saved_tree> watched = watched_trees(saved.product);
    return SUCCEEDED(CLSIDFromString(to_wide(saved.product).c_str(), &product)) &&
           std::equal(saved.trees.begin(), saved.trees.end(), watched.begin(), watched.end(),
                      [](const saved_tree& a, const saved_tree& b) { return name_of(a) == name_of(b); });
}

// After a run that ended without restoring: killed, or by a power failure.
exit_code run::restore_broken_off_run()
{
    if (!exists(kit_.journal()))
        return exit_passed;
    report_.section("An earlier run was broken off; restoring the state before it");
    const auto saved = parse_journal(read_whole_file(kit_.journal()));
    if (!saved || !is_own(*saved))
        return refuse(exit_not_restored,
                      "journal.txt, which holds the state before that run, is damaged. Remove "
                      "the product if it is installed, then delete journal.txt.");
    saved_ = *saved;
    has_restored_ = put_back();
    if (!has_restored_)
        return refuse(exit_not_restored, "The state before that run could not be restored; see above.");
    report_.passed("restored");
    return exit_passed;
}

bool run::save_state()
{
    report_.section("Saving the state of the machine");
    saved_ = {to_utf8(kit_.installer.product_code), {}};
    for (const saved_tree& tree : watched_trees(saved_.product))
        saved_.trees.push_back(read_tree(tree));
    if (!write_durably(kit_.journal(), to_text(saved_))) {
        const std::string error = error_text(GetLastError());
        DeleteFileW((kit_.journal() + L".new").c_str());
        refuse(exit_no_report,
               "journal.txt, which would hold the state of the machine, cannot be written (" + error + ").");
        return false;
    }
    if (!report_.replace_earlier()) {
        const std::string error = error_text(GetLastError());
        DeleteFileW(kit_.journal().c_str());
        refuse(exit_no_report, "report.txt cannot be replaced (" + error + ").");
        return false;
    }
    report_.fact("saved",
                 std::to_string(saved_.trees.size()) + " registry keys with their contents, in journal.txt");
    CreateDirectoryW(kit_.work().c_str(), nullptr);
    return true;
}

exit_code run::execute()
{
    report_.line("Quill PDF for Internet Explorer: acceptance report");
    report_.section("System");
    for (const auto& [name, value] : system_facts())
        report_.fact(name, value);
    try {
        if (const exit_code refused = refusal(); refused != exit_passed)
            return refused;
    } catch (const std::exception& failure) {
        return refuse(exists(kit_.journal()) ? exit_not_restored : exit_unreadable, failure.what());
    }
    report_.section("Kit");
    report_.fact("package", to_utf8(kit_.installer.path));
    report_.fact("version", to_utf8(kit_.installer.version));
    report_.fact("product code", to_utf8(kit_.installer.product_code));

    try {
        if (!save_state())
            return exit_no_report;
    } catch (const std::exception& failure) {
        return refuse(exit_unreadable, failure.what());
    }
    delete_old_logs();
    bool restored = false;
    try {
        run_steps();
    } catch (const broken_off&) {
        was_broken_off_ = true;
        report_.section("BROKEN OFF by the user");
    } catch (const std::exception& failure) {
        report_.failed(failure.what());
    }
    try {
        restored = put_back();
    } catch (const std::exception& failure) {
        report_.failed(failure.what());
    }
    report_answers();
    report_.section(was_broken_off_               ? "RESULT: broken off"
                    : !report_.failures().empty() ? "RESULT: FAILED"
                    : selection_.empty()          ? "RESULT: passed"
                                                  : "RESULT: passed, the steps of --only");
    for (const std::string& failure : report_.failures())
        report_.line("  " + failure);
    if (!restored)
        report_.line("  The state before the run is in journal.txt; run accept.cmd again to restore it.");
    return was_broken_off_ ? exit_broken_off : report_.failures().empty() ? exit_passed : exit_failed;
}

// Those of an earlier run would be taken for this one's.
void run::delete_old_logs()
{
    for (const wchar_t* pattern : {L"\\failed-*.txt", L"\\msiexec-*.log"}) {
        WIN32_FIND_DATAW found{};
        const unique_find_handle search(FindFirstFileW((kit_.folder + pattern).c_str(), &found));
        if (!search)
            continue;
        do {
            DeleteFileW((kit_.folder + L"\\" + found.cFileName).c_str());
        } while (FindNextFileW(search.get(), &found));
    }
}

void run::run_steps()
{
    // Documents and scratch files of the steps.
    // A short path, if the disk has one: tests refer to files by paths without blanks.
    wchar_t work[MAX_PATH]{};
    const DWORD length = GetShortPathNameW(kit_.work().c_str(), work, MAX_PATH);
    const std::wstring temporary = length > 0 && length < MAX_PATH ? work : kit_.work();
    for (const wchar_t* variable : {L"TMP", L"TEMP"})
        SetEnvironmentVariableW(variable, temporary.c_str());
    for (const wchar_t* setting : {L"QUILL_LOG_LEVEL", L"QUILL_LOG_SINKS", L"QUILL_TMP_FOLDER"})
        SetEnvironmentVariableW(setting, nullptr);
    report_.section("Test programs, with the DLL of the kit");
    for (const step& one : test_steps())
        run_step(one);
    restore_after_tests(false);
    measure_rollback();
    install();
    if (dll_.empty())
        return;
    diagnose();
    report_.section("The installed product in the browser's engine");
    for (const step& one : installed_steps())
        run_step(one);
    restore_after_tests(true);
    measure_repair();
    measure_admin_image();
}

void run::run_step(const step& one)
{
    if (!is_selected(one.name)) {
        report_.fact(one.name, "left out by --only");
        return;
    }
    const std::wstring arguments = L"\"--gtest_filter=" + to_wide(one.filter) + L"\"";
    const child_result ended = run_child(kit_.bin(to_wide(one.program)), arguments, one.limit_s * 1000,
                                         kit_.work() + L"\\output.txt");
    report_tests(one, ended, parse_test_output(ended.output));
}

void run::report_tests(const step& one, const child_result& ended, const test_results& results)
{
    const std::string counts = std::string(one.name) + " (" + std::string(one.title) +
                               "): " + std::to_string(results.passed) + " passed, " +
                               std::to_string(results.failed.size()) + " failed, " +
                               std::to_string(results.skipped.size()) + " skipped";
    if (succeeded(ended) && results.passed > 0 && results.failed.empty() && results.unfinished.empty())
        report_.passed(counts);
    else
        report_.failed(counts + ", " + text_of(ended));
    for (const std::string& name : results.failed)
        report_.line("    failed: " + name);
    for (const std::string& name : results.unfinished)
        report_.line("    did not end: " + name);
    for (const std::string& name : results.skipped)
        report_.line("    skipped: " + name);
    for (const std::string& line : results.seen)
        report_.line("    seen: " + line);
    answers_.insert(results.answers.begin(), results.answers.end());
    if (!succeeded(ended))
        write_durably(kit_.folder + L"\\failed-" + to_wide(one.name) + L".txt", ended.output);
}

void run::install()
{
    check_interruption();
    report_.section("Installation");
    const child_result ended =
        run_msiexec(L"/i \"" + kit_.installer.path + L"\"", kit_.log(L"install"), kit_.work());
    dll_ = is_done(outcome_of(ended)) ? installed_dll() : L"";
    const std::string what = "msiexec /i: " + msi_text_of(ended) + " (msiexec-install.log)";
    if (dll_.empty() || !exists(dll_)) {
        report_.failed(what);
        answers_["msi-install"] = "installation: " + msi_text_of(ended);
        dll_.clear();
        return;
    }
    report_.passed(what);
    report_.fact("installed", file_version(dll_));
    answers_["msi-install"] = "installation: " + msi_text_of(ended);
}

void run::diagnose()
{
    check_interruption();
    report_.section("QuillDiagnose.exe");
    const std::wstring program = dll_.substr(0, dll_.find_last_of(L'\\')) + L"\\QuillDiagnose.exe";
    if (!exists(program)) {
        report_.line("  not run: " + to_utf8(program) + " is not installed");
        return;
    }
    constexpr DWORD limit_ms = 60'000;
    const child_result ended = run_child(program, L"", limit_ms, kit_.work() + L"\\output.txt");
    // Its exit code needs the suite's viewer and editor, which are not on a test machine.
    report_.fact("result", text_of(ended));
    report_.line("  It ran as administrator, with the kit's temporary folder and without variables of the "
                 "product: its lines about folders and variables are about this run.");
    std::string_view rest = ended.output;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        report_.line("    " + std::string(line));
    }
}

void run::report_answers()
{
    report_.section("Questions that only Windows can answer (docs/known-limits.md)");
    if (const std::string wine = wine_version(); !wine.empty())
        report_.line("  This is Wine " + wine + ": the answers say what Wine does, not what Windows does.");
    for (const std::string& line :
         answer_lines(answers_, selection_.empty() ? "its step did not run to its end"
                                                   : "its step was left out by --only, or did "
                                                     "not run to its end"))
        report_.line("  " + line);
}

// Also where the product is not listed: an installation of a killed run may have just ended.
bool run::remove_product()
{
    const child_result ended =
        run_msiexec(L"/x " + to_wide(saved_.product), kit_.log(L"remove"), kit_.work());
    if (ended.start_error == ERROR_SUCCESS && ended.exit_code == ERROR_UNKNOWN_PRODUCT) {
        report_.fact("msiexec /x", "the product was not installed");
        return true;
    }
    const std::string what = "msiexec /x: " + msi_text_of(ended) + " (msiexec-remove.log)";
    answers_["msi-install"] +=
        (answers_["msi-install"].empty() ? "removal: " : "; removal: ") + msi_text_of(ended);
    restart_pending_ = outcome_of(ended) == msi_outcome::done_restart_pending;
    if (!is_done(outcome_of(ended))) {
        report_.failed(what);
        return false;
    }
    report_.passed(what);
    return true;
}

bool run::put_back()
{
    CreateDirectoryW(kit_.work().c_str(), nullptr);
    report_.section("Removal");
    const std::wstring dll = installed_dll();
    bool complete = remove_product();
    if (complete && !dll.empty()) {
        const std::wstring folder = dll.substr(0, dll.find_last_of(L'\\'));
        if (exists(folder) && restart_pending_)
            report_.fact("pending", "the next restart deletes the folder " + to_utf8(folder));
        else if (exists(folder))
            report_.failed("the folder is still there: " + to_utf8(folder));
        else
            report_.passed("the folder is gone: " + to_utf8(folder));
    }
    delete_key_container();
    // Interrupted tests have not restored them. The product's own record is below the same key.
    restore_after_tests(true);
    complete = restore_registry() && complete;
    if (!delete_folder(kit_.work()))
        report_.failed("the folder of the kit's own files could not be deleted: " + to_utf8(kit_.work()));
    if (complete)
        DeleteFileW(kit_.journal().c_str());
    return complete;
}

// Tests leave empty keys where they created some, and more if one of them was terminated.
void run::restore_after_tests(bool is_installed)
{
    for (const saved_tree& tree : saved_.trees) {
        if (is_installed && !is_of_stand_ins(tree))
            continue;
        for (const std::string& line : difference(tree, read_tree(tree)))
            report_.fact("restored after the tests", line);
        restore_tree(tree);
    }
}

// What the removal has left is a failure; it is put right all the same.
bool run::restore_registry()
{
    std::vector<std::string> changed;
    for (const saved_tree& tree : saved_.trees)
        for (const std::string& line : difference(tree, read_tree(tree)))
            changed.push_back(line);
    if (changed.empty()) {
        report_.passed("the watched registry keys are as before: " + std::to_string(saved_.trees.size()) +
                       " compared");
        return true;
    }
    if (restart_pending_)
        report_.fact("pending", "the registry was not as before, and a restart is pending; it is restored");
    else
        report_.failed("the registry was not as before; it is restored");
    for (const std::string& line : changed)
        report_.line("    " + line);
    bool complete = true;
    for (const saved_tree& tree : saved_.trees) {
        try {
            restore_tree(tree);
        } catch (const std::exception& failure) {
            report_.failed(failure.what());
            complete = false;
            continue;
        }
        for (const std::string& line : difference(tree, read_tree(tree))) {
            report_.failed("not restored: " + line);
            complete = false;
        }
    }
    return complete;
}

} // namespace quill::acceptance
