// Where a tab writes: the temporary folders, the log, and what downloads have left.
#include "diagnose/lookup.h"
#include "diagnose/path_place.h"
#include "diagnose/zones.h"

#include <algorithm>

namespace quill::diagnose {
namespace {

constexpr std::uint64_t many_folders = 500;
constexpr std::uint64_t many_bytes = std::uint64_t{1} << 30;

constexpr const wchar_t* not_absolute =
    L"is no full path: a tab looks for it in its own current folder, which is not known here";

bool is_file(const machine& computer, const std::wstring& path)
{
    return computer.exists(path) == ERROR_SUCCESS && !computer.is_folder(path);
}

// Why a folder cannot be used: it is a file, does not exist, or the error of its use.
std::wstring folder_error(const machine& computer, const std::wstring& path, DWORD error)
{
    return is_file(computer, path) ? L"is a file, not a folder" : error_text(error);
}

void check_temp_folder(const subject& subject, report& findings)
{
    const product_settings& settings = subject.settings;
    const std::wstring origin =
        settings.is_temp_folder_set ? L" (from " + settings.temp_variable + L")" : L" (the system's)";
    finding result{state::problem, L"Temporary folder", L"the system has none" + origin,
                   L"a folder in which a file can be created",
                   settings.is_temp_folder_set
                       ? L"create the folder, or correct " + settings.temp_variable
                       : L"correct TMP or TEMP, or give the user rights in the folder"};
    if (settings.temp_folder.empty() && !settings.system_temp_variable.empty()) {
        const std::wstring& value = settings.system_temp_value;
        result.found += L": " + settings.system_temp_variable + L" is " + quoted(value);
        if (!value.empty() && !is_absolute(value))
            result.found += std::wstring(L", which ") + not_absolute;
        else if (!value.empty())
            result.found += L": " + folder_error(subject.computer, value, ERROR_PATH_NOT_FOUND);
    } else if (settings.is_temp_folder_set && !is_absolute(settings.temp_folder)) {
        result.found = quoted(settings.temp_folder) + origin + L": " + not_absolute;
        result.to_do = L"write a full path into " + settings.temp_variable;
    } else if (!settings.temp_folder.empty()) {
        const write_facts facts = subject.computer.write(settings.temp_folder, false);
        result.found = quoted(settings.temp_folder) + origin + L": ";
        if (facts.result == write_result::written) {
            result.result = state::ok;
            result.found += L"can be written";
            result.to_do.clear();
        } else {
            result.found +=
                L"cannot be written: " + folder_error(subject.computer, settings.temp_folder, facts.error);
            if (settings.is_temp_folder_set && is_file(subject.computer, settings.temp_folder))
                result.to_do = L"correct " + settings.temp_variable;
        }
    }
    findings.push_back(result);
}

// Appends what was found out about writing at low integrity. `refused` is the state of a folder without this
// right.
state low_integrity_state(const machine& computer, const std::wstring& folder, state refused,
                          std::wstring& text)
{
    const write_facts facts = computer.write(folder, true);
    switch (facts.result) {
    case write_result::written:
        text += L"can be written at low integrity";
        return state::ok;
    case write_result::refused:
        text += L"cannot be written at low integrity: " + folder_error(computer, folder, facts.error);
        return refused;
    case write_result::not_tested:
        break;
    }
    text += L"not tested: the system does not lower the integrity of a thread; the folder's mandatory label ";
    text +=
        facts.has_low_label ? L"admits low integrity" : L"does not admit low integrity, or cannot be read";
    return state::note;
}

void check_low_temp_folder(const subject& subject, report& findings)
{
    const std::wstring& folder = subject.settings.low_temp_folder;
    const bool is_used = is_any_zone_protected(subject.computer);
    const state refused = is_used ? state::problem : state::note;
    finding result{refused, L"Temporary folder in protected mode", L"the system has none",
                   L"a folder in which a tab of low integrity can create a file", L""};
    if (!folder.empty()) {
        result.found = quoted(folder) + L": ";
        const DWORD error = subject.computer.exists(folder);
        // The module creates Temp, which inherits the label of LocalLow.
        const std::wstring parent = folder.substr(0, folder.find_last_of(L'\\'));
        if (is_missing(error))
            result.found +=
                L"does not exist yet and is created by the first download; " + quoted(parent) + L": ";
        result.result =
            low_integrity_state(subject.computer, is_missing(error) ? parent : folder, refused, result.found);
    }
    if (!is_used)
        result.found += L" (no zone with PDFs is in protected mode)";
    if (result.result != state::ok && is_file(subject.computer, folder))
        result.to_do = L"delete or rename the file: the first download creates the folder";
    else if (result.result == state::problem)
        result.to_do = L"icacls \"" + printable(folder) +
                       L"\" /setintegritylevel (OI)(CI)low, and give the user rights in it";
    else if (result.result == state::note)
        result.to_do = L"nothing if PDFs open; otherwise examine the folder's label with icacls";
    findings.push_back(result);
}

void add_log_folder(const subject& subject, finding& result)
{
    const std::wstring& folder = subject.settings.log_folder;
    result.found = quoted(folder) + L": ";
    const write_facts facts = folder.empty() ? write_facts() : subject.computer.write(folder, false);
    if (folder.empty()) {
        result.result = state::note;
        result.found = L"no folder: the user's application-data folder does not exist or cannot be used";
    } else if (facts.result != write_result::written) {
        result.result = state::note;
        result.found += L"cannot be written: " + folder_error(subject.computer, folder, facts.error);
    } else if (is_any_zone_protected(subject.computer)) {
        result.result = low_integrity_state(subject.computer, folder, state::note, result.found);
    } else {
        result.found += L"can be written";
    }
}

void check_log(const subject& subject, report& findings)
{
    const product_settings& settings = subject.settings;
    finding result{state::ok, L"Log", L"off: QUILL_LOG_LEVEL is not set",
                   L"off, or a file that a tab can write", L""};
    if (settings.is_log_set && !settings.is_log_on) {
        result.result = state::note;
        result.found = L"off: QUILL_LOG_LEVEL is " + quoted(settings.log_level) + L", which is no level";
        result.to_do = L"set it to trace, debug, info, warning, error or critical, or remove it";
    } else if (settings.is_log_on && !settings.is_log_to_file) {
        result.found = L"on, level " + quoted(settings.log_level) + L", not to a file";
    } else if (settings.is_log_on) {
        add_log_folder(subject, result);
        if (result.result == state::note)
            result.to_do =
                L"PDFs open without a log; for one in protected mode create .quill\\test in the user's "
                L"profile, and run icacls on it with /setintegritylevel (OI)(CI)low";
    }
    if (!settings.unknown_sinks.empty()) {
        std::vector<std::wstring> words;
        words.reserve(settings.unknown_sinks.size());
        for (const std::wstring& word : settings.unknown_sinks)
            words.push_back(quoted(word));
        result.result = state::note;
        result.found += L"; QUILL_LOG_SINKS has what is no destination: " + joined(words);
        result.to_do += (result.to_do.empty() ? L"" : L"; ") +
                        std::wstring(L"write file, stdout or procmon, in lower case, or remove the variable");
    }
    findings.push_back(result);
}

void check_downloads(const subject& subject, const wchar_t* check, const std::wstring& folder,
                     report& findings)
{
    finding result{state::ok, check, L"no such folder", L"fewer than 500 folders and less than 1 GiB", L""};
    if (!folder.empty() && !is_absolute(folder)) {
        result.result = state::note;
        result.found = quoted(folder) + L": " + not_absolute;
        result.to_do = L"write a full path into the variable";
    } else if (!folder.empty()) {
        const download_count count = subject.computer.downloads(folder);
        result.found = quoted(folder) + L": ";
        if (is_missing(count.error)) {
            result.found += L"does not exist";
        } else if (count.error != ERROR_SUCCESS) {
            result.result = state::note;
            result.found += L"cannot be listed: " + folder_error(subject.computer, folder, count.error);
            result.to_do = is_file(subject.computer, folder) ? L"name a folder in the variable"
                                                             : L"give the user the right to list the folder";
        } else {
            result.found += counted(count.folders, L"folder") + L" with " + counted(count.bytes, L"byte");
            if (count.folders > 0)
                result.found += L", the oldest of " + counted(count.oldest_days, L"day");
            if (count.unreadable > 0)
                result.found += L", and " + number_text(count.unreadable) + L" that cannot be listed";
            if (count.folders >= many_folders || count.bytes >= many_bytes || count.unreadable > 0) {
                result.result = state::note;
                result.to_do =
                    L"QuillDiagnose --clean-downloads 30 removes those that are older than 30 days";
            }
        }
    }
    findings.push_back(result);
}

} // namespace

void check_folders(const subject& subject, report& findings)
{
    const product_settings& settings = subject.settings;
    check_temp_folder(subject, findings);
    check_low_temp_folder(subject, findings);
    check_log(subject, findings);
    check_downloads(subject, L"Downloads, system's temporary folder", settings.system_temp_folder, findings);
    check_downloads(subject, L"Downloads, temporary folder in protected mode", settings.low_temp_folder,
                    findings);
    check_downloads(subject, L"Downloads, QUILL_TMP_FOLDER",
                    settings.is_temp_folder_set ? settings.temp_folder : std::wstring(), findings);
}

} // namespace quill::diagnose
