// What the program asks Windows: with replaced functions of the system, what they are passed and what becomes
// of their results.
#include "diagnose/product_facts.h"
#include "diagnose/windows_machine.h"
#include "tests/support/faults/replaced_import.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <softpub.h>
#include <wintrust.h>

#include <cstring>

namespace quill::test {
namespace {

using diagnose::signature_kind;
using diagnose::windows_machine;

struct trust_call
{
    HWND window = nullptr;
    GUID action{};
    std::wstring path;
    WINTRUST_DATA data{};
};
std::vector<trust_call> trust_calls;
LONG trust_status = ERROR_SUCCESS;

LONG WINAPI verify_trust(HWND window, GUID* action, void* data)
{
    auto* const passed = static_cast<WINTRUST_DATA*>(data);
    trust_calls.push_back({window, *action, passed->pFile->pcwszFilePath, *passed});
    passed->hWVTStateData = &trust_status;
    return trust_status;
}

TEST(Signature, IsVerifiedWithoutTheNetworkAndWithoutAWindow)
{
    const replaced_import<decltype(WinVerifyTrust)> replaced("WinVerifyTrust", verify_trust);
    trust_calls.clear();
    trust_status = ERROR_SUCCESS;
    windows_machine().signature(L"C:\\a.dll");
    ASSERT_EQ(trust_calls.size(), 2u);
    for (const trust_call& call : trust_calls) {
        EXPECT_EQ(call.window, static_cast<HWND>(INVALID_HANDLE_VALUE));
        EXPECT_TRUE(IsEqualGUID(call.action, GUID(WINTRUST_ACTION_GENERIC_VERIFY_V2)));
        EXPECT_EQ(call.path, L"C:\\a.dll");
        EXPECT_EQ(call.data.dwUIChoice, static_cast<DWORD>(WTD_UI_NONE));
        EXPECT_EQ(call.data.dwUnionChoice, static_cast<DWORD>(WTD_CHOICE_FILE));
        EXPECT_EQ(call.data.fdwRevocationChecks, static_cast<DWORD>(WTD_REVOKE_NONE));
        EXPECT_EQ(call.data.dwProvFlags, static_cast<DWORD>(WTD_CACHE_ONLY_URL_RETRIEVAL));
    }
    EXPECT_EQ(trust_calls[0].data.dwStateAction, static_cast<DWORD>(WTD_STATEACTION_VERIFY));
    EXPECT_EQ(trust_calls[1].data.dwStateAction, static_cast<DWORD>(WTD_STATEACTION_CLOSE));
    EXPECT_EQ(trust_calls[1].data.hWVTStateData, &trust_status);
}

struct trust_result
{
    HRESULT status;
    signature_kind kind;
};

TEST(Signature, IsValidOnlyIfTheSystemSaysSo)
{
    const replaced_import<decltype(WinVerifyTrust)> replaced("WinVerifyTrust", verify_trust);
    for (const trust_result& expected : {trust_result{S_OK, signature_kind::valid},
                                         {TRUST_E_NOSIGNATURE, signature_kind::none},
                                         {TRUST_E_PROVIDER_UNKNOWN, signature_kind::unknown},
                                         {CRYPT_E_FILE_ERROR, signature_kind::unknown},
                                         {TRUST_E_BAD_DIGEST, signature_kind::broken},
                                         {CERT_E_UNTRUSTEDROOT, signature_kind::broken},
                                         {CERT_E_EXPIRED, signature_kind::broken},
                                         {S_FALSE, signature_kind::broken}}) {
        trust_status = expected.status;
        const auto facts = windows_machine().signature(L"C:\\a.dll");
        EXPECT_EQ(facts.kind, expected.kind) << std::hex << expected.status;
        EXPECT_EQ(facts.status, static_cast<std::uint32_t>(expected.status));
    }
}

DWORD elevation = 0;
bool is_elevation_known = true;
TOKEN_INFORMATION_CLASS asked_class{};

BOOL WINAPI get_elevation(HANDLE, TOKEN_INFORMATION_CLASS what, void* data, DWORD size, DWORD* needed)
{
    asked_class = what;
    if (!is_elevation_known || size < sizeof elevation)
        return FALSE;
    *static_cast<DWORD*>(data) = elevation;
    *needed = sizeof elevation;
    return TRUE;
}

TEST(Account, IsElevatedIfItsTokenSaysSo)
{
    const replaced_import<decltype(GetTokenInformation)> replaced("GetTokenInformation", get_elevation);
    for (const DWORD state : {0u, 1u}) {
        elevation = state;
        is_elevation_known = true;
        EXPECT_EQ(diagnose::read_system().is_elevated, state != 0);
        EXPECT_EQ(asked_class, TokenElevation);
        is_elevation_known = false;
        EXPECT_FALSE(diagnose::read_system().is_elevated);
    }
}

TEST(Variables, AreNotExpandedInTextThatIsNoPath)
{
    const environment_scope variable(L"QUILL_TEST_LONG", std::wstring(10'000, L'x'));
    const windows_machine computer;
    EXPECT_EQ(computer.expanded(L"%QUILL_TEST_LONG%\\a"), std::wstring(10'000, L'x') + L"\\a");
    const std::wstring four = L"%QUILL_TEST_LONG%%QUILL_TEST_LONG%%QUILL_TEST_LONG%%QUILL_TEST_LONG%";
    EXPECT_EQ(computer.expanded(four), four);
    const std::wstring longest = std::wstring(32'767, L'x') + L"%TMP%";
    EXPECT_EQ(computer.expanded(longest), longest);
}

// A program that has the file open for writing or for deletion, as an installer may, does not hinder.
TEST(FileContents, AreReadWhileOthersMayWriteOrDeleteTheFile)
{
    const scratch_directory folder;
    const std::wstring path = folder / L"a.dll";
    ASSERT_TRUE(write_file(path, "12345"));
    for (const DWORD access : {DWORD{GENERIC_READ}, DWORD{GENERIC_WRITE}, DWORD{DELETE}}) {
        const HANDLE other =
            CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                        OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(other, INVALID_HANDLE_VALUE);
        EXPECT_EQ(windows_machine().read(path).bytes, "12345") << access;
        CloseHandle(other);
    }
}

int reads_until_failure = 0;

BOOL WINAPI read_file_in_part(HANDLE, void* data, DWORD size, DWORD* count, OVERLAPPED*)
{
    if (reads_until_failure-- == 0) {
        SetLastError(ERROR_LOCK_VIOLATION);
        return FALSE;
    }
    std::memset(data, 'x', size);
    *count = size;
    return TRUE;
}

// Another program may have locked a part of it.
TEST(FileContents, AreAnErrorIfAPartCannotBeRead)
{
    const scratch_directory folder;
    const std::wstring path = folder / L"a.dll";
    ASSERT_TRUE(write_file(path, std::string(3 << 20, 'x')));
    const replaced_import<decltype(ReadFile)> replaced("ReadFile", read_file_in_part);
    for (int i = 0; i < 3; ++i) {
        reads_until_failure = i;
        EXPECT_EQ(windows_machine().read(path).error, static_cast<DWORD>(ERROR_LOCK_VIOLATION));
    }
    reads_until_failure = 3;
    EXPECT_EQ(windows_machine().read(path).error, static_cast<DWORD>(ERROR_SUCCESS));
}

} // namespace
} // namespace quill::test
