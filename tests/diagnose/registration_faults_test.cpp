// Faults in the product's registration, and bad values in it.
#include "tests/diagnose/diagnosed_computer.h"

namespace quill::test {
namespace {

constexpr const wchar_t* content_types = L"SOFTWARE\\Classes\\MIME\\Database\\Content Type\\";
constexpr const wchar_t* other_class = L"{11111111-2222-3333-4444-555555555555}";

class RegistrationFault : public DiagnosedComputer
{
protected:
    const std::wstring class_key = std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + document_clsid;
    const std::wstring server_key = class_key + L"\\InprocServer32";

    static fault one_value(const std::string& name, HKEY root, const std::wstring& path,
                           const std::wstring& value_name, const std::optional<value_change::data>& value,
                           std::vector<changed_finding> changes, REGSAM view = KEY_WOW64_64KEY)
    {
        return {name, [=] { return make_undo<value_change>(root, path, value_name, value, view); },
                std::move(changes)};
    }

    static fault denied(const std::string& name, HKEY root, const std::wstring& path,
                        std::vector<changed_finding> changes)
    {
        return {name, [=] { return make_undo<denied_key>(root, path); }, std::move(changes)};
    }
};

const char* const machine_check = "Document class, registration for the machine";
const char* const user_check = "Document class, registration for the user";

TEST_F(RegistrationFault, OfTheDocumentClass)
{
    expect_each_alone({
        one_value("no DocObject", HKEY_LOCAL_MACHINE, class_key + L"\\DocObject", L"", std::nullopt,
                  {{machine_check, "PROBLEM", "DocObject, default value: no value instead of \"\""}}),
        one_value("no ProgID", HKEY_LOCAL_MACHINE, class_key + L"\\ProgID", L"", std::nullopt,
                  {{machine_check, "NOTE", "ProgID, default value: no value"}}),
        one_value("another MiscStatus", HKEY_LOCAL_MACHINE, class_key + L"\\MiscStatus\\1", L"",
                  text_data(L"7"), {{machine_check, "PROBLEM", "\"7\" instead of \"131473\""}}),
        one_value("another threading model", HKEY_LOCAL_MACHINE, server_key, L"ThreadingModel",
                  text_data(L"Free"),
                  {{machine_check, "PROBLEM", "\"Free\""}, {"DLL, threading model", "PROBLEM", "\"Free\""}}),
        one_value("another class instead", HKEY_LOCAL_MACHINE, class_key + L"\\TreatAs", L"",
                  text_data(other_class), {{machine_check, "PROBLEM", "TreatAs"}}),
        one_value("no category for AppContainer", HKEY_LOCAL_MACHINE, class_key + L"\\Implemented Categories",
                  L"", number_data(5),
                  {{machine_check, "NOTE", "Implemented Categories, default value: 5 instead of \"\""}}),
        denied("an unreadable key", HKEY_LOCAL_MACHINE, class_key + L"\\EnableFullPage\\.pdf",
               {{machine_check, "PROBLEM", "unreadable: access denied (error 5)"}}),
    });
}

TEST_F(RegistrationFault, OfTheUsersKeys)
{
    // Wine has one view of the user's classes; on Windows this finding does not change.
    const changed_finding other_view = {"Document class, 32-bit view", "NOTE", "HKCU\\"};
    expect_each_alone({
        one_value(
            "the same library", HKEY_CURRENT_USER, server_key, L"", text_data(module_path()),
            {{user_check, "NOTE", "a tab uses these instead"}, {"DLL, file", "OK", "HKCU\\"}, other_view}),
        one_value("another threading model", HKEY_CURRENT_USER, server_key, L"ThreadingModel",
                  text_data(L"Both"),
                  {{user_check, "PROBLEM", "\"Both\""}, {"DLL, threading model", "PROBLEM", "HKCU\\"}}),
        one_value("a missing library", HKEY_CURRENT_USER, server_key, L"", text_data(L"C:\\missing.dll"),
                  {{user_check, "NOTE", "C:\\missing.dll"},
                   {"DLL, file", "PROBLEM", "\"C:\\missing.dll\": does not exist"},
                   {"DLL, version", "PROBLEM", "not examined"},
                   {"DLL, contents", "PROBLEM", "not examined"},
                   {"DLL, signature", "NOTE", "not examined"},
                   {"Helper object, DLL", "NOTE", "QuillPDF.IE.dll"},
                   other_view}),
        one_value("an empty key", HKEY_CURRENT_USER, class_key, L"x", text_data(L""),
                  {{user_check, "NOTE", "an empty key"}}),
        one_value(
            "the 32-bit view", HKEY_LOCAL_MACHINE, server_key, L"", text_data(L"C:\\other.dll"),
            {{"Document class, 32-bit view", "NOTE", "(32-bit view), default value: \"C:\\other.dll\""}},
            KEY_WOW64_32KEY),
    });
}

TEST_F(RegistrationFault, OfContentTypes)
{
    const std::wstring pdf = std::wstring(content_types) + L"application/pdf";
    const char* const check = "Content type application/pdf";
    const auto user_only = [&] {
        return make_undo<value_change>(HKEY_LOCAL_MACHINE, pdf, L"CLSID", text_data(other_class));
    };
    const auto no_product = [&] {
        auto all = std::make_shared<undo_stack>();
        for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER})
            all->push_back(make_undo<value_change>(root, pdf, L"CLSID", std::nullopt));
        return undo(all);
    };
    const auto machine_only = [&](const value_change::data& value) {
        auto all = std::make_shared<undo_stack>();
        all->push_back(make_undo<value_change>(HKEY_CURRENT_USER, pdf, L"CLSID", std::nullopt));
        all->push_back(make_undo<value_change>(HKEY_LOCAL_MACHINE, pdf, L"CLSID", value));
        return undo(all);
    };
    expect_each_alone({
        one_value("another product for the user", HKEY_CURRENT_USER, pdf, L"CLSID", text_data(other_class),
                  {{check, "PROBLEM", "HKCU\\"}}),
        {"another product for the machine, shadowed", user_only, {{check, "NOTE", "which shadows HKLM\\"}}},
        {"another product",
         [&] { return machine_only(text_data(other_class)); },
         {{check, "PROBLEM", "{11111111"}}},
        {"no product", no_product, {{check, "PROBLEM", "no value"}}},
        {"binary",
         [&] { return machine_only(binary_data(16)); },
         {{check, "PROBLEM", "REG_BINARY of 16 bytes"}}},
        {"unterminated",
         [&] { return machine_only(unterminated_data(document_clsid)); },
         {{check, "PROBLEM", "without a terminating null"}}},
        {"the machine's alone",
         [&] { return machine_only(text_data(document_clsid)); },
         {{check, "OK", "HKLM\\"}}},
        one_value("a rare type", HKEY_CURRENT_USER, std::wstring(content_types) + L"ppdf", L"CLSID",
                  text_data(other_class), {{"Content type ppdf", "NOTE", "{11111111"}}),
        one_value("another extension", HKEY_CURRENT_USER, pdf, L"Extension", text_data(L".txt"),
                  {{check, "NOTE", "value \"Extension\": \".txt\""}}),
        denied("an unreadable key", HKEY_CURRENT_USER, pdf, {{check, "PROBLEM", "access denied (error 5)"}}),
        one_value("another extension's type", HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\.pdf", L"Content Type",
                  text_data(L"text/plain"),
                  {{"Content type of the extension .pdf", "NOTE", "\"text/plain\""}}),
    });
}

