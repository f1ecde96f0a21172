// The DLL itself, loaded from a folder of its own, with the helper object made by its class factory.
#pragma once

#include "tests/support/log_file.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <atlbase.h>
#include <ocidl.h>

#include <string>
#include <vector>

namespace quill::test {

// What lies beside the DLL of the suite's libraries, and what they answer.
struct suite_setup
{
    std::vector<const wchar_t*> libraries = {};
    const wchar_t* verdict =
        nullptr; // of the crash library: "search", "continue", null for running the handler
    const wchar_t* error_code = nullptr;
    const wchar_t* error_text = nullptr;
};

class module_bench
{
public:
    explicit module_bench(const suite_setup& suite = {}, const wchar_t* log_level = L"debug");
    // Fails the test when something keeps the DLL from unloading, unless leaks are expected.
    ~module_bench();
    module_bench(const module_bench&) = delete;
    module_bench& operator=(const module_bench&) = delete;

    CComPtr<IObjectWithSite> make_helper() const;
    // The same where it may fail.
    HRESULT create_helper(IObjectWithSite** out) const;
    // The log's lines since the last time, each as "level: text".
    std::vector<std::string> new_lines();
    HMODULE handle() const { return module_; }
    // Whether no object is left that keeps the DLL loaded.
    bool can_unload() const;
    // For tests in which something crashes: what that interrupts is not undone.
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
