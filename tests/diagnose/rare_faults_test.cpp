// Faults that an administrator hardly meets, or that somebody puts into the registry on purpose.
#include "retrieval/download/download_switch.h"
#include "tests/diagnose/diagnosed_computer.h"

#include <winternl.h>

#include <algorithm>

namespace quill::test {
namespace {

constexpr const wchar_t* classes = L"SOFTWARE\\Classes\\";
constexpr const wchar_t* internet = L"Microsoft\\Windows\\CurrentVersion\\Internet Settings";

extern "C" NTSTATUS NTAPI NtDeleteKey(HANDLE key);

// A key that leads to another one. The target is below HKEY_LOCAL_MACHINE.
class key_link
{
public:
    key_link(const std::wstring& path, const std::wstring& target)
    {
        const std::wstring full = L"\\Registry\\Machine\\" + target;
        EXPECT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, REG_OPTION_CREATE_LINK,
                                  KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, &key_, nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(RegSetValueExW(key_, L"SymbolicLinkValue", 0, REG_LINK,
                                 reinterpret_cast<const BYTE*>(full.data()),
                                 static_cast<DWORD>(full.size() * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }
    ~key_link()
    {
        EXPECT_EQ(NtDeleteKey(key_), 0);
        RegCloseKey(key_);
    }
    key_link(const key_link&) = delete;
    key_link& operator=(const key_link&) = delete;

private:
    HKEY key_ = nullptr;
};

class current_folder_scope
{
public:
    explicit current_folder_scope(const std::wstring& path)
    {
        GetCurrentDirectoryW(MAX_PATH, before_);
        EXPECT_TRUE(SetCurrentDirectoryW(path.c_str()));
    }
    ~current_folder_scope() { EXPECT_TRUE(SetCurrentDirectoryW(before_)); }
    current_folder_scope(const current_folder_scope&) = delete;
    current_folder_scope& operator=(const current_folder_scope&) = delete;

private:
    wchar_t before_[MAX_PATH] = {};
};

class RareFault : public DiagnosedComputer
{
protected:
    const std::wstring class_key = std::wstring(classes) + L"CLSID\\" + document_clsid;
    const std::wstring server_key = class_key + L"\\InprocServer32";
    const std::wstring folder = module_path().substr(0, module_path().rfind(L'\\'));

    static std::function<undo()> value(HKEY root, const std::wstring& path, const std::wstring& name,
                                       const std::optional<value_change::data>& data)
    {
        return [=] { return make_undo<value_change>(root, path, name, data); };
    }
    static std::function<undo()> variable(const wchar_t* name, const std::wstring& text)
    {
        return [=] { return make_undo<environment_scope>(name, text); };
    }
    static std::function<undo()> denied(const std::wstring& path)
    {
        return [=] { return make_undo<denied_key>(HKEY_LOCAL_MACHINE, path); };
    }
    // In order; undone in the reverse order.
    static std::function<undo()> all(const std::vector<std::function<undo()>>& faults)
    {
        return [=] {
            auto stack = std::make_shared<undo_stack>();
            for (const auto& inject : faults)
                stack->push_back(inject());
            return undo(stack);
        };
    }
    // The findings about a DLL that cannot be examined.
    static std::vector<changed_finding> unusable_dll(const std::string& text)
    {
        return {{"DLL, file", "PROBLEM", text},
                {"DLL, version", "PROBLEM", "not examined"},
                {"DLL, contents", "PROBLEM", "not examined"},
                {"DLL, signature", "NOTE", "not examined"}};
    }
};

TEST_F(RareFault, OfKeys)
{
    const std::wstring killbit =
        std::wstring(L"SOFTWARE\\Microsoft\\Internet Explorer\\ActiveX Compatibility\\") + document_clsid;
    const std::wstring other = L"SOFTWARE\\Quill\\QuillPDF.IE";
    const wchar_t* const flags = L"Compatibility Flags";
    const std::wstring policy = L"SOFTWARE\\Microsoft\\Internet Explorer\\Low Rights\\ElevationPolicy\\"
                                L"{0D1F53A2-7A5E-4C5B-9D0A-6B2C8E1F4A37}";
    const auto link = [&](const std::wstring& target) {
        return [=] { return make_undo<key_link>(killbit, target); };
    };
    expect_each_alone({
        {"a killbit behind a link",
         all({value(HKEY_LOCAL_MACHINE, other, flags, number_data(0x400)), link(other)}),
         {{"Killbit", "PROBLEM", "1024 (0x400)"}}},
        {"a link to nothing", link(L"SOFTWARE\\missing"), {}},
        {"a key instead of a value",
         all({value(HKEY_LOCAL_MACHINE, server_key, L"ThreadingModel", std::nullopt),
              value(HKEY_LOCAL_MACHINE, server_key + L"\\ThreadingModel", L"", text_data(L"Apartment"))}),
         {{"Document class, registration for the machine", "PROBLEM", "\"ThreadingModel\": no value"},
          {"DLL, threading model", "PROBLEM", "no value"}}},
        {"an elevation policy that cannot be read",
         denied(policy),
         {{"Desktop editor, elevation policy", "NOTE", "keys that cannot be read: 1"}}},
        {"the viewer's class cannot be read",
         denied(std::wstring(classes) + L"CLSID\\" + viewer_clsid + L"\\InprocServer32"),
         {{"Viewer, server", "PROBLEM", "unreadable: access denied (error 5)"}}},
        {"the extension cannot be read",
         denied(std::wstring(classes) + L".pdf"),
         {{"Content type of the extension .pdf", "NOTE", "unreadable: access denied (error 5)"}}},
        {"the machine's key of the switch cannot be read",
         all({value(HKEY_LOCAL_MACHINE, wininet_switch_key, wininet_switch_value, text_data(L"/b 1")),
              denied(wininet_switch_key)}),
         {{"WinINet switch", "NOTE", "off: HKLM\\SOFTWARE\\Quill"}}},
    });
    const key_link circle(killbit, killbit);
    const diagnosis found = run_diagnosis();
    EXPECT_EQ(found.checks, before().checks);
    EXPECT_TRUE(found.findings.at("Killbit").starts_with("PROBLEM ")) << found.findings.at("Killbit");
}

TEST_F(RareFault, OfTypesAndTexts)
{
    const std::wstring killbit =
        std::wstring(L"SOFTWARE\\Microsoft\\Internet Explorer\\ActiveX Compatibility\\") + document_clsid;
    const std::wstring null(1, L'\0');
    const std::wstring zone = std::wstring(L"SOFTWARE\\") + internet + L"\\Zones\\3";
    const std::wstring pdf = std::wstring(classes) + L".pdf";
    const char* const extension = "Content type of the extension .pdf";
    expect_each_alone({
        {"a number of 64 bits",
         value(HKEY_LOCAL_MACHINE, killbit, L"Compatibility Flags", value_change::data{REG_QWORD, {8, '\0'}}),
         {{"Killbit", "PROBLEM", "REG_QWORD of "}}},
        {"a number with its bytes reversed",
         value(HKEY_CURRENT_USER, L"SOFTWARE\\Microsoft\\Internet Explorer\\Main", L"TabProcGrowth",
               value_change::data{REG_DWORD_BIG_ENDIAN, std::string(4, '\0')}),
         {{"64-bit tabs", "PROBLEM", "REG_DWORD_BIG_ENDIAN of 4 bytes"},
          {"Zones in which a PDF opens", "PROBLEM", "none"}}},
        {"a null in the path",
         value(HKEY_LOCAL_MACHINE, server_key, L"", text_data(module_path() + null + L"\\evil.dll")),
         {}},
        {"a null in the threading model",
         value(HKEY_LOCAL_MACHINE, server_key, L"ThreadingModel", text_data(L"Apartment" + null + L"Free")),
         {{"DLL, threading model", "OK", "\"Apartment\", followed by 10 bytes"}}},
        {"a quotation mark in the text",
         value(HKEY_LOCAL_MACHINE, pdf, L"Content Type", text_data(L"x\", as expected")),
         {{extension, "NOTE", "\"x<U+0022>, as expected\""}}},
        {"a character without width",
         value(HKEY_LOCAL_MACHINE, pdf, L"Content Type", text_data(L"application/\u2060pdf")),
         {{extension, "NOTE", "\"application/<U+2060>pdf\""}}},
        {"the policy that excludes the user's zones is text",
         all({value(HKEY_LOCAL_MACHINE, std::wstring(L"SOFTWARE\\Policies\\") + internet,
                    L"Security_HKLM_only", text_data(L"1")),
              value(HKEY_CURRENT_USER, zone, L"2500", number_data(3))}),
         {{"Protected mode", "NOTE", "\"Security_HKLM_only\": \"1\", so it is not certain"}}},
    });
}

TEST_F(RareFault, OfAPathThatExpandsToGigabytes)
{
    const environment_scope variable(L"QUILL_TEST_LONG", std::wstring(30'000, L'x'));
    std::wstring text;
    for (int i = 0; i < 200'000; ++i)
        text += L"%QUILL_TEST_LONG%";
    const value_change change(HKEY_LOCAL_MACHINE, server_key, L"", text_data(text, REG_EXPAND_SZ));
    const diagnosis found = run_diagnosis();
    EXPECT_EQ(found.errors, "");
    EXPECT_EQ(found.checks, before().checks);
    EXPECT_TRUE(found.findings.at("DLL, file").starts_with("PROBLEM "));
    EXPECT_NE(found.findings.at("DLL, file").find("(3400000 characters)"), std::string::npos);
}

TEST_F(RareFault, OfFiles)
{
    const auto is_folder = [&] {
        EXPECT_TRUE(MoveFileExW(module_path().c_str(), (module_path() + L".away").c_str(), 0));
        EXPECT_TRUE(CreateDirectoryW(module_path().c_str(), nullptr));
        return undo(nullptr, [this](void*) {
            EXPECT_TRUE(RemoveDirectoryW(module_path().c_str()));
            EXPECT_TRUE(MoveFileExW((module_path() + L".away").c_str(), module_path().c_str(), 0));
        });
    };
    const auto is_large = [&] {
        auto stack = std::make_shared<undo_stack>();
        stack->push_back(make_undo<file_change>(module_path(), ""));
        const HANDLE file =
            CreateFileW(module_path().c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        LARGE_INTEGER size{};
        size.QuadPart = 513LL * 1024 * 1024;
        EXPECT_TRUE(SetFilePointerEx(file, size, nullptr, FILE_BEGIN) && SetEndOfFile(file));
        CloseHandle(file);
        return undo(stack);
    };
    // The links stay until the folder of the test is removed.
    for (const wchar_t* name : {L"target", L"links", L"dangling", L"dangling\\missing"})
        CreateDirectoryW((folder + L"\\" + name).c_str(), nullptr);
    make_link(folder + L"\\target", folder + L"\\link");
    make_link(folder + L"\\target", folder + L"\\links\\qll0");
    make_link(folder + L"\\dangling\\missing", folder + L"\\dangling\\qll1");
    RemoveDirectoryW((folder + L"\\dangling\\missing").c_str());
    const char* const downloads = "Downloads, QUILL_TMP_FOLDER";
    expect_each_alone({
        {"a folder in place of the DLL", is_folder, unusable_dll("QuillPDF.IE.dll\" is a folder")},
        {"a DLL of 513 MiB", is_large, unusable_dll("too large (error 223)")},
        {"a link in place of the temporary folder",
         variable(L"QUILL_TMP_FOLDER", folder + L"\\link"),
         {{"Temporary folder", "OK", "link\" (from QUILL_TMP_FOLDER): can be written"},
          {downloads, "OK", "0 folders"}}},
        {"a link in place of a download",
         variable(L"QUILL_TMP_FOLDER", folder + L"\\links"),
         {{"Temporary folder", "OK", "links\" (from QUILL_TMP_FOLDER): can be written"},
          {downloads, "OK", "0 folders"}}},
        {"a link to nothing in place of a download",
         variable(L"QUILL_TMP_FOLDER", folder + L"\\dangling"),
         {{"Temporary folder", "OK", "dangling\" (from QUILL_TMP_FOLDER): can be written"},
          {downloads, "OK", "0 folders"}}},
        {"a link to nothing in place of the temporary folder",
         variable(L"QUILL_TMP_FOLDER", folder + L"\\dangling\\qll1"),
         {{"Temporary folder", "PROBLEM", "qll1\" (from QUILL_TMP_FOLDER): cannot be written"},
          {downloads, "OK", "does not exist"}}},
    });
}

TEST_F(RareFault, OfAPathWithSlashes)
{
    std::wstring path = module_path();
    std::ranges::replace(path, L'\\', L'/');
    auto changes = unusable_dll("QuillPDF.IE.dll\" has slashes instead of backslashes");
    changes.push_back({"Installation", "NOTE", "the DLL is registered in"});
    changes.push_back({"Helper object, DLL", "NOTE", "QuillPDF.IE.dll"});
    expect_each_alone({{"the DLL's", value(HKEY_LOCAL_MACHINE, server_key, L"", text_data(path)), changes}});
}

TEST_F(RareFault, OfPathsThatDependOnTheCurrentFolder)
{
    const current_folder_scope scope(folder);
    const std::wstring settings = L"SOFTWARE\\Quill\\DocStudio\\14\\Settings";
    expect_each_alone({
        {"the editor",
         value(HKEY_LOCAL_MACHINE, settings, L"exepath", text_data(L"editor.exe")),
         {{"Desktop editor", "NOTE", "\"editor.exe\" is no full path"},
          {"Desktop editor, elevation policy", "NOTE", "no entry for"}}},
        {"the system's temporary folder",
         variable(L"TMP", L"temp"),
         {{"Temporary folder", "PROBLEM", "TMP is \"temp\", which is no full path"},
          {"Downloads, system's temporary folder", "OK", "no such folder"}}},
    });
}

} // namespace
} // namespace quill::test
