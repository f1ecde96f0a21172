// Which tab processes are 64-bit ones, and which are in protected mode.
#include "diagnose/lookup.h"
#include "diagnose/zones.h"

#include <algorithm>

namespace quill::diagnose {

zone_value value_of_zone(const machine& computer, int zone, const wchar_t* action)
{
    constexpr const wchar_t* settings = L"Microsoft\\Windows\\CurrentVersion\\Internet Settings";
    const auto restriction = number_of(
        computer.value(machine_key(L"SOFTWARE\\Policies\\" + std::wstring(settings)), L"Security_HKLM_only"));
    auto keys = policy_keys(settings + std::wstring(L"\\Zones\\") + number_text(static_cast<unsigned>(zone)));
    if (restriction == DWORD{1})
        std::erase_if(keys, [](const registry_key& key) { return key.root == registry_root::user; });
    const found_value found = first_value(computer, keys, action);
    if (is_missing(found.value))
        return {};
    const auto number = number_of(found.value);
    return {number, !number, described(found.key, action) + L": " + described(found.value)};
}

namespace {

constexpr const wchar_t* browser_key = L"Microsoft\\Internet Explorer\\Main";

struct zone_protection
{
    const zone* place = nullptr;
    bool is_protected = false;
    zone_value value;
};

std::vector<zone_protection> protections(const machine& computer)
{
    constexpr DWORD off = 3;
    std::vector<zone_protection> result;
    for (const zone& place : zones_with_documents) {
        const zone_value value = value_of_zone(computer, place.number, L"2500");
        const bool is_protected = value.number ? *value.number != off : place.is_protected_by_default;
        result.push_back({&place, is_protected, value});
    }
    return result;
}

std::wstring names_of(const std::vector<zone_protection>& zones, bool is_protected)
{
    std::wstring names;
    for (const zone_protection& zone : zones) {
        if (zone.is_protected == is_protected)
            names += (names.empty() ? L"" : L", ") + std::wstring(zone.place->name);
    }
    return names;
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

void check_tab_processes(const subject& subject, const std::vector<zone_protection>& zones, report& findings)
{
    const tab_setting growth = read_setting(subject.computer, L"TabProcGrowth");
    const tab_setting isolation = read_setting(subject.computer, L"Isolation");
    const tab_setting wide = read_setting(subject.computer, L"Isolation64Bit");
    const bool is_one_process = lenient_number_of(growth.found.value) == DWORD{0};
    const auto mode = text_of(isolation.found.value);
    const bool is_enhanced = mode && equal_names(*mode, L"PMEM");
    const bool is_wide = is_enhanced && number_of(wide.found.value) == DWORD{1};
    const std::wstring protected_zones = names_of(zones, true);
    const std::wstring other_zones = names_of(zones, false);

    finding result{
        state::problem, L"64-bit tabs", L"",
        L"TabProcGrowth 0, or Isolation \"PMEM\" with Isolation64Bit 1 and protected mode in the zones of "
        L"your PDFs",
        L"switch on \"Enable Enhanced Protected Mode\" and \"Enable 64-bit processes for Enhanced Protected "
        L"Mode\", by policy or under Internet Options, Advanced"};
    if (is_one_process) {
        result.result = state::ok;
        result.to_do.clear();
        result.found = L"all tabs are in the 64-bit process of the browser's frame and load the DLL";
    } else if (is_wide && !protected_zones.empty()) {
        result.result = other_zones.empty() ? state::ok : state::note;
        result.found = L"64-bit tabs, which load the DLL: " + protected_zones;
        result.to_do.clear();
        if (!other_zones.empty()) {
            result.found += L"; 32-bit tabs, which do not: " + other_zones;
            result.to_do = L"switch on protected mode for the zones whose PDFs are to open";
        }
    } else {
        result.found = L"all tabs are 32-bit processes, which do not load the DLL";
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
    const auto zones = protections(subject.computer);
    check_tab_processes(subject, zones, findings);
    check_protected_mode(zones, findings);
}

} // namespace quill::diagnose
