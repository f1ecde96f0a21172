// The checks on a computer that is stated. The program's tests have each fault by itself; here is what a real
// registry or a test in Wine cannot show, and any bad value at any place that is read.
#include "diagnose/lookup.h"
#include "diagnose/mandatory_label.h"
#include "diagnose/registered_values.h"
#include "tests/diagnose/stated_machine.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quill::diagnose {
namespace {

std::vector<std::wstring> names_of(const report& findings)
{
    std::vector<std::wstring> names;
    for (const finding& finding : findings)
        names.push_back(finding.check);
    return names;
}

TEST(Checks, FindNoProblemWhereAPdfWouldOpen)
{
    const report findings = stated_computer().diagnose();
    EXPECT_TRUE(would_open(findings));
    std::vector<std::wstring> names = names_of(findings);
    std::ranges::sort(names);
    EXPECT_TRUE(std::ranges::adjacent_find(names) == names.end());
}

// Each value that any check asks for, in turn, with each of these values: there is one finding for each
// check, each in four lines, and what is not a result is not a good one.
TEST(Checks, AnyBadValueAnywhereGivesTheSameFindings)
{
    const std::vector<registry_value> bad_values = {
        {ERROR_SUCCESS, REG_SZ, {}},
        {ERROR_SUCCESS, REG_SZ, {'x'}},
        {ERROR_SUCCESS, REG_SZ, {'x', 0}},
        {ERROR_SUCCESS, REG_SZ, {'"', 0, '\r', 0, '\n', 0, 0, 0}},
        {ERROR_SUCCESS, REG_SZ, {0, 0xD8, 0, 0}},
        {ERROR_SUCCESS, REG_SZ, std::vector<BYTE>(1 << 12, 'x')},
        {ERROR_SUCCESS, REG_EXPAND_SZ, {'%', 0, 0, 0}},
        {ERROR_SUCCESS, REG_DWORD, {}},
        {ERROR_SUCCESS, REG_DWORD, {0xFF, 0xFF, 0xFF, 0xFF}},
        {ERROR_SUCCESS, REG_DWORD, {1, 2, 3}},
        {ERROR_SUCCESS, REG_BINARY, std::vector<BYTE>(1 << 12)},
        {ERROR_SUCCESS, REG_NONE, {}},
        {ERROR_SUCCESS, 0xFFFFFFFF, {1}},
        {ERROR_ACCESS_DENIED, 0, {}},
        {ERROR_MORE_DATA, 0, {}},
    };
    stated_computer computer;
    const auto names = names_of(computer.diagnose());
    const auto places = computer.machine.asked;
    const auto values = computer.machine.values;
    EXPECT_GT(places.size(), 60u);
    for (const auto& place : places) {
        for (const registry_value& bad : bad_values) {
            const auto& [root, view, path, name] = place;
            computer.machine.set({root, path, view}, name, bad);
            const report findings = computer.diagnose();
            EXPECT_EQ(names_of(findings), names);
            for (const finding& finding : findings) {
                const std::wstring text = text_of(finding);
                EXPECT_EQ(std::ranges::count(text, L'\n'), 4);
                EXPECT_EQ(std::ranges::count(text, L'\r'), 0);
                EXPECT_FALSE(finding.found.empty());
                EXPECT_FALSE(finding.expected.empty());
                EXPECT_EQ(finding.result == state::ok, finding.to_do.empty())
                    << std::string(text.begin(), text.end());
            }
        }
        computer.machine.values = values;
    }
}

TEST(Checks, FileOfAnyContentsGivesAFinding)
{
    for (const std::string& contents :
         {std::string(), std::string("MZ"), std::string(5000, 'M'), std::string("text")}) {
        stated_computer computer;
        for (auto& [path, file] : computer.machine.files)
            file.bytes = contents;
        EXPECT_FALSE(would_open(computer.diagnose()));
    }
    for (const DWORD error : {DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_SHARING_VIOLATION}, DWORD{1392}}) {
        stated_computer computer;
        computer.machine.files[test_module_path] = {error, false, {}};
        EXPECT_EQ(found(computer.diagnose(), L"DLL, file").result, state::problem);
    }
    stated_computer computer;
    computer.machine.files[test_module_path].is_folder = true;
    EXPECT_TRUE(contains(found(computer.diagnose(), L"DLL, file").found, L"is a folder"));
}

TEST(Checks, LibraryWithoutAChecksumIsAProblem)
{
    stated_computer computer;
    std::string& image = computer.machine.files[test_module_path].bytes;
    image.replace(offset_of_checksum, 4, 4, '\0');
    const finding result = found(computer.diagnose(), L"DLL, contents");
    EXPECT_EQ(result.result, state::problem);
    EXPECT_TRUE(contains(result.found, L"the file has no checksum"));
}

