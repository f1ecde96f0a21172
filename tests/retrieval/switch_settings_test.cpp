// The download switch, read from the real registry.
#include "retrieval/download/download_switch.h"
#include "tests/retrieval/download_fixture.h"
#include "tests/support/process_resources.h"
#include "tests/support/scopes.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

class SwitchSettings : public testing::Test
{
protected:
    static wininet_switch read()
    {
        DWORD last_error = 0;
        SetLastError(4711);
        const wininet_switch answer = ReadWinINetSwitch(last_error);
        EXPECT_EQ(last_error, GetLastError());
        return answer;
    }

    registry_key_scope user_{HKEY_CURRENT_USER, switch_key};
    registry_key_scope machine_{HKEY_LOCAL_MACHINE, switch_key, KEY_WOW64_64KEY};
    registry_key_scope machine_32_{HKEY_LOCAL_MACHINE, switch_key, KEY_WOW64_32KEY};
};

TEST_F(SwitchSettings, AreOffWithoutAKey)
{
    EXPECT_EQ(read(), wininet_switch_no_key);
}

TEST_F(SwitchSettings, AreOffWithoutTheValue)
{
    user_.set_string(L"other", L"/b 1");
    EXPECT_EQ(read(), wininet_switch_no_value);
}

TEST_F(SwitchSettings, PreferThoseOfTheUser)
{
    machine_.set_string(switch_value, L"/b 1");
    EXPECT_EQ(read(), wininet_switch_on);
    user_.set_string(switch_value, L"/b 0");
    EXPECT_EQ(read(), wininet_switch_zero);
    // The user's key hides that of the machine even without the value.
    user_.set_string(switch_value, L"1");
    EXPECT_EQ(read(), wininet_switch_no_number);
}

TEST_F(SwitchSettings, AreReadFromEitherMachineView)
{
    machine_32_.set_string(switch_value, L"/b  7");
    EXPECT_EQ(read(), wininet_switch_on);
    machine_.set_string(switch_value, L"/b0");
    EXPECT_EQ(read(), wininet_switch_zero);
}

TEST_F(SwitchSettings, MayBeOfAnyType)
{
    const wchar_t text[] = L"/b 1";
    user_.set(switch_value, REG_BINARY, text, sizeof text);
    EXPECT_EQ(read(), wininet_switch_on);
    user_.set(switch_value, REG_MULTI_SZ, text, sizeof text);
    EXPECT_EQ(read(), wininet_switch_on);
    user_.set_dword(switch_value, 1);
    EXPECT_EQ(read(), wininet_switch_no_number);
    user_.set(switch_value, REG_BINARY, nullptr, 0);
    EXPECT_EQ(read(), wininet_switch_no_number);
}

TEST_F(SwitchSettings, MayFillTheBufferWithoutATerminator)
{
    // The system appends a terminator if the text has none, so other bytes follow it here.
    const std::wstring text = L"            /b 1x";
    ASSERT_EQ(text.size(), 17u);
    user_.set(switch_value, REG_SZ, text.data(), 32);
    EXPECT_EQ(read(), wininet_switch_on);
    const std::wstring marker_at_the_end = L"              /b";
    user_.set(switch_value, REG_BINARY, marker_at_the_end.data(), 32);
    EXPECT_EQ(read(), wininet_switch_zero);
    user_.set(switch_value, REG_BINARY, L"/b 1", 7); // ends in the middle of a UTF-16 code unit
    EXPECT_EQ(read(), wininet_switch_on);
}

TEST_F(SwitchSettings, MayNotBeLongerThanTheBuffer)
{
    const std::wstring text = L"/b 1             ";
    ASSERT_EQ(text.size(), 17u);
    user_.set(switch_value, REG_SZ, text.data(), 34);
    EXPECT_EQ(read(), wininet_switch_no_value);
}

TEST_F(SwitchSettings, AreReadWithoutLeakingAHandle)
{
    read();
    const auto before = process_resources::now();
    for (int i = 0; i < 10; ++i)
        read();
    user_.set_string(switch_value, L"/b 1");
    for (int i = 0; i < 10; ++i)
        read();
    EXPECT_EQ(process_resources::now(), before);
}

} // namespace
} // namespace quill::test
