// Faults in the files of the module and of the viewer.
#include "tests/diagnose/diagnosed_computer.h"
#include "tests/diagnose/image_parts.h"

namespace quill::test {
namespace {

class LibraryFault : public DiagnosedComputer
{
protected:
    const std::string module_ = read_file(module_path()).value_or("");
    const std::string viewer_ = read_file(viewer_path()).value_or("");

    static fault file(const std::string& name, const std::wstring& path,
                      const std::optional<std::string>& contents, std::vector<changed_finding> changes)
    {
        return {name, [=] { return make_undo<file_change>(path, contents); }, std::move(changes)};
    }

    // A module that cannot be loaded is not examined further.
    fault unloadable_module(const std::string& name, const std::optional<std::string>& contents,
                            const std::string& text) const
    {
        std::vector<changed_finding> changes = {{"DLL, file", "PROBLEM", text},
                                                {"DLL, version", "PROBLEM", "not examined"},
                                                {"DLL, contents", "PROBLEM", "not examined"},
                                                {"DLL, signature", "NOTE", "not examined"}};
        return file(name, module_path(), contents, changes);
    }

    fault unloadable_viewer(const std::string& name, const std::optional<std::string>& contents,
                            const std::string& text) const
    {
        return file(name, viewer_path(), contents, {{"Viewer, server", "PROBLEM", text}});
    }
};

TEST_F(LibraryFault, OfTheModulesFile)
{
    expect_each_alone({
        unloadable_module("missing", std::nullopt, "does not exist (error 2)"),
        unloadable_module("empty", "", "is empty"),
        unloadable_module("text", "This is no program.\r\n", "is no program file"),
        unloadable_module("the first bytes only", module_.substr(0, 2), "ends too early"),
        unloadable_module("headers only", module_.substr(0, 1024), "ends too early"),
        unloadable_module("half of it", module_.substr(0, module_.size() / 2), "ends too early"),
        unloadable_module("32-bit", as_32_bit(module_), "is for 32-bit programs"),
        unloadable_module("ARM", as_arm(module_), "another processor (0xAA64)"),
        unloadable_module("a program", as_program(module_), "is a program, not a library"),
        unloadable_module("no exports", without_section(module_, ".rdata"),
                          "does not export DllGetClassObject"),
    });
}

TEST_F(LibraryFault, OfTheModulesContents)
{
    expect_each_alone({
        file("damaged resources", module_path(), without_section(module_, ".rsrc"),
             {{"DLL, version", "PROBLEM", "no version information"},
              {"DLL, contents", "PROBLEM", "the checksum is wrong"}}),
        file("one bit of the code", module_path(), with_changed_code(module_),
             {{"DLL, contents", "PROBLEM", "the checksum is wrong"}}),
        file("no checksum", module_path(), without_checksum(module_),
             {{"DLL, contents", "PROBLEM", "the file has no checksum"}}),
        file("another version", module_path(), with_version(module_, 13),
             {{"DLL, version", "NOTE", "of version 13.0.0.0"}}),
        file("another product's library", module_path(), with_checksum(viewer_),
             {{"DLL, version", "PROBLEM", ""}}),
        file("a signature that is none", module_path(), with_false_signature(module_),
             {{"DLL, signature", "PROBLEM", "not valid or not trusted (0x"}}),
    });
}

TEST_F(LibraryFault, OfAFileThatIsOpenedByOthersAlone)
{
    const auto lock = [](const std::wstring& path) {
        return [path] {
            const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                            OPEN_EXISTING, 0, nullptr);
            EXPECT_NE(file, INVALID_HANDLE_VALUE);
            return undo(file, [](void* handle) { CloseHandle(handle); });
        };
    };
    expect_each_alone({
        {"module",
         lock(module_path()),
         {{"DLL, file", "PROBLEM", "in use by another program (error 32)"},
          {"DLL, version", "PROBLEM", "not examined"},
          {"DLL, contents", "PROBLEM", "not examined"},
          {"DLL, signature", "NOTE", "not examined"}}},
        {"viewer", lock(viewer_path()), {{"Viewer, server", "PROBLEM", "in use by another program"}}},
    });
}

TEST_F(LibraryFault, OfTheViewersFile)
{
    expect_each_alone({
        unloadable_viewer("missing", std::nullopt, "does not exist"),
        unloadable_viewer("empty", "", "is empty"),
        unloadable_viewer("text", "text", "is no program file"),
        unloadable_viewer("half of it", viewer_.substr(0, viewer_.size() / 2), "ends too early"),
        unloadable_viewer("32-bit", as_32_bit(viewer_), "is for 32-bit programs"),
        unloadable_viewer("the module by another name", module_, "is this product's DLL, not the viewer"),
    });
}

TEST_F(LibraryFault, OfTheViewersRegistration)
{
    const std::wstring progid = L"SOFTWARE\\Classes\\QuillPDF.QuillPDFCtrl\\CLSID";
    const std::wstring server =
        std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + viewer_clsid + L"\\InprocServer32";
    const auto set = [](const std::wstring& path, const std::optional<value_change::data>& value) {
        return [=] { return make_undo<value_change>(HKEY_LOCAL_MACHINE, path, L"", value); };
    };
    const auto only_32_bit = [&] {
        auto all = std::make_shared<undo_stack>();
        all->push_back(make_undo<value_change>(HKEY_LOCAL_MACHINE, server, L"", std::nullopt));
        all->push_back(make_undo<value_change>(HKEY_LOCAL_MACHINE, server, L"",
                                               text_data(L"C:\\viewer32.dll"), KEY_WOW64_32KEY));
        return undo(all);
    };
    const auto by_version = [&] {
        auto all = std::make_shared<undo_stack>();
        all->push_back(make_undo<value_change>(HKEY_LOCAL_MACHINE, progid, L"", std::nullopt));
        all->push_back(make_undo<value_change>(HKEY_LOCAL_MACHINE,
                                               L"SOFTWARE\\Classes\\QuillPDF.QuillPDFCtrl\\CurVer", L"",
                                               text_data(L"QuillPDF.QuillPDFCtrl.9")));
        all->push_back(make_undo<value_change>(HKEY_LOCAL_MACHINE,
                                               L"SOFTWARE\\Classes\\QuillPDF.QuillPDFCtrl.9\\CLSID", L"",
                                               text_data(viewer_clsid)));
        return undo(all);
    };
    const auto program = [&] {
        auto all = std::make_shared<undo_stack>();
        all->push_back(make_undo<value_change>(HKEY_LOCAL_MACHINE, server, L"", std::nullopt));
        all->push_back(make_undo<value_change>(HKEY_LOCAL_MACHINE,
                                               std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + viewer_clsid +
                                                   L"\\LocalServer32",
                                               L"", text_data(L"C:\\viewer.exe")));
        return undo(all);
    };
    const std::wstring other_class = L"{11111111-2222-3333-4444-555555555555}";
    const std::wstring classes = L"SOFTWARE\\Classes\\CLSID\\";
    const std::wstring instead = classes + viewer_clsid + L"\\TreatAs";
    const auto other_viewer = [&](bool has_another) {
        auto all = std::make_shared<undo_stack>();
        all->push_back(set(instead, text_data(other_class))());
        all->push_back(set(classes + other_class + L"\\InprocServer32", text_data(viewer_path()))());
        if (has_another)
            all->push_back(set(classes + other_class + L"\\TreatAs", text_data(viewer_clsid))());
        return undo(all);
    };
    const char* const id = "Viewer, ProgID";
    const char* const check = "Viewer, server";
    expect_each_alone({
        {"no ProgID",
         set(progid, std::nullopt),
         {{id, "PROBLEM", "no value"}, {check, "PROBLEM", "not examined"}}},
        {"a ProgID that is a number",
         set(progid, number_data(1)),
         {{id, "PROBLEM", ": 1"}, {check, "PROBLEM", "not examined"}}},
        {"a ProgID that is no class",
         set(progid, text_data(L"{}")),
         {{id, "PROBLEM", "\"{}\""}, {check, "PROBLEM", "not examined"}}},
        {"a ProgID that is no class, with its length",
         set(progid, text_data(L"{1111111122222333334444455555555555555}")),
         {{id, "PROBLEM", "{1111"}, {check, "PROBLEM", "not examined"}}},
        {"the document's class",
         set(progid, text_data(document_clsid)),
         {{id, "PROBLEM", "a class of this product"}, {check, "PROBLEM", "not examined"}}},
        {"the helper's class",
         set(progid, text_data(helper_clsid)),
         {{id, "PROBLEM", "a class of this product"}, {check, "PROBLEM", "not examined"}}},
        {"the module as server",
         set(server, text_data(module_path())),
         {{check, "PROBLEM", "is this product's DLL, not the viewer"}}},
        {"a missing module as server",
         set(server, text_data(L"C:\\missing\\quillpdf.ie.dll")),
         {{check, "PROBLEM", "is this product's DLL, not the viewer"}}},
        {"another class instead", [&] { return other_viewer(false); }, {{check, "NOTE", "TreatAs"}}},
        {"a class instead that has another one",
         [&] { return other_viewer(true); },
         {{check, "PROBLEM", "that class has a TreatAs too"}}},
        {"a class instead that does not exist",
         set(instead, text_data(other_class)),
         {{check, "PROBLEM", "{11111111-2222-3333-4444-555555555555}\\InprocServer32"}}},
        {"the document's class instead",
         set(instead, text_data(document_clsid)),
         {{check, "PROBLEM", "a class of this product"}}},
        {"a number instead", set(instead, number_data(1)), {{check, "PROBLEM", "no class identifier"}}},
        {"a ProgID of a class that does not exist",
         set(progid, text_data(L"{11111111-2222-3333-4444-555555555555}")),
         {{id, "OK", "{11111111"}, {check, "PROBLEM", "{11111111"}}},
        {"a current version", by_version, {{id, "OK", "QuillPDFCtrl.9"}}},
        {"no server", set(server, std::nullopt), {{check, "PROBLEM", "no value"}}},
        {"a server for 32-bit programs only",
         only_32_bit,
         {{check, "PROBLEM", "for 32-bit programs only: \"C:\\viewer32.dll\""}}},
        {"a program as server", program, {{check, "NOTE", "\"C:\\viewer.exe\""}}},
        {"a server path of 1 MB", set(server, binary_data(1 << 20)), {{check, "PROBLEM", "1048576 bytes"}}},
    });
}

} // namespace
} // namespace quill::test
