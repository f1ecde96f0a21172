#include "diagnose/registry_value.h"

#include <gtest/gtest.h>

namespace quill::diagnose {
namespace {

registry_value value(DWORD type, std::vector<BYTE> data)
{
    return {ERROR_SUCCESS, type, std::move(data)};
}

struct described_value
{
    registry_value value;
    std::optional<std::wstring> text;
    std::optional<DWORD> number; // as programs read it that accept both types
    const wchar_t* description;
};

const described_value values[] = {
    {value(REG_SZ, {'7', 0, 0, 0}), L"7", 7u, L"\"7\""},
    {value(REG_EXPAND_SZ, {'x', 0, 0, 0}), L"x", std::nullopt, L"\"x\""},
    {value(REG_SZ, {0, 0}), L"", std::nullopt, L"\"\""},
    {value(REG_SZ, {'x', 0, 0, 0, 'y', 0}), L"x", std::nullopt, L"\"x\", followed by 2 bytes"},
    {value(REG_SZ, {'x', 0}), std::nullopt, std::nullopt, L"\"x\" without a terminating null"},
    {value(REG_SZ, {}), std::nullopt, std::nullopt, L"\"\" without a terminating null"},
    {value(REG_SZ, {'x', 0, 0}), std::nullopt, std::nullopt, L"REG_SZ of 3 bytes, which is no text"},
    {value(REG_SZ, {'x'}), std::nullopt, std::nullopt, L"REG_SZ of 1 byte, which is no text"},
    {value(REG_DWORD, {5, 0, 0, 0}), std::nullopt, 5u, L"5"},
    {value(REG_DWORD, {0, 4, 0, 0}), std::nullopt, 1024u, L"1024 (0x400)"},
    {value(REG_DWORD, {1, 2, 3}), std::nullopt, std::nullopt, L"REG_DWORD of 3 bytes"},
    {value(REG_DWORD, {}), std::nullopt, std::nullopt, L"REG_DWORD of 0 bytes"},
    {value(REG_DWORD, {1, 0, 0, 0, 0}), std::nullopt, std::nullopt, L"REG_DWORD of 5 bytes"},
    {value(REG_BINARY, std::vector<BYTE>(1 << 20)), std::nullopt, std::nullopt,
     L"REG_BINARY of 1048576 bytes"},
    {value(REG_NONE, {}), std::nullopt, std::nullopt, L"REG_NONE of 0 bytes"},
    {value(7, {'x', 0, 0, 0, 0, 0}), std::nullopt, std::nullopt, L"REG_MULTI_SZ of 6 bytes"},
    {value(11, std::vector<BYTE>(8)), std::nullopt, std::nullopt, L"REG_QWORD of 8 bytes"},
    {value(0xFFFFFFFF, {1}), std::nullopt, std::nullopt, L"the unknown type 4294967295 of 1 byte"},
    {{ERROR_FILE_NOT_FOUND, 0, {}}, std::nullopt, std::nullopt, L"no value"},
    {{ERROR_PATH_NOT_FOUND, 0, {}}, std::nullopt, std::nullopt, L"no value"},
    {{ERROR_ACCESS_DENIED, REG_SZ, {}}, std::nullopt, std::nullopt, L"unreadable: access denied (error 5)"},
    {{ERROR_MORE_DATA, 0, {}}, std::nullopt, std::nullopt, L"unreadable: too large (error 234)"},
    {{ERROR_LOCK_VIOLATION, 0, {}},
     std::nullopt,
     std::nullopt,
     L"unreadable: in use by another program (error 33)"},
    {{1018, 0, {}}, std::nullopt, std::nullopt, L"unreadable: error 1018"},
};

TEST(RegistryValue, OfAnyTypeAndLengthIsDescribed)
{
    for (const described_value& expected : values) {
        const std::wstring description = described(expected.value);
        EXPECT_TRUE(description == expected.description)
            << std::string(description.begin(), description.end());
        EXPECT_TRUE(text_of(expected.value) == expected.text);
        EXPECT_TRUE(lenient_number_of(expected.value) == expected.number);
    }
}

TEST(RegistryValue, NumberAsTextIsDecimalAndShort)
{
    const auto number = [](std::wstring_view text) {
        registry_value value{ERROR_SUCCESS, REG_SZ, {}};
        for (const wchar_t c : text) {
            value.data.push_back(static_cast<BYTE>(c & 0xFF));
            value.data.push_back(static_cast<BYTE>(c >> 8));
        }
        value.data.insert(value.data.end(), 2, 0);
        return lenient_number_of(value);
    };
    EXPECT_TRUE(number(L"0") == DWORD{0});
    EXPECT_TRUE(number(L"999999999") == DWORD{999'999'999});
    for (const wchar_t* text : {L"", L"-1", L" 1", L"1 ", L"0x1", L"4294967296", L"\u0661"})
        EXPECT_FALSE(number(text));
}

TEST(RegistryValue, KeysAreDescribedWithTheirView)
{
    EXPECT_TRUE(described(registry_key{registry_root::user, L"a\\b", registry_view::bits_64}) ==
                L"HKCU\\a\\b");
    EXPECT_TRUE(described(registry_key{registry_root::machine, L"a", registry_view::bits_32}, L"") ==
                L"HKLM\\a (32-bit view), default value");
    EXPECT_TRUE(described(below({registry_root::machine, L"a", registry_view::bits_64}, L"b"), L"c") ==
                L"HKLM\\a\\b, value \"c\"");
}

} // namespace
} // namespace quill::diagnose
