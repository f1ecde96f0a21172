// Fault injection: no subkey can be created in one key of the registration after the other. A failed
// registration is rolled back, existing values stay, and a registration that succeeds is complete.
#include "tests/module/listing.h"
#include "tests/module/loaded_module.h"
#include "tests/support/fault_points.h"
#include "tests/support/private_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <vector>

namespace quill::test {
namespace {

std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// The keys of a listing that make_unusable supports, without those of the type library, which the system
// writes.
std::vector<std::string> keys_of(const std::string& listing)
{
    std::vector<std::string> keys = lines_of(listing);
    std::erase_if(keys, [](const std::string& line) {
        return line.rfind("HK", 0) != 0 || std::count(line.begin(), line.end(), '\\') < 2 ||
               line.find("\\Interface") != std::string::npos || line.find("\\Typelib") != std::string::npos;
    });
    return keys;
}

// All names of keys are ASCII.
void make_listed_key_unusable(const std::string& key)
{
    const auto root_end = key.find('\\');
    const HKEY root = key.substr(0, root_end) == "HKLM" ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
    make_unusable(root, std::wstring(key.begin() + static_cast<std::ptrdiff_t>(root_end) + 1, key.end()));
}

struct way
{
    const char* name;
    const wchar_t* command_line; // for DllInstall
    listing_id installed;
    listing_id removed;
};
void PrintTo(const way& each, std::ostream* out)
{
    *out << each.name;
}

class RegistrationFaults : public testing::TestWithParam<way>
{
protected:
    static void SetUpTestSuite() { keep_system_libraries_loaded(); }

    // Installs while the key is unusable; returns whether that failed.
    static bool install_with(const std::string& unusable)
    {
        const private_registry registry;
        make_listed_key_unusable(unusable);
        std::set<std::string> may_be_left;
        for (const std::string& text : {registry_listing(), listing(GetParam().removed)})
            for (const std::string& line : lines_of(text))
                may_be_left.insert(line);

        const loaded_module module;
        const HRESULT result = module.DllInstall(TRUE, GetParam().command_line);
        const std::string left = registry_listing();
        if (SUCCEEDED(result)) {
            EXPECT_EQ(result, S_OK);
            EXPECT_EQ(left, listing(GetParam().installed));
            return false;
        }
        for (const std::string& line : lines_of(left))
            EXPECT_EQ(may_be_left.count(line), 1u) << line << " was not rolled back";
        EXPECT_NE(left.find(unusable + "\n"), std::string::npos) << "the existing key was deleted";
        return true;
    }
};

TEST_P(RegistrationFaults, AreRolledBackByInstall)
{
    std::size_t points = 0;
    for (const std::string& key : keys_of(listing(GetParam().installed))) {
        SCOPED_TRACE(key);
        points += install_with(key);
    }
    report_fault_points("registration", points);
}

INSTANTIATE_TEST_SUITE_P(Install, RegistrationFaults,
                         testing::Values(way{"PerMachine", nullptr, listing_id::machine,
                                             listing_id::machine_removed},
                                         way{"PerUser", L"user", listing_id::user, listing_id::user_removed}),
                         testing::PrintToStringParamName());

} // namespace
} // namespace quill::test
