// The class-object map: order, factories, registration, lock count.
#include "tests/framework/framework_module.h"
#include "tests/support/private_registry.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using testing::ElementsAre;

struct ObjectMap : testing::Test
{
    ObjectMap() { map_events().clear(); }
    ~ObjectMap() override
    {
        failing_step().clear();
        EXPECT_EQ(the_module().GetLockCount(), 0);
    }
    private_registry registry;
};

bool listed(const std::string& line)
{
    return registry_listing().find(line) != std::string::npos;
}

TEST_F(ObjectMap, KeepsTheOrderWritten)
{
    std::vector<CLSID> order;
    for (auto* entry = _AtlComModule.m_ppAutoObjMapFirst; entry != _AtlComModule.m_ppAutoObjMapLast;
         ++entry) {
        if (*entry)
            order.push_back(*(*entry)->pclsid);
    }
    EXPECT_THAT(order, ElementsAre(CLSID_first, CLSID_second, CLSID_hidden));
}

TEST_F(ObjectMap, FactoriesAreStoredEncoded)
{
    CComPtr<IClassFactory> factory;
    ASSERT_EQ(
        the_module().DllGetClassObject(CLSID_first, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
        S_OK);
    for (auto* entry = _AtlComModule.m_ppAutoObjMapFirst; entry != _AtlComModule.m_ppAutoObjMapLast;
         ++entry) {
        if (*entry && IsEqualGUID(*(*entry)->pclsid, CLSID_first)) {
            EXPECT_EQ(DecodePointer((*entry)->pCache->pCF), factory.p);
        }
    }
}

TEST_F(ObjectMap, ClassWithoutFactoryIsNotAvailable)
{
    void* out = &out;
    EXPECT_EQ(the_module().DllGetClassObject(CLSID_hidden, IID_IClassFactory, &out),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(out, nullptr);
}

TEST_F(ObjectMap, ModuleThatWasNotInitialisedHasNoClasses)
{
    CAtlComModule unborn;
    void* out = &out;
    EXPECT_EQ(unborn.GetClassObject(CLSID_first, IID_IClassFactory, nullptr), E_POINTER);
    EXPECT_EQ(unborn.GetClassObject(CLSID_first, IID_IClassFactory, &out), E_UNEXPECTED);
    EXPECT_EQ(out, nullptr);
}

TEST_F(ObjectMap, CallsObjectMainOfEveryClassAtStartAndEnd)
{
    _AtlComModule.ExecuteObjectMain(true);
    _AtlComModule.ExecuteObjectMain(false);
    EXPECT_THAT(map_events(), ElementsAre("start first", "start second", "end first", "end second"));
}

TEST_F(ObjectMap, RegistersTheModuleAndThenTheClassesInOrder)
{
    EXPECT_EQ(the_module().DllRegisterServer(FALSE), S_OK);
    EXPECT_THAT(map_events(),
                ElementsAre("register module", "register first", "register second", "register second"));
}

TEST_F(ObjectMap, RegistersOneClassOnly)
{
    EXPECT_EQ(the_module().RegisterServer(FALSE, &CLSID_second), S_OK);
    EXPECT_THAT(map_events(), ElementsAre("register second"));
}

TEST_F(ObjectMap, RegistrationEndsAtTheFirstFailure)
{
    failing_step() = "register module";
    EXPECT_EQ(the_module().DllRegisterServer(), E_ABORT);
    EXPECT_THAT(map_events(), ElementsAre("register module"));

    map_events().clear();
    failing_step() = "register first";
    EXPECT_EQ(the_module().DllRegisterServer(), E_ABORT);
    EXPECT_THAT(map_events(), ElementsAre("register module", "register first"));
    EXPECT_FALSE(listed("TypeLib"));
}

TEST_F(ObjectMap, UnregistrationEndsWithTheModule)
{
    EXPECT_EQ(the_module().DllUnregisterServer(FALSE), S_OK);
    EXPECT_THAT(map_events(), ElementsAre("unregister first", "unregister second", "unregister second",
                                          "unregister module"));
}

TEST_F(ObjectMap, UnregistrationContinuesAfterAFailureAndKeepsTheModule)
{
    failing_step() = "unregister first";
    EXPECT_EQ(the_module().DllUnregisterServer(FALSE), E_ABORT);
    EXPECT_THAT(map_events(), ElementsAre("unregister first", "unregister second", "unregister second"));
}

TEST_F(ObjectMap, TypeLibraryIsUnregisteredBeforeTheModule)
{
    ASSERT_EQ(the_module().DllRegisterServer(), S_OK);
    EXPECT_TRUE(listed("{3C0B7A11-52D4-4E6F-9A10-6D2B88417E01}"));
    map_events().clear();
    EXPECT_EQ(the_module().DllUnregisterServer(), S_OK);
    EXPECT_FALSE(listed("{3C0B7A11-52D4-4E6F-9A10-6D2B88417E01}"));
    EXPECT_EQ(map_events().back(), "unregister module");

    // Without a type library to unregister, the module's own part is not reached.
    map_events().clear();
    EXPECT_TRUE(FAILED(the_module().DllUnregisterServer()));
    EXPECT_NE(map_events().back(), "unregister module");
}

TEST_F(ObjectMap, CategoriesAreWrittenAndRemoved)
{
    constexpr char key[] = "HKLM\\SOFTWARE\\Classes\\CLSID\\{3C0B7A11-52D4-4E6F-9A10-6D2B88417E02}\\";
    ASSERT_EQ(the_module().DllRegisterServer(FALSE), S_OK);
    EXPECT_TRUE(
        listed(std::string(key) + "Implemented Categories\\{3C0B7A11-52D4-4E6F-9A10-6D2B88417E11}\n"));
    EXPECT_TRUE(
        listed(std::string(key) + "Implemented Categories\\{3C0B7A11-52D4-4E6F-9A10-6D2B88417E12}\n"));
    EXPECT_TRUE(listed(std::string(key) + "Required Categories\\{3C0B7A11-52D4-4E6F-9A10-6D2B88417E11}\n"));
    EXPECT_FALSE(listed("7E03}")); // no categories, no key
    ASSERT_EQ(the_module().DllUnregisterServer(FALSE), S_OK);
    EXPECT_FALSE(listed("Categories"));
}

TEST_F(ObjectMap, CategoriesOfOthersAreKept)
{
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyW(
                  HKEY_CLASSES_ROOT,
                  L"CLSID\\{3C0B7A11-52D4-4E6F-9A10-6D2B88417E02}\\Implemented Categories\\of another", &key),
              ERROR_SUCCESS);
    RegCloseKey(key);
    ASSERT_EQ(the_module().DllRegisterServer(FALSE), S_OK);
    ASSERT_EQ(the_module().DllUnregisterServer(FALSE), S_OK);
    EXPECT_TRUE(listed("Implemented Categories\\of another"));
    EXPECT_FALSE(listed("Implemented Categories\\{"));
}

TEST_F(ObjectMap, TermFunctionsRunOnceAndLastFirst)
{
    static std::vector<DWORD_PTR> calls;
    calls.clear();
    const auto record = [](DWORD_PTR data) { calls.push_back(data); };
    EXPECT_EQ(the_module().AddTermFunc(record, 1), S_OK);
    EXPECT_EQ(the_module().AddTermFunc(record, 2), S_OK);
    the_module().Term();
    the_module().Term();
    EXPECT_THAT(calls, ElementsAre(2u, 1u));
}

} // namespace
} // namespace quill::test
