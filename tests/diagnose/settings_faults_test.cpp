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

TEST_F(SettingFault, OfTheEditor)
{
    const char* const check = "Desktop editor";
    const char* const elevation = "Desktop editor, elevation policy";
    expect_each_alone({
        {"no path",
         value(HKEY_LOCAL_MACHINE, settings, L"exepath", std::nullopt),
         {{check, "NOTE", "\"exepath\": no value"}, {elevation, "NOTE", "the editor is not known"}}},
        {"a path beyond MAX_PATH",
         value(HKEY_LOCAL_MACHINE, settings, L"exepath", text_data(L"C:\\" + std::wstring(300, L'x'))),
         {{check, "NOTE", "of 260 or more characters"}, {elevation, "NOTE", "the editor is not known"}}},
        {"a missing editor",
         value(HKEY_LOCAL_MACHINE, settings, L"exepath", text_data(L"C:\\missing\\editor.exe")),
         {{check, "NOTE", "\"C:\\missing\\editor.exe\": does not exist"}}},
        {"another editor",
         value(HKEY_LOCAL_MACHINE, settings, L"exepath", text_data(module_path())),
         {{check, "OK", "QuillPDF.IE.dll"}, {elevation, "NOTE", "no entry for \"QuillPDF.IE.dll\""}}},
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

} // namespace
} // namespace quill::test
