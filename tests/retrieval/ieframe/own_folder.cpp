#include "tests/retrieval/ieframe/own_folder.h"

#include "tests/support/child_process.h"
#include "tests/support/is_wine.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cwchar>

namespace quill::test {
namespace {

// Set for the copy of the program: the folder of the original.
constexpr wchar_t home_variable[] = L"QUILL_TEST_HOME";

constexpr DWORD usual_deadline_ms = 150'000;

std::wstring variable(const wchar_t* name)
{
    wchar_t value[MAX_PATH] = {};
    GetEnvironmentVariableW(name, value, MAX_PATH);
    return value;
}

// The copy has a watchdog of its own; with an explicit limit there may be several tests.
DWORD run_deadline_ms()
{
    const unsigned long limit_ms = std::wcstoul(variable(L"QUILL_TEST_LIMIT_MS").c_str(), nullptr, 10);
    constexpr unsigned long tests = 8;
    return limit_ms > 0 ? limit_ms * tests : usual_deadline_ms;
}

// The command line after the program's name.
std::wstring arguments()
{
    const wchar_t* rest = GetCommandLineW();
    const wchar_t* const end = *rest == L'"' ? std::wcschr(rest + 1, L'"') : std::wcschr(rest, L' ');
    return end ? end + 1 : L"";
}

void prefer_own_library(const std::wstring& program)
{
    if (!is_wine())
        return;
    const std::wstring key = L"Software\\Wine\\AppDefaults\\" + program + L"\\DllOverrides";
    const wchar_t order[] = L"native,builtin";
    RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), L"ieframe", REG_SZ, order, sizeof order);
}

// Runs a copy of this program in a folder of its own, with the same arguments, and exits with its exit code.
[[noreturn]] void run_copy()
{
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    const std::wstring path = self;
    const std::size_t mark = path.find_last_of(L'\\');
    const std::wstring name = path.substr(mark + 1);
    prefer_own_library(name);
    SetEnvironmentVariableW(home_variable, path.substr(0, mark).c_str());

    child_result result;
    {
        const scratch_directory folder;
        CopyFileW(self, (folder / name).c_str(), TRUE);
        result = run_program(folder / name, arguments(), run_deadline_ms());
    }
    std::fwrite(result.output.data(), 1, result.output.size(), stdout);
    std::fwrite(result.errors.data(), 1, result.errors.size(), stderr);
    std::fflush(stdout);
    std::fflush(stderr);
    std::_Exit(result.started && result.ended ? static_cast<int>(result.exit_code) : EXIT_FAILURE);
}

[[maybe_unused]] const bool is_copy = [] {
    const bool lists_only = std::wcsstr(GetCommandLineW(), L"--gtest_list_tests") != nullptr;
    if (!lists_only && variable(home_variable).empty())
        run_copy();
    return true;
}();

const wchar_t* file_of(ieframe variant)
{
    switch (variant) {
    case ieframe::complete:
        return L"complete.dll";
    case ieframe::without_dialog:
        return L"without_dialog.dll";
    case ieframe::without_folder:
        return L"without_folder.dll";
    case ieframe::without_save:
        return L"without_save.dll";
    case ieframe::without_cancel:
        return L"without_cancel.dll";
    }
    return L"";
}

} // namespace

void copy_library(const std::wstring& library)
{
    const std::wstring source = variable(home_variable) + L"\\" + library;
    EXPECT_TRUE(CopyFileW(source.c_str(), beside_this_program(library).c_str(), FALSE)) << GetLastError();
}

ieframe_scope::ieframe_scope(ieframe variant) : path_(beside_this_program(L"ieframe.dll"))
{
    const std::wstring source = variable(home_variable) + L"\\test_ieframe\\" + file_of(variant);
    EXPECT_TRUE(CopyFileW(source.c_str(), path_.c_str(), FALSE)) << GetLastError();
}

ieframe_scope::~ieframe_scope()
{
    EXPECT_TRUE(DeleteFileW(path_.c_str())) << "the library is still loaded";
}

} // namespace quill::test
