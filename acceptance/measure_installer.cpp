// The questions about Windows Installer that the run measures itself.
#include "acceptance/child.h"
#include "acceptance/registry_tree.h"
#include "acceptance/run.h"
#include "acceptance/windows_text.h"
#include "active_doc/identifiers.h"
#include "platform/text.h"

#include <ole2.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace quill::acceptance {
namespace {

std::string exit_text(const child_result& result)
{
    return "msiexec's exit code is " + std::to_string(result.exit_code);
}

bool exists(const std::wstring& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// Also in the folders below.
bool contains(const std::wstring& folder, const std::wstring& name)
{
    std::error_code error;
    std::filesystem::recursive_directory_iterator entry(
        folder, std::filesystem::directory_options::skip_permission_denied, error);
    for (; !error && entry != std::filesystem::recursive_directory_iterator(); entry.increment(error))
        if (entry->path().filename() == name)
            return true;
    return false;
}

} // namespace

// The failing copy is installed into the work folder, so that nothing stays where rollback does not work.
void run::measure_rollback()
{
    if (!is_selected("rollback"))
        return;
    check_interruption();
    report_.section("Rollback of a failing installation");
    const std::wstring copy = kit_.work() + L"\\failing.msi";
    const std::wstring folder = kit_.work() + L"\\rollback";
    if (!make_failing_package(kit_.installer, copy)) {
        report_.failed("a failing copy of the package could not be made");
        return;
    }
    const child_result ended = run_msiexec(L"/i \"" + copy + L"\" INSTALLDIR=\"" + folder + L"\"",
                                           kit_.log(L"rollback"), kit_.work());
    std::size_t changes = 0;
    for (const saved_tree& tree : saved_.trees)
        changes += difference(tree, read_tree(tree)).size();
    const bool is_listed = !installed_products(kit_.installer).empty();
    answers_["msi-rollback"] =
        (outcome_of(ended) == msi_outcome::action_failed ? "" : "not measured, the action did not fail: ") +
        exit_text(ended) + "; registry keys and values that differ: " + std::to_string(changes) +
        "; the folder " + (exists(folder) ? "stayed" : "is gone") + "; the product is " +
        (is_listed ? "listed as installed" : "not listed as installed");
    report_.fact("seen", answers_["msi-rollback"]);
    if (is_listed)
        run_msiexec(L"/x " + kit_.installer.product_code, kit_.log(L"rollback-remove"), kit_.work());
    for (const saved_tree& tree : saved_.trees)
        restore_tree(tree);
}

void run::measure_repair()
{
    if (!is_selected("repair"))
        return;
    check_interruption();
    report_.section("Repair");
    wchar_t id[64]{};
    StringFromGUID2(CLSID_ActiveDocCtrl, id, 64);
    const std::wstring key = std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + id + L"\\InprocServer32";
    wchar_t before[64]{};
    DWORD before_size = sizeof before;
    RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"ThreadingModel", RRF_RT_REG_SZ, nullptr, before,
                 &before_size);
    const LSTATUS deleted = RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"ThreadingModel");
    if (deleted != ERROR_SUCCESS) {
        answers_["msi-repair"] =
            "not measured: the value could not be deleted (" + error_text(static_cast<DWORD>(deleted)) + ")";
        report_.fact("seen", answers_["msi-repair"]);
        return;
    }
    const child_result ended =
        run_msiexec(L"/fa " + kit_.installer.product_code, kit_.log(L"repair"), kit_.work());
    wchar_t model[64]{};
    DWORD size = sizeof model;
    const bool repaired = RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"ThreadingModel", RRF_RT_REG_SZ,
                                       nullptr, model, &size) == ERROR_SUCCESS;
    answers_["msi-repair"] =
        "a value was deleted; " + exit_text(ended) + "; the value is " +
        (repaired ? "there again: " + to_utf8(model) : "still missing, and was put back");
    if (!repaired)
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"ThreadingModel", REG_SZ, before, before_size);
    report_.fact("seen", answers_["msi-repair"]);
}

void run::measure_admin_image()
{
    if (!is_selected("admin-image"))
        return;
    check_interruption();
    report_.section("Administrative image");
    const std::wstring folder = kit_.work() + L"\\image";
    const child_result ended =
        run_msiexec(L"/a \"" + kit_.installer.path + L"\" TARGETDIR=\"" + folder + L"\"", kit_.log(L"image"),
                    kit_.work());
    answers_["msi-admin-image"] = exit_text(ended) + "; the image's folder " +
                                  (!exists(folder)                        ? "was not made"
                                   : contains(folder, L"QuillPDF.IE.dll") ? "was made, with the DLL"
                                                                          : "was made, without the DLL");
    report_.fact("seen", answers_["msi-admin-image"]);
}

} // namespace quill::acceptance
