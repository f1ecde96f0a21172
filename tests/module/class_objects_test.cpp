// Class objects through the exports: factories, creation, aggregation, lock counts.
#include "tests/module/loaded_module.h"

#include <gtest/gtest.h>
#include <ocidl.h>
#include <unknwn.h>

#include <array>
#include <thread>

namespace quill::test {
namespace {

// An outer object for aggregation; none of its methods may be called.
struct strict_outer : IUnknown
{
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override
    {
        ADD_FAILURE() << "QueryInterface of the outer object was called";
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        ADD_FAILURE() << "the outer object was referenced";
        return 2;
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        ADD_FAILURE() << "the outer object was released";
        return 1;
    }
};

void* const not_null = reinterpret_cast<void*>(0x10);

struct com_apartment
{
    com_apartment() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
    ~com_apartment() { CoUninitialize(); }
    com_apartment(const com_apartment&) = delete;
    com_apartment& operator=(const com_apartment&) = delete;
};

IClassFactory* factory_of(const loaded_module& module, REFCLSID clsid)
{
    void* factory = nullptr;
    EXPECT_EQ(module.DllGetClassObject(clsid, IID_IClassFactory, &factory), S_OK);
    return static_cast<IClassFactory*>(factory);
}

TEST(ClassObjects, RejectANullOutPointer)
{
    const loaded_module module;
    EXPECT_EQ(module.DllGetClassObject(active_doc_class, IID_IClassFactory, nullptr), E_POINTER);
    EXPECT_EQ(module.DllGetClassObject(CLSID_NULL, IID_IClassFactory, nullptr), E_POINTER);
}

TEST(ClassObjects, RejectAnUnknownClass)
{
    const loaded_module module;
    CLSID almost = active_doc_class;
    almost.Data4[7] ^= 1; // all sixteen bytes are compared
    for (const CLSID& clsid : {CLSID_NULL, almost, document_interface, library_id}) {
        void* out = not_null;
        EXPECT_EQ(module.DllGetClassObject(clsid, IID_IClassFactory, &out), CLASS_E_CLASSNOTAVAILABLE);
        EXPECT_EQ(out, nullptr);
    }
}

struct EachClass : testing::TestWithParam<CLSID>
{
    com_apartment apartment;
    loaded_module module;
};

TEST_P(EachClass, FactoryHasItsTwoInterfacesOnly)
{
    void* out = not_null;
    EXPECT_EQ(module.DllGetClassObject(GetParam(), IID_IUnknown, &out), S_OK);
    ASSERT_NE(out, nullptr);
    static_cast<IUnknown*>(out)->Release();
    out = not_null;
    EXPECT_EQ(module.DllGetClassObject(GetParam(), IID_IClassFactory2, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
}

TEST_P(EachClass, FactoryIsCreatedOnce)
{
    IClassFactory* const first = factory_of(module, GetParam());
    IClassFactory* const second = factory_of(module, GetParam());
    EXPECT_EQ(first, second);
    first->Release();
    second->Release();
    // The module still holds the factory.
    IClassFactory* const third = factory_of(module, GetParam());
    EXPECT_EQ(first, third);
    third->Release();
}

TEST_P(EachClass, FactoryIsCreatedOnceForManyThreads)
{
    std::array<IClassFactory*, 8> factories{};
    std::array<std::thread, 8> threads;
    const HANDLE start = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i] = std::thread([&, i] {
            WaitForSingleObject(start, INFINITE);
            factories[i] = factory_of(module, GetParam());
        });
    }
    SetEvent(start);
    for (auto& thread : threads)
        thread.join();
    CloseHandle(start);
    for (IClassFactory* const factory : factories) {
        EXPECT_EQ(factory, factories[0]);
        factory->Release();
    }
}

TEST_P(EachClass, ReferencesToTheFactoryKeepTheModuleLoaded)
{
    IClassFactory* const factory = factory_of(module, GetParam());
    EXPECT_EQ(module.DllCanUnloadNow(), S_FALSE);
    factory->AddRef();
    factory->Release();
    EXPECT_EQ(module.DllCanUnloadNow(), S_FALSE);
    factory->Release();
    EXPECT_EQ(module.DllCanUnloadNow(), S_OK);
}

TEST_P(EachClass, LockServerKeepsTheModuleLoaded)
{
    IClassFactory* const factory = factory_of(module, GetParam());
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    factory->Release();
    EXPECT_EQ(module.DllCanUnloadNow(), S_FALSE);
    IClassFactory* const again = factory_of(module, GetParam());
    EXPECT_EQ(again->LockServer(FALSE), S_OK);
    EXPECT_EQ(again->LockServer(FALSE), S_OK);
    again->Release();
    EXPECT_EQ(module.DllCanUnloadNow(), S_OK);
}

TEST_P(EachClass, ObjectsKeepTheModuleLoaded)
{
    IClassFactory* const factory = factory_of(module, GetParam());
    IUnknown* first = nullptr;
    IUnknown* second = nullptr;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&first)), S_OK);
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&second)), S_OK);
    EXPECT_NE(first, second);
    factory->Release();
    EXPECT_EQ(module.DllCanUnloadNow(), S_FALSE);
    EXPECT_EQ(first->Release(), 0u);
    EXPECT_EQ(module.DllCanUnloadNow(), S_FALSE);
    EXPECT_EQ(second->Release(), 0u);
    EXPECT_EQ(module.DllCanUnloadNow(), S_OK);
}

