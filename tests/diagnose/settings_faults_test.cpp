// Faults in the product's settings and in the installer's record; arguments; output.
#include "retrieval/download/download_switch.h"
#include "tests/diagnose/diagnosed_computer.h"

namespace quill::test {
namespace {

constexpr const wchar_t* record = L"SOFTWARE\\Quill\\QuillPDF.IE";
constexpr const wchar_t* settings = L"SOFTWARE\\Quill\\DocStudio\\14\\Settings";

class SettingFault : public DiagnosedComputer
{
protected:
    static std::function<undo()> value(HKEY root, const std::wstring& path, const wchar_t* name,
                                       const std::optional<value_change::data>& data,
                                       REGSAM view = KEY_WOW64_64KEY)
    {
        return [=] { return make_undo<value_change>(root, path, name, data, view); };
    }
};

TEST_F(SettingFault, OfTheDownloadSwitch)
{
    const char* const check = "WinINet switch";
    const auto wininet = [](HKEY root, const value_change::data& data, REGSAM view = KEY_WOW64_64KEY) {
        return value(root, wininet_switch_key, wininet_switch_value, data, view);
    };
    const auto shadowed = [&] {
        auto all = std::make_shared<undo_stack>();
        all->push_back(wininet(HKEY_LOCAL_MACHINE, text_data(L"/b 1"))());
        all->push_back(wininet(HKEY_CURRENT_USER, text_data(L"/b 0"))());
        return undo(all);
    };
    expect_each_alone({
        {"on for the user",
         wininet(HKEY_CURRENT_USER, text_data(L"/b 1")),
         {{check, "NOTE", "on, from HKCU: "}}},
        {"on for the machine",
         wininet(HKEY_LOCAL_MACHINE, text_data(L"/b 1")),
         {{check, "NOTE", "on, from HKLM: "}}},
        {"on in the 32-bit view",
         wininet(HKEY_LOCAL_MACHINE, text_data(L"/b 1"), KEY_WOW64_32KEY),
         {{check, "NOTE", "on, from HKLM (32-bit view): "}}},
        {"the user's off before the machine's on", shadowed, {{check, "OK", "off, from HKCU: "}}},
        {"a number", wininet(HKEY_CURRENT_USER, number_data(1)), {{check, "NOTE", "off, from HKCU"}}},
        {"too long",
         wininet(HKEY_LOCAL_MACHINE, text_data(L"/b 1            beyond 16")),
         {{check, "OK", "off, from HKLM"}}},
        {"1 MB",
         wininet(HKEY_LOCAL_MACHINE, binary_data(1 << 20)),
         {{check, "NOTE", "REG_BINARY of 1048576 bytes"}}},
    });
    const value_change user(HKEY_CURRENT_USER, wininet_switch_key, L"x", text_data(L""));
    const denied_key denied(HKEY_CURRENT_USER, wininet_switch_key);
    EXPECT_NE(run_diagnosis().findings.at(check).find("access denied (error 5)"), std::string::npos);
}

TEST_F(SettingFault, OfEncryptedPages)
{
    const char* const check = "Encrypted pages";
    const std::wstring key = L"Microsoft\\Windows\\CurrentVersion\\Internet Settings";
    const auto not_saved = [&](HKEY root, const wchar_t* parent, const value_change::data& data) {
        return value(root, parent + key, L"DisableCachingOfSSLPages", data);
    };
    const auto by_wininet = [&] {
        auto all = std::make_shared<undo_stack>();
        all->push_back(not_saved(HKEY_CURRENT_USER, L"SOFTWARE\\", number_data(1))());
        all->push_back(
            value(HKEY_CURRENT_USER, wininet_switch_key, wininet_switch_value, text_data(L"/b 1"))());
        return undo(all);
    };
    const auto allowed_by_policy = [&] {
        auto all = std::make_shared<undo_stack>();
        all->push_back(not_saved(HKEY_CURRENT_USER, L"SOFTWARE\\", number_data(1))());
        all->push_back(not_saved(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Policies\\", number_data(0))());
        return undo(all);
    };
    expect_each_alone({
        {"by the user",
         not_saved(HKEY_CURRENT_USER, L"SOFTWARE\\", number_data(1)),
         {{check, "PROBLEM", "1; PDFs of https servers do not open"}}},
        {"for the machine",
         not_saved(HKEY_LOCAL_MACHINE, L"SOFTWARE\\", number_data(1)),
         {{check, "PROBLEM", "HKLM\\SOFTWARE\\Microsoft"}}},
        {"by the user's policy",
         not_saved(HKEY_CURRENT_USER, L"SOFTWARE\\Policies\\", number_data(1)),
         {{check, "PROBLEM", "HKCU\\SOFTWARE\\Policies"}}},
        {"by the machine's policy",
         not_saved(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Policies\\", number_data(1)),
         {{check, "PROBLEM", "HKLM\\SOFTWARE\\Policies"}}},
        {"text", not_saved(HKEY_CURRENT_USER, L"SOFTWARE\\", text_data(L"0")), {{check, "PROBLEM", "\"0\""}}},
        {"saved",
         not_saved(HKEY_CURRENT_USER, L"SOFTWARE\\", number_data(0)),
         {{check, "OK", "\"DisableCachingOfSSLPages\": 0"}}},
        {"saved by policy", allowed_by_policy, {{check, "OK", "HKLM\\SOFTWARE\\Policies"}}},
        {"with WinINet",
         by_wininet,
         {{check, "OK", "does not matter: the WinINet switch is on"},
          {"WinINet switch", "NOTE", "on, from HKCU"}}},
    });
}

TEST_F(SettingFault, OfVariablesThatTheSessionDoesNotHave)
{
    const char* const check = "Environment variables";
    const wchar_t* const machine = L"SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";
    const wchar_t* const user = L"Environment";
    const auto both = [&](const wchar_t* in_registry, const wchar_t* in_process) {
        auto all = std::make_shared<undo_stack>();
        all->push_back(make_undo<environment_scope>(L"QUILL_TMP_FOLDER", in_process));
        all->push_back(make_undo<value_change>(HKEY_CURRENT_USER, user, L"QUILL_TMP_FOLDER",
                                               text_data(in_registry, REG_EXPAND_SZ)));
        return undo(all);
    };
    const auto user_first = [&] {
        auto all = std::make_shared<undo_stack>();
        all->push_back(value(HKEY_LOCAL_MACHINE, machine, L"QUILL_LOG_SINKS", text_data(L"procmon"))());
        all->push_back(value(HKEY_CURRENT_USER, user, L"QUILL_LOG_SINKS", text_data(L"file"))());
        return undo(all);
    };
    const std::string temp = "Temporary folder";
    const std::string downloads = "Downloads, QUILL_TMP_FOLDER";
    expect_each_alone({
        {"the level, for the machine",
         value(HKEY_LOCAL_MACHINE, machine, L"QUILL_LOG_LEVEL", text_data(L"debug")),
         {{check, "NOTE", "\"QUILL_LOG_LEVEL\": \"debug\", but this program has no such variable"}}},
        {"the destinations, for the user",
         value(HKEY_CURRENT_USER, user, L"QUILL_LOG_SINKS", text_data(L"file")),
         {{check, "NOTE", "\"file\", but this program has no such variable"}}},
        {"the user's before the machine's", user_first, {{check, "NOTE", "HKCU\\Environment"}}},
        {"not text",
         value(HKEY_CURRENT_USER, user, L"QUILL_LOG_LEVEL", binary_data(1 << 20)),
         {{check, "NOTE", "REG_BINARY of 1048576 bytes"}}},
        {"another folder",
         [&] { return both(L"%SystemDrive%\\other", L"C:\\windows\\temp"); },
         {{check, "NOTE", "but this program has \"C:\\windows\\temp\""},
          {temp, "OK", "(from QUILL_TMP_FOLDER)"},
          {downloads, "OK", "folder"}}},
        {"the same folder",
         [&] { return both(L"%SystemDrive%\\windows\\temp", L"C:\\windows\\temp"); },
         {{temp, "OK", "(from QUILL_TMP_FOLDER)"}, {downloads, "OK", "folder"}}},
    });
}

TEST_F(SettingFault, OfTheEditor)
{
    const char* const check = "Desktop editor";
    const char* const elevation = "Desktop editor, elevation policy";
    const std::wstring folder = editor_path().substr(0, editor_path().rfind(L'\\'));
    const std::wstring policies = L"SOFTWARE\\Microsoft\\Internet Explorer\\Low Rights\\ElevationPolicy\\";
    const std::wstring policy = policies + L"{0D1F53A2-7A5E-4C5B-9D0A-6B2C8E1F4A37}";
    const auto upper = [](std::wstring text) {
        CharUpperW(text.data());
        return text;
    };
    // Keys are listed by name.
    const auto before = [&](const wchar_t* id, const std::wstring& path, DWORD number) {
        auto all = std::make_shared<undo_stack>();
        all->push_back(value(HKEY_LOCAL_MACHINE, policies + id, L"AppName", text_data(L"editor.exe"))());
        all->push_back(value(HKEY_LOCAL_MACHINE, policies + id, L"AppPath", text_data(path))());
        all->push_back(value(HKEY_LOCAL_MACHINE, policies + id, L"Policy", number_data(number))());
        return undo(all);
    };
    const auto others_before = [&] {
        return before(L"{00000000-7A5E-4C5B-9D0A-6B2C8E1F4A37}", L"C:\\missing", 1);
    };
    const auto asking_before = [&] { return before(L"{00000000-7A5E-4C5B-9D0A-6B2C8E1F4A37}", folder, 1); };
    expect_each_alone({
        {"no path",
         value(HKEY_LOCAL_MACHINE, settings, L"exepath", std::nullopt),
         {{check, "NOTE", "\"exepath\": no value"}, {elevation, "NOTE", "the editor is not known"}}},
        {"a path beyond MAX_PATH",
         value(HKEY_LOCAL_MACHINE, settings, L"exepath", text_data(L"C:\\" + std::wstring(300, L'x'))),
         {{check, "NOTE", "of 260 or more characters"}, {elevation, "NOTE", "the editor is not known"}}},
        {"a missing editor",
         value(HKEY_LOCAL_MACHINE, settings, L"exepath", text_data(L"C:\\missing\\editor.exe")),
         {{check, "NOTE", "\"C:\\missing\\editor.exe\": does not exist"},
          {elevation, "NOTE", "no entry for \"C:\\missing\\editor.exe\""}}},
        {"a folder",
         value(HKEY_LOCAL_MACHINE, settings, L"exepath", text_data(folder)),
         {{check, "NOTE", "is a folder"}, {elevation, "NOTE", "no entry for"}}},
        {"another editor",
         value(HKEY_LOCAL_MACHINE, settings, L"exepath", text_data(module_path())),
         {{check, "OK", "QuillPDF.IE.dll"}, {elevation, "NOTE", "QuillPDF.IE.dll\""}}},
        {"an elevation policy for another folder",
         value(HKEY_LOCAL_MACHINE, policy, L"AppPath", text_data(L"C:\\missing")),
         {{elevation, "NOTE", "no entry for"}}},
        {"no folder",
         value(HKEY_LOCAL_MACHINE, policy, L"AppPath", std::nullopt),
         {{elevation, "NOTE", "no entry for"}}},
        {"another policy",
         value(HKEY_LOCAL_MACHINE, policy, L"Policy", number_data(2)),
         {{elevation, "NOTE", "Policy 2"}}},
        {"an entry for another folder and one that does not match before it", others_before, {}},
        {"the first entry for the editor asks", asking_before, {}},
        {"a folder with a backslash and in upper case",
         value(HKEY_LOCAL_MACHINE, policy, L"AppPath", text_data(upper(folder) + L"\\")),
         {}},
        {"the user's path",
         value(HKEY_CURRENT_USER, settings, L"exepath", text_data(L"C:\\x.exe")),
         {{check, "NOTE", "the user's value \"C:\\x.exe\" is ignored"}}},
    });
}

TEST_F(SettingFault, OfTheInstallersRecord)
{
    const auto none = [] {
        auto all = std::make_shared<undo_stack>();
        for (const wchar_t* name : {L"InstallDir", L"ActiveDocument", L"SharePoint"})
            all->push_back(make_undo<value_change>(HKEY_LOCAL_MACHINE, record, name, std::nullopt));
        return undo(all);
    };
    expect_each_alone({
        {"no document feature",
         value(HKEY_LOCAL_MACHINE, record, L"ActiveDocument", std::nullopt),
         {{"Installation", "NOTE", "ActiveDocument no value"}}},
        {"a folder of another type",
         value(HKEY_LOCAL_MACHINE, record, L"InstallDir", binary_data(2)),
         {{"Installation", "NOTE", "InstallDir REG_BINARY"}}},
        {"another version",
         value(HKEY_LOCAL_MACHINE, record, L"ActiveDocument", text_data(L"13.9.7")),
         {{"Installation", "NOTE", "ActiveDocument \"13.9.7\""}}},
        {"another folder",
         value(HKEY_LOCAL_MACHINE, record, L"InstallDir", text_data(L"C:\\other\\")),
         {{"Installation", "NOTE", "InstallDir \"C:\\other\\\""}}},
        {"an empty record", none, {{"Installation", "NOTE", "InstallDir no value"}}},
        {"an unreadable record",
         [] { return make_undo<denied_key>(HKEY_LOCAL_MACHINE, record); },
         {{"Installation", "NOTE", "access denied (error 5)"}}},
    });
}

// UTF-8 without a byte order mark, with the system's line ends; a name beyond the code page is complete.
TEST_F(SettingFault, OfNoneIsReportedInUtf8)
{
    const std::string& text = before().output;
    EXPECT_TRUE(text.starts_with("QuillDiagnose 14.0.0.0\r\n")) << text.substr(0, 40);
    EXPECT_NE(text.find("Viewer \u03A9.dll"), std::string::npos);
    EXPECT_TRUE(text.ends_with("RESULT: a PDF would open in a 64-bit tab\r\n")) << text;
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1))
        ASSERT_EQ(text[at - 1], '\r');
}

TEST_F(SettingFault, OfArgumentsIsAUsageError)
{
    for (const wchar_t* arguments :
         {L"x", L"--clean-downloads", L"--clean-downloads x", L"--clean-downloads 0",
          L"--clean-downloads 3651", L"--clean-downloads 30 30", L"--help x", L"\"\""}) {
        const diagnosis found = run_diagnosis(arguments);
        EXPECT_EQ(found.exit_code, 2u) << arguments;
        EXPECT_EQ(found.output, "");
        EXPECT_NE(found.errors.find("--clean-downloads DAYS"), std::string::npos);
    }
    const diagnosis help = run_diagnosis(L"--help");
    EXPECT_EQ(help.exit_code, 0u);
    EXPECT_NE(help.output.find("--clean-downloads DAYS"), std::string::npos);
}

TEST(DiagnosisRun, IsRepeatedOnceIfThereIsNoOutput)
{
    const auto starts = [](const std::vector<diagnosis>& results) {
        std::size_t count = 0;
        testing::internal::CaptureStdout();
        const diagnosis last = run_again_if_silent([&] { return results.at(count++); });
        const bool is_said =
            testing::internal::GetCapturedStdout().find("started again") != std::string::npos;
        EXPECT_EQ(is_said, count > 1);
        EXPECT_EQ(last.exit_code, results.at(count - 1).exit_code);
        return count;
    };
    const diagnosis silent{1, "", "", {}, {}};
    EXPECT_EQ(starts({{0, "text", "", {}, {}}}), 1u);
    EXPECT_EQ(starts({{2, "", "usage", {}, {}}}), 1u);
    EXPECT_EQ(starts({silent, {0, "text", "", {}, {}}}), 2u);
    EXPECT_EQ(starts({silent, {3, "", "", {}, {}}}), 2u);
}

} // namespace
} // namespace quill::test