// Whatever the value is, there is a line and no crash.
TEST_F(RegistrationFault, OfAnyValueInPlaceOfThePath)
{
    const std::vector<std::pair<std::string, value_change::data>> values = {
        {"no value instead", text_data(L"")},
        {"number", number_data(7)},
        {"binary", binary_data(13)},
        {"empty binary", binary_data(0)},
        {"1 MB of binary", binary_data(1 << 20)},
        {"1 MB of text", text_data(std::wstring(1 << 19, L'x'))},
        {"odd number of bytes", {REG_SZ, "C:\\"}},
        {"no bytes", {REG_SZ, ""}},
        {"unterminated", unterminated_data(module_path())},
        {"several texts", {REG_MULTI_SZ, text_data(module_path()).bytes}},
        {"unknown type", {0x12345, "abcd"}},
        {"no full path", text_data(L"QuillPDF.IE.dll")},
        {"control characters", text_data(L"C:\\a\r\nPROBLEM b\x1B[2J\u202E.dll")},
        {"unpaired surrogate", text_data(L"C:\\\xD800.dll")},
        {"device", text_data(L"\\\\.\\NUL")},
        {"serial port", text_data(L"\\\\.\\COM1")},
        {"named pipe", text_data(L"\\\\.\\pipe\\quill")},
        {"share", text_data(L"\\\\server.invalid\\share\\QuillPDF.IE.dll")},
        {"longest path", text_data(L"C:\\" + std::wstring(32'764, L'x'))},
        {"drive that does not exist", text_data(L"Q:\\QuillPDF.IE.dll")},
        {"unknown variable", text_data(L"%QUILL_NOTHING%\\QuillPDF.IE.dll", REG_EXPAND_SZ)},
    };
    for (const auto& [name, value] : values) {
        SCOPED_TRACE(name);
        const value_change change(HKEY_LOCAL_MACHINE, server_key, L"", value);
        const diagnosis found = run_diagnosis();
        EXPECT_EQ(found.exit_code, 1u);
        EXPECT_EQ(found.checks, before().checks) << found.output;
        EXPECT_TRUE(found.findings.at("DLL, file").starts_with("PROBLEM ")) << found.findings.at("DLL, file");
        EXPECT_EQ(
            std::count(found.findings.at("DLL, file").begin(), found.findings.at("DLL, file").end(), '\n'),
            4);
        EXPECT_EQ(found.errors, "");
    }
}

// A server that does not answer would stop the program, and a pipe's server could act as its user.
TEST_F(RegistrationFault, OfAPathThatIsNotLocalIsNotOpened)
{
    const wchar_t* const name = L"\\\\.\\pipe\\quill-diagnosed";
    const HANDLE pipe =
        CreateNamedPipeW(name, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_NOWAIT, 1, 64, 64, 0, nullptr);
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    for (const auto& [path, words] : {std::pair(name, "is a device and is not examined"),
                                      std::pair(L"\\\\server.invalid\\share\\QuillPDF.IE.dll",
                                                "lies on another computer and is not examined"),
                                      std::pair(L"C:\\COM1.dll", "is a device and is not examined")}) {
        const value_change change(HKEY_LOCAL_MACHINE, server_key, L"", text_data(path));
        const diagnosis found = run_diagnosis();
        EXPECT_EQ(found.exit_code, 1u);
        EXPECT_NE(found.findings.at("DLL, file").find(words), std::string::npos)
            << found.findings.at("DLL, file");
    }
    // A client, even one that has gone, would be another error.
    EXPECT_FALSE(ConnectNamedPipe(pipe, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PIPE_LISTENING));
    CloseHandle(pipe);
}

TEST_F(RegistrationFault, OfAPathInAnotherForm)
{
    const auto variable = [&] {
        auto all = std::make_shared<undo_stack>();
        all->push_back(make_undo<environment_scope>(L"QUILL_TEST_FOLDER",
                                                    module_path().substr(0, module_path().rfind(L'\\'))));
        all->push_back(
            make_undo<value_change>(HKEY_LOCAL_MACHINE, server_key, L"",
                                    text_data(L"%QUILL_TEST_FOLDER%\\QuillPDF.IE.dll", REG_EXPAND_SZ)));
        return undo(all);
    };
    const auto in_quotes = [&] {
        return make_undo<value_change>(HKEY_LOCAL_MACHINE, server_key, L"",
                                       text_data(L"\"" + module_path() + L"\""));
    };
    // Both are paths of the same file.
    for (const auto& inject : {std::function<undo()>(variable), std::function<undo()>(in_quotes)}) {
        const undo change = inject();
        const diagnosis found = run_diagnosis();
        EXPECT_EQ(found.exit_code, 0u) << found.output;
        EXPECT_EQ(found.findings.at("DLL, file"), before().findings.at("DLL, file"));
    }
}

TEST_F(RegistrationFault, OfTheHelperObject)
{
    const std::wstring key = std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + helper_clsid + L"\\InprocServer32";
    const std::wstring objects = std::wstring(L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\"
                                              L"Browser Helper Objects\\") +
                                 helper_clsid;
    expect_each_alone({
        one_value("another library", HKEY_LOCAL_MACHINE, key, L"", text_data(L"C:\\other.dll"),
                  {{"Helper object, DLL", "NOTE", "\"C:\\other.dll\""}}),
        one_value("the user's library", HKEY_CURRENT_USER, key, L"", text_data(module_path()),
                  {{"Helper object, registration for the user", "OK", "a tab uses these instead"},
                   {"Helper object, DLL", "OK", "HKCU\\"},
                   // Wine has one view of the user's classes; on Windows this finding does not change.
                   {"Helper object, 32-bit view", "NOTE", "HKCU\\"}}),
        one_value("the user's threading model", HKEY_CURRENT_USER, key, L"ThreadingModel", text_data(L"Free"),
                  {{"Helper object, registration for the user", "NOTE", "\"Free\""}}),
        one_value("the 32-bit view", HKEY_LOCAL_MACHINE, objects, L"NoExplorer", number_data(1),
                  {{"Helper object, 32-bit view", "NOTE", "(32-bit view) exists"}}, KEY_WOW64_32KEY),
        one_value("also in the shell", HKEY_LOCAL_MACHINE, objects, L"NoExplorer", std::nullopt,
                  {{"Helper object, registration", "NOTE", "\"NoExplorer\": no value instead of 1"}}),
    });
}

} // namespace
} // namespace quill::test
