// What the test of writing does in the folder, and with which token. The system's functions are replaced:
// Wine does not lower the integrity of a token.
#include "diagnose/write_test.h"
#include "tests/support/faults/replaced_import.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

namespace quill::test {
namespace {

using diagnose::test_writing;
using diagnose::write_facts;
using diagnose::write_result;

bool has_thread_token()
{
    HANDLE token = nullptr;
    if (OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token)) {
        CloseHandle(token);
        return true;
    }
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_TOKEN));
    return false;
}

std::vector<std::wstring> names_in(const std::wstring& folder)
{
    std::vector<std::wstring> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        names.push_back(entry.path().filename().wstring());
    return names;
}

// The functions that fail, and what the replaced ones saw.
struct system_log
{
    std::wstring folder;
    std::string failing;             // the function that fails
    bool fails_with_token = false;   // only if the thread has a token
    HANDLE lowered = nullptr;        // the token that was lowered
    HANDLE used = nullptr;           // by the thread
    std::vector<bool> writes;        // whether the thread had a token
    std::vector<std::wstring> names; // what was in the folder during the last write
    int ended = 0;                   // TerminateProcess
};
system_log* current = nullptr;

constexpr DWORD refusal = ERROR_WRITE_FAULT;

// Whether the function must fail now.
bool fails(const char* name)
{
    if (current->failing != name || (current->fails_with_token && !has_thread_token()))
        return false;
    SetLastError(refusal);
    return true;
}

class WriteTest : public testing::Test
{
protected:
    WriteTest()
    {
        log_.folder = folder_.path();
        current = &log_;
        self_ = this;
    }
    ~WriteTest() override
    {
        EXPECT_FALSE(has_thread_token());
        current = nullptr;
    }

    write_facts write(bool at_low_integrity)
    {
        log_.writes.clear();
        log_.names.clear();
        return test_writing(folder_.path(), at_low_integrity);
    }

    // Of the system without replacements.
    write_facts write_failing(const std::string& name, bool at_low_integrity)
    {
        log_.failing = name;
        const write_facts facts = write(at_low_integrity);
        log_.failing.clear();
        return facts;
    }

    static BOOL WINAPI create_directory(const wchar_t* path, SECURITY_ATTRIBUTES* security)
    {
        return fails("CreateDirectoryW") ? FALSE : self_->create_directory_.original()(path, security);
    }
    static HANDLE WINAPI create_file(const wchar_t* path, DWORD access, DWORD sharing,
                                     SECURITY_ATTRIBUTES* security, DWORD creation, DWORD flags, HANDLE model)
    {
        return fails("CreateFileW")
                   ? INVALID_HANDLE_VALUE
                   : self_->create_file_.original()(path, access, sharing, security, creation, flags, model);
    }
    static BOOL WINAPI write_file(HANDLE file, const void* data, DWORD size, DWORD* written,
                                  OVERLAPPED* overlapped)
    {
        if (fails("WriteFile"))
            return FALSE;
        current->writes.push_back(has_thread_token());
        current->names = names_in(current->folder);
        return self_->write_file_.original()(file, data, size, written, overlapped);
    }
    static BOOL WINAPI remove_directory(const wchar_t* path)
    {
        const BOOL is_removed = self_->remove_directory_.original()(path);
        return fails("RemoveDirectoryW") ? FALSE : is_removed;
    }
    static BOOL WINAPI open_process_token(HANDLE process, DWORD access, HANDLE* token)
    {
        return fails("OpenProcessToken") ? FALSE
                                         : self_->open_process_token_.original()(process, access, token);
    }
    static BOOL WINAPI duplicate_token(HANDLE token, DWORD access, SECURITY_ATTRIBUTES* security,
                                       SECURITY_IMPERSONATION_LEVEL level, TOKEN_TYPE type, HANDLE* copy)
    {
        return fails("DuplicateTokenEx")
                   ? FALSE
                   : self_->duplicate_token_.original()(token, access, security, level, type, copy);
    }
    // Lowers the token, as Windows does.
    static BOOL WINAPI set_token_information(HANDLE token, TOKEN_INFORMATION_CLASS what, void* data, DWORD)
    {
        if (fails("SetTokenInformation"))
            return FALSE;
        const auto* const label = static_cast<const TOKEN_MANDATORY_LABEL*>(data);
        EXPECT_EQ(what, TokenIntegrityLevel);
        EXPECT_EQ(*GetSidSubAuthority(label->Label.Sid, 0), static_cast<DWORD>(SECURITY_MANDATORY_LOW_RID));
        current->lowered = token;
        return TRUE;
    }
    static BOOL WINAPI get_token_information(HANDLE token, TOKEN_INFORMATION_CLASS what, void* data,
                                             DWORD size, DWORD* needed)
    {
        if (fails("GetTokenInformation"))
            return FALSE;
        const BOOL is_read = self_->get_token_information_.original()(token, what, data, size, needed);
        if (is_read && token == current->lowered)
            *GetSidSubAuthority(static_cast<TOKEN_MANDATORY_LABEL*>(data)->Label.Sid, 0) =
                SECURITY_MANDATORY_LOW_RID;
        return is_read;
    }
    static BOOL WINAPI set_thread_token(HANDLE* thread, HANDLE token)
    {
        if (fails("SetThreadToken"))
            return FALSE;
        current->used = token;
        return self_->set_thread_token_.original()(thread, token);
    }
    static BOOL WINAPI revert_to_self()
    {
        return fails("RevertToSelf") ? FALSE : self_->revert_to_self_.original()();
    }
    static BOOL WINAPI terminate_process(HANDLE, UINT)
    {
        ++current->ended;
        return TRUE;
    }

