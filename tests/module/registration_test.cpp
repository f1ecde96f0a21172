// Registration through the exports, in a temporary registry for each test.
#include "tests/module/listing.h"
#include "tests/module/loaded_module.h"
#include "tests/support/private_registry.h"

#include <gtest/gtest.h>
#include <oleauto.h>

namespace quill::test {
namespace {

constexpr wchar_t helper_objects_key[] =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Browser Helper Objects";
constexpr wchar_t user_types_key[] = L"SOFTWARE\\Classes\\MIME\\Database\\Content Type";

constexpr HRESULT unusable_key = HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE);

bool has(const std::string& text, const std::string& what)
{
    return text.find(what) != std::string::npos;
}

void write_text(HKEY root, const wchar_t* path, const wchar_t* name, const wchar_t* text)
{
    ASSERT_EQ(RegSetKeyValueW(root, path, name, REG_SZ, text,
                              static_cast<DWORD>((wcslen(text) + 1) * sizeof *text)),
              ERROR_SUCCESS);
}

struct Registration : testing::Test
{
    static void SetUpTestSuite() { keep_system_libraries_loaded(); }

    private_registry registry;
};

TEST_F(Registration, PerMachineWritesTheListedKeysAndNoOthers)
{
    const loaded_module module;
    EXPECT_EQ(module.DllRegisterServer(), S_OK);
    expect_listed(listing_id::machine);
}

TEST_F(Registration, PerMachineRemovalLeavesTheListedKeys)
{
    const loaded_module module;
    ASSERT_EQ(module.DllRegisterServer(), S_OK);
    EXPECT_EQ(module.DllUnregisterServer(), S_OK);
    expect_listed(listing_id::machine_removed);
}

TEST_F(Registration, PerUserPutsOnlyTheHelperObjectsClassElsewhere)
{
    const loaded_module module;
    EXPECT_EQ(module.DllInstall(TRUE, L"user"), S_OK);
    expect_listed(listing_id::user);
}

TEST_F(Registration, PerUserRemovalLeavesTheListedKeys)
{
    const loaded_module module;
    ASSERT_EQ(module.DllInstall(TRUE, L"user"), S_OK);
    EXPECT_EQ(module.DllInstall(FALSE, L"user"), S_OK);
    expect_listed(listing_id::user_removed);
}

// The command line applies until the module is unloaded; after another load it must be passed again.
TEST_F(Registration, PerUserRegistrationIsRemovedByALaterProcessToo)
{
    {
        const loaded_module module;
        ASSERT_EQ(module.DllInstall(TRUE, L"user"), S_OK);
    }
    const loaded_module module;
    EXPECT_EQ(module.DllInstall(FALSE, L"user"), S_OK);
    expect_listed(listing_id::user_removed);
}

TEST_F(Registration, IsTheSameAfterRegisteringTwice)
{
    const loaded_module module;
    ASSERT_EQ(module.DllRegisterServer(), S_OK);
    EXPECT_EQ(module.DllRegisterServer(), S_OK);
    expect_listed(listing_id::machine);
}

TEST_F(Registration, ForcedKeysLoseValuesOfOthers)
{
    write_text(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\QuillPDF.IE.ActiveDoc\\shell\\open", L"x",
               L"of another");
    const loaded_module module;
    ASSERT_EQ(module.DllRegisterServer(), S_OK);
    expect_listed(listing_id::machine);

    write_text(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\QuillPDF.IE.ActiveDoc.14\\shell\\open", L"x",
               L"of another");
    ASSERT_EQ(module.DllUnregisterServer(), S_OK);
    expect_listed(listing_id::machine_removed);
}

TEST_F(Registration, ValuesOfOthersInContentTypeKeysStay)
{
    const std::wstring key = std::wstring(user_types_key) + L"\\application/pdf";
    write_text(HKEY_LOCAL_MACHINE, key.c_str(), L"Encoding", L"of another");
    const loaded_module module;
    ASSERT_EQ(module.DllRegisterServer(), S_OK);
    ASSERT_EQ(module.DllUnregisterServer(), S_OK);
    EXPECT_TRUE(has(registry_listing(),
                    "HKLM\\SOFTWARE\\Classes\\MIME\\Database\\Content Type\\application/pdf\n"
                    "    Encoding = s of another\n"));
}

TEST_F(Registration, PathWithAnApostropheIsWrittenUnchanged)
{
    // The scripts contain the path between apostrophes.
    const std::wstring folder = loaded_module::folder() + L"it's a folder";
    const std::wstring copy = folder + L"\\QuillPDF.IE.dll";
    CreateDirectoryW(folder.c_str(), nullptr);
    ASSERT_TRUE(CopyFileW(loaded_module::path().c_str(), copy.c_str(), FALSE));
    const HMODULE module = LoadLibraryW(copy.c_str());
    ASSERT_NE(module, nullptr);
    using function = HRESULT WINAPI();
    auto* const register_server =
        reinterpret_cast<function*>(reinterpret_cast<void*>(GetProcAddress(module, "DllRegisterServer")));
    EXPECT_EQ(register_server(), S_OK);
    EXPECT_TRUE(has(registry_listing(), "\\InprocServer32\n    @ = s " + listing_text(copy) + "\n"));
    FreeLibrary(module);
    EXPECT_TRUE(DeleteFileW(copy.c_str()));
    EXPECT_TRUE(RemoveDirectoryW(folder.c_str()));
}

TEST_F(Registration, LocaleOfTheThreadIsRestored)
{
    const LCID before = GetThreadLocale();
    SetThreadLocale(MAKELCID(MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN), SORT_DEFAULT));
    const LCID german = GetThreadLocale();
    {
        const loaded_module module;
        module.DllRegisterServer();
        EXPECT_EQ(GetThreadLocale(), german);
        module.DllUnregisterServer();
        EXPECT_EQ(GetThreadLocale(), german);
    }
    SetThreadLocale(before);
}

