// Decisions of the acceptance kit: its journal, what it watches, what it reads from test programs.
#include "acceptance/kit_contents.h"
#include "acceptance/msiexec_result.h"
#include "acceptance/questions.h"
#include "acceptance/saved_registry.h"
#include "acceptance/server_zone.h"
#include "acceptance/steps.h"
#include "acceptance/test_output.h"
#include "acceptance/watched_keys.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quill::acceptance {
namespace {

using texts = std::vector<std::string>;

journal sample_journal()
{
    using namespace std::string_literals;
    journal saved{"{162DB887}", {}};
    saved.trees.push_back({"HKLM", 64, "SOFTWARE\\Quill", {}});
    saved.trees.push_back({"HKCU",
                           32,
                           "Software\\x y\n",
                           {{"", {{"", {1, "a\0b"s}}, {"na me\xC3\xA4", {3, ""}}}}, {"below\\it", {}}}});
    return saved;
}

TEST(AcceptanceJournal, IsReadAsItWasWritten)
{
    EXPECT_EQ(parse_journal(to_text(sample_journal())), sample_journal());
    EXPECT_EQ(parse_journal(to_text(journal())), journal());
}

TEST(AcceptanceJournal, IsRefusedUnlessItIsComplete)
{
    const std::string text = to_text(sample_journal());
    for (std::size_t length = 0; length < text.size(); ++length)
        EXPECT_FALSE(parse_journal(text.substr(0, length))) << length;
    EXPECT_FALSE(parse_journal(text + "key 00\n"));
}

TEST(AcceptanceJournal, IsRefusedWithALineOfAnotherForm)
{
    const std::string begin = "quill acceptance journal 1\nproduct 7b7d\n";
    EXPECT_TRUE(parse_journal(begin + "tree HKLM 64 41\nkey \nvalue  42 1 00\nend\n"));
    for (const char* line : {
             "value  42 1 00",                          // without a key
             "key 41",                                  // without a tree
             "tree HKLM 64",                            //
             "tree HKCR 64 41",                         // another root
             "tree HKLM 16 41",                         // another view
             "tree HKLM 64 4",                          // half a byte
             "tree HKLM 64 4g",                         //
             "tree HKLM 64 41\nvalue 41 42 1 00",       // of a key that is not listed
             "tree HKLM 64 41\nkey \nvalue  42 x 00",   // no number
             "tree HKLM 64 41\nkey \nvalue  42 1 00 0", // too long
             "tree HKLM 64 41\nkey \nvalue  42 4294967296 00",
             "something",
         })
        EXPECT_FALSE(parse_journal(begin + line + "\nend\n")) << line;
    EXPECT_FALSE(parse_journal("another first line\nend\n"));
}

TEST(AcceptanceDifference, NamesKeysAndValuesThatDiffer)
{
    saved_tree before{"HKLM", 64, "A", {{"", {{"", {1, "x"}}, {"gone", {1, ""}}}}, {"removed", {}}}};
    saved_tree after{"HKLM", 64, "A", {{"", {{"", {1, "y"}}, {"new", {4, ""}}}}, {"added", {}}}};
    EXPECT_EQ(difference(before, after), (texts{"~ HKLM\\A: @", "+ HKLM\\A: new", "+ HKLM\\A\\added",
                                                "- HKLM\\A: gone", "- HKLM\\A\\removed"}));
    EXPECT_EQ(difference(before, before), texts{});
    before.view = 32;
    after.view = 32;
    EXPECT_EQ(difference(before, after).front(), "~ HKLM (32-bit)\\A: @");
    EXPECT_EQ(difference({"HKLM", 64, "A", {{"", {{"v", {1, "x"}}}}}},
                         {"HKLM", 64, "A", {{"", {{"v", {2, "x"}}}}}}),
              texts{"~ HKLM\\A: v"})
        << "the type";
}

TEST(AcceptanceOwnKeys, AreTheUppermostOfTheProduct)
{
    EXPECT_EQ(own_keys("HKLM\r\n"
                       "HKLM\\SOFTWARE\r\n"
                       "HKLM\\SOFTWARE\\Shared\r\n"
                       "HKLM\\SOFTWARE\\Shared\\Own\r\n"
                       "    @ = s x\r\n"
                       "HKLM\\SOFTWARE\\Shared\\Own\\Below\r\n"
                       "    @ = s x\r\n"
                       "HKLM\\SOFTWARE\\Shared\\Leaf\r\n"
                       "HKLM\\SOFTWARE\\Shared\\{1-2}\r\n"
                       "HKLM\\SOFTWARE\\Shared\\{1-2}\\e.0\r\n"
                       "    @ = s x"),
              (texts{"HKLM\\SOFTWARE\\Shared\\Own", "HKLM\\SOFTWARE\\Shared\\Leaf",
                     "HKLM\\SOFTWARE\\Shared\\{1-2}"}));
    EXPECT_EQ(own_keys(""), texts{});
    EXPECT_EQ(own_keys("    @ = s x\n"), texts{});
}

TEST(AcceptanceOwnKeys, AreWatchedInBothViewsOfTheMachine)
{
    EXPECT_EQ(
        trees_of({"HKLM\\A\\B", "HKCU\\C", "HKLM"}),
        (std::vector<saved_tree>{{"HKLM", 64, "A\\B", {}}, {"HKLM", 32, "A\\B", {}}, {"HKCU", 64, "C", {}}}));
}

TEST(AcceptanceTestOutput, IsCounted)
{
    const test_results results = parse_test_output("[ RUN      ] A.Passes\r\n"
                                                   "seen: one\r\n"
                                                   "[       OK ] A.Passes (0 ms)\r\n"
                                                   "[ RUN      ] A.Fails/1\r\n"
                                                   "answer what-is: two: three\r\n"
                                                   "[  FAILED  ] A.Fails/1, where GetParam() = 4 (12 ms)\r\n"
                                                   "[ RUN      ] A.Skips\r\n"
                                                   "[  SKIPPED ] A.Skips (0 ms)\r\n"
                                                   "[  FAILED  ] 1 test, listed below:\r\n"
                                                   "[  FAILED  ] A.Fails/1, where GetParam() = 4\r\n"
                                                   "[ RUN      ] B.Crashes\n");
    EXPECT_EQ(results.passed, 1u);
    EXPECT_EQ(results.failed, texts{"A.Fails/1"});
    EXPECT_EQ(results.skipped, texts{"A.Skips"});
    EXPECT_EQ(results.unfinished, texts{"B.Crashes"});
    EXPECT_EQ(results.seen, texts{"one"});
    EXPECT_EQ(results.answers, (std::map<std::string, std::string>{{"what-is", "two: three"}}));
    EXPECT_EQ(parse_test_output("").passed, 0u);
}

TEST(AcceptanceContents, AreChecksumsAndPathsInsideTheKit)
{
    const std::string sum(64, 'a');
    EXPECT_EQ(parse_kit_contents(sum + "  bin/x y.exe\n" + sum + "  z\r\n"),
              (std::vector<kit_file>{{sum, "bin\\x y.exe"}, {sum, "z"}}));
    for (const std::string& text : {std::string(), sum + "  x", sum + " x\n", sum + "  \n", sum + "  /x\n",
                                    sum + "  ../x\n", sum + "  a/../x\n", sum + "  c:x\n", sum + "  a\\x\n",
                                    std::string(64, 'A') + "  x\n", std::string("\n"), sum + "  x\n\n"})
        EXPECT_FALSE(parse_kit_contents(text)) << text;
}

TEST(AcceptanceMsiexec, ExitCodesSayWhatTheActionDid)
{
    EXPECT_EQ(outcome_of_msiexec(0), msi_outcome::done);
    for (const unsigned long code : {1641ul, 3010ul}) {
        EXPECT_EQ(outcome_of_msiexec(code), msi_outcome::done_restart_pending) << code;
        EXPECT_TRUE(is_done(outcome_of_msiexec(code))) << code;
    }
    for (const unsigned long code : {1603ul, 1627ul})
        EXPECT_EQ(outcome_of_msiexec(code), msi_outcome::action_failed) << code;
    EXPECT_EQ(outcome_of_msiexec(1618), msi_outcome::busy);
    EXPECT_EQ(outcome_of_msiexec(1605), msi_outcome::other);
    for (const msi_outcome outcome : {msi_outcome::action_failed, msi_outcome::busy, msi_outcome::other})
        EXPECT_FALSE(is_done(outcome));
    EXPECT_EQ(remark_on(msi_outcome::done_restart_pending), ", a restart is pending");
}

TEST(AcceptanceServerZone, IsReportedWithWhatItAllows)
{
    using facts = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(server_zone_facts({3, 0, 0, 0}),
              (facts{{"security zone of http://127.0.0.1/", "3, internet"},
                     {"ActiveX controls there (URL action 0x1200)", "allowed (0)"},
                     {"file downloads there (URL action 0x1803)", "allowed (0)"},
                     {"Enhanced Security Configuration for administrators (registry)", "off (0)"}}));
    const facts unknown = server_zone_facts({});
    ASSERT_EQ(unknown.size(), 4u) << "nothing is said about what is not known";
    for (const std::size_t line : {0u, 1u, 2u})
        EXPECT_EQ(unknown[line].second, "unknown, the system's security manager could not be asked");
    EXPECT_EQ(unknown[3].second, "not in the registry");
    EXPECT_EQ(server_zone_facts({5, 0, 0, 1})[0].second, "5") << "a zone of the administrator's own";
    EXPECT_EQ(server_zone_facts({1, 0, 0, 1})[3].second, "on (1)");
}

TEST(AcceptanceServerZone, ThatDoesNotAllowControlsOrDownloadsIsNoted)
{
    constexpr std::uint32_t administrator_approved = 0x10000;
    for (const std::uint32_t policy : {1u, 3u, administrator_approved}) {
        for (const server_zone& found : {server_zone{3, policy, 0, 1}, server_zone{3, 0, policy, 1}}) {
            const auto facts = server_zone_facts(found);
            ASSERT_EQ(facts.size(), 5u) << policy;
            const auto& denied = facts[found.controls == policy ? 1 : 2].second;
            EXPECT_EQ(denied, policy == 1   ? "the user is asked (1)"
                              : policy == 3 ? "not allowed (3)"
                                            : "not allowed (65536)");
            EXPECT_EQ(facts[4].first, "NOTE");
            EXPECT_NE(facts[4].second.find("engine, embedded and download"), std::string::npos);
        }
    }
}

TEST(AcceptanceSteps, AreSelectedByTheirNames)
{
    EXPECT_EQ(parse_selection("plain,engine,repair"), (texts{"plain", "engine", "repair"}));
    for (const char* names : {"", ",", "plain,", "plain,other", "Plain", "plain engine"})
        EXPECT_FALSE(parse_selection(names)) << names;
}

TEST(AcceptanceQuestions, AreAnsweredWithWhatWasSeenOrWhyNot)
{
    for (const question& each : questions())
        EXPECT_NE(each.measured_by.empty(), each.reason.empty()) << each.id;
    const texts lines = answer_lines(
        {{"closing", "3 ms"}, {"kept-memory", "not measured: no server"}, {"suite", "never asked"}},
        "it was left out");
    const auto after = [&](const std::string& id, std::size_t lines_below) {
        for (std::size_t i = 0; i + lines_below < lines.size(); ++i)
            if (lines[i].starts_with(id + ": "))
                return lines[i + lines_below];
        return std::string();
    };
    EXPECT_EQ(after("closing", 2), "  seen: 3 ms");
    EXPECT_EQ(after("kept-memory", 2), "  not measured: no server");
    EXPECT_EQ(after("start-binding", 2), "  not answered: it was left out");
    EXPECT_EQ(after("suite", 1), "  not answered: the kit has stand-ins for all of them")
        << "an answer that the kit cannot measure";
}

} // namespace
} // namespace quill::acceptance
