// The registrar: tables for the script language, and scripts applied to a registry in both directions.
#include "tests/support/private_registry.h"

#include <atlbase.h>
#include <gtest/gtest.h>

#include <string>

namespace quill::test {
namespace {

constexpr char empty_registry[] = "HKLM\nHKLM\\SOFTWARE\nHKLM\\SOFTWARE\\Classes\nHKCU\n";

struct Registrar : testing::Test
{
    ~Registrar() override { AtlSetPerUserRegistration(false); }

    std::string registered(const wchar_t* script)
    {
        EXPECT_EQ(registrar.StringRegister(script), S_OK);
        return registry_listing();
    }
    std::string unregistered(const wchar_t* script)
    {
        EXPECT_EQ(registrar.StringUnregister(script), S_OK);
        return registry_listing();
    }

    private_registry registry;
    CRegObject registrar;
};

std::string user_part(const std::string& listing)
{
    return listing.substr(listing.find("HKCU\n") + 5);
}

TEST_F(Registrar, WritesKeysAndValuesOfEveryType)
{
    EXPECT_EQ(user_part(registered(
                  L"HKCU { Key = s 'default' { val Text = s 'a b' val Number = d '258' "
                  L"val Hex = d '0xFF' val Basic = d '&Hff' val Bytes = b '00fF10' val None = b '' "
                  L"val Empty = s '' } }")),
              "HKCU\\Key\n    @ = s default\n    Basic = d 255\n    Bytes = b 00ff10\n    Empty = s \n"
              "    Hex = d 255\n    None = b \n    Number = d 258\n    Text = s a b\n");
}

TEST_F(Registrar, QuotedNamesHoldAnything)
{
    EXPECT_EQ(
        user_part(registered(L"HKCU { 'a b''c' = s 'it''s {=} '\n{ 'val' { val 'val' = s 'Delete' } } }")),
        "HKCU\\a b'c\n    @ = s it's {=} \nHKCU\\a b'c\\val\n    val = s Delete\n");
}

TEST_F(Registrar, NamesWithoutQuotesEndAtABlank)
{
    EXPECT_EQ(user_part(registered(L"HKCU\r\n{\r\n\tForceRemove {A=B} = s {x}\r\n\t{\r\n\t}\r\n}\r\n")),
              "HKCU\\{A=B}\n    @ = s {x}\n");
}

TEST_F(Registrar, KeywordsAndRootsComeInAnyCase)
{
    EXPECT_EQ(user_part(registered(L"hkcu { noremove A { VAL B = S 'x' FORCEREMOVE C DELETE D } } "
                                   L"HKEY_CURRENT_USER { E }")),
              "HKCU\\A\n    B = s x\nHKCU\\A\\C\nHKCU\\E\n");
}

TEST_F(Registrar, EveryRootIsItsOwn)
{
    const std::string listing = registered(L"HKLM { InMachine } HKEY_LOCAL_MACHINE { AlsoMachine } HKCR { "
                                           L"InClasses } HKEY_CLASSES_ROOT { AlsoClasses }");
    EXPECT_EQ(listing, "HKLM\nHKLM\\AlsoMachine\nHKLM\\InMachine\nHKLM\\SOFTWARE\nHKLM\\SOFTWARE\\Classes\n"
                       "HKLM\\SOFTWARE\\Classes\\AlsoClasses\nHKLM\\SOFTWARE\\Classes\\InClasses\nHKCU\n");
}

TEST_F(Registrar, PlainKeysAreRemovedUnlessOthersUseThem)
{
    constexpr wchar_t script[] = L"HKCU { A { B = s 'x' { val V = s 'y' } } }";
    registered(script);
    EXPECT_EQ(unregistered(script), empty_registry);

    registered(script);
    registered(L"HKCU { A { Other } }");
    EXPECT_EQ(user_part(unregistered(script)), "HKCU\\A\nHKCU\\A\\Other\n");
}

TEST_F(Registrar, NoRemoveKeysAreKeptWithoutTheirNamedValues)
{
    constexpr wchar_t script[] = L"HKCU { NoRemove A = s 'x' { val V = s 'y' B } }";
    registered(script);
    registered(L"HKCU { NoRemove A { val Other = s 'z' } }");
    EXPECT_EQ(user_part(unregistered(script)), "HKCU\\A\n    @ = s x\n    Other = s z\n");
}

TEST_F(Registrar, ForceRemoveKeysAreRemovedWithTheirContents)
{
    constexpr wchar_t script[] = L"HKCU { NoRemove A { ForceRemove B = s 'x' { C } } }";
    registered(L"HKCU { A { B { Old { Deep = s 'y' } val V = s 'z' } } }");
    EXPECT_EQ(user_part(registered(script)), "HKCU\\A\nHKCU\\A\\B\n    @ = s x\nHKCU\\A\\B\\C\n");
    registered(L"HKCU { A { B { New { Deep } } } }");
    EXPECT_EQ(user_part(unregistered(script)), "HKCU\\A\n");
}

TEST_F(Registrar, DeleteKeysAreRemovedAtRegistrationOnly)
{
    constexpr wchar_t script[] = L"HKCU { NoRemove A { Delete B } }";
    registered(L"HKCU { A { B { C } } }");
    EXPECT_EQ(user_part(registered(script)), "HKCU\\A\n");
    EXPECT_EQ(user_part(registered(script)), "HKCU\\A\n");
    registered(L"HKCU { A { B } }");
    EXPECT_EQ(user_part(unregistered(script)), "HKCU\\A\nHKCU\\A\\B\n");
}

TEST_F(Registrar, RemovingWhatIsMissingSucceeds)
{
    EXPECT_EQ(unregistered(
                  L"HKCU { A { B { val V = s 'x' } } ForceRemove C NoRemove D { val V = d '1' } Delete E }"),
              empty_registry);
    registered(L"HKCU { NoRemove D }");
    EXPECT_EQ(user_part(unregistered(L"HKCU { NoRemove D { val V = d '1' ForceRemove F G } }")), "HKCU\\D\n");
}

TEST_F(Registrar, ReplacementsFillInAnywhere)
{
    EXPECT_EQ(registrar.AddReplacement(L"Name", L"KEY"), S_OK);
    EXPECT_EQ(registrar.AddReplacement(L"PATH", L"c:\\it''s 100%"), S_OK);
    EXPECT_EQ(registrar.AddReplacement(L"path", L"c:\\it''s 50%"),
              S_OK); // the same name: the last one is effective
    EXPECT_EQ(user_part(registered(L"HKCU { %NAME%1 = s '%Path%\\%name%' { val Percent = s '%%x%%' } }")),
              "HKCU\\KEY1\n    @ = s c:\\it's 50%\\KEY\n    Percent = s %x%\n");
    EXPECT_EQ(registrar.ClearReplacements(), S_OK);
    EXPECT_EQ(registrar.StringRegister(L"HKCU { %NAME% }"), DISP_E_EXCEPTION);
    EXPECT_EQ(registrar.AddReplacement(nullptr, L"x"), E_INVALIDARG);
    EXPECT_EQ(registrar.AddReplacement(L"x", nullptr), E_INVALIDARG);
}

TEST_F(Registrar, PerUserMovesTheClassesOnly)
{
    constexpr wchar_t script[] = L"HKCR { A = s 'x' } HKLM { B } HKCU { C }";
    AtlSetPerUserRegistration(true);
    bool enabled = false;
    EXPECT_EQ(AtlGetPerUserRegistration(&enabled), S_OK);
    EXPECT_TRUE(enabled);
    EXPECT_EQ(AtlGetPerUserRegistration(nullptr), E_POINTER);
    EXPECT_EQ(
        registered(script),
        "HKLM\nHKLM\\B\nHKLM\\SOFTWARE\nHKLM\\SOFTWARE\\Classes\n"
        "HKCU\nHKCU\\C\nHKCU\\Software\nHKCU\\Software\\Classes\nHKCU\\Software\\Classes\\A\n    @ = s x\n");
    EXPECT_EQ(user_part(unregistered(script)), "HKCU\\Software\nHKCU\\Software\\Classes\n");
}

TEST_F(Registrar, PerUserRemovalWithoutUserClassesSucceeds)
{
    AtlSetPerUserRegistration(true);
    EXPECT_EQ(unregistered(L"HKCR { ForceRemove A }"), empty_registry);
}

struct BadScript : Registrar, testing::WithParamInterface<const wchar_t*>
{
};

TEST_P(BadScript, IsRefusedBeforeAnythingIsWritten)
{
    const std::wstring script = L"HKCU { Written = s 'x' } " + std::wstring(GetParam());
    EXPECT_EQ(registrar.StringRegister(script.c_str()), DISP_E_EXCEPTION);
    EXPECT_EQ(registrar.StringUnregister(script.c_str()), DISP_E_EXCEPTION);
    EXPECT_EQ(registry_listing(), empty_registry);
}

INSTANTIATE_TEST_SUITE_P(
    Scripts, BadScript,
    testing::Values(L"HKXX { A }", L"HKCU", L"HKCU {", L"HKCU { A", L"HKCU A }", L"HKCU { A { }",
                    L"HKCU { } }", L"HKCU { 'A }", L"HKCU { A = }", L"HKCU { A = s }", L"HKCU { A = s 'x",
                    L"HKCU { A = x 'y' }", L"HKCU { A = d '' }", L"HKCU { A = d 'x' }",
                    L"HKCU { A = d '4294967296' }", L"HKCU { A = d '-1' }", L"HKCU { A = d '0x' }",
                    L"HKCU { A = b '0' }", L"HKCU { A = b '0g' }", L"HKCU { val }", L"HKCU { val A }",
                    L"HKCU { val A { } }", L"HKCU { val '' = s 'x' }", L"HKCU { '' }",
                    L"HKCU { ForceRemove '' }", L"HKCU { NoRemove }", L"HKCU { = s 'x' }",
                    L"HKCU { %unknown% }", L"HKCU { A = s '50%' }", L"HKCU { A = s '%' %' }", L"'", L"{",
                    L"}", L"= = =", L"HKCU { { } }"));

TEST_F(Registrar, EmptyScriptsDoNothing)
{
    EXPECT_EQ(registered(L""), empty_registry);
    EXPECT_EQ(registered(L" \t\r\n"), empty_registry);
    EXPECT_EQ(registered(L"HKCU { }"), empty_registry);
    EXPECT_EQ(registrar.StringRegister(nullptr), E_POINTER);
    EXPECT_EQ(registrar.StringUnregister(nullptr), E_POINTER);
}

TEST_F(Registrar, EndlesslyNestedScriptsAreRefused)
{
    std::wstring script = L"HKCU ";
    for (int i = 0; i < 100'000; ++i)
        script += L"{ A ";
    EXPECT_EQ(registrar.StringRegister(script.c_str()), DISP_E_EXCEPTION);
    EXPECT_EQ(registry_listing(), empty_registry);
}

TEST_F(Registrar, EveryBeginningOfAScriptIsHarmless)
{
    const std::wstring script =
        L"HKCR { NoRemove 'A''b' = s '%%x' { ForceRemove C = d '1' { val V = b '0011' } Delete D } }";
    for (std::size_t length = 0; length < script.size(); ++length) {
        const std::wstring cut = script.substr(0, length);
        const HRESULT hr = registrar.StringRegister(cut.c_str());
        EXPECT_EQ(hr, cut.find_first_not_of(L' ') == std::wstring::npos ? S_OK : DISP_E_EXCEPTION) << length;
        EXPECT_EQ(registry_listing(), empty_registry);
    }
}

// A key below which no key can be created makes a registration fail.
void make_unusable(const wchar_t* path)
{
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                              nullptr, &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
}

TEST_F(Registrar, FailedRegistrationStopsAndKeepsItsKeys)
{
    make_unusable(L"Blocked");
    EXPECT_EQ(registrar.StringRegister(L"HKCU { Before { A } Blocked { B } After } HKLM { Later }"),
              HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE));
    EXPECT_EQ(registry_listing(),
              std::string(empty_registry) + "HKCU\\Before\nHKCU\\Before\\A\nHKCU\\Blocked\n");
}

TEST_F(Registrar, NamesThatTheRegistryRefusesAreItsErrors)
{
    const std::wstring script = L"HKCU { '" + std::wstring(300, L'n') + L"' }";
    EXPECT_TRUE(FAILED(registrar.StringRegister(script.c_str())));
    EXPECT_EQ(registry_listing(), empty_registry);
}

TEST_F(Registrar, ScriptsComeFromResources)
{
    const HINSTANCE self = GetModuleHandleW(nullptr);
    EXPECT_EQ(registrar.AddReplacement(L"Value", L"x"), S_OK);
    EXPECT_EQ(registrar.ResourceRegister(self, 1, L"REGISTRY"), S_OK);
    EXPECT_EQ(user_part(registry_listing()), "HKCU\\FromResource\n    @ = s x\n");
    EXPECT_EQ(registrar.ResourceUnregister(self, 1, L"REGISTRY"), S_OK);
    EXPECT_EQ(registry_listing(), empty_registry);
    EXPECT_TRUE(FAILED(registrar.ResourceRegister(self, 2, L"REGISTRY")));
    EXPECT_TRUE(FAILED(registrar.ResourceRegister(self, 1, L"NOTHING")));
}

} // namespace
} // namespace quill::test
