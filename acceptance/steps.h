// The test programs that a run starts, and how long each may take.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quill::acceptance {

struct step
{
    std::string_view name;    // as in --only
    std::string_view title;   // in the report
    std::string_view program; // in the kit's bin folder
    std::string_view filter;  // of the test framework
    unsigned limit_s;
};

// Run before the installation, with the DLL in the kit's bin folder.
const std::vector<step>& test_steps();
// Run with the installed product.
const std::vector<step>& installed_steps();

// The questions about Windows Installer that the run measures itself.
const std::vector<std::string_view>& installer_steps();

// The steps that --only names, separated by commas; no value if there is no step of such a name.
std::optional<std::vector<std::string>> parse_selection(std::string_view names);

} // namespace quill::acceptance
