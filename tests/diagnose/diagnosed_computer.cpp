#include "tests/diagnose/diagnosed_computer.h"

#include "platform/library_function.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

#include <algorithm>
#include <iostream>

namespace quill::test {
namespace {

constexpr const wchar_t* classes = L"SOFTWARE\\Classes\\";

bool key_exists(HKEY root, const std::wstring& path, REGSAM view)
{
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExW(root, path.c_str(), 0, KEY_QUERY_VALUE | view, &key);
    if (status == ERROR_SUCCESS)
        RegCloseKey(key);
    return status != ERROR_FILE_NOT_FOUND;
}

// Registers or unregisters a library by its own export.
bool call_export(const std::wstring& library, const char* name)
{
    const HMODULE module = LoadLibraryW(library.c_str());
    const auto function = module ? reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
                                       reinterpret_cast<void*>(GetProcAddress(module, name)))
                                 : nullptr;
    const bool is_done = function && SUCCEEDED(function());
    if (module)
        FreeLibrary(module);
    return is_done;
}

bool is_state(const std::string& line)
{
    return line.starts_with("OK      ") || line.starts_with("NOTE    ") || line.starts_with("PROBLEM ");
}

HANDLE inheritable_file(const std::wstring& path)
{
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                       CREATE_ALWAYS, 0, nullptr);
}

// As run_program, whose files are in the temporary folder, which a fault may concern.
diagnosis run_with_files(const std::wstring& program, const std::wstring& arguments)
{
    wchar_t windows[MAX_PATH] = {};
    GetWindowsDirectoryW(windows, MAX_PATH);
    const std::wstring files =
        std::wstring(windows) + L"\\temp\\diagnosis-" + std::to_wstring(GetCurrentProcessId());
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = inheritable_file(files + L".out");
    startup.hStdError = inheritable_file(files + L".err");
    std::wstring command_line = L"\"" + program + L"\" " + arguments;
    PROCESS_INFORMATION process{};
    diagnosis result;
    const bool is_started = CreateProcessW(program.c_str(), command_line.data(), nullptr, nullptr, TRUE, 0,
                                           nullptr, nullptr, &startup, &process) != FALSE;
    CloseHandle(startup.hStdOutput);
    CloseHandle(startup.hStdError);
    EXPECT_TRUE(is_started);
    if (is_started) {
        EXPECT_EQ(WaitForSingleObject(process.hProcess, 30'000), WAIT_OBJECT_0);
        GetExitCodeProcess(process.hProcess, &result.exit_code);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    result.output = read_file(files + L".out").value_or("");
    result.errors = read_file(files + L".err").value_or("");
    remove_path(files + L".out");
    remove_path(files + L".err");
    return result;
}

} // namespace

value_change::value_change(HKEY root, std::wstring path, std::wstring name, const std::optional<data>& value,
                           REGSAM view)
    : root_(root), path_(std::move(path)), name_(std::move(name)), view_(view)
{
    for (std::size_t end = path_.find(L'\\');; end = path_.find(L'\\', end + 1)) {
        const std::wstring part = path_.substr(0, end);
        if (!key_exists(root_, part, view_)) {
            created_ = part;
            break;
        }
        if (end == std::wstring::npos)
            break;
    }
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExW(root_, path_.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE | view_, nullptr,
                              &key, nullptr),
              ERROR_SUCCESS);
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExW(key, name_.c_str(), nullptr, &type, nullptr, &size) == ERROR_SUCCESS) {
        before_ = data{type, std::string(size, '\0')};
        RegQueryValueExW(key, name_.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(before_->bytes.data()),
                         &size);
    }
    // A terminator behind the data would be included in it.
    const std::string bytes = value ? value->bytes + "\x01\x01\x01\x01" : "";
    if (value)
        EXPECT_EQ(RegSetValueExW(key, name_.c_str(), 0, value->type,
                                 reinterpret_cast<const BYTE*>(bytes.data()),
                                 static_cast<DWORD>(value->bytes.size())),
                  ERROR_SUCCESS);
    else
        RegDeleteValueW(key, name_.c_str());
    RegCloseKey(key);
}

value_change::~value_change()
{
    HKEY key = nullptr;
    if (!created_.empty()) {
        if (RegOpenKeyExW(root_, created_.c_str(), 0, KEY_ALL_ACCESS | view_, &key) == ERROR_SUCCESS) {
            RegDeleteTreeW(key, nullptr);
            RegCloseKey(key);
            RegDeleteKeyExW(root_, created_.c_str(), view_, 0);
        }
        return;
    }
    EXPECT_EQ(RegOpenKeyExW(root_, path_.c_str(), 0, KEY_WRITE | view_, &key), ERROR_SUCCESS);
    if (before_)
        RegSetValueExW(key, name_.c_str(), 0, before_->type,
                       reinterpret_cast<const BYTE*>(before_->bytes.data()),
                       static_cast<DWORD>(before_->bytes.size()));
    else
        RegDeleteValueW(key, name_.c_str());
    RegCloseKey(key);
}