TEST_F(Registration, TypeLibraryLoadsFromWhereItIsRegistered)
{
    const loaded_module module;
    ASSERT_EQ(module.DllRegisterServer(), S_OK);
    BSTR path = nullptr;
    EXPECT_EQ(QueryPathOfRegTypeLib(library_id, 14, 0, LOCALE_NEUTRAL, &path), S_OK);
    EXPECT_EQ(std::wstring(path ? path : L""), loaded_module::path());
    SysFreeString(path);
    ITypeLib* library = nullptr;
    ASSERT_EQ(LoadRegTypeLib(library_id, 14, 0, LOCALE_NEUTRAL, &library), S_OK);
    ITypeInfo* info = nullptr;
    EXPECT_EQ(library->GetTypeInfoOfGuid(document_interface, &info), S_OK);
    info->Release();
    library->Release();

    ASSERT_EQ(module.DllUnregisterServer(), S_OK);
    EXPECT_TRUE(FAILED(LoadRegTypeLib(library_id, 14, 0, LOCALE_NEUTRAL, &library)));
}

struct CommandLine : Registration, testing::WithParamInterface<std::pair<const wchar_t*, bool>>
{
};

TEST_P(CommandLine, ChoosesBetweenMachineAndUser)
{
    const auto [command_line, per_user] = GetParam();
    const loaded_module module;
    EXPECT_EQ(module.DllInstall(TRUE, command_line), S_OK);
    EXPECT_EQ(registry_listing(), listing(per_user ? listing_id::user : listing_id::machine));
    EXPECT_EQ(module.DllInstall(FALSE, command_line), S_OK);
    EXPECT_EQ(registry_listing(), listing(per_user ? listing_id::user_removed : listing_id::machine_removed));
}

