#include "retrieval/download/download_switch.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace quill {
namespace {

struct switch_case
{
    const wchar_t* text;
    wininet_switch answer;
};

void PrintTo(const switch_case& each, std::ostream* out)
{
    *out << testing::PrintToString(std::wstring(each.text));
}

class SwitchText : public testing::TestWithParam<switch_case>
{
};

TEST_P(SwitchText, IsParsed)
{
    EXPECT_EQ(parse_wininet_switch(GetParam().text), GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(
    WinINet, SwitchText,
    testing::Values(switch_case{L"/b 1", wininet_switch_on}, switch_case{L"/b  7", wininet_switch_on},
                    switch_case{L"/b1", wininet_switch_on}, switch_case{L"/b\t\r\n\v\f 1", wininet_switch_on},
                    switch_case{L"x/b 1", wininet_switch_on}, switch_case{L"/b -1", wininet_switch_on},
                    switch_case{L"/b 010", wininet_switch_on}, switch_case{L"/b 1x", wininet_switch_on},
                    switch_case{L"/b 99999999999", wininet_switch_on},
                    switch_case{L"/b0", wininet_switch_zero}, switch_case{L"/b 0", wininet_switch_zero},
                    switch_case{L"/b", wininet_switch_zero}, switch_case{L"/b x1", wininet_switch_zero},
                    switch_case{L"/b 0x1", wininet_switch_zero},
                    // Only the first "/b" counts.
                    switch_case{L"/b 0 /b 1", wininet_switch_zero},
                    switch_case{L"1", wininet_switch_no_number}, switch_case{L"", wininet_switch_no_number},
                    switch_case{L"/B 1", wininet_switch_no_number},
                    switch_case{L"/ b 1", wininet_switch_no_number}));

} // namespace
} // namespace quill