value_change::data text_data(const std::wstring& text, DWORD type)
{
    return {type, {reinterpret_cast<const char*>(text.c_str()), (text.size() + 1) * sizeof(wchar_t)}};
}

value_change::data number_data(DWORD number)
{
    return {REG_DWORD, {reinterpret_cast<const char*>(&number), sizeof number}};
}

value_change::data binary_data(std::size_t size)
{
    return {REG_BINARY, std::string(size, 'x')};
}

value_change::data unterminated_data(const std::wstring& text)
{
    return {REG_SZ, {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)}};
}

denied_key::denied_key(HKEY root, const std::wstring& path)
{
    EXPECT_EQ(RegOpenKeyExW(root, path.c_str(), 0, READ_CONTROL | WRITE_DAC | KEY_WOW64_64KEY, &key_),
              ERROR_SUCCESS);
    DWORD size = 0;
    RegGetKeySecurity(key_, DACL_SECURITY_INFORMATION, nullptr, &size);
    before_.resize(size);
    EXPECT_EQ(RegGetKeySecurity(key_, DACL_SECURITY_INFORMATION, before_.data(), &size), ERROR_SUCCESS);
    ACL empty_list{}; // admits no access
    InitializeAcl(&empty_list, sizeof empty_list, ACL_REVISION);
    SECURITY_DESCRIPTOR descriptor{};
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor, TRUE, &empty_list, FALSE);
    EXPECT_EQ(RegSetKeySecurity(key_, DACL_SECURITY_INFORMATION, &descriptor), ERROR_SUCCESS);
}

denied_key::~denied_key()
{
    EXPECT_EQ(RegSetKeySecurity(key_, DACL_SECURITY_INFORMATION, before_.data()), ERROR_SUCCESS);
    RegCloseKey(key_);
}

file_change::file_change(std::wstring path, const std::optional<std::string>& contents)
    : path_(std::move(path)), before_(read_file(path_))
{
    if (contents)
        EXPECT_TRUE(write_file(path_, *contents));
    else
        EXPECT_TRUE(DeleteFileW(path_.c_str()));
}

file_change::~file_change()
{
    if (before_)
        EXPECT_TRUE(write_file(path_, *before_));
    else
        DeleteFileW(path_.c_str());
}

diagnosis run_again_if_silent(const std::function<diagnosis()>& run)
{
    const diagnosis result = run();
    if (!result.output.empty() || !result.errors.empty())
        return result;
    std::cout << "exit code " << result.exit_code << ": started again, since it printed nothing" << std::endl;
    return run();
}

diagnosis run_diagnosis(const std::wstring& arguments)
{
    diagnosis result = run_again_if_silent(
        [&] { return run_with_files(beside_this_program(L"QuillDiagnose.exe"), arguments); });
    std::string check;
    for (std::size_t position = 0; position < result.output.size();) {
        const std::size_t end = std::min(result.output.find("\r\n", position), result.output.size());
        const std::string line = result.output.substr(position, end - position);
        position = end + 2;
        if (is_state(line)) {
            check = line.substr(8);
            EXPECT_FALSE(result.findings.contains(check)) << check;
            result.checks.push_back(check);
        } else if (!line.starts_with("    ")) {
            check.clear();
        }
        if (!check.empty())
            result.findings[check] += line + "\n";
    }
    return result;
}

