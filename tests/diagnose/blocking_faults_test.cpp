// Faults in what the browser is told about add-ons, zones and tab processes.
#include "tests/diagnose/diagnosed_computer.h"

namespace quill::test {
namespace {

constexpr const wchar_t* compatibility = L"SOFTWARE\\Microsoft\\Internet Explorer\\ActiveX Compatibility\\";
constexpr const wchar_t* extensions = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Policies\\Ext";
constexpr const wchar_t* user_settings = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Ext\\Settings\\";
constexpr const wchar_t* filtering = L"Microsoft\\Internet Explorer\\Safety\\ActiveXFiltering";
constexpr const wchar_t* browser = L"Microsoft\\Internet Explorer\\Main";
constexpr const wchar_t* zones = L"Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Zones\\";

fault one_value(const std::string& name, HKEY root, const std::wstring& path, const std::wstring& value_name,
                const value_change::data& value, std::vector<changed_finding> changes,
                REGSAM view = KEY_WOW64_64KEY)
{
    return {name, [=] { return make_undo<value_change>(root, path, value_name, value, view); },
            std::move(changes)};
}

const char* const zones_check = "Zones in which a PDF opens";

class BlockingFault : public DiagnosedComputer
{
protected:
    const std::wstring killbit_key = std::wstring(compatibility) + document_clsid;
    const std::wstring list_key = std::wstring(extensions) + L"\\CLSID";
};

TEST_F(BlockingFault, OfKillbits)
{
    const wchar_t* const flags = L"Compatibility Flags";
    expect_each_alone({
        one_value("killbit", HKEY_LOCAL_MACHINE, killbit_key, flags, number_data(0x400),
                  {{"Killbit", "PROBLEM", "1024 (0x400)"}}),
        one_value("killbit among other flags", HKEY_LOCAL_MACHINE, killbit_key, flags, number_data(0x800410),
                  {{"Killbit", "PROBLEM", "0x800410"}}),
        one_value("other flags only", HKEY_LOCAL_MACHINE, killbit_key, flags, number_data(0x8),
                  {{"Killbit", "OK", "\"Compatibility Flags\": 8"}}),
        one_value("killbit in the 32-bit view", HKEY_LOCAL_MACHINE, killbit_key, flags, number_data(0x400),
                  {{"Killbit, 32-bit view", "NOTE", "0x400"}}, KEY_WOW64_32KEY),
        one_value("text instead of flags", HKEY_LOCAL_MACHINE, killbit_key, flags, text_data(L"1024"),
                  {{"Killbit", "PROBLEM", "\"1024\""}}),
        one_value("another class instead", HKEY_LOCAL_MACHINE, killbit_key, L"AlternateCLSID",
                  text_data(helper_clsid), {{"Killbit", "OK", "AlternateCLSID: \"{8D41F0B2"}}),
    });
}

TEST_F(BlockingFault, OfTheAddOnList)
{
    const auto both = [this](HKEY root, const wchar_t* text) {
        auto all = std::make_shared<undo_stack>();
        all->push_back(make_undo<value_change>(root, extensions, L"RestrictToList", number_data(1)));
        all->push_back(make_undo<value_change>(root, list_key, document_clsid, text_data(text)));
        all->push_back(make_undo<value_change>(root, list_key, helper_clsid, text_data(text)));
        return undo(all);
    };
    expect_each_alone({
        one_value("denied for the machine", HKEY_LOCAL_MACHINE, list_key, document_clsid, text_data(L"0"),
                  {{"Add-on List", "PROBLEM", "HKLM\\"}}),
        one_value("denied for the user", HKEY_CURRENT_USER, list_key, document_clsid, text_data(L"0"),
                  {{"Add-on List", "PROBLEM", "HKCU\\"}}),
        one_value("denied by a number", HKEY_LOCAL_MACHINE, list_key, document_clsid, number_data(0),
                  {{"Add-on List", "PROBLEM", ": 0"}}),
        one_value("allowed", HKEY_LOCAL_MACHINE, list_key, document_clsid, text_data(L"1"),
                  {{"Add-on List", "OK", "\"1\""}}),
        one_value("neither", HKEY_LOCAL_MACHINE, list_key, document_clsid, binary_data(3),
                  {{"Add-on List", "PROBLEM", "REG_BINARY of 3 bytes"}}),
        one_value("only listed add-ons, machine", HKEY_LOCAL_MACHINE, extensions, L"RestrictToList",
                  number_data(1),
                  {{"Add-on List", "PROBLEM", "RestrictToList\": 1"},
                   {"Helper object, Add-on List", "NOTE", "RestrictToList"}}),
        one_value("only listed add-ons, user", HKEY_CURRENT_USER, extensions, L"RestrictToList",
                  number_data(1),
                  {{"Add-on List", "PROBLEM", "HKCU"}, {"Helper object, Add-on List", "NOTE", "HKCU"}}),
        {"listed",
         [&] { return both(HKEY_LOCAL_MACHINE, L"2"); },
         {{"Add-on List", "OK", "\"2\""}, {"Helper object, Add-on List", "OK", "\"2\""}}},
        one_value("helper object denied", HKEY_LOCAL_MACHINE, list_key, helper_clsid, text_data(L"0"),
                  {{"Helper object, Add-on List", "NOTE", "\"0\""}}),
    });
}

TEST_F(BlockingFault, OfTheUsersChoice)
{
    const std::wstring document = std::wstring(user_settings) + document_clsid;
    expect_each_alone({
        one_value("disabled", HKEY_CURRENT_USER, document, L"Flags", number_data(1),
                  {{"Add-on disabled by the user", "PROBLEM", "\"Flags\": 1"}}),
        one_value("enabled again", HKEY_CURRENT_USER, document, L"Flags", number_data(0x40),
                  {{"Add-on disabled by the user", "OK", "64"}}),
        one_value("1 MB", HKEY_CURRENT_USER, document, L"Flags", binary_data(1 << 20),
                  {{"Add-on disabled by the user", "PROBLEM", "REG_BINARY of 1048576 bytes"}}),
        one_value("helper object disabled", HKEY_CURRENT_USER, std::wstring(user_settings) + helper_clsid,
                  L"Flags", number_data(1),
                  {{"Helper object, disabled by the user", "NOTE", "\"Flags\": 1"}}),
        one_value("no browser extensions", HKEY_CURRENT_USER, std::wstring(L"SOFTWARE\\") + browser,
                  L"Enable Browser Extensions", text_data(L"no"),
                  {{"Helper object, browser extensions", "NOTE", "\"no\""}}),
    });
}

TEST_F(BlockingFault, OfActiveXFiltering)
{
    const std::wstring policy = std::wstring(L"SOFTWARE\\Policies\\") + filtering;
    const std::wstring setting = std::wstring(L"SOFTWARE\\") + filtering;
    expect_each_alone({
        one_value("by the user", HKEY_CURRENT_USER, setting, L"IsEnabled", number_data(1),
                  {{"ActiveX filtering", "PROBLEM", "HKCU\\SOFTWARE\\Microsoft"}}),
        one_value("by the machine's policy", HKEY_LOCAL_MACHINE, policy, L"IsEnabled", number_data(1),
                  {{"ActiveX filtering", "PROBLEM", "HKLM\\SOFTWARE\\Policies"}}),
        one_value("by the user's policy", HKEY_CURRENT_USER, policy, L"IsEnabled", number_data(1),
                  {{"ActiveX filtering", "PROBLEM", "HKCU\\SOFTWARE\\Policies"}}),
        one_value("off", HKEY_CURRENT_USER, setting, L"IsEnabled", number_data(0),
                  {{"ActiveX filtering", "OK", ": 0"}}),
    });
}

TEST_F(BlockingFault, OfSecurityZones)
{
    const auto zone = [](const wchar_t* number) {
        return std::wstring(L"SOFTWARE\\Policies\\") + zones + number;
    };
    const char* const check = "ActiveX controls in the security zones";
    const auto all = [&] {
        auto changes = std::make_shared<undo_stack>();
        for (const wchar_t* number : {L"1", L"2", L"3"})
            changes->push_back(
                make_undo<value_change>(HKEY_LOCAL_MACHINE, zone(number), L"1200", number_data(3)));
        return undo(changes);
    };
    expect_each_alone({
        one_value("no controls in the internet", HKEY_LOCAL_MACHINE, zone(L"3"), L"1200", number_data(3),
                  {{check, "NOTE", "Zones\\3, value \"1200\": 3"},
                   {zones_check, "NOTE", "intranet, trusted sites; not: internet\n"}}),
        {"no controls anywhere",
         all,
         {{check, "PROBLEM", "Zones\\1, value \"1200\": 3"},
          {zones_check, "PROBLEM", "none; not: intranet, trusted sites, internet\n"}}},
        one_value("protected mode off", HKEY_CURRENT_USER, zone(L"3"), L"2500", number_data(3),
                  {{"Protected mode", "OK", "internet off"},
                   {"Temporary folder in protected mode", "NOTE", "no zone with PDFs is in protected mode"}}),
        one_value("protected mode unreadable", HKEY_CURRENT_USER, zone(L"2"), L"2500", binary_data(2),
                  {{"Protected mode", "NOTE", "REG_BINARY"}}),
    });
}

TEST_F(BlockingFault, OfTabProcesses)
{
    const std::wstring policy = std::wstring(L"SOFTWARE\\Policies\\") + browser;
    const std::wstring setting = std::wstring(L"SOFTWARE\\") + browser;
    const auto enhanced = [&](const std::wstring& key, const wchar_t* mode, DWORD wide) {
        auto all = std::make_shared<undo_stack>();
        all->push_back(make_undo<value_change>(HKEY_CURRENT_USER, setting, L"TabProcGrowth", std::nullopt));
        all->push_back(make_undo<value_change>(HKEY_LOCAL_MACHINE, key, L"Isolation", text_data(mode)));
        all->push_back(
            make_undo<value_change>(HKEY_LOCAL_MACHINE, key, L"Isolation64Bit", number_data(wide)));
        return undo(all);
    };
    const auto shadowed = [&] {
        auto all = std::make_shared<undo_stack>();
        all->push_back(enhanced(policy, L"PMIL", 1));
        all->push_back(make_undo<value_change>(HKEY_CURRENT_USER, setting, L"Isolation", text_data(L"PMEM")));
        return undo(all);
    };
    const char* const check = "64-bit tabs";
    const changed_finding no_zone{zones_check, "PROBLEM", "none; not: intranet, trusted sites, internet\n"};
    // Windows 8 and later put the tabs of Enhanced Protected Mode into an AppContainer.
    const std::string& windows = before().findings.at("Windows");
    const bool has_containers = windows.find("Windows 6.0.") == std::string::npos &&
                                windows.find("Windows 6.1.") == std::string::npos;
    const std::vector<changed_finding> contained = {
        {check, "PROBLEM", "it is not certain that a PDF opens: internet ("},
        {zones_check, "PROBLEM", "none; not certain: internet; not: intranet, trusted sites\n"}};
    const std::vector<changed_finding> loaded = {
        {check, "NOTE", "load the DLL: internet; 32-bit tabs, which do not: intranet, trusted sites"},
        {zones_check, "NOTE", "internet; not: intranet, trusted sites\n"}};
    expect_each_alone({
        {"defaults",
         [&] { return make_undo<value_change>(HKEY_CURRENT_USER, setting, L"TabProcGrowth", std::nullopt); },
         {{check, "PROBLEM", "nothing is set"}, no_zone}},
        {"enhanced protected mode", [&] { return enhanced(setting, L"PMEM", 1); },
         has_containers ? contained : loaded},
        {"32-bit processes",
         [&] { return enhanced(policy, L"PMEM", 0); },
         {{check, "PROBLEM", "all tabs are 32-bit"}, no_zone}},
        {"no enhanced protected mode",
         [&] { return enhanced(policy, L"PMIL", 1); },
         {{check, "PROBLEM", "PMIL"}, no_zone}},
        {"a policy before the user's setting",
         shadowed,
         {{check, "PROBLEM", "HKLM\\SOFTWARE\\Policies"}, no_zone}},
        one_value("a policy for tab processes", HKEY_LOCAL_MACHINE, policy, L"TabProcGrowth",
                  text_data(L"Medium"), {{check, "PROBLEM", "\"Medium\""}, no_zone}),
        one_value("zero as text", HKEY_LOCAL_MACHINE, policy, L"TabProcGrowth", text_data(L"0"),
                  {{check, "OK", "\"0\""}}),
    });
}

} // namespace
} // namespace quill::test
