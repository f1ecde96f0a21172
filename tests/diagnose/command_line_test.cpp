#include "diagnose/command_line.h"

#include <gtest/gtest.h>

#include <vector>

namespace quill::diagnose {
namespace {

options parsed(const std::vector<std::wstring>& arguments)
{
    return parse_arguments(arguments);
}

TEST(DiagnoseArguments, AreACommand)
{
    EXPECT_EQ(parsed({}).what, command::diagnose);
    EXPECT_EQ(parsed({L"--help"}).what, command::help);
    EXPECT_EQ(parsed({L"/?"}).what, command::help);
    const options clean = parsed({L"--clean-downloads", L"30"});
    EXPECT_EQ(clean.what, command::clean_downloads);
    EXPECT_EQ(clean.days, 30u);
    EXPECT_EQ(parsed({L"--clean-downloads", L"1"}).days, 1u);
    EXPECT_EQ(parsed({L"--clean-downloads", L"3650"}).days, 3650u);
}

TEST(DiagnoseArguments, OthersAreRefused)
{
    const std::vector<std::vector<std::wstring>> wrong = {{L""},
                                                          {L"--Help"},
                                                          {L"--help", L"x"},
                                                          {L"30"},
                                                          {L"--clean-downloads"},
                                                          {L"--clean-downloads", L"30", L"30"},
                                                          {L"--clean-downloads=30"},
                                                          {L"--diagnose"}};
    for (const auto& arguments : wrong)
        EXPECT_EQ(parsed(arguments).what, command::wrong_usage);
    for (const wchar_t* days : {L"", L"0", L"00", L"01", L"-1", L"+1", L" 1", L"1 ", L"1.5", L"1e2", L"0x1",
                                L"3651", L"10000", L"4294967297", L"18446744073709551617", L"\u0661", L"x"}) {
        EXPECT_EQ(parsed({L"--clean-downloads", days}).what, command::wrong_usage);
        EXPECT_FALSE(parsed({L"--clean-downloads", days}).error.empty());
    }
}

} // namespace
} // namespace quill::diagnose
