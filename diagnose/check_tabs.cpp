// Which tab processes are 64-bit ones, and which are in protected mode.
#include "diagnose/lookup.h"
#include "diagnose/zones.h"

#include <algorithm>

namespace quill::diagnose {

namespace {

constexpr const wchar_t* machine_only = L"Security_HKLM_only";

zone_value read_zone(const machine& computer, const std::vector<registry_key>& keys, const wchar_t* action)
{
    const found_value found = first_value(computer, keys, action);
    if (is_missing(found.value))
        return {};
    const auto number = number_of(found.value);
    return {number, !number, described(found.key, action) + L": " + described(found.value)};
}

} // namespace

zone_value value_of_zone(const machine& computer, int zone, const wchar_t* action)
{
    constexpr const wchar_t* settings = L"Microsoft\\Windows\\CurrentVersion\\Internet Settings";
    const registry_key policy = machine_key(L"SOFTWARE\\Policies\\" + std::wstring(settings));
    const registry_value restriction = computer.value(policy, machine_only);
    const auto keys =
        policy_keys(settings + std::wstring(L"\\Zones\\") + number_text(static_cast<unsigned>(zone)));
    auto of_machine = keys;
    std::erase_if(of_machine, [](const registry_key& key) { return key.root == registry_root::user; });
    zone_value all = read_zone(computer, keys, action);
    zone_value restricted = read_zone(computer, of_machine, action);
    const auto number = number_of(restriction);
    if (number == DWORD{1})
        return restricted;
    if (number || is_missing(restriction) || all.number == restricted.number)
        return all;
    return {std::nullopt, true,
            described(policy, machine_only) + L": " + described(restriction) +
                L", so it is not certain whether the user's settings count"};
}

namespace {

constexpr const wchar_t* browser_key = L"Microsoft\\Internet Explorer\\Main";

enum class tab_process
{
    bits_64,
    container, // 64-bit, and in an AppContainer
    bits_32
};

struct zone_protection
{
    const zone* place = nullptr;
    bool is_protected = false;
    zone_value value;
    tab_process process = tab_process::bits_32;
};

std::vector<zone_protection> protections(const machine& computer)
{
    constexpr DWORD off = 3;
    std::vector<zone_protection> result;
    for (const zone& place : zones_with_documents) {
        const zone_value value = value_of_zone(computer, place.number, L"2500");
        const bool is_protected = value.number ? *value.number != off : place.is_protected_by_default;
        result.push_back({&place, is_protected, value, tab_process::bits_32});
    }
    return result;
}

template <typename Condition>
std::wstring names_of(const std::vector<zone_protection>& zones, Condition is_meant)
{
    std::wstring names;
    for (const zone_protection& zone : zones) {
        if (is_meant(zone))
            names += (names.empty() ? L"" : L", ") + std::wstring(zone.place->name);
    }
    return names;
}

std::wstring names_of(const std::vector<zone_protection>& zones, tab_process process)
{
    return names_of(zones, [=](const zone_protection& zone) { return zone.process == process; });
}

// From Windows 8 on, Enhanced Protected Mode is an AppContainer. A version that is not known may be a later
// one.
bool has_app_containers(const system_facts& system)
{
    const DWORD major = system.windows_major;
    return major == 0 || major > 6 || (major == 6 && system.windows_minor >= 2);
}

bool is_declared_compatible(const subject& subject)
{
    return subject.computer.open(machine_key(std::wstring(classes_key) + L"\\CLSID\\" +
                                             subject.product.document_class + L"\\Implemented Categories\\" +
                                             subject.product.app_container_category)) == ERROR_SUCCESS;
}

struct tab_setting
{
    found_value found;
    std::wstring text; // empty if it is not set
};

tab_setting read_setting(const machine& computer, const wchar_t* name)
{
    tab_setting setting{first_value(computer, policy_keys(browser_key), name), L""};
    if (!is_missing(setting.found.value))
        setting.text = described(setting.found.key, name) + L": " + described(setting.found.value);
    return setting;
}

constexpr const wchar_t* set_growth =
    L"set TabProcGrowth to 0, by the policy \"Set tab process growth\" or as REG_DWORD in "
    L"HKCU\\SOFTWARE\\Microsoft\\Internet Explorer\\Main";

// What is not certain about tabs in an AppContainer.
std::wstring container_text(const subject& subject, const std::wstring& names)
{
    return L"64-bit tabs in an AppContainer, in which it is not certain that a PDF opens: " + names +
           L" (such a tab loads add-ons only that declare that they are compatible, which the class " +
           (is_declared_compatible(subject) ? L"does" : L"does not") +
           L"; whether the viewer and the temporary folder can be used there is not known)";
}

void check_tab_processes(const subject& subject, std::vector<zone_protection>& zones, report& findings)
{
    const tab_setting growth = read_setting(subject.computer, L"TabProcGrowth");
    const tab_setting isolation = read_setting(subject.computer, L"Isolation");
    const tab_setting wide = read_setting(subject.computer, L"Isolation64Bit");
    const bool is_one_process = lenient_number_of(growth.found.value) == DWORD{0};
    const auto mode = text_of(isolation.found.value);
    const bool is_enhanced = mode && equal_names(*mode, L"PMEM");
    const bool is_wide = is_enhanced && number_of(wide.found.value) == DWORD{1};
    const bool has_containers = has_app_containers(subject.system);
    for (zone_protection& zone : zones) {
        if (is_one_process)
            zone.process = tab_process::bits_64;
        else if (is_wide && zone.is_protected)
            zone.process = has_containers ? tab_process::container : tab_process::bits_64;
    }
    const std::wstring loading = names_of(zones, tab_process::bits_64);
    const std::wstring contained = names_of(zones, tab_process::container);
    const std::wstring other = names_of(zones, tab_process::bits_32);

    finding result{state::problem, L"64-bit tabs", L"",
                   L"TabProcGrowth 0; before Windows 8 also Isolation \"PMEM\" with Isolation64Bit 1, and "
                   L"protected mode in the zones of your PDFs",
                   set_growth};
    if (is_one_process) {
        result.result = state::ok;
        result.to_do.clear();
        result.found = L"all tabs are in the 64-bit process of the browser's frame and load the DLL";
    } else if (loading.empty() && contained.empty()) {
        result.found = L"all tabs are 32-bit processes, which do not load the DLL";
    } else {
        std::vector<std::wstring> kinds;
        if (!loading.empty())
            kinds.push_back(L"64-bit tabs, which load the DLL: " + loading);
        if (!contained.empty())
            kinds.push_back(container_text(subject, contained));
        if (!other.empty())
            kinds.push_back(L"32-bit tabs, which do not: " + other);
        result.found = joined(kinds);
        if (!loading.empty()) {
            result.result = other.empty() ? state::ok : state::note;
            result.to_do = other.empty() ? L""
                                         : L"switch on protected mode for the zones whose PDFs are to open, "
                                           L"or " +
                                               std::wstring(set_growth);
        }
    }
    std::vector<std::wstring> set;
    for (const tab_setting* setting : {&growth, &isolation, &wide}) {
        if (!setting->text.empty())
            set.push_back(setting->text);
    }
    result.found +=
        L" (" +
        (set.empty() ? std::wstring(L"nothing is set: the defaults of Internet Explorer 11") : joined(set)) +
        L")";
    findings.push_back(result);
}

// A zone may have 64-bit tabs and no ActiveX controls, and another one the reverse: then a PDF opens in none.
void check_open_zones(const subject& subject, const std::vector<zone_protection>& zones, report& findings)
{
    const auto is_allowed = [&](const zone_protection& zone) {
        return are_controls_allowed(value_of_zone(subject.computer, zone.place->number, run_controls));
    };
    const auto opens = [&](const zone_protection& zone) {
        return zone.process == tab_process::bits_64 && is_allowed(zone);
    };
    const auto may_open = [&](const zone_protection& zone) {
        return zone.process == tab_process::container && is_allowed(zone);
    };
    const std::wstring open = names_of(zones, opens);
    const std::wstring unclear = names_of(zones, may_open);
    const std::wstring closed =
        names_of(zones, [&](const zone_protection& zone) { return !opens(zone) && !may_open(zone); });
    finding result{state::ok, L"Zones in which a PDF opens", open.empty() ? L"none" : open,
                   L"the zones of your PDFs", L""};
    if (!unclear.empty())
        result.found += L"; not certain: " + unclear;
    if (!closed.empty())
        result.found += L"; not: " + closed;
    if (!unclear.empty() || !closed.empty()) {
        result.result = open.empty() ? state::problem : state::note;
        result.to_do = L"see \"64-bit tabs\" and \"ActiveX controls in the security zones\"";
        result.limit = L", in these zones: " + result.found;
    }
    findings.push_back(result);
}

void check_protected_mode(const std::vector<zone_protection>& zones, report& findings)
{
    std::wstring found;
    bool is_invalid = false;
    for (const zone_protection& zone : zones) {
        found += (found.empty() ? L"" : L"; ") + std::wstring(zone.place->name) +
                 (zone.is_protected ? L" on" : L" off") +
                 (zone.value.text.empty() ? L" (default)" : L" (" + zone.value.text + L")");
        is_invalid = is_invalid || zone.value.is_invalid;
    }
    findings.push_back({is_invalid ? state::note : state::ok, L"Protected mode", found,
                        L"on or off: it decides where downloads and the log are written",
                        is_invalid ? L"set 2500 to a number: 0 is on, 3 is off" : L""});
}

} // namespace

bool is_any_zone_protected(const machine& computer)
{
    return std::ranges::any_of(protections(computer), &zone_protection::is_protected);
}

void check_tabs(const subject& subject, report& findings)
{
    auto zones = protections(subject.computer);
    check_tab_processes(subject, zones, findings);
    check_open_zones(subject, zones, findings);
    check_protected_mode(zones, findings);
}

} // namespace quill::diagnose
