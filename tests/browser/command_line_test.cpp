#include "stand_ins/browser/command_line.h"
#include "stand_ins/browser/shown_document.h"

#include <gtest/gtest.h>

#include <utility>

namespace quill::test {
namespace {

TEST(BrowserCommandLine, AcceptsAUrlAlone)
{
    const auto options = parse_command_line({L"http://host/x.pdf#page=2"});
    ASSERT_TRUE(options.has_value());
    EXPECT_EQ(options->address, L"http://host/x.pdf#page=2");
    EXPECT_TRUE(options->screenshot.empty());
    EXPECT_FALSE(options->exit);
    EXPECT_EQ(options->wait.count(), 30);
    EXPECT_EQ(options->documents, 1u);
    EXPECT_FALSE(options->page);
    EXPECT_TRUE(options->click.empty());
    EXPECT_FALSE(options->helpers);
}

TEST(BrowserCommandLine, AcceptsTheOptionsOfAPage)
{
    const auto options = parse_command_line({L"--page", L"--click", L"some link", L"--helpers", L"x.html"});
    ASSERT_TRUE(options.has_value());
    EXPECT_TRUE(options->page);
    EXPECT_EQ(options->click, L"some link");
    EXPECT_TRUE(options->helpers);
    EXPECT_EQ(options->address, L"x.html");
}

TEST(BrowserCommandLine, AcceptsOptionsOnBothSidesOfTheUrl)
{
    const auto options = parse_command_line(
        {L"--screenshot", L"a b.png", L"x.pdf", L"--wait", L"5", L"--documents", L"2", L"--exit"});
    ASSERT_TRUE(options.has_value());
    EXPECT_EQ(options->address, L"x.pdf");
    EXPECT_EQ(options->screenshot, L"a b.png");
    EXPECT_TRUE(options->exit);
    EXPECT_EQ(options->wait.count(), 5);
    EXPECT_EQ(options->documents, 2u);
}

shown_document document(viewer_state state, std::wstring text)
{
    return {state, std::move(text), nullptr};
}

TEST(ShownDocuments, AreShownWhenAllThatAreWantedAre)
{
    using enum viewer_state;
    EXPECT_EQ(summarise({}, 1).state, empty);
    EXPECT_EQ(summarise({document(shown, L"one")}, 1).state, shown);
    EXPECT_EQ(summarise({document(shown, L"one")}, 2).state, working);
    EXPECT_EQ(summarise({document(shown, L"one"), document(working, L"two")}, 1).state, working);
    EXPECT_EQ(summarise({document(empty, L""), document(shown, L"two")}, 2).state, working);
    const auto both = summarise({document(shown, L"one"), document(shown, L"two")}, 2);
    EXPECT_EQ(both.state, shown);
    EXPECT_EQ(both.text, L"one; two");
    const auto broken = summarise({document(working, L"one"), document(failed, L"damaged")}, 2);
    EXPECT_EQ(broken.state, failed);
    EXPECT_EQ(broken.text, L"damaged");
}

class WrongCommandLine : public testing::TestWithParam<std::vector<std::wstring>>
{
};

TEST_P(WrongCommandLine, IsRefused)
{
    EXPECT_FALSE(parse_command_line(GetParam()).has_value());
}

using arguments = std::vector<std::wstring>;
INSTANTIATE_TEST_SUITE_P(Cases, WrongCommandLine,
                         testing::Values(arguments{}, arguments{L"--exit"}, arguments{L""},
                                         arguments{L"a", L"b"}, arguments{L"a", L"--screenshot"},
                                         arguments{L"a", L"--screenshot", L""}, arguments{L"a", L"--wait"},
                                         arguments{L"a", L"--wait", L"0"}, arguments{L"a", L"--wait", L"601"},
                                         arguments{L"a", L"--wait", L"-1"}, arguments{L"a", L"--wait", L"5s"},
                                         arguments{L"a", L"--wait", L""}, arguments{L"a", L"--documents"},
                                         arguments{L"a", L"--documents", L"0"},
                                         arguments{L"a", L"--documents", L"100"}, arguments{L"a", L"--click"},
                                         arguments{L"a", L"--click", L""}, arguments{L"--click", L"a"},
                                         arguments{L"a", L"--unknown"}, arguments{L"-"}));

} // namespace
} // namespace quill::test
