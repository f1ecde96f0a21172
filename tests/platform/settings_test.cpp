// The settings in the real registry, both views of it.
#include "platform/settings.h"
#include "tests/support/process_resources.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace quill {
namespace {

using test::process_resources;
using test::registry_key_scope;

constexpr const wchar_t* settings_path = L"SOFTWARE\\Quill\\DocStudio\\14\\Settings";

// All three places where the value is looked up, empty.
struct Settings : testing::Test
{
    registry_key_scope machine64{HKEY_LOCAL_MACHINE, settings_path, KEY_WOW64_64KEY};
    registry_key_scope machine32{HKEY_LOCAL_MACHINE, settings_path, KEY_WOW64_32KEY};
    registry_key_scope user{HKEY_CURRENT_USER, settings_path};
};

TEST_F(Settings, ExepathIsEmptyWhenThereIsNone)
{
    EXPECT_EQ(read_exepath(), L"");
    machine64.set_string(L"other", L"x");
    EXPECT_EQ(read_exepath(), L"");
}

TEST_F(Settings, ExepathIsReadFromThe64BitViewFirst)
{
    machine64.set_string(L"exepath", L"C:\\64\\editor.exe");
    machine32.set_string(L"exepath", L"C:\\32\\editor.exe");
    EXPECT_EQ(read_exepath(), L"C:\\64\\editor.exe");
}

TEST_F(Settings, ExepathOfThe32BitViewIsFound)
{
    machine32.set_string(L"exepath", L"C:\\32\\editor.exe");
    EXPECT_EQ(read_exepath(), L"C:\\32\\editor.exe");
    machine64.set_string(L"other", L"x");
    EXPECT_EQ(read_exepath(), L"C:\\32\\editor.exe");
}

TEST_F(Settings, ExepathIsNotReadFromTheUser)
{
    user.set_string(L"exepath", L"C:\\user\\editor.exe");
    EXPECT_EQ(read_exepath(), L"");
}

TEST_F(Settings, ExepathMayHave259Characters)
{
    machine64.set_string(L"exepath", std::wstring(259, L'e'));
    EXPECT_EQ(read_exepath(), std::wstring(259, L'e'));
}

TEST_F(Settings, ALongerExepathIsNone)
{
    machine64.set_string(L"exepath", std::wstring(260, L'e'));
    machine32.set_string(L"exepath", std::wstring(300, L'e'));
    EXPECT_EQ(read_exepath(), L"");
    std::wstring value = L"before";
    EXPECT_EQ(read_settings_string(L"exepath", KEY_READ | KEY_WOW64_64KEY, REG_SZ, value, false),
              ERROR_MORE_DATA);
    EXPECT_EQ(value, L"");
    machine32.set_string(L"exepath", L"C:\\32\\editor.exe");
    EXPECT_EQ(read_exepath(), L"C:\\32\\editor.exe");
}

TEST_F(Settings, TextWithoutItsTerminatorEndsWithTheBuffer)
{
    // The system appends a terminator if the data has none, so the buffer has no room for one.
    const std::wstring text(300, L'u');
    machine64.set(L"exepath", REG_SZ, text.data(), 520);
    EXPECT_EQ(read_exepath(), text.substr(0, 260));
    machine64.set(L"exepath", REG_SZ, L"abcdef", 6);
    EXPECT_EQ(read_exepath(), L"abc");
}

TEST_F(Settings, TextEndsAtItsFirstNul)
{
    machine64.set(L"exepath", REG_SZ, L"abc\0def", 16);
    EXPECT_EQ(read_exepath(), L"abc");
}

TEST_F(Settings, TheValuesTypeIsNotCompared)
{
    machine64.set(L"exepath", REG_BINARY, L"xyz", 6);
    EXPECT_EQ(read_exepath(), L"xyz");
    machine64.set(L"exepath", REG_EXPAND_SZ, L"%x%", 8);
    EXPECT_EQ(read_exepath(), L"%x%");
}

TEST_F(Settings, TheStatusOfAMissingKeyOrValueIsReturned)
{
    std::wstring value = L"before";
    EXPECT_EQ(read_settings_string(L"v", KEY_READ, REG_SZ, value, true), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(value, L"");
    user.set_string(L"other", L"x");
    value = L"before";
    EXPECT_EQ(read_settings_string(L"v", KEY_READ, REG_SZ, value, true), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(value, L"");
}

TEST_F(Settings, PerUserReadsTheKeyOfTheUser)
{
    user.set_string(L"v", L"user");
    machine64.set_string(L"v", L"machine");
    std::wstring value;
    EXPECT_EQ(read_settings_string(L"v", KEY_READ, REG_SZ, value, true), ERROR_SUCCESS);
    EXPECT_EQ(value, L"user");
    EXPECT_EQ(read_settings_string(L"v", KEY_READ, REG_SZ, value, false), ERROR_SUCCESS);
    EXPECT_EQ(value, L"machine");
}

TEST_F(Settings, KeepsNoKeyOpen)
{
    machine64.set_string(L"exepath", std::wstring(260, L'e'));
    const auto before = process_resources::now();
    read_exepath();
    EXPECT_EQ(process_resources::now(), before);
}

TEST_F(Settings, TheKeyTableCanBeRedirected)
{
    constexpr const wchar_t* elsewhere = L"SOFTWARE\\QuillTest\\Elsewhere";
    const registry_key_scope redirected(HKEY_CURRENT_USER, elsewhere);
    redirected.set_string(L"v", L"elsewhere");
    const wchar_t*& path = settings_key_paths[static_cast<std::size_t>(settings_key::settings)];
    const wchar_t* const before = path;
    path = elsewhere;
    std::wstring value;
    EXPECT_EQ(read_settings_string(L"v", KEY_READ, REG_SZ, value, true), ERROR_SUCCESS);
    path = before;
    EXPECT_EQ(value, L"elsewhere");
}

TEST(SettingsKeys, AreTheSuites)
{
    const wchar_t* const expected[] = {
        L"SOFTWARE\\Quill",
        L"SOFTWARE\\Quill\\DocStudio",
        L"SOFTWARE\\Quill\\DocStudio\\14",
        L"SOFTWARE\\Quill\\DocStudio\\14\\Settings",
        L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\QuillCloud",
        L"SOFTWARE\\Quill\\DocStudio\\14\\BCG",
        L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Preferences",
        L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Accelerators",
        L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\QAT",
        L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\UI\\Ribbon",
        L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Tools",
        L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\FavoriteTools\\Toolbar0",
    };
    ASSERT_EQ(std::size(settings_key_paths), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i)
        EXPECT_STREQ(settings_key_paths[i], expected[i]) << i;
}

} // namespace
} // namespace quill
