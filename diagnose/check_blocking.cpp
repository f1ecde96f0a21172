// What may keep the browser from creating the document class although it is registered: killbit, add-on
// policies, the user's choice under Manage Add-ons, ActiveX filtering, and the security zones.
#include "diagnose/lookup.h"
#include "diagnose/zones.h"

namespace quill::diagnose {
namespace {

constexpr DWORD killbit = 0x400;
constexpr const wchar_t* extensions_policy = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Policies\\Ext";

void check_killbit(const subject& subject, registry_view view, report& findings)
{
    const bool is_64_bit = view == registry_view::bits_64;
    const registry_key key = machine_key(L"SOFTWARE\\Microsoft\\Internet Explorer\\ActiveX Compatibility\\" +
                                             subject.product.document_class,
                                         view);
    const registry_value flags = subject.computer.value(key, L"Compatibility Flags");
    const registry_value alternate = subject.computer.value(key, L"AlternateCLSID");
    const auto number = number_of(flags);
    const bool is_harmless = is_missing(flags) || (number && (*number & killbit) == 0);
    finding result{state::ok, is_64_bit ? L"Killbit" : L"Killbit, 32-bit view",
                   described(key, L"Compatibility Flags") + L": " + described(flags),
                   L"no value, or one without 0x400", L""};
    if (!is_missing(alternate))
        result.found += L"; AlternateCLSID: " + described(alternate) + L" is created instead if 0x400 is set";
    if (!is_harmless) {
        result.result = is_64_bit ? state::problem : state::note;
        result.to_do = L"remove 0x400 from the value, after finding out who set it";
    }
    findings.push_back(result);
}

// "HKLM\...: 0" for each list that has the class, the machine's first.
struct listed
{
    std::vector<std::wstring> texts;
    bool is_denied = false;
    bool is_allowed = false;
    bool is_unclear = false; // unreadable, or neither 0, 1 nor 2
};

listed look_up_add_on(const machine& computer, const std::wstring& clsid)
{
    listed result;
    const std::wstring path = std::wstring(extensions_policy) + L"\\CLSID";
    for (const registry_key& key : {machine_key(path), user_key(path)}) {
        const registry_value value = computer.value(key, clsid);
        if (is_missing(value))
            continue;
        const auto number = lenient_number_of(value);
        result.texts.push_back(described(key, clsid) + L": " + described(value));
        if (!number || *number > 2)
            result.is_unclear = true;
        else
            (*number == 0 ? result.is_denied : result.is_allowed) = true;
    }
    return result;
}

} // namespace

finding add_on_list_finding(const machine& computer, const std::wstring& clsid, const wchar_t* check,
                            state otherwise)
{
    const listed list = look_up_add_on(computer, clsid);
    finding result{state::ok, check, L"the class is in no list, and RestrictToList is not set",
                   L"not listed, or listed with 1 or 2; listed if RestrictToList is set", L""};
    std::vector<std::wstring> found = list.texts;
    bool is_restricted = false;
    for (const registry_key& key : {machine_key(extensions_policy), user_key(extensions_policy)}) {
        const registry_value value = computer.value(key, L"RestrictToList");
        if (is_missing(value))
            continue;
        const auto number = number_of(value);
        is_restricted = is_restricted || !number || *number != 0;
        found.push_back(described(key, L"RestrictToList") + L": " + described(value));
    }
    if (!found.empty())
        result.found = joined(found);
    if (list.is_denied || list.is_unclear || (is_restricted && !list.is_allowed)) {
        result.result = otherwise;
        result.to_do = L"group policy \"Add-on List\": add " + clsid + L" with the value 1";
    }
    return result;
}

finding user_choice_finding(const machine& computer, const std::wstring& clsid, const wchar_t* check,
                            state otherwise)
{
    const registry_key key =
        user_key(L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Ext\\Settings\\" + clsid);
    const registry_value flags = computer.value(key, L"Flags");
    const auto number = number_of(flags);
    const bool is_enabled = is_missing(flags) || (number && (*number & 1) == 0);
    return {is_enabled ? state::ok : otherwise, check, described(key, L"Flags") + L": " + described(flags),
            L"no value, or one without 1",
            is_enabled ? L"" : L"enable the add-on under Manage Add-ons in the browser"};
}

bool are_controls_allowed(const zone_value& value)
{
    constexpr DWORD disable = 3;
    constexpr DWORD administrator_approved = 0x10000;
    return !value.is_invalid && value.number != disable && value.number != administrator_approved;
}

namespace {

void check_filtering(const subject& subject, report& findings)
{
    const found_value found =
        first_value(subject.computer, policy_keys(L"Microsoft\\Internet Explorer\\Safety\\ActiveXFiltering"),
                    L"IsEnabled");
    const auto number = number_of(found.value);
    const bool is_off = is_missing(found.value) || (number && *number == 0);
    findings.push_back(
        {is_off ? state::ok : state::problem, L"ActiveX filtering",
         is_missing(found.value) ? L"not set"
                                 : described(found.key, L"IsEnabled") + L": " + described(found.value),
         L"not set, or 0: filtering blocks the viewer except on sites that the user has excepted",
         is_off ? L"" : L"switch ActiveX filtering off, or except the sites that have PDFs"});
}

void check_zones(const subject& subject, report& findings)
{
    std::vector<std::wstring> found;
    bool is_any_open = false;
    bool is_any_closed = false;
    for (const zone& zone : zones_with_documents) {
        const zone_value value = value_of_zone(subject.computer, zone.number, run_controls);
        (are_controls_allowed(value) ? is_any_open : is_any_closed) = true;
        if (!value.text.empty())
            found.push_back(std::wstring(zone.name) + L": " + value.text);
    }
    findings.push_back(
        {!is_any_closed ? state::ok
         : is_any_open  ? state::note
                        : state::problem,
         L"ActiveX controls in the security zones", found.empty() ? L"not set: allowed" : joined(found),
         L"not set, 0 (allowed) or 1 (asked) in each zone with PDFs",
         is_any_closed ? L"allow \"Run ActiveX controls and plug-ins\" (1200) in the zones of your "
                         L"PDFs"
                       : L""});
}

} // namespace

void check_blocking(const subject& subject, report& findings)
{
    const std::wstring& clsid = subject.product.document_class;
    check_killbit(subject, registry_view::bits_64, findings);
    check_killbit(subject, registry_view::bits_32, findings);
    findings.push_back(add_on_list_finding(subject.computer, clsid, L"Add-on List", state::problem));
    findings.push_back(
        user_choice_finding(subject.computer, clsid, L"Add-on disabled by the user", state::problem));
    check_filtering(subject, findings);
    check_zones(subject, findings);
}

} // namespace quill::diagnose
