#include "acceptance/server_zone.h"

#include <array>
#include <string_view>

namespace quill::acceptance {
namespace {

constexpr std::uint32_t policy_allow = 0; // URLPOLICY_ALLOW
constexpr std::uint32_t policy_query = 1; // URLPOLICY_QUERY

std::string zone_text(std::optional<std::uint32_t> zone)
{
    constexpr std::array<std::string_view, 5> names = {"my computer", "intranet", "trusted sites", "internet",
                                                       "restricted sites"};
    if (!zone)
        return "unknown, the system's security manager could not be asked";
    return std::to_string(*zone) + (*zone < names.size() ? ", " + std::string(names[*zone]) : "");
}

std::string policy_text(std::optional<std::uint32_t> policy)
{
    if (!policy)
        return "unknown, the system's security manager could not be asked";
    const std::string number = " (" + std::to_string(*policy) + ")";
    return (*policy == policy_allow   ? "allowed"
            : *policy == policy_query ? "the user is asked"
                                      : "not allowed") +
           number;
}

std::string enhanced_security_text(std::optional<std::uint32_t> installed)
{
    if (!installed)
        return "not in the registry";
    return (*installed != 0 ? "on (" : "off (") + std::to_string(*installed) + ")";
}

bool is_denied(std::optional<std::uint32_t> policy)
{
    return policy && *policy != policy_allow;
}

} // namespace

std::vector<std::pair<std::string, std::string>> server_zone_facts(const server_zone& found)
{
    std::vector<std::pair<std::string, std::string>> facts = {
        {"security zone of http://127.0.0.1/", zone_text(found.zone)},
        {"ActiveX controls there (URL action 0x1200)", policy_text(found.controls)},
        {"file downloads there (URL action 0x1803)", policy_text(found.downloads)},
        {"Enhanced Security Configuration for administrators (registry)",
         enhanced_security_text(found.enhanced_security)},
    };
    if (is_denied(found.controls) || is_denied(found.downloads))
        facts.emplace_back("NOTE",
                           "the steps engine, embedded and download need controls and downloads to be "
                           "allowed there, and fail otherwise, whatever the product does");
    return facts;
}

} // namespace quill::acceptance
