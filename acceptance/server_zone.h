// What the report says about the security zone of the kit's own server: where Internet Explorer forbids
// controls or downloads there, steps fail although the product is right.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quill::acceptance {

// As the system's security manager says; no value if it cannot be asked.
struct server_zone
{
    std::optional<std::uint32_t> zone;
    std::optional<std::uint32_t> controls;  // the policy of URLACTION_ACTIVEX_RUN
    std::optional<std::uint32_t> downloads; // the policy of URLACTION_SHELL_FILE_DOWNLOAD
    // IsInstalled of Enhanced Security Configuration for administrators; no value if it is not set.
    std::optional<std::uint32_t> enhanced_security;
};

// Names and values for the report, with a note if the steps of the browser's engine cannot pass.
std::vector<std::pair<std::string, std::string>> server_zone_facts(const server_zone& found);

} // namespace quill::acceptance
