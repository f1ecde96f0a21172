// Fixture: the DLL in a temporary folder, with logging, the suite's libraries and helper objects of its class
// factory.
#pragma once

#include "tests/support/log_file.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <atlbase.h>
#include <ocidl.h>

#include <string>
#include <vector>

namespace quill::test {

// The suite's libraries beside the DLL, and their results.
struct suite_setup
{
    std::vector<const wchar_t*> libraries = {};
    const wchar_t* verdict =
        nullptr; // of the crash library: "search", "continue", null for running the handler
    const wchar_t* error_code = nullptr;
    const wchar_t* error_text = nullptr;
};

class module_fixture
{
public:
    explicit module_fixture(const suite_setup& suite = {}, const wchar_t* log_level = L"debug");
    // Fails the test if an object keeps the DLL loaded, unless leaks are expected.
    ~module_fixture();
    module_fixture(const module_fixture&) = delete;
    module_fixture& operator=(const module_fixture&) = delete;

    CComPtr<IObjectWithSite> make_helper() const;
    // The same, if it may fail.
    HRESULT create_helper(IObjectWithSite** out) const;
    // The log lines since the previous call, as "level: text".
    std::vector<std::string> new_lines();
    HMODULE handle() const { return module_; }
    // Whether DllCanUnloadNow returns S_OK.
    bool can_unload() const;
    // For tests with system exceptions, which skip destructors.
    void expect_leaks() { expects_leaks_ = true; }

private:
    scratch_directory folder_;
    log_folder_scope logs_;
    environment_scope level_;
    environment_scope sinks_;
    environment_scope verdict_;
    environment_scope error_code_;
    environment_scope error_text_;
    HMODULE module_ = nullptr;
    std::size_t seen_lines_ = 0;
    bool expects_leaks_ = false;
};

} // namespace quill::test
