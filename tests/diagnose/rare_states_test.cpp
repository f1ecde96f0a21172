// Findings about states that the program's own tests cannot bring about in their session.
#include "tests/diagnose/stated_machine.h"

#include <gtest/gtest.h>

namespace quill::diagnose {
namespace {

TEST(RareState, LogWithoutAFolderIsANote)
{
    stated_computer computer;
    computer.settings.is_log_set = computer.settings.is_log_on = computer.settings.is_log_to_file = true;
    const finding log = found(computer.diagnose(), L"Log");
    EXPECT_EQ(log.result, state::note);
    EXPECT_TRUE(contains(log.found, L"no folder"));
}

TEST(RareState, FileInPlaceOfTheFolderOfLowIntegrityIsNamed)
{
    stated_computer computer;
    computer.machine.files[L"C:\\Low\\Temp"].is_folder = false;
    computer.machine.written_low = {write_result::refused, ERROR_PATH_NOT_FOUND, false};
    const finding folder = found(computer.diagnose(), L"Temporary folder in protected mode");
    EXPECT_EQ(folder.result, state::problem);
    EXPECT_TRUE(contains(folder.found, L"is a file, not a folder"));
    EXPECT_TRUE(contains(folder.to_do, L"delete or rename the file"));
    computer.machine.files[L"C:\\Low\\Temp"].is_folder = true;
    EXPECT_TRUE(contains(found(computer.diagnose(), L"Temporary folder in protected mode").to_do, L"icacls"));
}

// Whether ActiveX controls are allowed is not certain if it is not certain whose setting counts.
TEST(RareState, UnclearPolicyForZonesMattersIfTheUsersSettingsDiffer)
{
    const std::wstring settings = L"Microsoft\\Windows\\CurrentVersion\\Internet Settings";
    const registry_key policy{registry_root::machine, L"SOFTWARE\\Policies\\" + settings,
                              registry_view::bits_64};
    const registry_key user{registry_root::user, L"SOFTWARE\\" + settings + L"\\Zones\\3",
                            registry_view::bits_64};
    const wchar_t* const check = L"ActiveX controls in the security zones";
    for (const registry_value& unclear :
         {registry_value{ERROR_SUCCESS, REG_SZ, {'1', 0, 0, 0}}, {ERROR_ACCESS_DENIED, 0, {}}}) {
        stated_computer computer;
        computer.machine.set(policy, L"Security_HKLM_only", unclear);
        EXPECT_EQ(found(computer.diagnose(), check).result, state::ok);
        computer.machine.set_number(user, L"1200", 0);
        const finding zones = found(computer.diagnose(), check);
        EXPECT_EQ(zones.result, state::note);
        EXPECT_TRUE(contains(zones.found, L"internet: HKLM\\SOFTWARE\\Policies"));
        computer.machine.set_number({registry_root::machine, user.path, registry_view::bits_64}, L"1200", 0);
        EXPECT_EQ(found(computer.diagnose(), check).result, state::ok);
    }
}

} // namespace
} // namespace quill::diagnose
