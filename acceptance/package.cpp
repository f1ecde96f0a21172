#include "acceptance/package.h"

#include <msi.h>
#include <msiquery.h>

#include <array>

namespace quill::acceptance {
namespace {

class msi_handle
{
public:
    msi_handle() = default;
    ~msi_handle() { MsiCloseHandle(value_); }
    msi_handle(const msi_handle&) = delete;
    msi_handle& operator=(const msi_handle&) = delete;

    MSIHANDLE get() const { return value_; }
    MSIHANDLE* put() { return &value_; }

private:
    MSIHANDLE value_ = 0;
};

bool execute(MSIHANDLE database, const wchar_t* query)
{
    msi_handle view;
    return MsiDatabaseOpenViewW(database, query, view.put()) == ERROR_SUCCESS &&
           MsiViewExecute(view.get(), 0) == ERROR_SUCCESS && MsiViewClose(view.get()) == ERROR_SUCCESS;
}

bool read_property(MSIHANDLE database, const std::wstring& name, std::wstring& value)
{
    const std::wstring query = L"SELECT `Value` FROM `Property` WHERE `Property`='" + name + L"'";
    msi_handle view;
    msi_handle record;
    std::array<wchar_t, 128> text{};
    auto length = static_cast<DWORD>(text.size());
    if (MsiDatabaseOpenViewW(database, query.c_str(), view.put()) != ERROR_SUCCESS ||
        MsiViewExecute(view.get(), 0) != ERROR_SUCCESS ||
        MsiViewFetch(view.get(), record.put()) != ERROR_SUCCESS ||
        MsiRecordGetStringW(record.get(), 1, text.data(), &length) != ERROR_SUCCESS)
        return false;
    value = text.data();
    return !value.empty();
}

} // namespace

bool read_package(const std::wstring& path, package& read)
{
    msi_handle database;
    read.path = path;
    return MsiOpenDatabaseW(path.c_str(), MSIDBOPEN_READONLY, database.put()) == ERROR_SUCCESS &&
           read_property(database.get(), L"ProductCode", read.product_code) &&
           read_property(database.get(), L"UpgradeCode", read.upgrade_code) &&
           read_property(database.get(), L"ProductVersion", read.version);
}

std::vector<std::wstring> installed_products(const package& of)
{
    std::vector<std::wstring> codes;
    std::array<wchar_t, 39> code{};
    for (DWORD index = 0;
         MsiEnumRelatedProductsW(of.upgrade_code.c_str(), 0, index, code.data()) == ERROR_SUCCESS; ++index)
        codes.emplace_back(code.data());
    return codes;
}

bool make_failing_package(const package& original, const std::wstring& copy)
{
    msi_handle database;
    // A deferred program as the system (type 3106) that fails: it runs when the changes have been made.
    return CopyFileW(original.path.c_str(), copy.c_str(), FALSE) &&
           MsiOpenDatabaseW(copy.c_str(), MSIDBOPEN_TRANSACT, database.put()) == ERROR_SUCCESS &&
           execute(database.get(), L"INSERT INTO `CustomAction` (`Action`, `Type`, `Source`, `Target`) "
                                   L"VALUES ('FailForAcceptance', 3106, 'System64Folder', "
                                   L"'\"[System64Folder]cmd.exe\" /c exit 1')") &&
           execute(database.get(), L"INSERT INTO `InstallExecuteSequence` (`Action`, `Sequence`) "
                                   L"VALUES ('FailForAcceptance', 6590)") &&
           MsiDatabaseCommit(database.get()) == ERROR_SUCCESS;
}

child_result run_msiexec(const std::wstring& arguments, const std::wstring& log, const std::wstring& work)
{
    constexpr DWORD limit_ms = 600'000;
    wchar_t system[MAX_PATH]{};
    GetSystemDirectoryW(system, MAX_PATH);
    // Also an installation of a run that was killed may still be in progress.
    constexpr ULONGLONG other_installation_ms = 600'000;
    constexpr DWORD look_again_ms = 1'000;
    const ULONGLONG end = GetTickCount64() + other_installation_ms;
    child_result ended;
    do {
        ended = run_child(std::wstring(system) + L"\\msiexec.exe",
                          arguments + L" /qn /norestart /l*v \"" + log + L"\"", limit_ms,
                          work + L"\\msiexec.txt", at_interruption::wait_for_program);
    } while (outcome_of(ended) == msi_outcome::busy && GetTickCount64() < end &&
             WaitForSingleObject(GetCurrentProcess(), look_again_ms) == WAIT_TIMEOUT);
    return ended;
}

msi_outcome outcome_of(const child_result& ended)
{
    return ended.start_error != ERROR_SUCCESS || ended.timed_out ? msi_outcome::other
                                                                 : outcome_of_msiexec(ended.exit_code);
}

} // namespace quill::acceptance