    scratch_directory folder_;
    system_log log_;
    static WriteTest* self_;

    replaced_import<decltype(CreateDirectoryW)> create_directory_{"CreateDirectoryW", create_directory};
    replaced_import<decltype(CreateFileW)> create_file_{"CreateFileW", create_file};
    replaced_import<decltype(WriteFile)> write_file_{"WriteFile", write_file};
    replaced_import<decltype(RemoveDirectoryW)> remove_directory_{"RemoveDirectoryW", remove_directory};
    replaced_import<decltype(OpenProcessToken)> open_process_token_{"OpenProcessToken", open_process_token};
    replaced_import<decltype(DuplicateTokenEx)> duplicate_token_{"DuplicateTokenEx", duplicate_token};
    replaced_import<decltype(SetTokenInformation)> set_token_information_{"SetTokenInformation",
                                                                          set_token_information};
    replaced_import<decltype(GetTokenInformation)> get_token_information_{"GetTokenInformation",
                                                                          get_token_information};
    replaced_import<decltype(SetThreadToken)> set_thread_token_{"SetThreadToken", set_thread_token};
    replaced_import<decltype(RevertToSelf)> revert_to_self_{"RevertToSelf", revert_to_self};
    replaced_import<decltype(TerminateProcess)> terminate_process_{"TerminateProcess", terminate_process};
};

WriteTest* WriteTest::self_ = nullptr;

TEST_F(WriteTest, CreatesAFileInAFolderAndDeletesBoth)
{
    const write_facts facts = write(false);
    EXPECT_EQ(facts.result, write_result::written);
    EXPECT_EQ(log_.writes, std::vector<bool>{false});
    ASSERT_EQ(log_.names.size(), 2u);
    EXPECT_TRUE(log_.names[0].starts_with(L"QuillDiagnose-"));
    EXPECT_EQ(log_.names[1], L"test.pdf");
    EXPECT_TRUE(names_in(folder_.path()).empty());
}

TEST_F(WriteTest, WritesWithTheLoweredTokenAndRevertsIt)
{
    const write_facts facts = write(true);
    EXPECT_EQ(facts.result, write_result::written);
    // First as the user, then at low integrity.
    EXPECT_EQ(log_.writes, (std::vector<bool>{false, true}));
    EXPECT_NE(log_.lowered, nullptr);
    EXPECT_EQ(log_.used, log_.lowered);
    EXPECT_EQ(log_.names.size(), 2u);
    EXPECT_FALSE(has_thread_token());
    EXPECT_TRUE(names_in(folder_.path()).empty());
}

TEST_F(WriteTest, IsRefusedIfOnlyLowIntegrityCannotWrite)
{
    log_.fails_with_token = true;
    for (const char* name : {"CreateDirectoryW", "CreateFileW", "WriteFile", "RemoveDirectoryW"}) {
        SCOPED_TRACE(name);
        const write_facts facts = write_failing(name, true);
        EXPECT_EQ(facts.result, write_result::refused);
        EXPECT_EQ(facts.error, refusal);
        EXPECT_FALSE(has_thread_token());
        EXPECT_TRUE(names_in(folder_.path()).empty());
    }
}

TEST_F(WriteTest, IsRefusedIfTheUserCannotWrite)
{
    for (const bool at_low_integrity : {false, true}) {
        for (const char* name : {"CreateDirectoryW", "CreateFileW", "WriteFile", "RemoveDirectoryW"}) {
            SCOPED_TRACE(name);
            const write_facts facts = write_failing(name, at_low_integrity);
            EXPECT_EQ(facts.result, write_result::refused);
            EXPECT_EQ(facts.error, refusal);
            EXPECT_EQ(log_.used, nullptr);
            EXPECT_TRUE(names_in(folder_.path()).empty());
        }
    }
}

TEST_F(WriteTest, IsNotDoneAtLowIntegrityIfTheTokenIsNotLowered)
{
    for (const char* name : {"OpenProcessToken", "DuplicateTokenEx", "SetTokenInformation",
                             "GetTokenInformation", "SetThreadToken"}) {
        SCOPED_TRACE(name);
        log_.lowered = nullptr;
        EXPECT_EQ(write_failing(name, true).result, write_result::not_tested);
        EXPECT_EQ(log_.writes, std::vector<bool>{false});
        EXPECT_FALSE(has_thread_token());
    }
}

TEST_F(WriteTest, EndsTheProgramIfTheTokenCannotBeReverted)
{
    write_failing("RevertToSelf", true);
    EXPECT_EQ(log_.ended, 1);
    EXPECT_TRUE(RevertToSelf());
    write(true);
    EXPECT_EQ(log_.ended, 1);
}

} // namespace
} // namespace quill::test