INSTANTIATE_TEST_SUITE_P(Texts, CommandLine,
                         testing::Values(std::pair{L"user", true}, std::pair{L"USER", true},
                                         std::pair{L"User", true}, std::pair{L"user ", false},
                                         std::pair{L" user", false}, std::pair{L"users", false},
                                         std::pair{L"user2", false}, std::pair{L"use", false},
                                         std::pair{L"", false},
                                         std::pair{static_cast<const wchar_t*>(nullptr), false}));

TEST_F(Registration, FailureOfTheLastScriptIsRolledBackByInstall)
{
    make_unusable(HKEY_LOCAL_MACHINE, helper_objects_key);
    const loaded_module module;
    EXPECT_EQ(module.DllInstall(TRUE, nullptr), unusable_key);
    const std::string left = registry_listing();
    EXPECT_FALSE(has(left, "QuillPDF"));
    EXPECT_FALSE(has(left, "{5E2C7A90"));
    EXPECT_FALSE(has(left, "{8D41F0B2"));
    EXPECT_FALSE(has(left, "{C2A95E14"));
}

TEST_F(Registration, FailureOfAUserRegistrationIsRolledBackByInstall)
{
    make_unusable(HKEY_LOCAL_MACHINE, helper_objects_key);
    const loaded_module module;
    EXPECT_EQ(module.DllInstall(TRUE, L"user"), unusable_key);
    const std::string left = registry_listing();
    EXPECT_FALSE(has(left, "{5E2C7A90"));
    EXPECT_FALSE(has(left, "{8D41F0B2"));
}

TEST_F(Registration, FailureOfTheLastScriptIsNotRolledBackByRegisterServer)
{
    make_unusable(HKEY_LOCAL_MACHINE, helper_objects_key);
    const loaded_module module;
    EXPECT_EQ(module.DllRegisterServer(), unusable_key);
    const std::string left = registry_listing();
    EXPECT_TRUE(has(left, "HKLM\\SOFTWARE\\Classes\\CLSID\\{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15}\n"));
    EXPECT_TRUE(has(left, "Implemented Categories\\{59FB2056-D625-48D0-A944-1A85B5AB2640}\n"));
    EXPECT_TRUE(
        has(left, "HKLM\\SOFTWARE\\Classes\\CLSID\\{8D41F0B2-6C7A-4E93-B5D8-2A0F19C6E4D7}\\Version\n"));
    // The category of the class and the type library, which follow the failure, are not registered.
    EXPECT_FALSE(has(left, "{8D41F0B2-6C7A-4E93-B5D8-2A0F19C6E4D7}\\Implemented Categories"));
    EXPECT_FALSE(has(left, "{C2A95E14-7F38-4B60-9D1A-E5B7084F2C63}\\"));
}

TEST_F(Registration, FailureOfTheFirstScriptEndsTheRegistration)
{
    make_unusable(HKEY_CURRENT_USER, user_types_key);
    const loaded_module module;
    EXPECT_EQ(module.DllRegisterServer(), unusable_key);
    const std::string left = registry_listing();
    EXPECT_TRUE(has(left, "HKLM\\SOFTWARE\\Classes\\CLSID\\{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15}\n"));
    EXPECT_FALSE(has(left, "{59FB2056")); // the module's own script failed, so no class was registered
    EXPECT_FALSE(has(left, "{8D41F0B2"));

    EXPECT_EQ(module.DllInstall(TRUE, nullptr), unusable_key);
    EXPECT_FALSE(has(registry_listing(), "{5E2C7A90"));
}

TEST_F(Registration, RemovalWithoutARegistrationChangesNothing)
{
    const std::string before = registry_listing();
    const loaded_module module;
    // The system reports that the type library is not registered; nothing else fails.
    EXPECT_TRUE(FAILED(module.DllUnregisterServer()));
    EXPECT_EQ(registry_listing(), before);
}

} // namespace
} // namespace quill::test
