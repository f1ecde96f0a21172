// Fault injection: each system call of the registration fails once in each way, and so does each allocation.
// A failure is rolled back, and a registration that succeeds is complete.
#include "tests/module/listing.h"
#include "tests/module/loaded_module.h"
#include "tests/support/faults/fault_loop.h"
#include "tests/support/private_registry.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

namespace quill::test {
namespace {

struct way
{
    const wchar_t* command_line; // for DllInstall
    listing_id installed;
    listing_id removed;
};

constexpr way per_machine{nullptr, listing_id::machine, listing_id::machine_removed};
constexpr way per_user{L"user", listing_id::user, listing_id::user_removed};

std::set<std::string> lines_of(const std::string& text)
{
    std::set<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.insert(line);
    return lines;
}

class RegistrationImportFaults : public testing::TestWithParam<std::tuple<bool, fault_kind>>
{
protected:
    static void SetUpTestSuite() { keep_system_libraries_loaded(); }

    static const way& how() { return std::get<bool>(GetParam()) ? per_user : per_machine; }

    // Returns whether a call failed.
    bool install(const fault_place* place)
    {
        const private_registry registry;
        const std::string before = registry_listing();
        const loaded_module module;
        if (place)
            faults_.fail(*place);
        else
            faults_.count();
        const HRESULT result = module.DllInstall(TRUE, how().command_line);
        faults_.stop();
        const std::string left = registry_listing();
        const bool rollback_may_fail = place && (place->stays || faults_.failures() > 1);
        if (SUCCEEDED(result)) {
            EXPECT_EQ(left, listing(how().installed));
        } else if (!rollback_may_fail) {
            auto may_be_left = lines_of(before);
            may_be_left.merge(lines_of(listing(how().removed)));
            for (const std::string& line : lines_of(left))
                EXPECT_EQ(may_be_left.count(line), 1u) << line << " was not rolled back";
        } else {
            EXPECT_EQ(module.DllInstall(TRUE, how().command_line), S_OK);
            EXPECT_EQ(registry_listing(), listing(how().installed))
                << "remains prevent the next installation";
            EXPECT_EQ(module.DllInstall(FALSE, how().command_line), S_OK);
            EXPECT_EQ(registry_listing(), listing(how().removed)) << "keys remain after the next removal";
        }
        return place && faults_.failures() == place->failures();
    }

    // The same for removal; a second removal completes a failed one.
    bool remove(const fault_place* place)
    {
        const private_registry registry;
        const loaded_module module;
        EXPECT_EQ(module.DllInstall(TRUE, how().command_line), S_OK);
        if (place)
            faults_.fail(*place);
        else
            faults_.count();
        const HRESULT result = module.DllInstall(FALSE, how().command_line);
        faults_.stop();
        if (SUCCEEDED(result))
            EXPECT_EQ(registry_listing(), listing(how().removed)) << "the removal succeeded incompletely";
        else
            module.DllInstall(FALSE, how().command_line); // fails if the type library was removed already
        EXPECT_EQ(registry_listing(), listing(how().removed));
        return faults_.has_failed();
    }

    // Of the last run, in which only existing keys are opened.
    std::vector<fault_place> places() const
    {
        auto all = faults_.places();
        std::erase_if(all, [](const fault_place& each) {
            return each.group == "RegOpenKeyExW" && each.way_name == "not found";
        });
        return all;
    }

    import_faults faults_;
};

TEST_P(RegistrationImportFaults, AreRolledBackOrTolerated)
{
    EXPECT_FALSE(install(nullptr));
    ASSERT_GT(places().size(), 50u);
    const auto kind = std::get<fault_kind>(GetParam());
    constexpr int usual_step = 25;
    // Without a balance of handles: the system's functions for type libraries leak a key in each call.
    fail_each_uncounted(
        kind == fault_kind::calls ? "the system's part in registration" : "memory for registration", kind,
        places(), usual_step, [this](const fault_place& place) { return install(&place); });
}

// The second failure is in the rollback.
TEST_P(RegistrationImportFaults, AreReportedWhenTheRollbackFailsToo)
{
    EXPECT_FALSE(install(nullptr));
    auto firsts = places();
    std::erase_if(firsts, [](const fault_place& each) { return each.group == memory_group; });
    constexpr std::size_t usual_pairs = 10;
    fail_pairs_uncounted("two failures in registration", std::get<fault_kind>(GetParam()), firsts,
                         usual_pairs, [this](const fault_place& pair) { return install(&pair); });
}

TEST_P(RegistrationImportFaults, AreReportedByRemovalOrTolerated)
{
    EXPECT_FALSE(remove(nullptr));
    ASSERT_GT(places().size(), 50u);
    const auto kind = std::get<fault_kind>(GetParam());
    constexpr int usual_step = 25;
    fail_each_uncounted(
        kind == fault_kind::calls ? "the system's part in unregistration" : "memory for unregistration", kind,
        places(), usual_step, [this](const fault_place& place) { return remove(&place); });
}

INSTANTIATE_TEST_SUITE_P(Install, RegistrationImportFaults,
                         testing::Combine(testing::Bool(),
                                          testing::Values(fault_kind::calls, fault_kind::memory)),
                         [](const testing::TestParamInfo<RegistrationImportFaults::ParamType>& each) {
                             return std::string(std::get<bool>(each.param) ? "PerUser" : "PerMachine") +
                                    (std::get<fault_kind>(each.param) == fault_kind::calls ? "Calls"
                                                                                           : "Memory");
                         });

} // namespace
} // namespace quill::test
