// Registration with regsvr32 in the registry of the session.
#include "tests/module/loaded_module.h"
#include "tests/support/child_process.h"
#include "tests/support/scopes.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

constexpr wchar_t document_server[] =
    L"SOFTWARE\\Classes\\CLSID\\{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15}\\InprocServer32";
constexpr wchar_t helper_server[] =
    L"SOFTWARE\\Classes\\CLSID\\{8D41F0B2-6C7A-4E93-B5D8-2A0F19C6E4D7}\\InprocServer32";

std::wstring default_value(HKEY root, const wchar_t* path)
{
    wchar_t text[MAX_PATH] = {};
    DWORD size = sizeof text;
    return RegGetValueW(root, path, nullptr, RRF_RT_REG_SZ, nullptr, text, &size) == ERROR_SUCCESS ? text
                                                                                                   : L"";
}

DWORD regsvr32(const std::wstring& switches)
{
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    const child_result result = run_program(std::wstring(folder) + L"\\regsvr32.exe",
                                            L"/s " + switches + L" \"" + loaded_module::path() + L"\"");
    return result.ended ? result.exit_code : ERROR_TIMEOUT;
}

struct Regsvr32 : testing::Test
{
    // Other programs of the session register the module as well.
    cross_process_lock lock{L"registration"};

    // An earlier run that was terminated may have left the module registered.
    Regsvr32() { unregister(); }
    ~Regsvr32() override { unregister(); }

    static void unregister()
    {
        regsvr32(L"/u");
        regsvr32(L"/u /n /i:user");
    }
};

TEST_F(Regsvr32, RegistersCreatableClassesPerMachine)
{
    ASSERT_EQ(regsvr32(L""), 0u);
    EXPECT_EQ(default_value(HKEY_LOCAL_MACHINE, document_server), loaded_module::path());
    EXPECT_EQ(default_value(HKEY_LOCAL_MACHINE, helper_server), loaded_module::path());

    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    for (const CLSID& clsid : {active_doc_class, helper_class}) {
        IUnknown* object = nullptr;
        EXPECT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                   reinterpret_cast<void**>(&object)),
                  S_OK);
        if (object)
            object->Release();
    }
    CLSID named{};
    EXPECT_EQ(CLSIDFromProgID(L"QuillPDF.IE.ActiveDoc", &named), S_OK);
    EXPECT_EQ(named, active_doc_class);
    CoFreeUnusedLibrariesEx(0, 0);
    CoUninitialize();

    EXPECT_EQ(regsvr32(L"/u"), 0u);
    EXPECT_EQ(default_value(HKEY_LOCAL_MACHINE, document_server), L"");
    EXPECT_EQ(default_value(HKEY_LOCAL_MACHINE, helper_server), L"");
}

TEST_F(Regsvr32, RegistersPerUser)
{
    ASSERT_EQ(regsvr32(L"/n /i:user"), 0u);
    EXPECT_EQ(default_value(HKEY_LOCAL_MACHINE, document_server), loaded_module::path());
    EXPECT_EQ(default_value(HKEY_LOCAL_MACHINE, helper_server), L"");
    EXPECT_EQ(default_value(HKEY_CURRENT_USER, helper_server), loaded_module::path());

    EXPECT_EQ(regsvr32(L"/u /n /i:user"), 0u);
    EXPECT_EQ(default_value(HKEY_LOCAL_MACHINE, document_server), L"");
    EXPECT_EQ(default_value(HKEY_CURRENT_USER, helper_server), L"");
}

} // namespace
} // namespace quill::test
