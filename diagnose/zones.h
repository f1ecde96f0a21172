// Settings of the security zones, and add-on settings of a class: shared by several checks.
#pragma once

#include "diagnose/checks.h"

namespace quill::diagnose {

struct zone
{
    int number;
    const wchar_t* name;
    bool is_protected_by_default; // protected mode
};

inline constexpr zone zones_with_documents[] = {
    {1, L"intranet", false}, {2, L"trusted sites", false}, {3, L"internet", true}};

// The URL action "Run ActiveX controls and plug-ins". Where it is disabled, no PDF is shown.
inline constexpr wchar_t run_controls[] = L"1200";

struct zone_value
{
    std::optional<DWORD> number;
    bool is_invalid = false; // there is a value, and it is no number
    std::wstring text;       // where it is and what it is; empty without one
};

// A setting of a zone: policies of the machine and the user, then the user's and the machine's own setting.
// With the policy Security_HKLM_only the machine's alone.
zone_value value_of_zone(const machine& computer, int zone, const wchar_t* action);

// Of the value of run_controls. Asking the user counts as allowed.
bool are_controls_allowed(const zone_value& value);

// Whether tabs of any of these zones run at low integrity.
bool is_any_zone_protected(const machine& computer);

// Whether the installer's record names a feature.
bool is_feature_installed(const machine& computer, const wchar_t* feature);

// The group policies "Add-on List" and "Deny all add-ons unless specifically allowed".
finding add_on_list_finding(const machine& computer, const std::wstring& clsid, const wchar_t* check,
                            state otherwise);

// The user's choice under Manage Add-ons.
finding user_choice_finding(const machine& computer, const std::wstring& clsid, const wchar_t* check,
                            state otherwise);

} // namespace quill::diagnose
