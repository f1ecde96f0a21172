// Questions about low integrity, per-user classes, the browser's save functions and signatures.
#include "active_doc/identifiers.h"
#include "platform/integrity_level.h"
#include "platform/unique_handle.h"
#include "tests/acceptance/installed/installed_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/scopes.h"
#include "tests/support/text.h"

#include <windows.h>

#include <knownfolders.h>
#include <sddl.h>
#include <shlobj.h>
#include <softpub.h>
#include <wintrust.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace quill::test {
namespace {

std::wstring known_folder(REFKNOWNFOLDERID id)
{
    wchar_t* path = nullptr;
    const HRESULT result = SHGetKnownFolderPath(id, 0, nullptr, &path);
    const std::wstring copy = SUCCEEDED(result) && path != nullptr ? path : L"";
    CoTaskMemFree(path);
    return copy;
}

std::string level_text(HANDLE token)
{
    std::vector<BYTE> data(256);
    DWORD size = 0;
    if (!GetTokenInformation(token, TokenIntegrityLevel, data.data(), static_cast<DWORD>(data.size()), &size))
        return "unknown";
    const auto* label = reinterpret_cast<const TOKEN_MANDATORY_LABEL*>(data.data());
    std::ostringstream text;
    text << "0x" << std::hex
         << *GetSidSubAuthority(label->Label.Sid, *GetSidSubAuthorityCount(label->Label.Sid) - 1u);
    return text.str();
}

unique_handle low_integrity_token(std::string& failure)
{
    unique_handle own;
    unique_handle copy;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, own.put()) ||
        !DuplicateTokenEx(own.get(), TOKEN_ALL_ACCESS, nullptr, SecurityImpersonation, TokenPrimary,
                          copy.put())) {
        failure = "the token could not be copied (error " + std::to_string(GetLastError()) + ")";
        return {};
    }
    PSID low = nullptr;
    ConvertStringSidToSidW(L"S-1-16-4096", &low);
    const unique_local_memory<PSID> owner(low);
    TOKEN_MANDATORY_LABEL label{};
    label.Label.Attributes = SE_GROUP_INTEGRITY;
    label.Label.Sid = low;
    if (!SetTokenInformation(copy.get(), TokenIntegrityLevel, &label, sizeof label + GetLengthSid(low))) {
        failure = "the token's level could not be lowered (error " + std::to_string(GetLastError()) + ")";
        return {};
    }
    return copy;
}

// Creates a file in the folder and deletes it again.
std::string attempt(const std::wstring& folder)
{
    if (folder.empty())
        return "no such folder";
    if (GetFileAttributesW(folder.c_str()) == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)
            return to_utf8(folder) + ": does not exist";
    }
    const std::wstring path = folder + L"\\quill-acceptance.tmp";
    const unique_handle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    const DWORD error = GetLastError();
    return to_utf8(folder) + (file ? ": yes" : ": no (error " + std::to_string(error) + ")");
}

// Started by the test below with a token of low integrity.
TEST(LowIntegrityChild, DISABLED_Writes)
{
    unique_handle token;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.put());
    wchar_t temporary[MAX_PATH]{};
    GetEnvironmentVariableW(L"QUILL_ACCEPTANCE_TEMP", temporary, MAX_PATH);
    std::ostringstream text;
    text << "level " << level_text(token.get()) << ", the module would take it for "
         << (is_low_integrity_process(GetCurrentProcess()) ? "low" : "not low") << "; could write to "
         << attempt(known_folder(FOLDERID_LocalAppDataLow)) << "; "
         << attempt(known_folder(FOLDERID_LocalAppDataLow) + L"\\Temp") << "; " << attempt(temporary) << "; "
         << attempt(known_folder(FOLDERID_RoamingAppData)) << "; " << attempt(known_folder(FOLDERID_Profile));
    print_seen(text.str());
}

TEST(Integrity, ReportsWhereALowIntegrityProcessCanWrite)
{
    std::string failure;
    const unique_handle token = low_integrity_token(failure);
    if (!token) {
        print_answer("low-integrity", "not measured: " + failure);
        return;
    }
    const scratch_directory scratch;
    const environment_scope temporary(L"QUILL_ACCEPTANCE_TEMP", scratch.path());
    const std::wstring output_path = scratch / L"output.txt";
    PROCESS_INFORMATION started{};
    BOOL is_started = FALSE;
    {
        SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
        const unique_handle output(CreateFileW(output_path.c_str(), GENERIC_WRITE,
                                               FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                                               CREATE_ALWAYS, 0, nullptr));
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output.get();
        startup.hStdError = output.get();
        std::wstring command = L"\"" + beside_this_program(L"test_installed.exe") +
                               L"\" --gtest_filter=LowIntegrityChild.* --gtest_also_run_disabled_tests";
        is_started = CreateProcessAsUserW(token.get(), nullptr, command.data(), nullptr, nullptr, TRUE, 0,
                                          nullptr, nullptr, &startup, &started);
    }
    if (!is_started) {
        print_answer("low-integrity", "not measured: the process could not be started (error " +
                                          std::to_string(GetLastError()) + ")");
        return;
    }
    constexpr DWORD limit_ms = 60'000;
    const unique_handle process(started.hProcess);
    const unique_handle thread(started.hThread);
    WaitForSingleObject(process.get(), limit_ms);
    TerminateProcess(process.get(), 1);
    const std::string output = read_file(output_path).value_or("");
    const std::size_t begin = output.find("seen: ");
    const std::size_t end = output.find_first_of("\r\n", begin);
    ASSERT_NE(begin, std::string::npos) << output;
    print_answer("low-integrity",
                 "a process whose level was set to 0x1000: " + output.substr(begin + 6, end - begin - 6));
}