TEST(ClassIdentifier, IsAGuidInBraces)
{
    EXPECT_TRUE(is_class_identifier(L"{5E2C7A90-1B3D-4F6E-8A21-C4d9e07b3f15}"));
    for (const wchar_t* text :
         {L"", L"{}", L"{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15", L"5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15",
          L"{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15]", L"{GE2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15}",
          L"{5E2C7A9001B3D-4F6E-8A21-C4D9E07B3F15}", L"{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15} ",
          L"{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F1\u0661}"})
        EXPECT_FALSE(is_class_identifier(text));
}

struct signature_case
{
    signature_kind kind;
    state result;
};

TEST(Checks, OnlyABrokenSignatureIsAProblem)
{
    for (const signature_case& expected : {signature_case{signature_kind::valid, state::ok},
                                           {signature_kind::none, state::note},
                                           {signature_kind::unknown, state::note},
                                           {signature_kind::broken, state::problem}}) {
        stated_computer computer;
        computer.machine.signed_as.kind = expected.kind;
        EXPECT_EQ(found(computer.diagnose(), L"DLL, signature").result, expected.result);
    }
}

TEST(Checks, FolderThatLowIntegrityCannotWriteIsAProblemInProtectedMode)
{
    constexpr const wchar_t* check = L"Temporary folder in protected mode";
    stated_computer computer;
    computer.machine.written_low = {write_result::refused, ERROR_ACCESS_DENIED, false};
    EXPECT_EQ(found(computer.diagnose(), check).result, state::problem);
    // Protected mode off in the only zone that has it by default.
    computer.machine.set_number({registry_root::user,
                                 L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Zones\\3",
                                 registry_view::bits_64},
                                L"2500", 3);
    EXPECT_EQ(found(computer.diagnose(), check).result, state::note);
    computer.machine.written_low = {write_result::not_tested, 0, true};
    EXPECT_TRUE(contains(found(computer.diagnose(), check).found, L"not tested"));
    EXPECT_TRUE(contains(found(computer.diagnose(), check).found, L"admits low integrity"));
}

TEST(Checks, FolderThatDoesNotExistYetIsJudgedByItsParent)
{
    stated_computer computer;
    computer.machine.files.erase(L"C:\\Low\\Temp");
    const finding result = found(computer.diagnose(), L"Temporary folder in protected mode");
    EXPECT_EQ(result.result, state::ok);
    EXPECT_TRUE(contains(result.found, L"\"C:\\Low\""));
}

TEST(Checks, LogThatCannotBeWrittenIsANote)
{
    stated_computer computer;
    computer.settings.is_log_set = computer.settings.is_log_on = computer.settings.is_log_to_file = true;
    computer.settings.log_folder = L"C:\\Log";
    EXPECT_EQ(found(computer.diagnose(), L"Log").result, state::ok);
    computer.machine.written_low = {write_result::refused, ERROR_ACCESS_DENIED, false};
    const finding refused = found(computer.diagnose(), L"Log");
    EXPECT_EQ(refused.result, state::note);
    EXPECT_TRUE(contains(refused.found, L"cannot be written at low integrity: access denied"));
}

TEST(Checks, OnlyTheMachinesZonesCountIfAPolicySaysSo)
{
    const std::wstring settings = L"Microsoft\\Windows\\CurrentVersion\\Internet Settings";
    stated_computer computer;
    computer.machine.set_number(
        {registry_root::user, L"SOFTWARE\\" + settings + L"\\Zones\\3", registry_view::bits_64}, L"2500", 3);
    EXPECT_TRUE(contains(found(computer.diagnose(), L"Protected mode").found, L"internet off"));
    computer.machine.set_number(
        {registry_root::machine, L"SOFTWARE\\Policies\\" + settings, registry_view::bits_64},
        L"Security_HKLM_only", 1);
    EXPECT_TRUE(contains(found(computer.diagnose(), L"Protected mode").found, L"internet on"));
}

constexpr const wchar_t* browser_key = L"SOFTWARE\\Microsoft\\Internet Explorer\\Main";

// Enhanced Protected Mode with 64-bit processes, in the one zone that has protected mode by default.
stated_computer computer_with_enhanced_mode(DWORD windows_major, DWORD windows_minor)
{
    stated_computer computer;
    const registry_key key{registry_root::user, browser_key, registry_view::bits_64};
    computer.machine.remove(key, L"TabProcGrowth");
    computer.machine.set_text(key, L"Isolation", L"PMEM");
    computer.machine.set_number(key, L"Isolation64Bit", 1);
    computer.system.windows_major = windows_major;
    computer.system.windows_minor = windows_minor;
    return computer;
}

struct windows_case
{
    DWORD major;
    DWORD minor;
    bool is_certain;
};

TEST(Checks, TabsInAnAppContainerAreNotCertain)
{
    for (const windows_case& windows : {windows_case{6, 0, true},
                                        {6, 1, true},
                                        {6, 2, false},
                                        {6, 3, false},
                                        {10, 0, false},
                                        {0, 0, false}}) {
        const report findings = computer_with_enhanced_mode(windows.major, windows.minor).diagnose();
        const finding tabs = found(findings, L"64-bit tabs");
        EXPECT_EQ(would_open(findings), windows.is_certain) << windows.major << "." << windows.minor;
        EXPECT_EQ(tabs.result, windows.is_certain ? state::note : state::problem);
        EXPECT_EQ(contains(tabs.found, L"in an AppContainer"), !windows.is_certain);
        EXPECT_TRUE(contains(tabs.to_do, L"TabProcGrowth"));
        EXPECT_TRUE(contains(found(findings, L"Zones in which a PDF opens").found,
                             windows.is_certain ? L"internet; not: intranet, trusted sites"
                                                : L"none; not certain: internet; not: intranet"));
    }
}