TEST_P(EachClass, CreationChecksItsOutPointer)
{
    IClassFactory* const factory = factory_of(module, GetParam());
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    factory->Release();
    EXPECT_EQ(module.DllCanUnloadNow(), S_OK);
}

TEST_P(EachClass, CreationOfAMissingInterfaceLeaksNothing)
{
    IClassFactory* const factory = factory_of(module, GetParam());
    void* out = not_null;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    factory->Release();
    EXPECT_EQ(module.DllCanUnloadNow(), S_OK);
}

TEST_P(EachClass, AggregationIsRefused)
{
    strict_outer outer;
    IClassFactory* const factory = factory_of(module, GetParam());
    EXPECT_EQ(factory->CreateInstance(&outer, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(factory->CreateInstance(&outer, IID_IDispatch, nullptr), E_POINTER);
    for (const IID& iid : {IID_IUnknown, IID_IDispatch, IID_IObjectWithSite}) {
        void* out = not_null;
        EXPECT_EQ(factory->CreateInstance(&outer, iid, &out), CLASS_E_NOAGGREGATION);
        EXPECT_EQ(out, nullptr);
    }
    factory->Release();
    EXPECT_EQ(module.DllCanUnloadNow(), S_OK);
}

INSTANTIATE_TEST_SUITE_P(Classes, EachClass, testing::Values(active_doc_class, helper_class),
                         [](const auto& info) { return info.index == 0 ? "Document" : "Helper"; });

TEST(ClassObjects, AreSeparateForEachClass)
{
    const loaded_module module;
    IClassFactory* const document = factory_of(module, active_doc_class);
    IClassFactory* const helper = factory_of(module, helper_class);
    EXPECT_NE(document, helper);
    document->Release();
    helper->Release();
}

TEST(ClassObjects, CreateTheirOwnClass)
{
    const com_apartment apartment;
    const loaded_module module;
    IClassFactory* const document = factory_of(module, active_doc_class);
    IClassFactory* const helper = factory_of(module, helper_class);
    void* out = nullptr;
    EXPECT_EQ(document->CreateInstance(nullptr, document_interface, &out), S_OK);
    static_cast<IUnknown*>(out)->Release();
    EXPECT_EQ(document->CreateInstance(nullptr, IID_IObjectWithSite, &out), E_NOINTERFACE);
    EXPECT_EQ(helper->CreateInstance(nullptr, IID_IObjectWithSite, &out), S_OK);
    static_cast<IUnknown*>(out)->Release();
    EXPECT_EQ(helper->CreateInstance(nullptr, document_interface, &out), E_NOINTERFACE);
    document->Release();
    helper->Release();
}

TEST(ClassObjects, TheDocumentHasDispatchWithoutRegistration)
{
    const com_apartment apartment;
    const loaded_module module;
    IClassFactory* const factory = factory_of(module, active_doc_class);
    IDispatch* dispatch = nullptr;
    ASSERT_EQ(factory->CreateInstance(nullptr, document_interface, reinterpret_cast<void**>(&dispatch)),
              S_OK);
    factory->Release();
    UINT count = 0;
    EXPECT_EQ(dispatch->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u);
    ITypeInfo* info = nullptr;
    ASSERT_EQ(dispatch->GetTypeInfo(0, LOCALE_NEUTRAL, &info), S_OK);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, document_interface);
    info->ReleaseTypeAttr(attributes);
    info->Release();
    wchar_t name[] = L"NoSuchName";
    LPOLESTR names[] = {name};
    DISPID id = 0;
    EXPECT_EQ(dispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_NEUTRAL, &id), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(dispatch->Release(), 0u);
}

TEST(ClassObjects, TheHelperObjectKeepsItsSite)
{
    const com_apartment apartment;
    const loaded_module module;
    IClassFactory* const factory = factory_of(module, helper_class);
    IObjectWithSite* helper = nullptr;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IObjectWithSite, reinterpret_cast<void**>(&helper)), S_OK);

    EXPECT_EQ(helper->GetSite(IID_IUnknown, nullptr), E_POINTER);
    void* out = not_null;
    EXPECT_EQ(helper->GetSite(IID_IUnknown, &out), E_FAIL);
    EXPECT_EQ(out, nullptr);

    // A site that is no browser is kept too.
    EXPECT_EQ(helper->SetSite(factory), S_OK);
    EXPECT_EQ(helper->GetSite(IID_IClassFactory, &out), S_OK);
    EXPECT_EQ(out, factory);
    factory->Release();
    EXPECT_EQ(helper->GetSite(IID_IDispatch, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(helper->SetSite(factory), S_OK);
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    out = not_null;
    EXPECT_EQ(helper->GetSite(IID_IUnknown, &out), E_FAIL);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(helper->Release(), 0u);
    factory->Release();
}

} // namespace
} // namespace quill::test
