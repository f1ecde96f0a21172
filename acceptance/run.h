// One acceptance run: preconditions, journal, steps, removal, report.
#pragma once

#include "acceptance/exit_codes.h"
#include "acceptance/kit.h"
#include "acceptance/report.h"
#include "acceptance/saved_registry.h"
#include "acceptance/steps.h"
#include "acceptance/test_output.h"

#include <map>
#include <string>
#include <vector>

namespace quill::acceptance {

class run
{
public:
    // selection: the steps to run; all of them if it is empty.
    run(kit& of, report& writes, std::vector<std::string> selection);

    exit_code execute();

private:
    // Returns exit_passed, or why the run is refused; says so in the report.
    exit_code refusal();
    exit_code refuse(exit_code code, const std::string& message);
    exit_code restore_broken_off_run();
    bool save_state();
    void delete_old_logs();

    void run_steps();
    void run_step(const step& one);
    void report_tests(const step& one, const child_result& ended, const test_results& results);
    void install();
    void diagnose();
    void measure_rollback();
    void measure_repair();
    void measure_admin_image();

    // Removes the product, restores the registry and deletes the work folder; says what was not as before.
    bool put_back();
    bool remove_product();
    bool restore_registry();
    // Restores what the tests have changed: all keys, or without those of the product while it is installed.
    void restore_after_tests(bool is_installed);
    // The keys that a run saves, compares and restores, without their contents.
    std::vector<saved_tree> watched_trees(const std::string& product) const;
    bool is_own(const journal& saved) const;
    void report_answers();
    bool is_selected(std::string_view step) const;
    std::wstring installed_dll() const;

    kit& kit_;
    report& report_;
    std::vector<std::string> selection_;
    journal saved_;
    std::map<std::string, std::string> answers_;
    std::wstring dll_; // while it is installed
    bool was_broken_off_ = false;
    bool has_restored_ = false;    // the state before an earlier run
    bool restart_pending_ = false; // of the removal
};

} // namespace quill::acceptance