// Wine makes no links itself; the machine's program does, and is not waited for by its handle.
void make_link(const std::wstring& target, const std::wstring& link)
{
    using unix_name = char*(CDECL*)(const wchar_t*);
    const auto name_of =
        library_function<unix_name>(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name");
    if (!name_of) {
        const DWORD kind = GetFileAttributesW(target.c_str()) & FILE_ATTRIBUTE_DIRECTORY ? 1 : 0;
        ASSERT_TRUE(CreateSymbolicLinkW(link.c_str(), target.c_str(), static_cast<DWORD>(kind)));
        return;
    }
    const std::wstring folder = link.substr(0, link.rfind(L'\\'));
    const std::string arguments = std::string("-s ") + name_of(target.c_str()) + " " +
                                  name_of(folder.c_str()) + "/" + to_utf8(link.substr(folder.size() + 1));
    run_program(L"Z:\\bin\\ln", to_wide(arguments));
    ASSERT_TRUE(wait_until([&] { return GetFileAttributesW(link.c_str()) != INVALID_FILE_ATTRIBUTES; }));
}

DiagnosedComputer::DiagnosedComputer()
{
    EXPECT_TRUE(CopyFileW(beside_this_program(L"QuillPDF.IE.dll").c_str(), module_.c_str(), TRUE));
    EXPECT_TRUE(CopyFileW(beside_this_program(L"QuillPDFCtrl.dll").c_str(), viewer_.c_str(), TRUE));
    EXPECT_TRUE(write_file(editor_, "an editor"));
    CreateDirectoryW(temp_.c_str(), nullptr);
    for (const wchar_t* name : {L"TMP", L"TEMP"})
        state_->push_back(make_undo<environment_scope>(name, temp_));
    for (const wchar_t* name : {L"QUILL_TMP_FOLDER", L"QUILL_LOG_LEVEL", L"QUILL_LOG_SINKS"})
        state_->push_back(make_undo<environment_scope>(name, std::nullopt));

    EXPECT_TRUE(call_export(module_, "DllRegisterServer"));
    const auto set = [&](HKEY root, const std::wstring& path, const wchar_t* name,
                         const value_change::data& value) {
        state_->push_back(make_undo<value_change>(root, path, name, value));
    };
    const std::wstring viewer = std::wstring(classes) + L"CLSID\\" + viewer_clsid + L"\\InprocServer32";
    set(HKEY_LOCAL_MACHINE, std::wstring(classes) + L"QuillPDF.QuillPDFCtrl\\CLSID", L"",
        text_data(viewer_clsid));
    set(HKEY_LOCAL_MACHINE, viewer, L"", text_data(viewer_));
    set(HKEY_LOCAL_MACHINE, std::wstring(classes) + L".pdf", L"Content Type", text_data(L"application/pdf"));
    const wchar_t* const record = L"SOFTWARE\\Quill\\QuillPDF.IE";
    set(HKEY_LOCAL_MACHINE, record, L"InstallDir", text_data(folder_ / L""));
    set(HKEY_LOCAL_MACHINE, record, L"ActiveDocument", text_data(L"14.0.0"));
    set(HKEY_LOCAL_MACHINE, record, L"SharePoint", text_data(L"14.0.0"));
    set(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Quill\\DocStudio\\14\\Settings", L"exepath", text_data(editor_));
    const wchar_t* const policy = L"SOFTWARE\\Microsoft\\Internet Explorer\\Low Rights\\ElevationPolicy\\"
                                  L"{0D1F53A2-7A5E-4C5B-9D0A-6B2C8E1F4A37}";
    set(HKEY_LOCAL_MACHINE, policy, L"AppName", text_data(L"editor.exe"));
    set(HKEY_LOCAL_MACHINE, policy, L"AppPath", text_data(folder_.path()));
    set(HKEY_LOCAL_MACHINE, policy, L"Policy", number_data(3));
    set(HKEY_CURRENT_USER, L"SOFTWARE\\Microsoft\\Internet Explorer\\Main", L"TabProcGrowth", number_data(0));

    before_ = run_diagnosis();
    EXPECT_EQ(before_.exit_code, 0u) << before_.output << before_.errors;
    EXPECT_GT(before_.checks.size(), 40u);
}

DiagnosedComputer::~DiagnosedComputer()
{
    state_.reset();
    EXPECT_TRUE(call_export(module_, "DllUnregisterServer"));
}

void DiagnosedComputer::expect_alone(const fault& fault)
{
    SCOPED_TRACE(fault.name);
    diagnosis found;
    {
        const undo injected = fault.inject();
        found = run_diagnosis();
    }
    std::map<std::string, std::string> changed;
    bool is_problem = false;
    EXPECT_EQ(found.checks, before_.checks) << found.output << found.errors;
    for (const auto& [check, lines] : found.findings) {
        if (const auto old = before_.findings.find(check);
            old == before_.findings.end() || old->second != lines)
            changed[check] = lines;
    }
    for (const changed_finding& expected : fault.changes) {
        const std::string lines = changed[expected.check];
        changed.erase(expected.check);
        EXPECT_TRUE(lines.starts_with(expected.state + " "))
            << expected.check << " should be " << expected.state << ":\n"
            << lines;
        EXPECT_TRUE(lines.find(expected.text) != std::string::npos)
            << "without \"" << expected.text << "\":\n"
            << lines;
        is_problem = is_problem || expected.state == "PROBLEM";
        if (expected.state != "OK")
            EXPECT_TRUE(lines.find("to do:    nothing\n") == std::string::npos) << "nothing to do:\n"
                                                                                << lines;
    }
    for (const auto& [check, lines] : changed)
        ADD_FAILURE() << "changed as well:\n" << lines;
    EXPECT_EQ(found.exit_code, is_problem ? 1u : 0u);
    EXPECT_EQ(found.errors, "");
}

void DiagnosedComputer::expect_each_alone(const std::vector<fault>& faults)
{
    for (const fault& fault : faults)
        expect_alone(fault);
    const diagnosis after = run_diagnosis();
    EXPECT_EQ(after.output, before_.output);
}

} // namespace quill::test