// Removes a key of the user at the end of the scope if it did not exist at the beginning.
class created_key
{
public:
    explicit created_key(const wchar_t* path) : path_(path)
    {
        unique_registry_key key;
        existed_ = RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, key.put()) == ERROR_SUCCESS;
    }
    created_key(const created_key&) = delete;
    created_key& operator=(const created_key&) = delete;
    ~created_key()
    {
        if (!existed_)
            RegDeleteKeyW(HKEY_CURRENT_USER, path_);
    }

private:
    const wchar_t* path_;
    bool existed_;
};

TEST(System, ReportsWhetherTheUsersClassRegistrationIsRead)
{
    const created_key classes(L"Software\\Classes");
    const created_key class_ids(L"Software\\Classes\\CLSID");
    constexpr wchar_t class_text[] = L"{3F1D6A52-6E0B-4C57-9B7C-0E4B0B5B2D91}";
    const ole_apartment apartment;
    CLSID id{};
    ASSERT_EQ(CLSIDFromString(class_text, &id), S_OK);
    const registry_key_scope key(HKEY_CURRENT_USER, std::wstring(L"Software\\Classes\\CLSID\\") + class_text);
    const registry_key_scope server(HKEY_CURRENT_USER, std::wstring(L"Software\\Classes\\CLSID\\") +
                                                           class_text + L"\\InprocServer32");
    // A system DLL without this class: its own error shows that it was loaded.
    server.set_string(nullptr, L"urlmon.dll");
    server.set_string(L"ThreadingModel", L"Apartment");
    IUnknown* object = nullptr;
    const HRESULT result = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object));
    ASSERT_EQ(object, nullptr);
    std::ostringstream text;
    text << "CoCreateInstance of a class that only the user has registered returns 0x" << std::hex
         << static_cast<unsigned long>(result)
         << (result == REGDB_E_CLASSNOTREG ? ", class not registered: the user's registration is not read"
             : result == CLASS_E_CLASSNOTAVAILABLE
                 ? ", class not available: the user's registration is read"
                 : ": not decided, neither class not registered nor class not available")
         << "; COM may ignore the user's classes in a process with an administrator's rights, as this one "
            "is, so a tab may differ";
    print_answer("per-user-class", text.str());
}

TEST(System, ReportsTheBrowsersSaveFunctions)
{
    const unique_library library(LoadLibraryW(L"ieframe.dll"));
    ASSERT_TRUE(library);
    std::string text;
    for (const char* name :
         {"IEShowSaveFileDialog", "IEGetWriteableFolderPath", "IESaveFile", "IECancelSaveFile"})
        text += std::string(text.empty() ? "" : ", ") + name +
                (GetProcAddress(library.get(), name) != nullptr ? " exists" : " does not exist");
    print_answer("save-functions", text);
}

std::string trust_of(const std::wstring& path)
{
    WINTRUST_FILE_INFO file{};
    file.cbStruct = sizeof file;
    file.pcwszFilePath = path.c_str();
    WINTRUST_DATA data{};
    data.cbStruct = sizeof data;
    data.dwUIChoice = WTD_UI_NONE;
    data.fdwRevocationChecks = WTD_REVOKE_NONE;
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &file;
    data.dwStateAction = WTD_STATEACTION_VERIFY;
    GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
    const LONG result = WinVerifyTrust(nullptr, &action, &data);
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    WinVerifyTrust(nullptr, &action, &data);
    std::ostringstream text;
    text << to_utf8(std::filesystem::path(path).filename().wstring()) << ": ";
    if (result == ERROR_SUCCESS)
        text << "accepted";
    else
        text << "0x" << std::hex << static_cast<unsigned long>(result)
             << (result == TRUST_E_NOSIGNATURE ? ", not signed" : "");
    return text.str();
}

TEST(System, ReportsTheSignatures)
{
    wchar_t text[64]{};
    StringFromGUID2(CLSID_ActiveDocCtrl, text, 64);
    wchar_t dll[MAX_PATH]{};
    DWORD size = sizeof dll;
    const std::wstring key = std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + text + L"\\InprocServer32";
    ASSERT_EQ(RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, dll, &size),
              ERROR_SUCCESS);
    std::string answer = trust_of(dll);
    const auto kit = std::filesystem::path(beside_this_program(L"")).parent_path().parent_path();
    for (const auto& entry : std::filesystem::directory_iterator(kit))
        if (entry.path().extension() == L".msi")
            answer += "; " + trust_of(entry.path().wstring());
    print_answer("signatures", answer);
}

} // namespace
} // namespace quill::test
