#include "retrieval/download/folder_numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace quill {
namespace {

std::uint32_t first_free(const std::vector<std::wstring>& entries)
{
    folder_numbers numbers;
    for (const std::wstring& entry : entries)
        numbers.add(entry);
    return numbers.next_free();
}

TEST(FolderNumbers, BeginAtZero)
{
    EXPECT_EQ(first_free({}), 0u);
    EXPECT_EQ(first_free({L"qll1", L"qll2"}), 0u);
}

TEST(FolderNumbers, FillTheFirstGap)
{
    EXPECT_EQ(first_free({L"qll0", L"qll1", L"qll2"}), 3u);
    EXPECT_EQ(first_free({L"qll10", L"qll0", L"qll3", L"qll1"}), 2u);
    EXPECT_EQ(first_free({L"qll0", L"qll10", L"qll11"}), 1u);
}

TEST(FolderNumbers, AreReadInAnyCase)
{
    EXPECT_EQ(first_free({L"QLL0", L"Qll1", L"qLl2", L"qlL3"}), 4u);
    EXPECT_EQ(first_free({L"qll0", L"QLL0", L"Qll0", L"qll1"}), 2u);
}

TEST(FolderNumbers, AreReadFromExactFolderNamesOnly)
{
    for (const wchar_t* const entry : {L"",
                                       L"q",
                                       L"ql",
                                       L"qll",
                                       L"qll00",
                                       L"qll007",
                                       L"qll0x",
                                       L"qll0.pdf",
                                       L"qll0 ",
                                       L"qll0.",
                                       L"qll 0",
                                       L"qll-0",
                                       L"qll+0",
                                       L"qll\x0660",
                                       L"qll\xFF10",
                                       L"qlm0",
                                       L"xqll0",
                                       L"pll0",
                                       L"RLL0",
                                       L"QLK0",
                                       L"q\x029F\x029F"
                                       L"0",
                                       L"1ll0",
                                       L"qll4294967296",
                                       L"qll18446744073709551616",
                                       L"qll99999999999",
                                       L"qll2147483648"}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(entry)));
        EXPECT_EQ(first_free({entry}), 0u);
        EXPECT_EQ(first_free({entry, L"qll0", entry}), 1u);
    }
}

TEST(FolderNumbers, TolerateTheLargest)
{
    folder_numbers numbers;
    numbers.add(L"qll2147483646");
    numbers.add(L"qll2147483647");
    EXPECT_EQ(numbers.next_free(), 0u);
    EXPECT_EQ(numbers.next_free(), 1u);
}

TEST(FolderNumbers, AreEachReturnedOnce)
{
    folder_numbers numbers;
    for (const wchar_t* const entry : {L"qll4", L"qll1", L"qll5"})
        numbers.add(entry);
    std::vector<std::uint32_t> free;
    for (int i = 0; i < 5; ++i)
        free.push_back(numbers.next_free());
    EXPECT_EQ(free, (std::vector<std::uint32_t>{0, 2, 3, 6, 7}));
}

TEST(FolderNumbers, EqualThoseOfALinearSearch)
{
    std::mt19937 random(20'240'601); // NOLINT: the same entries each time
    for (int round = 0; round < 200; ++round) {
        std::set<std::uint32_t> taken;
        const std::uint32_t most = 1 + random() % 300;
        for (std::uint32_t i = 0; i < most; ++i)
            taken.insert(random() % most);
        std::vector<std::uint32_t> order(taken.begin(), taken.end());
        std::shuffle(order.begin(), order.end(), random);
        folder_numbers numbers;
        for (const std::uint32_t number : order)
            numbers.add(L"qll" + std::to_wstring(number));
        for (std::uint32_t asked = 0; asked < most + 3; ++asked)
            if (!taken.contains(asked))
                ASSERT_EQ(numbers.next_free(), asked) << "round " << round;
    }
}

} // namespace
} // namespace quill