TEST(Checks, TabsOfAnAppContainerNameTheClassesCategory)
{
    stated_computer computer = computer_with_enhanced_mode(10, 0);
    EXPECT_TRUE(contains(found(computer.diagnose(), L"64-bit tabs").found, L"which the class does;"));
    computer.machine.remove({registry_root::machine,
                             L"SOFTWARE\\Classes\\CLSID\\" + computer.product.document_class +
                                 L"\\Implemented Categories\\" + computer.product.app_container_category,
                             registry_view::bits_64},
                            L"");
    EXPECT_TRUE(contains(found(computer.diagnose(), L"64-bit tabs").found, L"which the class does not;"));
}

TEST(Checks, ResultNamesTheZonesUnlessAPdfOpensInAll)
{
    EXPECT_TRUE(
        summary_of(stated_computer().diagnose()).ends_with(L"RESULT: a PDF would open in a 64-bit tab\n"));
    EXPECT_TRUE(summary_of(computer_with_enhanced_mode(6, 1).diagnose())
                    .ends_with(L"in a 64-bit tab, in these zones: internet; not: intranet, trusted sites\n"));
}

// Each of the two alone leaves a zone.
TEST(Checks, NoZoneWithBoth64BitTabsAndControlsIsAProblem)
{
    stated_computer computer = computer_with_enhanced_mode(6, 1);
    computer.machine.set_number({registry_root::user,
                                 L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Zones\\3",
                                 registry_view::bits_64},
                                L"1200", 3);
    const report findings = computer.diagnose();
    EXPECT_EQ(found(findings, L"64-bit tabs").result, state::note);
    EXPECT_EQ(found(findings, L"ActiveX controls in the security zones").result, state::note);
    EXPECT_EQ(found(findings, L"Zones in which a PDF opens").result, state::problem);
}

TEST(MandatoryLabel, AboveLowDoesNotAdmitLowIntegrity)
{
    for (const DWORD level : {DWORD{0}, DWORD{0x1000}})
        EXPECT_TRUE(is_low_label(std::vector<DWORD>{level}));
    for (const DWORD level : {DWORD{0x1001}, DWORD{0x2000}, DWORD{0x3000}, DWORD{0x4000}, ~DWORD{0}})
        EXPECT_FALSE(is_low_label(std::vector<DWORD>{level}));
    EXPECT_FALSE(is_low_label(std::vector<DWORD>{0x1000, 0x2000}));
    EXPECT_FALSE(is_low_label({}));
}

TEST(Checks, ElevatedAccountIsANote)
{
    stated_computer computer;
    EXPECT_EQ(found(computer.diagnose(), L"Account").result, state::ok);
    EXPECT_TRUE(contains(found(computer.diagnose(), L"Account").found, L", not elevated"));
    computer.system.is_elevated = true;
    EXPECT_EQ(found(computer.diagnose(), L"Account").result, state::note);
    EXPECT_FALSE(contains(found(computer.diagnose(), L"Account").found, L"not elevated"));
}

TEST(Checks, MissingEngineIsAProblem)
{
    stated_computer computer;
    computer.machine.files.erase(L"C:\\Windows\\System32\\ieframe.dll");
    const finding result = found(computer.diagnose(), L"Internet Explorer");
    EXPECT_EQ(result.result, state::problem);
    EXPECT_TRUE(contains(result.found, L"ieframe.dll"));
}

TEST(RegisteredValues, AreTheMachinesRowsOfAScript)
{
    const auto rows = registered_values(
        LR"(HKLM { NoRemove 'a' { val 'n' = d '5' ForceRemove 'k' ForceRemove 'm' = s '%MODULE%' } }
        HKCR { NoRemove 'c' { val 'x' = s 'y' } } HKCU { NoRemove 'u' { val 'z' = s '' } })");
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_TRUE(rows[0].path == L"a" && rows[0].name == L"n" && rows[0].type == REG_DWORD &&
                !rows[0].is_module_path);
    EXPECT_TRUE(rows[1].path == L"a\\k" && !rows[1].name);
    EXPECT_TRUE(rows[2].path == L"a\\m" && rows[2].name == L"" && rows[2].is_module_path);
    EXPECT_TRUE(rows[3].path == L"SOFTWARE\\Classes\\c" && rows[3].name == L"x");
    EXPECT_TRUE(registered_values(L"HKLM { 'a' = s '%OTHER%' }").empty());
    EXPECT_TRUE(registered_values(L"HKLM {").empty());
}

} // namespace
} // namespace quill::diagnose
