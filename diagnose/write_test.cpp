#include "diagnose/write_test.h"

#include "diagnose/mandatory_label.h"
#include "platform/integrity_level.h"
#include "platform/unique_handle.h"

#include <windows.h>

#include <aclapi.h>

#include <vector>

namespace quill::diagnose {
namespace {

static_assert(low_integrity_level == SECURITY_MANDATORY_LOW_RID);

DWORD level_of(HANDLE token)
{
    DWORD size = 0;
    GetTokenInformation(token, TokenIntegrityLevel, nullptr, 0, &size);
    std::vector<BYTE> memory(size);
    if (memory.empty() || !GetTokenInformation(token, TokenIntegrityLevel, memory.data(), size, &size))
        return SECURITY_MANDATORY_SYSTEM_RID;
    const auto* const label = reinterpret_cast<const TOKEN_MANDATORY_LABEL*>(memory.data());
    const UCHAR parts = *GetSidSubAuthorityCount(label->Label.Sid);
    return parts == 0 ? SECURITY_MANDATORY_SYSTEM_RID
                      : *GetSidSubAuthority(label->Label.Sid, DWORD{parts} - 1);
}

// A copy of the process's token with low integrity; empty if the system does not lower it.
unique_handle low_token()
{
    unique_handle own;
    unique_handle copy;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, own.put()) ||
        !DuplicateTokenEx(own.get(), TOKEN_QUERY | TOKEN_IMPERSONATE | TOKEN_ADJUST_DEFAULT, nullptr,
                          SecurityImpersonation, TokenImpersonation, copy.put()))
        return {};
    SID low{SID_REVISION, 1, SECURITY_MANDATORY_LABEL_AUTHORITY, {SECURITY_MANDATORY_LOW_RID}};
    TOKEN_MANDATORY_LABEL label{{&low, SE_GROUP_INTEGRITY}};
    SetTokenInformation(copy.get(), TokenIntegrityLevel, &label,
                        static_cast<DWORD>(sizeof label + sizeof low));
    // The call may succeed without an effect.
    return is_low_integrity_level(level_of(copy.get())) ? std::move(copy) : unique_handle();
}

class impersonation
{
public:
    explicit impersonation(HANDLE token) : is_active_(SetThreadToken(nullptr, token) != FALSE) {}
    ~impersonation()
    {
        // The rest of the program must not run with the lowered token.
        if (is_active_ && !RevertToSelf())
            TerminateProcess(GetCurrentProcess(), 1);
    }
    impersonation(const impersonation&) = delete;
    impersonation& operator=(const impersonation&) = delete;
    bool is_active() const { return is_active_; }

private:
    bool is_active_;
};

DWORD create_and_delete(const std::wstring& folder)
{
    const std::wstring test = folder + L"\\QuillDiagnose-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                              std::to_wstring(GetTickCount64());
    if (!CreateDirectoryW(test.c_str(), nullptr))
        return GetLastError();
    DWORD error = ERROR_SUCCESS;
    {
        const unique_handle file(CreateFileW((test + L"\\test.pdf").c_str(), GENERIC_WRITE | DELETE, 0,
                                             nullptr, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
        DWORD count = 0;
        if (!file || !WriteFile(file.get(), "%PDF", 4, &count, nullptr))
            error = GetLastError();
    }
    if (!RemoveDirectoryW(test.c_str()) && error == ERROR_SUCCESS)
        error = GetLastError();
    return error;
}

// Whether the mandatory label lets writers of low integrity pass. Without one the level is medium.
bool has_low_label(const std::wstring& folder)
{
    PACL list = nullptr;
    unique_local_memory<PSECURITY_DESCRIPTOR> descriptor;
    if (GetNamedSecurityInfoW(folder.c_str(), SE_FILE_OBJECT, LABEL_SECURITY_INFORMATION, nullptr, nullptr,
                              nullptr, &list, descriptor.put()) != ERROR_SUCCESS ||
        !list)
        return false;
    for (WORD i = 0; i < list->AceCount; ++i) {
        void* entry = nullptr;
        if (!GetAce(list, i, &entry) ||
            static_cast<ACE_HEADER*>(entry)->AceType != SYSTEM_MANDATORY_LABEL_ACE_TYPE)
            continue;
        PSID sid = &static_cast<SYSTEM_MANDATORY_LABEL_ACE*>(entry)->SidStart;
        const UCHAR parts = *GetSidSubAuthorityCount(sid);
        return parts > 0 && is_low_label({GetSidSubAuthority(sid, 0), parts});
    }
    return false;
}

write_facts facts_of(DWORD error)
{
    return {error == ERROR_SUCCESS ? write_result::written : write_result::refused, error, false};
}

} // namespace

write_facts test_writing(const std::wstring& folder, bool at_low_integrity)
{
    if (!at_low_integrity)
        return facts_of(create_and_delete(folder));
    write_facts facts;
    // What this user cannot write, the user's tab cannot write either, whatever its integrity.
    if (const DWORD error = create_and_delete(folder); error != ERROR_SUCCESS)
        return facts_of(error);
    if (const unique_handle token = low_token()) {
        const impersonation low(token.get());
        if (low.is_active())
            return facts_of(create_and_delete(folder));
    }
    facts.has_low_label = has_low_label(folder);
    return facts;
}

} // namespace quill::diagnose
