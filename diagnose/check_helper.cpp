// The browser helper object for SharePoint libraries, and the editor that it starts. Nothing here keeps a PDF
// from opening in the browser, so nothing here is a problem.
#include "diagnose/lookup.h"
#include "diagnose/path_place.h"
#include "diagnose/zones.h"

#include <algorithm>

namespace quill::diagnose {
namespace {

constexpr const wchar_t* helper_objects =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Browser Helper Objects\\";
constexpr const wchar_t* elevation_policy =
    L"SOFTWARE\\Microsoft\\Internet Explorer\\Low Rights\\ElevationPolicy";

void check_user_helper(const std::vector<user_row>& rows, report& findings)
{
    finding result{state::ok, L"Helper object, registration for the user", L"none",
                   L"none, or the product's own values", L""};
    std::vector<std::wstring> texts;
    for (const user_row& row : rows) {
        texts.push_back(row.text);
        if (!row.is_same && !row.row->is_module_path)
            result.result = state::note;
    }
    if (!texts.empty())
        result.found = joined(texts) + L"; a tab uses these instead of the machine's";
    if (result.result == state::note)
        result.to_do = L"delete the user's key, or register the product for this user again";
    findings.push_back(result);
}

void check_helper_view(const subject& subject, report& findings)
{
    const server_path server =
        server_of_class(subject.computer, subject.product.helper_class, registry_view::bits_32);
    const registry_key object =
        machine_key(std::wstring(helper_objects) + subject.product.helper_class, registry_view::bits_32);
    const DWORD error = subject.computer.open(object);
    finding result{state::ok, L"Helper object, 32-bit view", L"not registered",
                   L"not registered: the DLL is for 64-bit tabs only", L""};
    if (!is_missing(server.value.value) || !is_missing(error)) {
        result.result = state::note;
        result.found = described(server.value.key, L"") + L": " + described(server.value.value) + L"; " +
                       described(object) + (error == ERROR_SUCCESS ? L" exists" : L": " + error_text(error));
        result.to_do = L"delete the keys: 32-bit tabs use them and cannot load the DLL";
    }
    findings.push_back(result);
}

// A registration for the user writes the class there and not for the machine.
void check_helper_registration(const subject& subject, report& findings)
{
    const auto of_user = read_user_rows(subject.computer, subject.product.helper_values);
    std::vector<std::wstring> wrong;
    for (const registered_value& row : subject.product.helper_values) {
        const std::wstring text = difference(subject.computer, row);
        if (!text.empty() && std::ranges::count(of_user, &row, &user_row::row) == 0)
            wrong.push_back(text);
    }
    const bool is_absent = wrong.size() == subject.product.helper_values.size();
    const bool is_expected = is_feature_installed(subject.computer, L"SharePoint");
    finding result{state::ok, L"Helper object, registration", L"complete",
                   L"complete if PDFs of SharePoint libraries are to open in the editor", L""};
    if (is_absent && !is_expected) {
        result.result = state::note;
        result.found = L"not registered; the feature SharePoint is not installed";
        result.to_do = L"msiexec /i PACKAGE.msi ADDLOCAL=SharePoint, if wanted";
    } else if (!wrong.empty()) {
        result.result = state::note;
        result.found = joined(wrong);
        result.to_do = repair;
    }
    findings.push_back(result);
    check_user_helper(of_user, findings);
}

void check_helper_library(const subject& subject, report& findings)
{
    const server_path document =
        server_of_class(subject.computer, subject.product.document_class, registry_view::bits_64);
    const server_path helper =
        server_of_class(subject.computer, subject.product.helper_class, registry_view::bits_64);
    const bool is_same = helper.path && document.path && equal_names(*helper.path, *document.path);
    const bool is_absent = is_missing(helper.value.value);
    findings.push_back({is_same || is_absent ? state::ok : state::note, L"Helper object, DLL",
                        described(helper.value.key, L"") + L": " + described(helper.value.value),
                        L"the DLL of the document class, or not registered",
                        is_same || is_absent ? L"" : repair});
}

void check_extensions(const subject& subject, report& findings)
{
    constexpr const wchar_t* name = L"Enable Browser Extensions";
    const found_value found =
        first_value(subject.computer, policy_keys(L"Microsoft\\Internet Explorer\\Main"), name);
    const auto text = text_of(found.value);
    const bool is_on = is_missing(found.value) || (text && !equal_names(*text, L"no"));
    findings.push_back(
        {is_on ? state::ok : state::note, L"Helper object, browser extensions",
         is_missing(found.value) ? L"not set: enabled"
                                 : described(found.key, name) + L": " + described(found.value),
         L"not set, or \"yes\"",
         is_on ? L"" : L"enable \"third-party browser extensions\" if the helper object is wanted"});
}

void check_editor(const subject& subject, report& findings)
{
    const std::wstring& path = subject.settings.editor_path;
    constexpr const wchar_t* name = L"exepath";
    finding result{state::ok, L"Desktop editor", L"", L"the full path of the suite's editor in HKLM", L""};
    bool is_usable = false;
    if (path.empty()) {
        const registry_key key = machine_key(subject.settings.editor_key);
        result.found = described(key, name) + L": " + described(subject.computer.value(key, name)) +
                       L"; a text of 260 or more characters is not read";
    } else if (!is_absolute(path)) {
        result.found = quoted(path) + L" is no full path: a tab looks for it in its own current folder";
    } else {
        const DWORD error = subject.computer.exists(path);
        const bool is_folder = error == ERROR_SUCCESS && subject.computer.is_folder(path);
        is_usable = error == ERROR_SUCCESS && !is_folder;
        result.found = quoted(path) + (is_usable   ? L""
                                       : is_folder ? L" is a folder"
                                                   : L": " + error_text(error));
    }
    if (!is_usable) {
        result.result = state::note;
        result.to_do = L"install the suite's editor; until then the system's default program opens the PDFs "
                       L"of libraries";
    }
    const registry_value of_user = subject.computer.value(user_key(subject.settings.editor_key), name);
    if (!is_missing(of_user)) {
        result.result = state::note;
        result.found += L"; the user's value " + described(of_user) + L" is ignored";
        if (result.to_do.empty())
            result.to_do = L"delete the user's value, or set the machine's";
    }
    findings.push_back(result);
}

// A folder without a separator at its end.
std::wstring_view trimmed(std::wstring_view folder)
{
    while (folder.ends_with(L'\\') || folder.ends_with(L'/'))
        folder.remove_suffix(1);
    return folder;
}

// What the elevation policy's entry is for: AppName in the folder AppPath.
bool is_policy_for(const machine& computer, const registry_key& entry, const std::wstring& program)
{
    const auto name = text_of(computer.value(entry, L"AppName"));
    const registry_value path = computer.value(entry, L"AppPath");
    auto folder = text_of(path);
    if (folder && path.type == REG_EXPAND_SZ)
        folder = computer.expanded(*folder);
    const std::wstring own = program.substr(0, program.size() - file_name(program).size());
    return name && folder && equal_names(*name, file_name(program)) &&
           equal_names(trimmed(*folder), trimmed(own));
}

// In protected mode the browser starts a program at medium integrity without asking only if a policy says so.
void check_elevation(const subject& subject, report& findings)
{
    constexpr DWORD without_asking = 3;
    const std::wstring& path = subject.settings.editor_path;
    finding result{state::note, L"Desktop editor, elevation policy", L"the editor is not known",
                   L"an entry with AppName, AppPath and Policy 3 for the editor, if libraries are opened in "
                   L"protected mode",
                   L"create the entry if users are asked each time"};
    if (!path.empty()) {
        const registry_key all = machine_key(elevation_policy);
        const subkey_list keys = subject.computer.subkeys(all);
        result.found = described(all) + (keys.error == ERROR_SUCCESS || is_missing(keys.error)
                                             ? std::wstring(L": no entry for ") + quoted(path)
                                             : L": " + error_text(keys.error));
        std::size_t unreadable = 0;
        for (const std::wstring& name : keys.names) {
            const registry_key key = below(all, name);
            const DWORD error = subject.computer.open(key);
            unreadable += error != ERROR_SUCCESS && !is_missing(error) ? 1 : 0;
            if (!is_policy_for(subject.computer, key, path))
                continue;
            const registry_value policy = subject.computer.value(key, L"Policy");
            result.found = described(key) + L": Policy " + described(policy);
            if (number_of(policy) == without_asking) {
                result.result = state::ok;
                result.to_do.clear();
                break;
            }
        }
        if (result.result != state::ok && unreadable > 0)
            result.found += L"; keys that cannot be read: " + number_text(unreadable);
    }
    findings.push_back(result);
}

} // namespace

void check_helper(const subject& subject, report& findings)
{
    const std::wstring& clsid = subject.product.helper_class;
    check_helper_registration(subject, findings);
    check_helper_library(subject, findings);
    check_helper_view(subject, findings);
    findings.push_back(
        add_on_list_finding(subject.computer, clsid, L"Helper object, Add-on List", state::note));
    findings.push_back(
        user_choice_finding(subject.computer, clsid, L"Helper object, disabled by the user", state::note));
    check_extensions(subject, findings);
    check_editor(subject, findings);
    check_elevation(subject, findings);
}

report diagnose(const subject& subject)
{
    report findings;
    check_system(subject, findings);
    check_installation(subject, findings);
    check_registration(subject, findings);
    check_content_types(subject, findings);
    check_library(subject, findings);
    check_viewer(subject, findings);
    check_blocking(subject, findings);
    check_tabs(subject, findings);
    check_folders(subject, findings);
    check_settings(subject, findings);
    check_helper(subject, findings);
    return findings;
}

} // namespace quill::diagnose
