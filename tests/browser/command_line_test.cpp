#include "browser/command_line.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

TEST(BrowserCommandLine, TakesAnAddressAlone)
{
    const auto options = parse_command_line({L"http://host/x.pdf#page=2"});
    ASSERT_TRUE(options.has_value());
    EXPECT_EQ(options->address, L"http://host/x.pdf#page=2");
    EXPECT_TRUE(options->screenshot.empty());
    EXPECT_FALSE(options->exit);
    EXPECT_EQ(options->wait.count(), 30);
}

TEST(BrowserCommandLine, TakesOptionsOnBothSidesOfTheAddress)
{
    const auto options =
        parse_command_line({L"--screenshot", L"a b.png", L"x.pdf", L"--wait", L"5", L"--exit"});
    ASSERT_TRUE(options.has_value());
    EXPECT_EQ(options->address, L"x.pdf");
    EXPECT_EQ(options->screenshot, L"a b.png");
    EXPECT_TRUE(options->exit);
    EXPECT_EQ(options->wait.count(), 5);
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
                                         arguments{L"a", L"--wait", L""}, arguments{L"a", L"--unknown"},
                                         arguments{L"-"}));

} // namespace
} // namespace quill::test
