// The system, the installer's record, and the settings of the product.
#include "diagnose/image_file.h"
#include "diagnose/lookup.h"

namespace quill::diagnose {
namespace {

// packaging/msi/product.py writes it.
constexpr const wchar_t* installer_key = L"SOFTWARE\\Quill\\QuillPDF.IE";

void check_account(const subject& subject, report& findings)
{
    const bool is_elevated = subject.system.is_elevated;
    findings.push_back(
        {is_elevated ? state::note : state::ok, L"Account",
         printable(subject.system.user) + (is_elevated ? L", elevated" : L", not elevated"),
         L"the account of the browser, not elevated: settings and folders of a user are this account's",
         is_elevated ? L"start the program again as the user whose PDFs do not open, not as administrator"
                     : L""});
}

void check_engine(const subject& subject, report& findings)
{
    const std::wstring browser = subject.system.program_files + L"\\Internet Explorer\\iexplore.exe";
    std::vector<std::wstring> wrong;
    const file_contents file = subject.computer.read(browser);
    if (file.error != ERROR_SUCCESS || file.is_folder)
        wrong.push_back(quoted(browser) + L": " + (file.is_folder ? L"is a folder" : error_text(file.error)));
    else if (read_image(file.bytes).kind != image_kind::bits_64)
        wrong.push_back(quoted(browser) + L" is no 64-bit program");
    for (const wchar_t* name : {L"ieframe.dll", L"mshtml.dll", L"urlmon.dll"}) {
        const std::wstring path = subject.system.system_folder + L"\\" + name;
        if (const DWORD error = subject.computer.exists(path); error != ERROR_SUCCESS)
            wrong.push_back(quoted(path) + L": " + error_text(error));
    }
    const registry_key key = machine_key(L"SOFTWARE\\Microsoft\\Internet Explorer");
    const found_value version = first_value(subject.computer, {key}, L"svcVersion");
    const found_value older = first_value(subject.computer, {key}, L"Version");
    const auto text = text_of(is_missing(version.value) ? older.value : version.value);
    findings.push_back({wrong.empty() ? state::ok : state::problem, L"Internet Explorer",
                        (wrong.empty() ? quoted(browser) + L" and its libraries exist" : joined(wrong)) +
                            L"; version " + (text ? quoted(*text) : std::wstring(L"not known")),
                        L"the 64-bit iexplore.exe and the engine's libraries, which Edge's IE mode uses too",
                        wrong.empty() ? L"" : L"enable the Windows feature Internet Explorer 11"});
}

} // namespace

void check_system(const subject& subject, report& findings)
{
    check_account(subject, findings);
    findings.push_back({state::ok, L"Windows", printable(subject.system.windows_version),
                        L"64-bit Windows: this program starts on no other", L""});
    check_engine(subject, findings);
}

bool is_feature_installed(const machine& computer, const wchar_t* feature)
{
    return !is_missing(computer.value(machine_key(installer_key), feature));
}

void check_installation(const subject& subject, report& findings)
{
    const registry_key key = machine_key(installer_key);
    finding result{state::ok, L"Installation", L"",
                   L"the installer's record of folder and features, version " +
                       subject.product.version.substr(0, subject.product.version.rfind(L'.')),
                   L""};
    const DWORD error = subject.computer.open(key);
    if (is_missing(error)) {
        result.result = state::note;
        result.found = L"no record: not installed by the package, or registered with regsvr32";
        result.to_do = L"nothing if regsvr32 registered the product; otherwise install the package";
    } else if (error != ERROR_SUCCESS) {
        result.result = state::note;
        result.found = described(key) + L": " + error_text(error);
        result.to_do = repair;
    } else {
        const registry_value folder = subject.computer.value(key, L"InstallDir");
        const registry_value document = subject.computer.value(key, L"ActiveDocument");
        result.found = L"InstallDir " + described(folder) + L", ActiveDocument " + described(document) +
                       L", SharePoint " + described(subject.computer.value(key, L"SharePoint"));
        const auto installed = text_of(folder);
        const registry_value dll =
            subject.computer.value(machine_key(std::wstring(classes_key) + L"\\CLSID\\" +
                                               subject.product.document_class + L"\\InprocServer32"),
                                   L"");
        const std::wstring path = text_of(dll).value_or(L"");
        const std::wstring dll_folder = path.substr(0, path.find_last_of(L'\\') + 1);
        const auto version = text_of(document);
        const bool is_complete = installed && version && *version + L".0" == subject.product.version;
        if (!is_complete || !equal_names(*installed, dll_folder)) {
            result.result = state::note;
            result.found += L"; the DLL is registered in " + quoted(dll_folder);
            result.to_do = is_missing(document)
                               ? L"msiexec /i PACKAGE.msi ADDLOCAL=ActiveDocument, if PDFs are to open"
                               : repair;
        }
    }
    findings.push_back(result);
}

namespace {

const wchar_t* source_text(switch_source source)
{
    switch (source) {
    case switch_source::user:
        return L"HKCU";
    case switch_source::machine:
        return L"HKLM";
    case switch_source::machine_32_bit:
        return L"HKLM (32-bit view)";
    case switch_source::none:
        break;
    }
    return L"";
}

void check_wininet(const subject& subject, report& findings)
{
    const product_settings& settings = subject.settings;
    finding result{state::ok, L"WinINet switch", L"off: there is no key " + printable(settings.wininet_key),
                   L"off, or text such as \"/b 1\" for a network in which certificates do not matter", L""};
    if (settings.wininet_source == switch_source::none) {
        // The module stops at the first key that exists, also if it cannot read it.
        for (const registry_key& key : {user_key(settings.wininet_key), machine_key(settings.wininet_key),
                                        machine_key(settings.wininet_key, registry_view::bits_32)}) {
            const DWORD error = subject.computer.open(key);
            if (error == ERROR_SUCCESS || is_missing(error))
                continue;
            result.result = state::note;
            result.found =
                L"off: " + described(key) + L": " + error_text(error) + L", and no other is looked for";
            result.to_do = L"correct the rights of the key if the switch is to be on";
            break;
        }
    } else {
        const registry_key key{
            settings.wininet_source == switch_source::user ? registry_root::user : registry_root::machine,
            settings.wininet_key,
            settings.wininet_source == switch_source::machine_32_bit ? registry_view::bits_32
                                                                     : registry_view::bits_64};
        const registry_value value = subject.computer.value(key, settings.wininet_value);
        result.found = std::wstring(settings.uses_wininet ? L"on" : L"off") + L", from " +
                       source_text(settings.wininet_source) + L": " + described(key, settings.wininet_value) +
                       L": " + described(value);
        if (settings.uses_wininet) {
            result.result = state::note;
            result.to_do = L"nothing if this is intended: servers' certificates prove nothing then";
        } else if (!is_missing(value) && !text_of(value)) {
            result.result = state::note;
            result.to_do = L"write the value as text (REG_SZ)";
        }
    }
    findings.push_back(result);
}

// The default path, the browser's download service, copies from the browser's cache, in which encrypted pages
// then have no file.
void check_encrypted_pages(const subject& subject, report& findings)
{
    constexpr const wchar_t* name = L"DisableCachingOfSSLPages";
    const found_value found = first_value(
        subject.computer, policy_keys(L"Microsoft\\Windows\\CurrentVersion\\Internet Settings"), name);
    const auto number = number_of(found.value);
    const bool is_saved = is_missing(found.value) || number == DWORD{0};
    finding result{state::ok, L"Encrypted pages",
                   is_missing(found.value) ? std::wstring(L"not set: saved")
                                           : described(found.key, name) + L": " + described(found.value),
                   L"not set, or 0: the default download path needs a file in the browser's cache", L""};
    if (!is_saved && subject.settings.uses_wininet) {
        result.found += L"; does not matter: the WinINet switch is on";
    } else if (!is_saved) {
        result.result = state::problem;
        result.found += L"; PDFs of https servers do not open, those of http servers do";
        result.to_do =
            L"switch \"Do not save encrypted pages to disk\" off, by policy or under Internet Options, "
            L"Advanced";
    }
    findings.push_back(result);
}

// A value of the registry as a new session would have it.
std::wstring session_text(const machine& computer, const registry_value& value)
{
    const auto text = text_of(value);
    if (!text)
        return {};
    return value.type == REG_EXPAND_SZ ? computer.expanded(*text) : *text;
}

// Programs get the variables of the registry when the user signs in.
void check_environment(const subject& subject, report& findings)
{
    std::vector<std::wstring> different;
    std::wstring names;
    for (const std::wstring& name : subject.settings.variables) {
        names += (names.empty() ? L"" : L", ") + name;
        const found_value found =
            first_value(subject.computer,
                        {user_key(L"Environment"),
                         machine_key(L"SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment")},
                        name);
        if (is_missing(found.value))
            continue;
        const auto current = subject.computer.environment(name);
        if (text_of(found.value) && session_text(subject.computer, found.value) == current.value_or(L""))
            continue;
        different.push_back(described(found.key, name) + L": " + described(found.value) +
                            L", but this program has " + (current ? quoted(*current) : L"no such variable"));
    }
    finding result{state::ok, L"Environment variables", L"none in the registry, or as this program has them",
                   names + L" as text in the registry, as this program has them", L""};
    if (!different.empty()) {
        result.result = state::note;
        result.found = joined(different);
        result.to_do =
            L"sign out and in again: the tabs have the variables of the time of the sign-in; write "
            L"the values as text";
    }
    findings.push_back(result);
}

} // namespace

void check_settings(const subject& subject, report& findings)
{
    check_wininet(subject, findings);
    check_encrypted_pages(subject, findings);
    check_environment(subject, findings);
}

} // namespace quill::diagnose
